// qly convert to HTML, run as the built program: the manuscript becomes a folder with its pictures and
// notes inline, the options reach the page, and what cannot or may not be written is refused.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QUrl>

#include "support/TestFiles.h"
#include "tool/QlyRunner.h"

using namespace qly::testfiles;
using namespace qly::tooltest;

namespace {

const QString Manuscript = QStringLiteral(QLY_SOURCE_DIR "/samples/manuscript.rtf");
const QString Chapter = QStringLiteral(QLY_SOURCE_DIR "/samples/chapter-three.md");

QStringList entries(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDir::Name);
}

// A stored text whose only picture is the sample figure copied under `name` beside it.
QString textWithPictureNamed(const QTemporaryDir& dir, const QString& name)
{
    QFile::copy(QStringLiteral(QLY_SOURCE_DIR "/samples/manuscript-figure.png"), dir.filePath(name));
    const QByteArray encoded = QUrl::toPercentEncoding(name);
    return writeFile(dir, QStringLiteral("pictured.rtf"),
                     "{\\rtf1\\ansi\\ansicpg1252 Look: {\\field{\\*\\fldinst{HYPERLINK \"qlypicture:" + encoded
                         + "\"}}{\\fldrslt [figure]}} here.\\\n}");
}

} // namespace

TEST(HTMLConvertCommand, ManuscriptBecomesAFolderWithItsPicturesAndNotes)
{
    ASSERT_TRUE(QFileInfo(Qly).isExecutable()) << "build the qly target first";
    QTemporaryDir dir;
    const QString out = dir.filePath(QStringLiteral("manuscript.html"));
    const QlyRun run = runQly({QStringLiteral("convert"), Manuscript, QStringLiteral("-o"), out,
                               QStringLiteral("--center-width"), QStringLiteral("200")});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(entries(out), (QStringList{QStringLiteral("Images"), QStringLiteral("manuscript.html")}));
    EXPECT_EQ(entries(out + QStringLiteral("/Images")),
              (QStringList{QStringLiteral("footnote-rule.png"), QStringLiteral("manuscript-figure.png")}));
    const QString page = QString::fromUtf8(readFileBytes(out + QStringLiteral("/manuscript.html")));
    EXPECT_TRUE(page.contains(QLatin1String("<title>manuscript</title>")));
    // The figure (240 × 120) capped by the 200-pixel column.
    EXPECT_TRUE(page.contains(
        QLatin1String("<img src=\"Images/manuscript-figure.png\" width=\"200\" height=\"100\" alt=\"Image\">")));
    EXPECT_TRUE(page.contains(QLatin1String("<div style=\"width: 200px; margin: 0 auto\">")));
    // Footnotes of both kinds after the text, comments and the annotation inline.
    for (const char* note : {"The crossing took forty minutes", "The keeper's log records", "Is the lighthouse still",
                             "[the letter]", "Describe the house earlier"})
        EXPECT_TRUE(page.contains(QLatin1String(note))) << note;
    EXPECT_GT(page.indexOf(QLatin1String("The storm of that week")), page.indexOf(QLatin1String("She slept badly")));
    // The nested list inside its item, the web link kept, the application's own links gone.
    EXPECT_TRUE(
        page.contains(QRegularExpression(QStringLiteral("Food for three days</span>\\n<ol class=\"l\\d+\">\\n<li"))));
    EXPECT_TRUE(
        page.contains(QLatin1String("<a href=\"https://example.org/ferry/timetable?day=sunday&amp;port=harbour\">")));
    for (const char* gone : {"Qlry", "quillcmt", "qlypicture", "qlybookmark", "qlypageref", "XQIMG_REF"})
        EXPECT_FALSE(page.contains(QLatin1String(gone), Qt::CaseInsensitive)) << gone;

    // Exported again over its earlier export: replaced whole.
    const QlyRun again =
        runQly({QStringLiteral("convert"), Manuscript, QStringLiteral("-o"), out, QStringLiteral("--xhtml")});
    ASSERT_EQ(again.exitCode, 0) << again.err.toStdString();
    const QString xhtml = QString::fromUtf8(readFileBytes(out + QStringLiteral("/manuscript.html")));
    EXPECT_TRUE(xhtml.contains(QLatin1String("<meta charset=\"UTF-8\" />")));
    EXPECT_TRUE(xhtml.contains(QLatin1String("width=\"240\" height=\"120\" alt=\"Image\" />")));
    EXPECT_FALSE(xhtml.contains(QLatin1String("<div style")));
    EXPECT_EQ(entries(dir.path()), QStringList{QStringLiteral("manuscript.html")});
}

