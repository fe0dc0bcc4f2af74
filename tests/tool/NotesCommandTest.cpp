#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include "QlyRunner.h"

using namespace qly::tooltest;

TEST(NotesCommand, PrintsOneLinePerNoteInTextOrder)
{
    ASSERT_TRUE(QFileInfo(Qly).isExecutable()) << "build the qly target first";
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("tagged.txt"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    // Without its tags the text is "abcde\nfg\nh \u00e9t\u00e9\nend": the footnote "cd" at 2, the
    // annotation "g\nh" at 7 and the preserve run at 11 (three UTF-16 units); keep-with-next is no note.
    file.write(QStringLiteral("ab{\\Qlry_fn=cd\\end_Qlry_fn}e\nf"
                              "{\\QLRY_ANNOT \\COLOR={\\R=1\\G=0\\B=0} \\TEXT=g\nh\\end_qlry_annot} "
                              "{\\Qlry_ps=\u00e9t\u00e9\\end_Qlry_ps}\n<$QlyKeepWithNext>end")
                   .toUtf8());
    file.close();

    const QlyRun run = runQly({QStringLiteral("notes"), path});
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(run.out,
              QStringLiteral("footnote\t2\t2\tcd\n"
                             "annotation\t7\t3\tg\\nh\n"
                             "preserve\t11\t3\t\u00e9t\u00e9\n"));
    EXPECT_TRUE(run.err.isEmpty());
}

TEST(NotesCommand, ReadsTheSampleWithEveryKindOfTag)
{
    const QlyRun run = runQly({QStringLiteral("notes"), QStringLiteral(QLY_SOURCE_DIR "/samples/notes.txt")});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    const QStringList lines = run.out.split(u'\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 4) << run.out.toStdString();
    QStringList kinds;
    for (const QString& line : lines) {
        const QStringList fields = line.split(u'\t');
        ASSERT_EQ(fields.size(), 4) << line.toStdString();
        kinds << fields[0];
        EXPECT_EQ(fields[2].toInt(), QString(fields[3]).replace(QStringLiteral("\\n"), QStringLiteral("\n")).size());
        EXPECT_FALSE(fields[3].contains(QStringLiteral("Qlry"), Qt::CaseInsensitive));
    }
    EXPECT_EQ(kinds, (QStringList{"annotation", "footnote", "preserve", "annotation"}));
    EXPECT_TRUE(lines[0].startsWith(QStringLiteral("annotation\t21\t"))); // after "The Lighthouse Keeper"
}

TEST(NotesCommand, MissingFileIsAOneLineError)
{
    const QlyRun run = runQly({QStringLiteral("notes"), QStringLiteral("/nonexistent/notes.txt")});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(run.out.isEmpty());
    EXPECT_TRUE(run.err.startsWith(QStringLiteral("qly: ")));
    EXPECT_EQ(run.err.count(u'\n'), 1);
    EXPECT_EQ(runQly({QStringLiteral("notes")}).exitCode, 2);
}
