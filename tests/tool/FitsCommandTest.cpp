// qly fits: yes or no, and the page count, for documents read by the convert formats.
#include <gtest/gtest.h>

#include <QFileInfo>
#include <QTemporaryDir>

#include "QlyRunner.h"

using namespace qly::tooltest;

namespace {

QlyRun runFits(const QStringList& args, const QByteArray& input = {})
{
    return runQly(QStringList{QStringLiteral("fits")} + args, input);
}

// Paragraphs of Times 12 in RTF: one line each on a wide page.
QByteArray rtfLines(int count, const char* separator = "\\par ")
{
    QByteArray rtf = "{\\rtf1\\ansi\\ansicpg1252{\\fonttbl\\f0\\froman Times;}\\f0\\fs24 ";
    for (int i = 0; i < count; ++i)
        rtf += "Line " + QByteArray::number(i) + separator;
    return rtf + "end}";
}

} // namespace

TEST(FitsCommand, AnswersYesNoAndCountsPages)
{
    ASSERT_TRUE(QFileInfo(Qly).isExecutable()) << "build the qly target first";
    QTemporaryDir dir;
    const QString short_ = writeFile(dir, QStringLiteral("short.rtf"), rtfLines(3));
    const QString long_ = writeFile(dir, QStringLiteral("long.rtf"), rtfLines(100));
    const QString broken = writeFile(dir, QStringLiteral("pages.rtf"), rtfLines(3, "\\page "));
    struct Case {
        QStringList args;
        QString out;
    };
    // Letter paper with one-inch margins holds 46 lines of Times 12 (13.8 points each): 101 lines
    // take three pages.
    const std::vector<Case> cases = {
        {{short_}, QStringLiteral("yes\n")},
        {{long_}, QStringLiteral("no\n")},
        {{QStringLiteral("--pages"), long_}, QStringLiteral("3\n")},
        {{QStringLiteral("--pages"), short_}, QStringLiteral("1\n")},
        {{QStringLiteral("--paper"), QStringLiteral("612x1600"), long_}, QStringLiteral("yes\n")},
        {{QStringLiteral("--margins"), QStringLiteral("72,72,72,690"), short_}, QStringLiteral("no\n")},
        {{QStringLiteral("--margins"), QStringLiteral("72,72,72,650"), short_}, QStringLiteral("yes\n")},
        {{broken}, QStringLiteral("no\n")},
        {{QStringLiteral("--pages"), broken}, QStringLiteral("4\n")},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args.join(QLatin1Char(' ')).toStdString());
        const QlyRun run = runFits(c.args);
        EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
        EXPECT_EQ(run.out, c.out);
    }
    // Plain text from standard input, named with --from.
    const QlyRun piped = runFits({QStringLiteral("--from"), QStringLiteral("txt"), QStringLiteral("-")}, "A line.\n");
    EXPECT_EQ(piped.exitCode, 0) << piped.err.toStdString();
    EXPECT_EQ(piped.out, QStringLiteral("yes\n"));
}

TEST(FitsCommand, RefusesBadUsageAndReportsMissingFiles)
{
    QTemporaryDir dir;
    const QString text = writeFile(dir, QStringLiteral("a.txt"), "text\n");
    const std::vector<QStringList> usage = {
        {text, QStringLiteral("--paper"), QStringLiteral("wide")},
        {text, QStringLiteral("--paper"), QStringLiteral("0x100")},
        {text, QStringLiteral("--margins"), QStringLiteral("1,2,3")},
        {text, QStringLiteral("--margins"), QStringLiteral("400,400,0,0")},
        {QStringLiteral("-")},
        {writeFile(dir, QStringLiteral("a.unknown"), "x")},
        {text, QStringLiteral("--from"), QStringLiteral("nonsense")},
        {text, QStringLiteral("--bogus")},
        {},
    };
    for (const QStringList& args : usage) {
        SCOPED_TRACE(args.join(QLatin1Char(' ')).toStdString());
        const QlyRun run = runFits(args);
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_TRUE(run.out.isEmpty());
        EXPECT_FALSE(run.err.isEmpty());
    }
    const QlyRun missing = runFits({dir.filePath(QStringLiteral("missing.txt"))});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_TRUE(missing.out.isEmpty());
}