TEST(HTMLConvertCommand, OptionsAndOutputs)
{
    QTemporaryDir dir;
    // White space in picture names is kept unless asked otherwise.
    const QString input = textWithPictureNamed(dir, QStringLiteral("my figure.png"));
    const QString kept = dir.filePath(QStringLiteral("kept.html"));
    const QString stripped = dir.filePath(QStringLiteral("stripped.html"));
    QlyRun run = runQly({QStringLiteral("convert"), input, QStringLiteral("-o"), kept});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_TRUE(QFileInfo(kept + QStringLiteral("/Images/my figure.png")).isFile());
    EXPECT_TRUE(readFileBytes(kept + QStringLiteral("/kept.html")).contains("src=\"Images/my%20figure.png\""));
    run = runQly(
        {QStringLiteral("convert"), input, QStringLiteral("-o"), stripped, QStringLiteral("--strip-image-spaces")});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_TRUE(QFileInfo(stripped + QStringLiteral("/Images/myfigure.png")).isFile());

    // A page without pictures goes to standard output; one with pictures cannot.
    run = runQly({QStringLiteral("convert"), Chapter, QStringLiteral("-o"), QStringLiteral("-"), QStringLiteral("-t"),
                  QStringLiteral("html")});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_TRUE(run.out.startsWith(QLatin1String("<!DOCTYPE html>")));
    EXPECT_TRUE(run.out.contains(QLatin1String("<title>chapter-three</title>")));
    EXPECT_TRUE(run.out.contains(QLatin1String("font-weight: bold")));
    run = runQly({QStringLiteral("convert"), input, QStringLiteral("-o"), QStringLiteral("-"), QStringLiteral("-t"),
                  QStringLiteral("html")});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(run.out.isEmpty());
    EXPECT_TRUE(run.err.contains(QLatin1String("pictures")));

    // Wrong widths, and HTML options with another format, are usage errors; nothing is written.
    const QString none = dir.filePath(QStringLiteral("none.html"));
    for (const char* width : {"0", "-5", "wide", "100001", "12.5"}) {
        run = runQly({QStringLiteral("convert"), Chapter, QStringLiteral("-o"), none, QStringLiteral("--center-width"),
                      QLatin1String(width)});
        EXPECT_EQ(run.exitCode, 2) << width;
        EXPECT_TRUE(run.err.contains(QLatin1String("--center-width"))) << width;
    }
    run = runQly({QStringLiteral("convert"), Chapter, QStringLiteral("-o"), dir.filePath(QStringLiteral("x.rtf")),
                  QStringLiteral("--xhtml")});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(run.err.contains(QLatin1String("--xhtml applies only to html")));
    EXPECT_FALSE(QFileInfo::exists(none));
    EXPECT_FALSE(QFileInfo::exists(dir.filePath(QStringLiteral("x.rtf"))));
}

TEST(HTMLConvertCommand, AFolderOfTheUsersIsLeftAlone)
{
    QTemporaryDir dir;
    const QString out = dir.filePath(QStringLiteral("Book.html"));
    QDir().mkpath(out);
    writeFileBytes(out + QStringLiteral("/draft.txt"), "my only copy");
    for (const QString& input : {Manuscript, Chapter}) {
        const QlyRun run = runQly({QStringLiteral("convert"), input, QStringLiteral("-o"), out});
        EXPECT_EQ(run.exitCode, 1) << input.toStdString();
        EXPECT_TRUE(run.err.contains(QLatin1String("draft.txt"))) << run.err.toStdString();
        EXPECT_TRUE(run.err.contains(QLatin1String("nothing was removed")));
    }
    EXPECT_EQ(entries(out), QStringList{QStringLiteral("draft.txt")});
    EXPECT_EQ(readFileBytes(out + QStringLiteral("/draft.txt")), QByteArray("my only copy"));
    EXPECT_EQ(entries(dir.path()), QStringList{QStringLiteral("Book.html")});
}
