// qly pages: documents printed through the page layout view to PDF, read back with the PDF tools, and
// pictures of pages and spreads.
#include <gtest/gtest.h>

#include <QFileInfo>
#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include "QlyRunner.h"

using namespace qly::tooltest;

namespace {

QlyRun runPages(const QStringList& args, const QByteArray& input = {})
{
    return runQly(QStringList{QStringLiteral("pages")} + args, input);
}

QString tool(const QString& program, const QStringList& args)
{
    QProcess process;
    process.start(program, args);
    if (!process.waitForFinished(60000) || process.exitCode() != 0)
        return QString();
    return QString::fromUtf8(process.readAllStandardOutput());
}

int pdfPageCount(const QString& path)
{
    const QRegularExpressionMatch match =
        QRegularExpression(QStringLiteral("Pages:\\s+(\\d+)")).match(tool(QStringLiteral("pdfinfo"), {path}));
    return match.hasMatch() ? match.captured(1).toInt() : -1;
}

QString pdfText(const QString& path, int page = 0)
{
    QStringList args;
    if (page > 0)
        args << QStringLiteral("-f") << QString::number(page) << QStringLiteral("-l") << QString::number(page);
    return tool(QStringLiteral("pdftotext"), args << path << QStringLiteral("-"));
}

// Numbered words, several to a paragraph, so that the order of every word can be checked.
QByteArray numberedWords(int count)
{
    QByteArray text;
    for (int i = 1; i <= count; ++i)
        text += "w" + QByteArray::number(i) + (i % 40 == 0 ? "\n" : " ");
    return text;
}

} // namespace

TEST(PagesCommand, PrintsEveryWordInOrderWithNumberedHeadersAndFooters)
{
    ASSERT_TRUE(QFileInfo(Qly).isExecutable()) << "build the qly target first";
    QTemporaryDir dir;
    const int words = 6000;
    const QString input = writeFile(dir, QStringLiteral("long.txt"), numberedWords(words));
    const QString pdf = dir.filePath(QStringLiteral("long.pdf"));
    const QlyRun run =
        runPages({input, QStringLiteral("-o"), pdf, QStringLiteral("--header"), QStringLiteral("Draft <$P-R>"),
                  QStringLiteral("--footer"), QStringLiteral("Page <$p> of <$pagecount>")});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_TRUE(run.out.isEmpty());
    const int pages = pdfPageCount(pdf);
    ASSERT_GE(pages, 5) << "pdfinfo (poppler-utils) must be installed";
    // Each page says which it is, and the count agrees with the PDF's.
    for (int page = 1; page <= pages; ++page) {
        const QString text = pdfText(pdf, page);
        EXPECT_TRUE(text.contains(QStringLiteral("Page %1 of %2").arg(page).arg(pages))) << page;
        EXPECT_TRUE(text.contains(QRegularExpression(QStringLiteral("Draft [IVXLC]+\\b")))) << page;
    }
    EXPECT_TRUE(pdfText(pdf, 3).contains(QStringLiteral("Draft III")));
    // Every word once, in order.
    const QString all = pdfText(pdf);
    QRegularExpressionMatchIterator it = QRegularExpression(QStringLiteral("\\bw(\\d+)\\b")).globalMatch(all);
    int expected = 1;
    while (it.hasNext()) {
        const int n = it.next().captured(1).toInt();
        ASSERT_EQ(n, expected) << "word out of order";
        ++expected;
    }
    EXPECT_EQ(expected, words + 1);

    // Without counting the first page, with a first-page header of its own.
    const QlyRun second = runPages(
        {input, QStringLiteral("-o"), pdf, QStringLiteral("--footer"), QStringLiteral("Page <$p> of <$pagecount>"),
         QStringLiteral("--no-count-first-pages"), QStringLiteral("--first-page-header"), QStringLiteral("Title page"),
         QStringLiteral("--first-page-footer"), QStringLiteral("[<$p>]")});
    ASSERT_EQ(second.exitCode, 0) << second.err.toStdString();
    EXPECT_EQ(pdfPageCount(pdf), pages);
    const QString first = pdfText(pdf, 1);
    EXPECT_TRUE(first.contains(QStringLiteral("Title page")));
    EXPECT_TRUE(first.contains(QStringLiteral("[]")));
    EXPECT_FALSE(first.contains(QStringLiteral("Page ")));
    EXPECT_TRUE(pdfText(pdf, 3).contains(QStringLiteral("Page 2 of %1").arg(pages - 1)));
}

TEST(PagesCommand, ShowsNotesInlineAndKeepsHeadingsWithTheirText)
{
    QTemporaryDir dir;
    // The sample manuscript: footnotes in the text, a picture and its comments beside it.
    const QString pdf = dir.filePath(QStringLiteral("manuscript.pdf"));
    const QlyRun run = runPages({QStringLiteral(QLY_SOURCE_DIR "/samples/manuscript.rtf"), QStringLiteral("-o"), pdf});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    const QString text = pdfText(pdf);
    EXPECT_TRUE(text.contains(QStringLiteral("The crossing took forty minutes in calm weather.")))
        << text.toStdString();
    EXPECT_TRUE(text.contains(QStringLiteral("Chapter Two")));
    // The stand-in glyph pictures are laid out as is not text.
    EXPECT_FALSE(text.contains(QChar(0x4E00)));

    // One line per paragraph: find the last line of page 1, then mark it keep-with-next.
    QByteArray lines;
    for (int i = 1; i <= 120; ++i)
        lines += "line" + QByteArray::number(i) + "\n";
    const QString plain = writeFile(dir, QStringLiteral("lines.txt"), lines);
    ASSERT_EQ(runPages({plain, QStringLiteral("-o"), pdf}).exitCode, 0);
    const QStringList firstPage = pdfText(pdf, 1).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    ASSERT_FALSE(firstPage.isEmpty());
    const QString last = firstPage.filter(QRegularExpression(QStringLiteral("^line\\d+$"))).last();
    const QByteArray marked = QByteArray(lines).replace(QByteArray("\n" + last.toUtf8() + "\n"),
                                                        "\n<$QlyKeepWithNext>" + last.toUtf8() + "\n");
    ASSERT_NE(marked, lines);
    const QString kept = writeFile(dir, QStringLiteral("kept.txt"), marked);
    ASSERT_EQ(runPages({kept, QStringLiteral("-o"), pdf}).exitCode, 0);
    EXPECT_FALSE(pdfText(pdf, 1).contains(last + QLatin1Char('\n')));
    EXPECT_TRUE(pdfText(pdf, 2).trimmed().startsWith(last)) << pdfText(pdf, 2).left(60).toStdString();
}

