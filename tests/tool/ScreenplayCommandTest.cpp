// qly screenplay and qly convert --from screenplay, run as the built program; the formatted RTF is
// opened in a real word processor to see the element indents arrive.
#include <gtest/gtest.h>

#include "platform/rtf/RTFTestSupport.h"
#include "support/TestFiles.h"
#include "tool/QlyRunner.h"

#include <pugixml.hpp>

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

using namespace qly;
using namespace qly::rtftest;
using namespace qly::testfiles;
using namespace qly::tooltest;

namespace {

const QString Sample = QStringLiteral(QLY_SOURCE_DIR "/samples/screenplay.txt");

} // namespace

TEST(ScreenplayCommand, PrintsOneElementPerLine)
{
    ASSERT_TRUE(QFileInfo(Qly).isExecutable()) << "build the qly target first";
    const QlyRun run = runQly({QStringLiteral("screenplay"), Sample});
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(run.out.toUtf8(),
              readFileBytes(QStringLiteral(QLY_SOURCE_DIR "/tests/fixtures/screenplay/screenplay.expected")));

    const QlyRun piped =
        runQly({QStringLiteral("screenplay"), QStringLiteral("-")}, "EXT. SEA - DAY\n\n      ANNA\n   Hi.\n");
    EXPECT_EQ(piped.out, QStringLiteral("SceneHeading\tEXT. SEA - DAY\nCharacter\tANNA\nDialogue\tHi.\n"));
    EXPECT_EQ(runQly({QStringLiteral("screenplay"), QStringLiteral("/no/such/file")}).exitCode, 1);
}

TEST(ScreenplayCommand, SplitsIntoNumberedFilesInsideTheFolder)
{
    QTemporaryDir dir;
    const QString folder = dir.filePath(QStringLiteral("scenes")) + u'/';
    const QlyRun run =
        runQly({QStringLiteral("convert"), Sample, QStringLiteral("--from"), QStringLiteral("screenplay"),
                QStringLiteral("--split-by"), QStringLiteral("SceneHeading"), QStringLiteral("-o"), folder});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    const QStringList files = QDir(folder).entryList(QDir::Files, QDir::Name);
    ASSERT_EQ(files.size(), 7) << files.join(u' ').toStdString();
    EXPECT_EQ(files.first(), QStringLiteral("screenplay-001.rtf"));
    EXPECT_EQ(files.last(), QStringLiteral("screenplay-007.rtf"));
    // "FADE IN:" at the margin opens a scene of its own.
    EXPECT_EQ(read(readFileBytes(folder + files[0])).string(), QStringLiteral("FADE IN:"));
    const QString second = read(readFileBytes(folder + files[1])).string();
    EXPECT_TRUE(second.startsWith(QStringLiteral("EXT. NORTH POINT LIGHTHOUSE - NIGHT\nRain hammers")))
        << second.toStdString();

    // A name in the folder that is a link leading out is refused, and nothing is written through it.
    const QString outside = dir.filePath(QStringLiteral("outside.rtf"));
    const QString trap = dir.filePath(QStringLiteral("trap")) + u'/';
    ASSERT_TRUE(QDir().mkpath(trap));
    ASSERT_TRUE(QFile::link(outside, trap + QStringLiteral("screenplay-001.rtf")));
    const QlyRun refused =
        runQly({QStringLiteral("convert"), Sample, QStringLiteral("-f"), QStringLiteral("screenplay"),
                QStringLiteral("--split-by"), QStringLiteral("SceneHeading"), QStringLiteral("-o"), trap});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_TRUE(refused.err.contains(QStringLiteral("refusing"))) << refused.err.toStdString();
    EXPECT_FALSE(QFileInfo::exists(outside));

    // A split needs a folder, and a folder needs a split.
    EXPECT_EQ(runQly({QStringLiteral("convert"), Sample, QStringLiteral("-f"), QStringLiteral("screenplay"),
                      QStringLiteral("--split-by"), QStringLiteral("Shot"), QStringLiteral("-o"),
                      dir.filePath(QStringLiteral("one.rtf"))})
                  .exitCode,
              2);
    EXPECT_EQ(runQly({QStringLiteral("convert"), Sample, QStringLiteral("-f"), QStringLiteral("screenplay"),
                      QStringLiteral("-o"), folder})
                  .exitCode,
              2);
}

