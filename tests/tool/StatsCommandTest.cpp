#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include "QlyRunner.h"

using namespace qly::tooltest;

namespace {

QlyRun runStats(const QStringList& files) { return runQly(QStringList{QStringLiteral("stats")} + files); }

} // namespace

TEST(StatsCommand, CountsTextAndRTFFiles)
{
    ASSERT_TRUE(QFileInfo(Qly).isExecutable()) << "build the qly target first";
    QTemporaryDir dir;
    // "--" and "..." are no words; "well-known" is two, "3.5" one; é is one UTF-16 unit.
    const QString text =
        writeFile(dir, QStringLiteral("plain.txt"), QStringLiteral("Caf\u00e9 -- well-known 3.5 ...\n").toUtf8());
    // The RTF text is "Bold words\ncaf\u00e9 end" (19 units, 4 words); the font table is no text.
    const QString rtf = writeFile(dir, QStringLiteral("styled.RTF"),
                                  "{\\rtf1\\ansi\\ansicpg1252{\\fonttbl\\f0\\fswiss Helvetica;}\\f0\\fs24 "
                                  "{\\b Bold} words\\par caf\\'e9 end}");
    const QlyRun run = runStats({text, rtf});
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(run.out, QStringLiteral("4\t27\t%1\n4\t19\t%2\n8\t46\ttotal\n").arg(text, rtf));
    EXPECT_TRUE(run.err.isEmpty()) << run.err.toStdString();
}

TEST(StatsCommand, ReportsUnreadableAndDamagedFiles)
{
    QTemporaryDir dir;
    const QString notRtf = writeFile(dir, QStringLiteral("fake.rtf"), "just text");
    const QString truncated = writeFile(dir, QStringLiteral("cut.rtf"), "{\\rtf1\\ansi one two {\\b three");
    const QString missing = dir.filePath(QStringLiteral("missing.txt"));
    const QlyRun run = runStats({notRtf, truncated, missing});
    EXPECT_EQ(run.exitCode, 1);
    // The truncated file is counted as far as it goes, with a warning.
    EXPECT_EQ(run.out, QStringLiteral("3\t13\t%1\n3\t13\ttotal\n").arg(truncated));
    EXPECT_TRUE(run.err.contains(notRtf)) << run.err.toStdString();
    EXPECT_TRUE(run.err.contains(truncated)) << run.err.toStdString();
    EXPECT_TRUE(run.err.contains(missing)) << run.err.toStdString();
    EXPECT_EQ(runStats({}).exitCode, 2);
}
