// qly convert, run as the built program.
#include "platform/rtf/RTFTestSupport.h"
#include "support/TestFiles.h"
#include "tool/QlyRunner.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

using namespace qly;
using namespace qly::rtftest;
using namespace qly::testfiles;
using namespace qly::tooltest;

namespace {

const QString Fixtures = QStringLiteral(QLY_SOURCE_DIR "/tests/fixtures/rtf/");

} // namespace

TEST(RTFConvertCommand, ConvertsBetweenRTFAndPlainText)
{
    ASSERT_TRUE(QFileInfo(Qly).isExecutable()) << "build the qly target first";
    QTemporaryDir dir;
    const QString txt = dir.filePath(QStringLiteral("out.txt"));
    ASSERT_EQ(runQly({QStringLiteral("convert"), Fixtures + QStringLiteral("nonlatin.rtf"), QStringLiteral("-o"), txt})
                  .exitCode,
              0);
    QByteArray expected = readFileBytes(Fixtures + QStringLiteral("nonlatin.txt"));
    if (expected.startsWith("\xEF\xBB\xBF"))
        expected.remove(0, 3);
    EXPECT_EQ(readFileBytes(txt), expected);

    // Plain text to RTF, the output format named explicitly.
    const QString source = dir.filePath(QStringLiteral("in.txt")), rtf = dir.filePath(QStringLiteral("out.data"));
    writeFileBytes(source, "first {line}\n\xC3\xA9t\xC3\xA9\tsecond\n");
    ASSERT_EQ(runQly({QStringLiteral("convert"), source, QStringLiteral("-o"), rtf, QStringLiteral("--to"),
                      QStringLiteral("rtf")})
                  .exitCode,
              0);
    const QByteArray written = readFileBytes(rtf);
    EXPECT_TRUE(written.startsWith("{\\rtf1"));
    EXPECT_EQ(read(written).string(), QStringLiteral("first {line}\n\u00e9t\u00e9\tsecond\n"));
}

TEST(RTFConvertCommand, UnreadableInputWritesNothing)
{
    ASSERT_TRUE(QFileInfo(Qly).isExecutable()) << "build the qly target first";
    QTemporaryDir dir;
    const QString notRTF = dir.filePath(QStringLiteral("plain.rtf")), out = dir.filePath(QStringLiteral("out.txt"));
    writeFileBytes(notRTF, "just words");
    QlyRun run = runQly({QStringLiteral("convert"), notRTF, QStringLiteral("-o"), out});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(run.err.contains(QStringLiteral("not RTF"))) << run.err.toStdString();
    EXPECT_FALSE(QFileInfo::exists(out));

    // An existing output stays as it was.
    writeFileBytes(out, "keep me");
    run = runQly({QStringLiteral("convert"), dir.filePath(QStringLiteral("missing.rtf")), QStringLiteral("-o"), out});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(run.err.contains(QStringLiteral("missing.rtf"))) << run.err.toStdString();
    EXPECT_EQ(readFileBytes(out), QByteArray("keep me"));

    EXPECT_EQ(runQly({QStringLiteral("convert"), notRTF, QStringLiteral("-o"), dir.filePath(QStringLiteral("x.doc"))})
                  .exitCode,
              2);
    EXPECT_EQ(runQly({QStringLiteral("convert"), notRTF}).exitCode, 2);
    EXPECT_EQ(runQly({QStringLiteral("convert"), notRTF, QStringLiteral("-o"), out, QStringLiteral("--to"),
                      QStringLiteral("pdf")})
                  .exitCode,
              2);
    EXPECT_EQ(readFileBytes(out), QByteArray("keep me"));
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files).size(), 2); // no temporary files left behind
}