// The formatted screenplay converted by a real word processor: each element's paragraph arrives with
// its left and right indents (twips from the margins of a Letter page with one-inch margins).
TEST(ScreenplayCommand, FormattedScreenplayOpensWithItsIndents)
{
    const QString soffice = QStandardPaths::findExecutable(QStringLiteral("soffice"));
    if (soffice.isEmpty())
        GTEST_SKIP() << "soffice is not installed: the word-processor check is skipped";
    QTemporaryDir dir;
    const QString rtf = dir.filePath(QStringLiteral("script.rtf"));
    ASSERT_EQ(runQly({QStringLiteral("convert"), Sample, QStringLiteral("--from"), QStringLiteral("screenplay"),
                      QStringLiteral("-o"), rtf})
                  .exitCode,
              0);
    QProcess process;
    process.setWorkingDirectory(dir.path());
    process.start(soffice,
                  {QStringLiteral("-env:UserInstallation=file://") + dir.filePath(QStringLiteral("profile")),
                   QStringLiteral("--headless"), QStringLiteral("--convert-to"), QStringLiteral("docx"),
                   QStringLiteral("script.rtf")});
    ASSERT_TRUE(process.waitForFinished(180000));
    QProcess unzip;
    unzip.setWorkingDirectory(dir.path());
    unzip.start(QStringLiteral("unzip"),
                {QStringLiteral("-o"), QStringLiteral("-q"), QStringLiteral("script.docx"),
                 QStringLiteral("word/document.xml"), QStringLiteral("-d"), QStringLiteral("x")});
    ASSERT_TRUE(unzip.waitForFinished(60000));
    pugi::xml_document document;
    ASSERT_TRUE(document.load_file(dir.filePath(QStringLiteral("x/word/document.xml")).toUtf8().constData()))
        << "the conversion produced no document";

    struct Paragraph {
        int left = 0, right = 0;
        QString alignment;
    };
    QMap<QString, Paragraph> byText;
    for (const pugi::xpath_node& node : document.select_nodes("//w:body/w:p")) {
        QString text;
        for (const pugi::xpath_node& t : node.node().select_nodes(".//w:t"))
            text += QString::fromUtf8(t.node().text().get());
        const pugi::xml_node properties = node.node().child("w:pPr");
        Paragraph p;
        p.left = properties.child("w:ind").attribute("w:left").as_int(
            properties.child("w:ind").attribute("w:start").as_int());
        p.right = properties.child("w:ind").attribute("w:right").as_int(
            properties.child("w:ind").attribute("w:end").as_int());
        p.alignment = QString::fromUtf8(properties.child("w:jc").attribute("w:val").value());
        if (!text.isEmpty() && !byText.contains(text))
            byText.insert(text, p);
    }
    const struct {
        const char* text;
        int left, right;
    } expected[] = {
        {"INT. LAMP ROOM - CONTINUOUS", 720, 0},
        {"A small boat fights the swell below the rocks.", 720, 0},
        {"EDIE (CONT'D)", 3600, 360},
        {"(to the lamp)", 2880, 2880},
        {"Better.", 2160, 2160},
        {"ANGLE ON THE STAIRWELL", 720, 0},
        {"CUT TO:", 6480, 547},
    };
    for (const auto& e : expected) {
        const QString text = QString::fromUtf8(e.text);
        ASSERT_TRUE(byText.contains(text)) << e.text;
        EXPECT_EQ(byText[text].left, e.left) << e.text;
        EXPECT_EQ(byText[text].right, e.right) << e.text;
    }
    EXPECT_TRUE(byText[QStringLiteral("CUT TO:")].alignment == QStringLiteral("right")
                || byText[QStringLiteral("CUT TO:")].alignment == QStringLiteral("end"));
    EXPECT_TRUE(byText[QStringLiteral("Better.")].alignment.isEmpty()
                || byText[QStringLiteral("Better.")].alignment == QStringLiteral("left")
                || byText[QStringLiteral("Better.")].alignment == QStringLiteral("start"));
}
