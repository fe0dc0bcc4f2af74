// qly convert, run as the built program.
#include "RTFTestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

using namespace qly;
using namespace qly::rtftest;

namespace {

const QString Program = QStringLiteral(QLY_BINARY_DIR "/tools/qly/qly");
const QString Fixtures = QStringLiteral(QLY_SOURCE_DIR "/tests/fixtures/rtf/");

struct Outcome {
    int exitCode = -1;
    QString errors;
};

Outcome runQly(const QStringList& arguments)
{
    QProcess process;
    process.start(Program, arguments);
    if (!process.waitForFinished(30000))
        return {};
    return Outcome{process.exitCode(), QString::fromUtf8(process.readAllStandardError())};
}

QByteArray contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void put(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

} // namespace

TEST(RTFConvertCommand, ConvertsBetweenRTFAndPlainText)
{
    ASSERT_TRUE(QFileInfo(Program).isExecutable()) << "build the qly target first";
    QTemporaryDir dir;
    const QString txt = dir.filePath(QStringLiteral("out.txt"));
    ASSERT_EQ(runQly({QStringLiteral("convert"), Fixtures + QStringLiteral("nonlatin.rtf"), QStringLiteral("-o"), txt}).exitCode, 0);
    QByteArray expected = contents(Fixtures + QStringLiteral("nonlatin.txt"));
    if (expected.startsWith("\xEF\xBB\xBF"))
        expected.remove(0, 3);
    EXPECT_EQ(contents(txt), expected);

    // Plain text to RTF, the output format named explicitly.
    const QString source = dir.filePath(QStringLiteral("in.txt")), rtf = dir.filePath(QStringLiteral("out.data"));
    put(source, "first {line}\n\xC3\xA9t\xC3\xA9\tsecond\n");
    ASSERT_EQ(runQly({QStringLiteral("convert"), source, QStringLiteral("-o"), rtf, QStringLiteral("--to"), QStringLiteral("rtf")}).exitCode, 0);
    const QByteArray written = contents(rtf);
    EXPECT_TRUE(written.startsWith("{\\rtf1"));
    EXPECT_EQ(read(written).string(), QStringLiteral("first {line}\n\u00e9t\u00e9\tsecond\n"));
}

TEST(RTFConvertCommand, UnreadableInputWritesNothing)
{
    ASSERT_TRUE(QFileInfo(Program).isExecutable()) << "build the qly target first";
    QTemporaryDir dir;
    const QString notRTF = dir.filePath(QStringLiteral("plain.rtf")), out = dir.filePath(QStringLiteral("out.txt"));
    put(notRTF, "just words");
    Outcome run = runQly({QStringLiteral("convert"), notRTF, QStringLiteral("-o"), out});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(run.errors.contains(QStringLiteral("not RTF"))) << run.errors.toStdString();
    EXPECT_FALSE(QFileInfo::exists(out));

    // An existing output stays as it was.
    put(out, "keep me");
    run = runQly({QStringLiteral("convert"), dir.filePath(QStringLiteral("missing.rtf")), QStringLiteral("-o"), out});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(run.errors.contains(QStringLiteral("missing.rtf"))) << run.errors.toStdString();
    EXPECT_EQ(contents(out), QByteArray("keep me"));

    EXPECT_EQ(runQly({QStringLiteral("convert"), notRTF, QStringLiteral("-o"), dir.filePath(QStringLiteral("x.doc"))}).exitCode, 2);
    EXPECT_EQ(runQly({QStringLiteral("convert"), notRTF}).exitCode, 2);
    EXPECT_EQ(runQly({QStringLiteral("convert"), notRTF, QStringLiteral("-o"), out, QStringLiteral("--to"), QStringLiteral("pdf")}).exitCode, 2);
    EXPECT_EQ(contents(out), QByteArray("keep me"));
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files).size(), 2);   // no temporary files left behind
}
