// qly diff, run as the built program.
#include "support/TestFiles.h"
#include "tool/QlyRunner.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <memory>

#include <qlyappkit/interchange/export/Documents.h>
#include <qlyappkit/platform/rtf/RTFWriter.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Color.h>

using namespace qly;
using namespace qly::testfiles;
using namespace qly::tooltest;

namespace {

const QByteArray Draft1 = "The ship sailed at dawn.\nNobody saw it go.\n";
const QByteArray Draft2 = "The boat sailed at dawn.\nNobody saw it go, said Anna.\n";
const QString Diff = QStringLiteral("diff");

// The stretches of an attribute's value in a text, as (text, value) pairs, absent stretches left out.
std::vector<std::pair<QString, QVariant>> stretchesOf(const AttributedString& text, const QString& name)
{
    std::vector<std::pair<QString, QVariant>> out;
    text.enumerateAttribute(name, Range{0, text.length()}, [&](const QVariant& value, Range r) {
        if (value.isValid())
            out.emplace_back(text.substring(r), value);
        return true;
    });
    return out;
}

} // namespace

TEST(DiffCommand, ExitStatusTellsEqualFromDifferentFromTrouble)
{
    ASSERT_TRUE(QFileInfo(Qly).isExecutable()) << "build the qly target first";
    QTemporaryDir dir;
    const QString a = writeFile(dir, QStringLiteral("a.txt"), Draft1),
                  b = writeFile(dir, QStringLiteral("b.txt"), Draft2);
    QlyRun run = runQly({Diff, a, b});
    EXPECT_EQ(run.exitCode, 1) << run.err.toStdString();
    EXPECT_EQ(run.out, QStringLiteral("The [-ship-]{+boat+} sailed at dawn.\nNobody saw it go{+, said Anna+}.\n"));
    run = runQly({Diff, a, a});
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(run.out, QString::fromUtf8(Draft1));

    struct Case {
        const char* what;
        QStringList arguments;
        const char* message;
    };
    const QString missing = dir.filePath(QStringLiteral("missing.txt"));
    const Case troubles[] = {
        {"missing input", {Diff, a, missing}, "cannot read"},
        {"unknown option", {Diff, a, b, QStringLiteral("--frobnicate")}, "Unknown option"},
        {"unknown unit", {Diff, a, b, QStringLiteral("--by"), QStringLiteral("lines")}, "unknown unit 'lines'"},
        {"one input only", {Diff, a}, "missing arguments"},
        {"both from standard input",
         {Diff, QStringLiteral("-"), QStringLiteral("-"), QStringLiteral("-f"), QStringLiteral("txt")},
         "only one input"},
        {"standard input without format", {Diff, QStringLiteral("-"), b}, "needs --from"},
        {"unknown output format",
         {Diff, a, b, QStringLiteral("-o"), dir.filePath(QStringLiteral("x.pdf"))},
         "cannot write this format"},
        {"colour on RTF",
         {Diff, a, b, QStringLiteral("--color"), QStringLiteral("-o"), dir.filePath(QStringLiteral("x.rtf"))},
         "--color applies only"},
        {"bad colour", {Diff, a, b, QStringLiteral("--old-color"), QStringLiteral("reddish")}, "RRGGBB"},
        {"input not RTF", {Diff, writeFile(dir, QStringLiteral("bad.rtf"), "plain words"), b}, "not RTF"},
    };
    for (const Case& c : troubles) {
        SCOPED_TRACE(c.what);
        run = runQly(c.arguments);
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_TRUE(run.err.contains(QString::fromUtf8(c.message))) << run.err.toStdString();
    }
    EXPECT_FALSE(QFileInfo::exists(dir.filePath(QStringLiteral("x.rtf"))));
}

TEST(DiffCommand, UnitsStandardInputAndTerminalColours)
{
    QTemporaryDir dir;
    const QString a = writeFile(dir, QStringLiteral("a.txt"), "One, two three.\n");
    // The older text from standard input; by paragraphs the changed paragraph goes whole.
    QlyRun run = runQly({Diff, QStringLiteral("-"), a, QStringLiteral("--from"), QStringLiteral("txt"),
                         QStringLiteral("--by"), QStringLiteral("paragraphs")},
                        "One, two four.\n");
    EXPECT_EQ(run.exitCode, 1) << run.err.toStdString();
    EXPECT_EQ(run.out, QStringLiteral("[-One, two four.\n-]{+One, two three.\n+}"));
    // By clauses only the changed clause.
    run = runQly({Diff, QStringLiteral("-"), a, QStringLiteral("-f"), QStringLiteral("txt"), QStringLiteral("--by"),
                  QStringLiteral("Clauses")},
                 "One, two four.\n");
    EXPECT_EQ(run.out, QStringLiteral("One,[- two four.-]{+ two three.+}\n"));
    // Terminal colours close before a line break and open again after it.
    run = runQly({Diff, QStringLiteral("-"), a, QStringLiteral("-f"), QStringLiteral("txt"), QStringLiteral("--by"),
                  QStringLiteral("paragraphs"), QStringLiteral("--color")},
                 "Gone\nOne, two three.\n");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out, QStringLiteral("\x1b[9;31mGone\x1b[0m\nOne, two three.\n"));
}

