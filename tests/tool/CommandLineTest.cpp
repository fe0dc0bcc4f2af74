// What every qly command shares: one option parser (the same message and exit code for unknown
// options and missing values), --help per command, and "-" for standard input and output.
#include <gtest/gtest.h>

#include <QFileInfo>
#include <QTemporaryDir>

#include "QlyRunner.h"

using namespace qly::tooltest;

namespace {

const QStringList CommandNames{QStringLiteral("stats"), QStringLiteral("comments"), QStringLiteral("convert"),
                               QStringLiteral("notes"), QStringLiteral("screenplay")};

} // namespace

TEST(QlyCommandLine, EveryCommandParsesAlike)
{
    ASSERT_TRUE(QFileInfo(Qly).isExecutable()) << "build the qly target first";
    for (const QString& command : CommandNames) {
        const QlyRun help = runQly({command, QStringLiteral("--help")});
        EXPECT_EQ(help.exitCode, 0) << command.toStdString();
        EXPECT_TRUE(help.out.startsWith(QStringLiteral("usage: qly ") + command)) << help.out.toStdString();
        EXPECT_TRUE(help.out.contains(QStringLiteral("--help"))) << help.out.toStdString();
        EXPECT_EQ(runQly({QStringLiteral("help"), command}).out, help.out);

        const QlyRun unknown = runQly({command, QStringLiteral("--bogus"), QStringLiteral("x")});
        EXPECT_EQ(unknown.exitCode, 2) << command.toStdString();
        EXPECT_TRUE(unknown.err.startsWith(QStringLiteral("qly %1: Unknown option 'bogus'.").arg(command)))
            << unknown.err.toStdString();
        EXPECT_TRUE(unknown.err.contains(QStringLiteral("(see qly %1 --help)").arg(command)));
        EXPECT_TRUE(unknown.out.isEmpty());

        const QlyRun none = runQly({command});
        EXPECT_EQ(none.exitCode, 2) << command.toStdString();
        EXPECT_TRUE(none.err.contains(QStringLiteral("missing arguments"))) << none.err.toStdString();
    }
    const QlyRun missingValue = runQly({QStringLiteral("convert"), QStringLiteral("in.txt"), QStringLiteral("-o")});
    EXPECT_EQ(missingValue.exitCode, 2);
    EXPECT_TRUE(missingValue.err.startsWith(QStringLiteral("qly convert: Missing value after '-o'.")))
        << missingValue.err.toStdString();
    // Options that only the word-processor export reads are refused elsewhere rather than ignored.
    const QlyRun misplaced = runQly({QStringLiteral("convert"), QStringLiteral("in.txt"), QStringLiteral("-o"),
                                     QStringLiteral("out.rtf"), QStringLiteral("--paper"), QStringLiteral("10x10")});
    EXPECT_EQ(misplaced.exitCode, 2);
    EXPECT_TRUE(misplaced.err.contains(QStringLiteral("--paper applies only to word-rtf")));
    EXPECT_EQ(runQly({QStringLiteral("frobnicate")}).exitCode, 2);
    EXPECT_EQ(runQly({}).exitCode, 2);
    EXPECT_EQ(runQly({QStringLiteral("--version")}).exitCode, 0);
}

TEST(QlyCommandLine, DashReadsStandardInputAndWritesStandardOutput)
{
    // Plain text to RTF and back through pipes, formats named by the short options.
    const QlyRun toRTF =
        runQly({QStringLiteral("convert"), QStringLiteral("-"), QStringLiteral("-f"), QStringLiteral("txt"),
                QStringLiteral("-t"), QStringLiteral("rtf"), QStringLiteral("-o"), QStringLiteral("-")},
               "caf\xC3\xA9 and tea\n");
    ASSERT_EQ(toRTF.exitCode, 0) << toRTF.err.toStdString();
    EXPECT_TRUE(toRTF.out.startsWith(QStringLiteral("{\\rtf1")));
    const QlyRun back =
        runQly({QStringLiteral("convert"), QStringLiteral("-"), QStringLiteral("--from=rtf"), QStringLiteral("--to"),
                QStringLiteral("txt"), QStringLiteral("-o"), QStringLiteral("-")},
               toRTF.out.toUtf8());
    ASSERT_EQ(back.exitCode, 0) << back.err.toStdString();
    EXPECT_EQ(back.out, QStringLiteral("caf\u00e9 and tea\n"));

    // Without a format for a stream the command says which option is missing.
    const QlyRun noFormat = runQly({QStringLiteral("convert"), QStringLiteral("-"), QStringLiteral("-o"),
                                    QStringLiteral("-"), QStringLiteral("-t"), QStringLiteral("rtf")});
    EXPECT_EQ(noFormat.exitCode, 2);
    EXPECT_TRUE(noFormat.err.contains(QStringLiteral("standard input needs --from"))) << noFormat.err.toStdString();

    const QlyRun stats = runQly({QStringLiteral("stats"), QStringLiteral("-")}, "three little words");
    EXPECT_EQ(stats.exitCode, 0);
    EXPECT_EQ(stats.out, QStringLiteral("3\t18\t-\n"));
    const QlyRun notes = runQly({QStringLiteral("notes"), QStringLiteral("-")}, "a{\\Qlry_fn=note\\end_Qlry_fn}");
    EXPECT_EQ(notes.out, QStringLiteral("footnote\t1\t4\tnote\n"));

    // A stored text exported for word processors straight to standard output.
    const QlyRun word =
        runQly({QStringLiteral("convert"), QStringLiteral("-"), QStringLiteral("-f"), QStringLiteral("rtf"),
                QStringLiteral("-t"), QStringLiteral("word-rtf"), QStringLiteral("-o"), QStringLiteral("-")},
               "{\\rtf1\\ansi Text\\{\\\\Qlry_fn=a note\\\\end_Qlry_fn\\}\\par}");
    ASSERT_EQ(word.exitCode, 0) << word.err.toStdString();
    EXPECT_TRUE(word.out.contains(QStringLiteral("{\\*\\footnote"))) << word.out.toStdString();
}

TEST(QlyCommandLine, RefusedPicturesAreNamedAndTheRestIsExported)
{
    QTemporaryDir dir;
    // A stored text whose picture link points outside its folder.
    const QString input = writeFile(dir, QStringLiteral("story.rtf"),
                                    "{\\rtf1\\ansi Opening words "
                                    "{\\field{\\*\\fldinst{HYPERLINK \"qlypicture:/etc/passwd\"}}{\\fldrslt pic}}"
                                    " closing words\\par}");
    const QString output = dir.filePath(QStringLiteral("story-out.rtf"));
    const QlyRun run = runQly({QStringLiteral("convert"), input, QStringLiteral("-o"), output, QStringLiteral("-t"),
                               QStringLiteral("word-rtf")});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_TRUE(run.err.contains(QStringLiteral("qlypicture:/etc/passwd"))) << run.err.toStdString();
    const QByteArray rtf = qly::testfiles::readFileBytes(output);
    EXPECT_TRUE(rtf.contains("Opening words"));
    EXPECT_TRUE(rtf.contains("closing words"));
    EXPECT_FALSE(rtf.contains("\\pict"));
    EXPECT_FALSE(rtf.contains("root:"));
}
