// What a writer sees when the exports open in a word processor: qly writes the files as the demo
// does, the office suite opens them all in one call per format, and the tests read its layout (PDF
// pages and fonts) and its own document model (the .docx it saves).
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include "OfficeSuite.h"
#include "QlyRunner.h"

using namespace qly::tooltest;

namespace {

const QString Samples = QStringLiteral(QLY_SOURCE_DIR "/samples");
const QString RTFFixtures = QStringLiteral(QLY_SOURCE_DIR "/tests/fixtures/rtf");

// The demo's export of the two-chapter manuscript, and variants of it.
const QStringList DemoOptions{
    QStringLiteral("--author"),
    QStringLiteral("A. Writer"),
    QStringLiteral("--annotations-as-footnotes"),
    QStringLiteral("--option"),
    QStringLiteral("XQRTFLinkedFootnotesAsEndnotes=yes"),
    QStringLiteral("--option"),
    QStringLiteral("XQRTFHeaderString=<$sectiontitle>"),
    QStringLiteral("--option"),
    QStringLiteral("XQRTFFooterString=Page <$p> of <$pagecount>"),
    QStringLiteral("--option"),
    QStringLiteral("XQRTFNoHeaderOnNewPages=yes"),
};

// Stored text in Times with bold and italic words.
const QByteArray TraitsText = "{\\rtf1\\ansi\\ansicpg1252\\cocoartf1038\n{\\fonttbl\\f0\\froman\\fcharset0 Times;}\n"
                              "\\pard\\f0\\fs24 Plain words, \\b bold words\\b0 , \\i italic words\\i0 , "
                              "\\b\\i both at once\\b0\\i0 .\\\n}";

int count(const QString& text, const QString& what) { return int(text.count(what)); }

// The pages of a PDF as text, in order.
QStringList pdfPages(const QString& pdf)
{
    QStringList pages =
        programOutput(QStringLiteral("pdftotext"), {QStringLiteral("-layout"), pdf, QStringLiteral("-")})
            .split(QLatin1Char('\f'));
    if (!pages.isEmpty() && pages.last().trimmed().isEmpty())
        pages.removeLast();
    return pages;
}

// Every file is converted once, to .docx and to PDF, for all the tests below.
class WordProcessorView : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        s_dir = new QTemporaryDir;
        s_dir->setAutoRemove(!qEnvironmentVariableIsSet("QLY_KEEP_EXPORT"));
        const QString dir = s_dir->path();
        s_ready = !officeSuite().isEmpty();
        if (!s_ready)
            return;
        const QString manuscript = Samples + QStringLiteral("/manuscript.rtf");
        auto exportAs = [&](const QString& name, QStringList extra) {
            QStringList args{QStringLiteral("convert"),     manuscript,           QStringLiteral("-o"),
                             dir + QLatin1Char('/') + name, QStringLiteral("-t"), QStringLiteral("word-rtf")};
            args.append(DemoOptions);
            args.append(extra);
            return runQly(args).exitCode == 0;
        };
        s_ready = exportAs(QStringLiteral("manuscript.rtf"), {})
            && exportAs(QStringLiteral("numbering.rtf"),
                        {QStringLiteral("--option"), QStringLiteral("XQRTFFootnoteStyle=3"), QStringLiteral("--option"),
                         QStringLiteral("XQRTFRestartFootnoteNumberingEachPage=yes"), QStringLiteral("--option"),
                         QStringLiteral("XQRTFFootnotesUsePeriodMarkerStyle=yes"), QStringLiteral("--option"),
                         QStringLiteral("XQRTFLinkedFootnotesAsEndnotes=yes")});
        const QString traits = writeFile(*s_dir, QStringLiteral("traits-in.rtf"), TraitsText);
        s_ready = s_ready
            && runQly({QStringLiteral("convert"), traits, QStringLiteral("-o"), dir + QStringLiteral("/traits.rtf"),
                       QStringLiteral("-t"), QStringLiteral("word-rtf")})
                    .exitCode
                == 0
            && runQly({QStringLiteral("convert"), RTFFixtures + QStringLiteral("/lists.rtf"), QStringLiteral("-o"),
                       dir + QStringLiteral("/lists.rtf")})
                    .exitCode
                == 0;
        const QStringList files{dir + QStringLiteral("/manuscript.rtf"), dir + QStringLiteral("/numbering.rtf"),
                                dir + QStringLiteral("/traits.rtf"), dir + QStringLiteral("/lists.rtf")};
        s_ready = s_ready && convertWithOfficeSuite(dir, files, QStringLiteral("docx"))
            && convertWithOfficeSuite(dir, files, QStringLiteral("pdf"));
    }
    static void TearDownTestSuite()
    {
        delete s_dir;
        s_dir = nullptr;
    }
    void SetUp() override
    {
        // The office suite is part of the project's toolchain (scripts/bootstrap): its absence is a fault.
        ASSERT_FALSE(officeSuite().isEmpty()) << "soffice is missing: run scripts/bootstrap";
        ASSERT_TRUE(s_ready) << "qly or the office suite failed; files kept with QLY_KEEP_EXPORT=1 in "
                             << s_dir->path().toStdString();
    }
    static QString path(const QString& name) { return s_dir->path() + QLatin1Char('/') + name; }

    static QTemporaryDir* s_dir;
    static bool s_ready;
};

