// qly comments, run as the real program on the bundled sample and on bad input.
#include <gtest/gtest.h>

#include <QFileInfo>

#include "QlyRunner.h"

using namespace qly::tooltest;

TEST(CommentsCommand, ListsTheSampleCommentsInFileOrder)
{
    ASSERT_TRUE(QFileInfo(Qly).isExecutable()) << "build the qly target first";
    const QlyRun run =
        runQly({QStringLiteral("comments"), QStringLiteral(QLY_SOURCE_DIR "/samples/chapter-one.comments.xml")});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    const QStringList lines = run.out.split(u'\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 3);
    // The footnote comes first in the file (its anchor is first in the text), then the two comments.
    EXPECT_EQ(lines[0],
              QStringLiteral("2B3C4D5E-6F7A-4B9C-8D1E-F2A3B4C5D6E7\tyes\t1\tno\t0.85 0.85 0.85\t"
                             "The lane is named for the hill behind it."));
    // Rich text read back from its RTF, with the line break written as \n.
    EXPECT_EQ(lines[1],
              QStringLiteral("0C1D2E3F-4A5B-4C6D-8E7F-8091A2B3C4D5\tno\t-1\tno\t0.992 0.929 0.525\t"
                             "Is eleven years too long? Check the timeline.\\nSee chapter three."));
    EXPECT_EQ(lines[2],
              QStringLiteral("1A2B3C4D-5E6F-4A8B-9C0D-E1F2A3B4C5D6\tno\t-1\tyes\t0.6 0.8 1.0\t"
                             "Her sister never appears again \u2014 cut or keep?"));
}

TEST(CommentsCommand, MissingOrForeignFilesPrintNothingAndFail)
{
    QTemporaryDir dir;
    const QString notComments = writeFile(dir, QStringLiteral("other.xml"), "<Notes><Comment ID=\"A\"/></Notes>");
    const QString notXML = writeFile(dir, QStringLiteral("broken.xml"), "<Comments><Comment ID=");
    for (const QString& path : {notComments, notXML, dir.filePath(QStringLiteral("absent.xml"))}) {
        SCOPED_TRACE(path.toStdString());
        const QlyRun run = runQly({QStringLiteral("comments"), path});
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_TRUE(run.out.isEmpty());
        EXPECT_EQ(run.err.trimmed().count(u'\n'), 0) << run.err.toStdString();
        EXPECT_TRUE(run.err.contains(path)) << run.err.toStdString();
    }
}
