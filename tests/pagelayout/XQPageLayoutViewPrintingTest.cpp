// Printing: which header and footer each page gets, the page-number placeholders in their order and
// case, the printing delegate, and the pages printed to a real PDF read back with the PDF tools.
#include <gtest/gtest.h>

#include <QBuffer>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <qlyappkit/pagelayout/XQPagePlaceholders.h>

#include "PageLayoutTestSupport.h"

namespace qly {
namespace {

using pagetest::Pages;

QString substituted(const QString& text, int page, int pageCount, bool counts, int firstRegular)
{
    return XQAttributedStringBySubstitutingPagePlaceholders(AttributedString(text), page, pageCount, counts,
                                                            firstRegular)
        .string();
}

TEST(XQPagePlaceholders, NumbersRomanNumeralsAndEscapes)
{
    struct Case {
        QString text;
        int page, count;
        bool counts;
        int firstRegular;
        QString expected;
    };
    const Case cases[] = {
        {QStringLiteral("Page <$p> of <$pagecount>"), 3, 12, true, 2, QStringLiteral("Page 3 of 12")},
        // Not counting the first page: page 3 is printed as 2 of 11.
        {QStringLiteral("<$p>/<$pagecount>"), 3, 12, false, 2, QStringLiteral("2/11")},
        {QStringLiteral("<$P>/<$PageCount>"), 3, 12, false, 2, QStringLiteral("2/11")},
        // Before numbering starts the number is empty, but roman numerals still count the page.
        {QStringLiteral("[<$p>] <$p-r>"), 1, 12, false, 2, QStringLiteral("[] i")},
        {QStringLiteral("[<$p>] <$P-R>"), 2, 12, false, 4, QStringLiteral("[] II")},
        // The upper-case form exactly, first; every other spelling is lower case.
        {QStringLiteral("<$P-R> <$p-r> <$P-r> <$p-R>"), 14, 20, true, 2, QStringLiteral("XIV xiv xiv xiv")},
        // A backslash keeps a placeholder as text.
        {QStringLiteral("\\<$p> <$p> \\<$P-R> \\<$pagecount>"), 5, 9, true, 2,
         QStringLiteral("<$p> 5 <$P-R> <$pagecount>")},
        {QStringLiteral("no placeholders"), 1, 1, true, 2, QStringLiteral("no placeholders")},
        {QString(), 1, 1, true, 2, QString()},
    };
    for (const Case& c : cases)
        EXPECT_EQ(substituted(c.text, c.page, c.count, c.counts, c.firstRegular), c.expected) << c.text.toStdString();
}

TEST(XQPagePlaceholders, ReplacementsKeepTheAttributesAroundThem)
{
    AttributedString text(QStringLiteral("Page "), pagetest::sans12());
    Attributes bold{{FontAttributeName, QVariant::fromValue(Font(QStringLiteral("Helvetica-Bold"), 12))}};
    text.append(AttributedString(QStringLiteral("<$p>"), bold));
    const AttributedString out = XQAttributedStringBySubstitutingPagePlaceholders(text, 12, 20, true, 2);
    EXPECT_EQ(out.string(), QStringLiteral("Page 12"));
    EXPECT_EQ(out.attributes(5), bold);
    EXPECT_EQ(out.attributes(0), pagetest::sans12());
}

struct ReplacingDelegate : XQPageLayoutViewPrintingDelegate {
    std::vector<std::tuple<QString, int, int>> asked; ///< text, page, printed number
    std::optional<AttributedString> pageLayoutViewShouldPrintHeader(XQPageLayoutView&, const AttributedString& header,
                                                                    int page, int printed) override
    {
        asked.emplace_back(header.string(), page, printed);
        if (page == 2)
            return AttributedString(QStringLiteral("delegate header"));
        return std::nullopt;
    }
};

TEST(XQPageLayoutView, EachPageGetsItsHeaderAndFooter)
{
    Pages pages(pagetest::paragraphs(60));
    XQPageLayoutView& view = *pages.view;
    ASSERT_GE(view.pageCount(), 5);
    const int count = view.pageCount();
    view.setHeaderText(AttributedString(QStringLiteral("Regular <$p>")));
    view.setFooterText(AttributedString(QStringLiteral("<$p> of <$pagecount>")));
    view.setAlternateHeaderText(AttributedString(QStringLiteral("Even <$p>")));
    view.setFirstPagesHeaderText(AttributedString(QStringLiteral("Title page")));
    EXPECT_EQ(view.pageHeaderForPage(1).string(), QStringLiteral("Regular 1"));
    view.setHasDifferentHeaderAndFooterForFirstPages(true);
    view.setFirstPageForRegularHeaderAndFooter(3);
    view.setUsesAlternatingPagesForPrinting(true);
    EXPECT_EQ(view.pageHeaderForPage(1).string(), QStringLiteral("Title page"));
    EXPECT_EQ(view.pageHeaderForPage(2).string(), QStringLiteral("Title page"));
    EXPECT_EQ(view.pageHeaderForPage(3).string(), QStringLiteral("Regular 3"));
    EXPECT_EQ(view.pageHeaderForPage(4).string(), QStringLiteral("Even 4"));
    // No first-pages footer was set: the first pages have none; no alternate footer: the even pages neither.
    EXPECT_EQ(view.pageFooterForPage(1).length(), 0);
    EXPECT_EQ(view.pageFooterForPage(4).length(), 0);
    EXPECT_EQ(view.pageFooterForPage(5).string(), QStringLiteral("5 of %1").arg(count));
    view.setCountsFirstPages(false);
    EXPECT_EQ(view.pageFooterForPage(5).string(), QStringLiteral("3 of %1").arg(count - 2));
    // The current printing page chooses pageHeader and pageFooter.
    view.setCurrentPrintingPage(3);
    EXPECT_EQ(view.pageHeader().string(), QStringLiteral("Regular 1"));
    Range range;
    EXPECT_TRUE(view.knowsPageRange(&range));
    EXPECT_EQ(range, (Range{1, count}));
    EXPECT_EQ(view.rectForPage(3), view.pageFrameForPage(3));
    // The delegate sees the substituted text and may replace it.
    ReplacingDelegate delegate;
    view.setPrintingDelegate(&delegate);
    EXPECT_EQ(view.pageHeaderForPage(2).string(), QStringLiteral("delegate header"));
    EXPECT_EQ(view.pageHeaderForPage(3).string(), QStringLiteral("Regular 1"));
    ASSERT_EQ(delegate.asked.size(), 2u);
    EXPECT_EQ(delegate.asked[1], (std::tuple<QString, int, int>{QStringLiteral("Regular 1"), 3, 1}));
    EXPECT_EQ(std::get<2>(delegate.asked[0]), 0); // page 2 is numbered 0: before numbering starts
    view.setPrintingDelegate(nullptr);
}

QString run(const QString& program, const QStringList& args)
{
    QProcess process;
    process.start(program, args);
    if (!process.waitForFinished(60000) || process.exitCode() != 0)
        return QString();
    return QString::fromUtf8(process.readAllStandardOutput());
}

TEST(XQPageLayoutView, PrintsOnePDFPagePerPageWithItsHeaderAndFooter)
{
    QString text;
    for (int i = 1; i <= 60; ++i)
        text += QStringLiteral("Sentence%1 ").arg(i) + (i % 5 == 0 ? QStringLiteral("\n") : QString());
    Pages pages(text);
    XQPageLayoutView& view = *pages.view;
    view.setHeaderText(AttributedString(QStringLiteral("Manuscript header"), pagetest::sans12()));
    view.setFooterText(AttributedString(QStringLiteral("Page <$p> of <$pagecount>"), pagetest::sans12()));
    ASSERT_GE(view.pageCount(), 2);
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("pages.pdf"));
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_TRUE(view.writePDF(&file));
    }
    const QString info = run(QStringLiteral("pdfinfo"), {path});
    ASSERT_FALSE(info.isEmpty()) << "pdfinfo (poppler-utils) must be installed";
    EXPECT_TRUE(info.contains(QRegularExpression(QStringLiteral("Pages:\\s+%1\\n").arg(view.pageCount()))))
        << info.toStdString();
    EXPECT_TRUE(info.contains(QStringLiteral("300 x 200 pts"))) << info.toStdString();
    for (int page = 1; page <= view.pageCount(); ++page) {
        const QString pageText = run(QStringLiteral("pdftotext"),
                                     {QStringLiteral("-f"), QString::number(page), QStringLiteral("-l"),
                                      QString::number(page), QStringLiteral("-layout"), path, QStringLiteral("-")});
        SCOPED_TRACE(pageText.toStdString());
        EXPECT_TRUE(pageText.contains(QStringLiteral("Manuscript header")));
        EXPECT_TRUE(pageText.contains(QStringLiteral("Page %1 of %2").arg(page).arg(view.pageCount())));
        // The first word the layout put on this page is on this PDF page.
        const Range range = view.characterRangeForPage(page);
        const QString first = pages.storage.substring(range).simplified().section(QLatin1Char(' '), 0, 0);
        EXPECT_TRUE(pageText.contains(first)) << first.toStdString();
    }
    // Every word, in order.
    const QString all = run(QStringLiteral("pdftotext"), {path, QStringLiteral("-")});
    qsizetype at = 0;
    for (int i = 1; i <= 60; ++i) {
        const qsizetype found = all.indexOf(QStringLiteral("Sentence%1 ").arg(i).trimmed(), at);
        ASSERT_GE(found, 0) << i;
        at = found + 1;
    }
}

} // namespace
} // namespace qly