QTemporaryDir* WordProcessorView::s_dir = nullptr;
bool WordProcessorView::s_ready = false;

} // namespace

// One section per chapter whatever notes the chapter holds, and no page break left beside the
// section break, so no page is blank (a blank page would hold no more than the header and footer).
TEST_F(WordProcessorView, OneSectionPerChapterAndNoBlankPage)
{
    const QString document = docxPart(path(QStringLiteral("manuscript.docx")), QStringLiteral("word/document.xml"));
    ASSERT_FALSE(document.isEmpty());
    EXPECT_EQ(count(document, QStringLiteral("<w:sectPr")), 2);
    EXPECT_EQ(count(document, QStringLiteral("w:type=\"page\"")), 0);
    const QString text = docxRunText(document);
    // The sentences the extra section breaks used to cut are whole paragraphs' text again.
    EXPECT_TRUE(text.contains(QStringLiteral("shrink behind them until it vanished"))) << text.toStdString();

    const QStringList pages = pdfPages(path(QStringLiteral("manuscript.pdf")));
    ASSERT_GE(pages.size(), 2);
    EXPECT_LE(pages.size(), 4) << "the two short chapters and their endnotes";
    static const QRegularExpression headerOrFooter(QStringLiteral("^(Chapter One|Chapter Two|Page \\d+ of \\d+)$"));
    for (int i = 0; i < pages.size(); ++i) {
        int body = 0;
        for (const QString& line : pages.at(i).split(QLatin1Char('\n'))) {
            const QString words = line.simplified();
            body += words.isEmpty() || headerOrFooter.match(words).hasMatch() ? 0 : 1;
        }
        EXPECT_GT(body, 0) << "page " << i + 1 << " is blank:\n" << pages.at(i).toStdString();
    }
    // Each chapter starts a page, and that page (its first) has no header.
    int chapterTwoPage = -1;
    for (int i = 0; i < pages.size(); ++i) {
        if (pages.at(i).contains(QStringLiteral("On the island the wind never stopped")))
            chapterTwoPage = i;
    }
    ASSERT_GT(chapterTwoPage, 0);
    EXPECT_EQ(count(pages.at(chapterTwoPage), QStringLiteral("Chapter Two")), 1)
        << pages.at(chapterTwoPage).toStdString();
    EXPECT_TRUE(pages.at(chapterTwoPage - 1).contains(QStringLiteral("The coast, as Mara drew it")))
        << pages.at(chapterTwoPage - 1).toStdString();
}