TEST(DiffCommand, RichTextOutputCarriesStrikethroughAndUnderlineColours)
{
    QTemporaryDir dir;
    // RTF inputs: whatever qly reads can be compared.
    auto rtf = [](const QByteArray& text) {
        const AttributedString s(QString::fromUtf8(text));
        return RTFFromRange(s, Range{0, s.length()}, {});
    };
    const QString a = writeFile(dir, QStringLiteral("a.rtf"), rtf(Draft1)),
                  b = writeFile(dir, QStringLiteral("b.rtf"), rtf(Draft2)), out = dir.filePath(QStringLiteral("c.rtf"));
    QlyRun run =
        runQly({Diff, a, b, QStringLiteral("-o"), out, QStringLiteral("--old-color"), QStringLiteral("00ff00")});
    ASSERT_EQ(run.exitCode, 1) << run.err.toStdString();
    const std::optional<AttributedString> merged =
        attributedStringFromDocumentData(readFileBytes(out), DocumentFormat::RTF);
    ASSERT_TRUE(merged);
    EXPECT_EQ(merged->string(), QStringLiteral("The shipboat sailed at dawn.\nNobody saw it go, said Anna.\n"));
    const auto struck = stretchesOf(*merged, StrikethroughStyleAttributeName);
    ASSERT_EQ(struck.size(), 1u);
    EXPECT_EQ(struck[0].first, QStringLiteral("ship"));
    const auto underlined = stretchesOf(*merged, UnderlineStyleAttributeName);
    ASSERT_EQ(underlined.size(), 2u);
    EXPECT_EQ(underlined[0].first, QStringLiteral("boat"));
    EXPECT_EQ(underlined[1].first, QStringLiteral(", said Anna"));
    const Attributes removed = merged->attributes(4), added = merged->attributes(8);
    EXPECT_EQ(removed.value(ForegroundColorAttributeName).value<Color>(), Color(0, 1, 0));
    const Color blue = added.value(ForegroundColorAttributeName).value<Color>();
    EXPECT_EQ(blue.toQColor().name(), QStringLiteral("#4a7aa7"));
    EXPECT_EQ(added.value(UnderlineColorAttributeName).value<Color>().toQColor().name(), QStringLiteral("#4a7aa7"));
}

// Eight comparisons at once in one temporary folder: each gets its own files and its own answer.
TEST(DiffCommand, EightProcessesAtOnceNeverMixTheirFiles)
{
    QTemporaryDir dir, temporary;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TMPDIR"), temporary.path());
    std::vector<std::unique_ptr<QProcess>> processes;
    for (int i = 0; i < 8; ++i) {
        const QByteArray older = "Chapter " + QByteArray::number(i) + " begins here.\n" + QByteArray(20000, 'x') + "\n";
        const QByteArray newer = "Chapter " + QByteArray::number(i) + " starts here.\n" + QByteArray(20000, 'x') + "\n";
        const QString a = writeFile(dir, QStringLiteral("old%1.txt").arg(i), older),
                      b = writeFile(dir, QStringLiteral("new%1.txt").arg(i), newer);
        auto process = std::make_unique<QProcess>();
        process->setProcessEnvironment(environment);
        process->start(Qly, {Diff, a, b});
        processes.push_back(std::move(process));
    }
    for (int i = 0; i < 8; ++i) {
        QProcess& process = *processes[size_t(i)];
        ASSERT_TRUE(process.waitForFinished(60000));
        EXPECT_EQ(process.exitCode(), 1) << process.readAllStandardError().toStdString();
        const QByteArray out = process.readAllStandardOutput();
        EXPECT_EQ(out,
                  "Chapter " + QByteArray::number(i) + " [-begins-]{+starts+} here.\n" + QByteArray(20000, 'x') + "\n");
    }
    EXPECT_EQ(QDir(temporary.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
}

// A word processor opens the RTF output and shows removed text struck through and added text
// underlined in their colours.
TEST(DiffCommand, WordProcessorShowsTheMarks)
{
    const QString soffice = QStandardPaths::findExecutable(QStringLiteral("soffice"));
    if (soffice.isEmpty())
        GTEST_SKIP() << "soffice is not installed: the word-processor check is skipped";
    QTemporaryDir dir;
    const QString a = writeFile(dir, QStringLiteral("a.txt"), Draft1),
                  b = writeFile(dir, QStringLiteral("b.txt"), Draft2);
    ASSERT_EQ(runQly({Diff, a, b, QStringLiteral("-o"), dir.filePath(QStringLiteral("changes.rtf"))}).exitCode, 1);
    QProcess process;
    process.setWorkingDirectory(dir.path());
    process.start(soffice,
                  {QStringLiteral("-env:UserInstallation=file://") + dir.filePath(QStringLiteral("profile")),
                   QStringLiteral("--headless"), QStringLiteral("--convert-to"), QStringLiteral("html"),
                   QStringLiteral("changes.rtf")});
    ASSERT_TRUE(process.waitForFinished(180000));
    const QString html = QString::fromUtf8(readFileBytes(dir.filePath(QStringLiteral("changes.html"))))
                             .replace(QRegularExpression(QStringLiteral("\\s+")), QStringLiteral(" "));
    ASSERT_FALSE(html.isEmpty()) << "the conversion produced no page";
    EXPECT_TRUE(html.contains(QRegularExpression(QStringLiteral("color=\"#b4454c\"><strike>(<[^>]*>)*ship<"))))
        << html.toStdString();
    EXPECT_TRUE(html.contains(QRegularExpression(QStringLiteral("color=\"#4a7aa7\">(<[^>]*>)*<u>boat</u>"))))
        << html.toStdString();
}