TEST(PagesCommand, PicturesAPageOrASpread)
{
    QTemporaryDir dir;
    const QString input = writeFile(dir, QStringLiteral("words.txt"), numberedWords(2000));
    const QString png = dir.filePath(QStringLiteral("page.png"));
    struct Case {
        QStringList options;
        QSize size;
        int scale = 1;
    };
    // The page (or both places of a spread, with a point between) on a 16-point desk all round.
    const Case cases[] = {
        {{}, QSize(612 + 32, 792 + 32)},
        {{QStringLiteral("--page"), QStringLiteral("2")}, QSize(612 + 32, 792 + 32)},
        {{QStringLiteral("--facing"), QStringLiteral("--page"), QStringLiteral("3")},
         QSize(2 * 612 + 1 + 32, 792 + 32)},
        {{QStringLiteral("--paper"), QStringLiteral("300x400"), QStringLiteral("--scale"), QStringLiteral("2")},
         QSize(2 * (300 + 32), 2 * (400 + 32)),
         2},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.options.join(QLatin1Char(' ')).toStdString());
        const QlyRun run = runPages(QStringList{input, QStringLiteral("-o"), png} + c.options);
        ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
        const QImage image(png);
        ASSERT_FALSE(image.isNull());
        EXPECT_EQ(image.size(), c.size);
        // Grey desk in the corner, white paper near the page's corner, dark text somewhere.
        const QColor desk = image.pixelColor(2, 2);
        EXPECT_NE(desk, QColor(Qt::white));
        EXPECT_EQ(image.pixelColor(20 * c.scale, 20 * c.scale), QColor(Qt::white));
        int dark = 0;
        for (int y = 0; y < image.height(); y += 2)
            for (int x = 0; x < image.width(); x += 2)
                dark += image.pixelColor(x, y).lightness() < 80 ? 1 : 0;
        EXPECT_GT(dark, 200);
    }
    const QlyRun beyond = runPages({input, QStringLiteral("-o"), png, QStringLiteral("--page"), QStringLiteral("99")});
    EXPECT_EQ(beyond.exitCode, 2);
    EXPECT_TRUE(beyond.err.contains(QStringLiteral("no page 99")));
}

TEST(PagesCommand, RefusesBadUsageAndReportsMissingFiles)
{
    QTemporaryDir dir;
    const QString text = writeFile(dir, QStringLiteral("a.txt"), "text\n");
    const QString pdf = dir.filePath(QStringLiteral("out.pdf"));
    const std::vector<QStringList> usage = {
        {text},
        {text, QStringLiteral("-o"), dir.filePath(QStringLiteral("out.doc"))},
        {text, QStringLiteral("-o"), QStringLiteral("-")},
        {text, QStringLiteral("-o"), pdf, QStringLiteral("--paper"), QStringLiteral("wide")},
        {text, QStringLiteral("-o"), pdf, QStringLiteral("--paper"), QStringLiteral("10x10")},
        {text, QStringLiteral("-o"), pdf, QStringLiteral("--margins"), QStringLiteral("1,2,3")},
        {text, QStringLiteral("-o"), pdf, QStringLiteral("--margins"), QStringLiteral("306,306,0,0")},
        {text, QStringLiteral("-o"), pdf, QStringLiteral("--page"), QStringLiteral("0")},
        {text, QStringLiteral("-o"), pdf, QStringLiteral("--scale"), QStringLiteral("100")},
        {text, QStringLiteral("-o"), pdf, QStringLiteral("--bogus")},
        {QStringLiteral("-"), QStringLiteral("-o"), pdf},
        {},
    };
    for (const QStringList& args : usage) {
        SCOPED_TRACE(args.join(QLatin1Char(' ')).toStdString());
        const QlyRun run = runPages(args);
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_FALSE(run.err.isEmpty());
        EXPECT_FALSE(QFileInfo::exists(pdf));
    }
    const QlyRun missing = runPages({dir.filePath(QStringLiteral("missing.txt")), QStringLiteral("-o"), pdf});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_FALSE(QFileInfo::exists(pdf));
    // Standard input and output, named with --from and --to.
    const QlyRun piped =
        runPages({QStringLiteral("-"), QStringLiteral("--from"), QStringLiteral("txt"), QStringLiteral("-o"),
                  QStringLiteral("-"), QStringLiteral("--to"), QStringLiteral("pdf")},
                 "Piped words.\n");
    EXPECT_EQ(piped.exitCode, 0) << piped.err.toStdString();
    EXPECT_TRUE(piped.out.startsWith(QStringLiteral("%PDF")));
}