// The numbering options reach the word processor: they are document formatting, not paragraph text.
TEST_F(WordProcessorView, FootnoteNumberingOptionsTakeEffect)
{
    const QString plain = docxPart(path(QStringLiteral("manuscript.docx")), QStringLiteral("word/settings.xml"))
        + docxPart(path(QStringLiteral("manuscript.docx")), QStringLiteral("word/document.xml"));
    const QString styled = docxPart(path(QStringLiteral("numbering.docx")), QStringLiteral("word/settings.xml"))
        + docxPart(path(QStringLiteral("numbering.docx")), QStringLiteral("word/document.xml"));
    ASSERT_FALSE(plain.isEmpty());
    ASSERT_FALSE(styled.isEmpty());
    static const QRegularExpression endnoteFormat(
        QStringLiteral("<w:endnotePr>(?:(?!</w:endnotePr>).)*<w:numFmt w:val=\"(\\w+)\""),
        QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression footnoteFormat(
        QStringLiteral("<w:footnotePr>(?:(?!</w:footnotePr>).)*<w:numFmt w:val=\"(\\w+)\""),
        QRegularExpression::DotMatchesEverythingOption);
    // Endnotes in arabic figures as asked (the word processor's own default is lower roman).
    const QRegularExpressionMatch endnotes = endnoteFormat.match(plain);
    EXPECT_TRUE(!endnotes.hasMatch() || endnotes.captured(1) == QLatin1String("decimal")) << plain.toStdString();
    EXPECT_EQ(footnoteFormat.match(styled).captured(1), QStringLiteral("lowerRoman")) << styled.toStdString();
    EXPECT_TRUE(styled.contains(QStringLiteral("<w:numRestart w:val=\"eachPage\"/>"))) << styled.toStdString();
}

// A linked note's mark follows its anchor directly: no blank before the mark, none doubled after it.
TEST_F(WordProcessorView, NoteMarksSitAgainstTheirAnchors)
{
    const QString docx = path(QStringLiteral("manuscript.docx"));
    const QString text = docxRunText(docxPart(docx, QStringLiteral("word/document.xml")));
    // The manuscript's linked footnotes and linked comments, each with the words around it.
    for (const QString& marked : {QStringLiteral("lighthouse[ref] shrink"), QStringLiteral("vanished[ref]."),
                                  QStringLiteral("the hill[ref], where"), QStringLiteral("the key[ref].")})
        EXPECT_TRUE(text.contains(marked)) << marked.toStdString() << " in\n" << text.toStdString();
    EXPECT_EQ(count(text, QStringLiteral("  ")), 0) << text.toStdString();
    // The note texts themselves start with their first word.
    for (const QString& part : {QStringLiteral("word/footnotes.xml"), QStringLiteral("word/endnotes.xml"),
                                QStringLiteral("word/comments.xml")}) {
        static const QRegularExpression paragraph(QStringLiteral("<w:p[ >].*?</w:p>"),
                                                  QRegularExpression::DotMatchesEverythingOption);
        const QString xml = docxPart(docx, part);
        for (auto it = paragraph.globalMatch(xml); it.hasNext();) {
            const QString words = docxRunText(it.next().captured(0)).remove(QStringLiteral("[ref]"));
            EXPECT_FALSE(words.startsWith(QLatin1String("  "))) << part.toStdString() << ": " << words.toStdString();
        }
    }
}

// Header and footer texts start with their first word.
TEST_F(WordProcessorView, HeadersAndFootersStartWithTheirText)
{
    const QString docx = path(QStringLiteral("manuscript.docx"));
    int seen = 0;
    for (int n = 1; n <= 8; ++n) {
        for (const QString& kind : {QStringLiteral("header"), QStringLiteral("footer")}) {
            const QString xml = docxPart(docx, QStringLiteral("word/%1%2.xml").arg(kind).arg(n));
            const QString text = docxRunText(xml);
            if (text.trimmed().isEmpty())
                continue;
            ++seen;
            EXPECT_FALSE(text.startsWith(QLatin1Char(' '))) << kind.toStdString() << n << ": " << text.toStdString();
        }
    }
    EXPECT_GE(seen, 2);
    const QStringList pages = pdfPages(path(QStringLiteral("manuscript.pdf")));
    ASSERT_FALSE(pages.isEmpty());
    EXPECT_TRUE(pages.first().contains(QRegularExpression(QStringLiteral("\\bPage 1 of \\d+"))))
        << pages.first().toStdString();
}

// Bold and italic words are set in the serif family's own faces, not a sans-serif stand-in.
TEST_F(WordProcessorView, BoldAndItalicKeepTheirFamily)
{
    const QString fonts = programOutput(QStringLiteral("pdffonts"), {path(QStringLiteral("traits.pdf"))});
    ASSERT_FALSE(fonts.isEmpty());
    EXPECT_TRUE(fonts.contains(QStringLiteral("Serif-Bold"))) << fonts.toStdString();
    EXPECT_TRUE(fonts.contains(QStringLiteral("Serif-Italic"))) << fonts.toStdString();
    EXPECT_TRUE(fonts.contains(QStringLiteral("Serif-BoldItalic"))) << fonts.toStdString();
    EXPECT_FALSE(fonts.contains(QStringLiteral("Sans"))) << fonts.toStdString();
}

// The plain writer's list markers are shown once: as the word processor's own numbering, not
// again as text.
TEST_F(WordProcessorView, ListMarkersAreShownOnce)
{
    const QString document = docxPart(path(QStringLiteral("lists.docx")), QStringLiteral("word/document.xml"));
    ASSERT_FALSE(document.isEmpty());
    const QString text = docxRunText(document);
    EXPECT_GE(count(document, QStringLiteral("<w:numPr>")), 4) << document.toStdString();
    EXPECT_FALSE(text.contains(QChar(0x2022))) << text.toStdString();
    EXPECT_FALSE(text.contains(QRegularExpression(QStringLiteral("(^|\\s)\\d+\\.\\s*\\t?\\s*[A-Z]"))))
        << text.toStdString();
}
