// Package RTF opened by a real word processor: every embedded picture (PNG, JPEG and a PDF through its
// rendering) arrives, at the size the text gives it.
#include "PackageTestSupport.h"

#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <qlyappkit/interchange/package/PackageRTFWriter.h>

using namespace qly;
using namespace qly::packagetest;

namespace {

constexpr double EMUsPerPoint = 12700;

bool run(const QString& program, const QStringList& arguments, const QString& folder)
{
    QProcess process;
    process.setWorkingDirectory(folder);
    process.start(program, arguments);
    return process.waitForFinished(180000) && process.exitCode() == 0;
}

} // namespace

TEST(PackageRTFWriter, PicturesOpenInAWordProcessorAtTheirSize)
{
    const QString soffice = QStandardPaths::findExecutable(QStringLiteral("soffice"));
    if (soffice.isEmpty())
        GTEST_SKIP() << "soffice is not installed: the word-processor check is skipped";
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());

    TextAttachment png(QStringLiteral("wide.png"), encodedImage(patternImage(40, 20), "PNG"));
    png.setBounds(QSizeF(144, 72));
    const TextAttachment jpeg(QStringLiteral("photo.jpg"), encodedImage(patternImage(90, 60), "JPEG"));
    const TextAttachment pdf(QStringLiteral("chart.pdf"), pdfBytes(QSizeF(200, 100)));
    const QSizeF expected[] = {QSizeF(144, 72), QSizeF(90, 60), QSizeF(200, 100)};
    AttributedString text(QStringLiteral("Pictures: "));
    for (const TextAttachment& attachment : {png, jpeg, pdf}) {
        text.append(QString(QChar(AttachmentCharacter)), withAttachment({}, attachment));
        text.append(QStringLiteral(" then "), {});
    }
    QFile file(dir.filePath(QStringLiteral("stored.rtf")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(quilleryPackageRTFFromRange(text, Range{0, text.length()}, {}, true));
    file.close();

    ASSERT_TRUE(run(soffice,
                    {QStringLiteral("-env:UserInstallation=file://") + dir.filePath(QStringLiteral("profile")),
                     QStringLiteral("--headless"), QStringLiteral("--convert-to"), QStringLiteral("docx"),
                     QStringLiteral("stored.rtf")},
                    dir.path()));
    ASSERT_TRUE(run(QStringLiteral("unzip"),
                    {QStringLiteral("-o"), QStringLiteral("-q"), QStringLiteral("stored.docx"), QStringLiteral("-d"),
                     QStringLiteral("x")},
                    dir.path()));
    QFile documentFile(dir.filePath(QStringLiteral("x/word/document.xml")));
    ASSERT_TRUE(documentFile.open(QIODevice::ReadOnly));
    const QString document = QString::fromUtf8(documentFile.readAll());

    // Each picture is an inline drawing with its extent in EMUs.
    const QRegularExpression extent(QStringLiteral("<wp:inline[^>]*>\\s*<wp:extent cx=\"(\\d+)\" cy=\"(\\d+)\""));
    QList<QSizeF> sizes;
    for (auto it = extent.globalMatch(document); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        sizes.append(QSizeF(match.captured(1).toDouble() / EMUsPerPoint, match.captured(2).toDouble() / EMUsPerPoint));
    }
    ASSERT_EQ(sizes.size(), 3) << document.left(4000).toStdString();
    for (int i = 0; i < 3; ++i) {
        EXPECT_NEAR(sizes[i].width(), expected[i].width(), 0.5) << "picture " << i;
        EXPECT_NEAR(sizes[i].height(), expected[i].height(), 0.5) << "picture " << i;
    }
    // The pictures themselves arrived, not empty frames.
    EXPECT_EQ(QDir(dir.filePath(QStringLiteral("x/word/media"))).entryList(QDir::Files).size(), 3);
}
