// qly convert with package RTF: a stored text's embedded pictures reach the word-processor export,
// --ignore-images reads them as "?", and converting to package RTF keeps pictures, notes and comments
// (in the side file beside the output).
#include "support/TestFiles.h"
#include <gtest/gtest.h>

#include <QBuffer>
#include <QFileInfo>
#include <QImage>
#include <QTemporaryDir>

#include "QlyRunner.h"

#include <qlyappkit/interchange/comments/CommentsSideFile.h>
#include <qlyappkit/interchange/export/StoredText.h>
#include <qlyappkit/interchange/package/PackageRTFReader.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/TextAttachment.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/comments/CommentedText.h>
#include <qlyappkit/text/comments/XQComment.h>

using namespace qly;
using namespace qly::tooltest;
using namespace qly::testfiles;

namespace {

QByteArray pngBytes()
{
    QImage image(8, 4, QImage::Format_RGB32);
    image.fill(qRgb(200, 30, 60));
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

// "Hello [picture] world" with a footnote and a comment on "Hello".
AttributedString storedText()
{
    AttributedString text(QStringLiteral("Hello "));
    text.append(
        QString(QChar(AttachmentCharacter)),
        {{AttachmentAttributeName, QVariant::fromValue(TextAttachment(QStringLiteral("dot.png"), pngBytes()))}});
    text.append(QStringLiteral(" world"), {});
    text.append(QStringLiteral("a note"), {{XQFootnoteAttributeName, true}});
    text.addAttribute(XQCommentAttributeName,
                      variantFromComment(XQComment::create(AttributedString(QStringLiteral("check this")))),
                      Range{0, 5});
    return text;
}

} // namespace

TEST(PackageRTFConvert, StoredPicturesNotesAndComments)
{
    ASSERT_TRUE(QFileInfo(Qly).isExecutable()) << "build the qly target first";
    QTemporaryDir dir;
    const QString stored = dir.filePath(QStringLiteral("stored.rtf"));
    ASSERT_TRUE(writeStoredText(storedText(), stored));
    ASSERT_TRUE(QFileInfo::exists(dir.filePath(QStringLiteral("stored.comments.xml"))));

    // The word-processor export gets the embedded picture, the footnote and the comment.
    const QString word = dir.filePath(QStringLiteral("word.rtf"));
    QlyRun run = runQly({QStringLiteral("convert"), stored, QStringLiteral("-o"), word, QStringLiteral("-t"),
                         QStringLiteral("word-rtf")});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    const QByteArray exported = readFileBytes(word);
    EXPECT_TRUE(exported.contains("\\pict")) << exported.left(2000).constData();
    EXPECT_TRUE(exported.contains("\\footnote"));
    EXPECT_TRUE(exported.contains("check this"));

    // Reading: pictures, or "?" for each with --ignore-images.
    run = runQly({QStringLiteral("convert"), stored, QStringLiteral("-f"), QStringLiteral("package-rtf"),
                  QStringLiteral("--ignore-images"), QStringLiteral("-o"), QStringLiteral("-"), QStringLiteral("-t"),
                  QStringLiteral("txt")});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(run.out, QStringLiteral("Hello ? worlda note"));

    // Package RTF to package RTF keeps everything, the comments beside the copy.
    const QString copy = dir.filePath(QStringLiteral("copy.rtf"));
    run = runQly({QStringLiteral("convert"), stored, QStringLiteral("-f"), QStringLiteral("package-rtf"),
                  QStringLiteral("-o"), copy, QStringLiteral("-t"), QStringLiteral("package-rtf")});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    Error error;
    const std::optional<AttributedString> back = storedTextFromDocumentData(
        readFileBytes(copy), DocumentFormat::RTF, dir.filePath(QStringLiteral("copy.comments.xml")), nullptr, &error);
    ASSERT_TRUE(back) << error.localizedDescription.toStdString();
    EXPECT_EQ(back->string(), storedText().string());
    EXPECT_EQ(back->attribute(AttachmentAttributeName, 6).value<TextAttachment>().contents(), pngBytes());
    EXPECT_EQ(back->attribute(XQFootnoteAttributeName, 14), QVariant(true));
    const XQCommentPtr comment = commentFromVariant(back->attribute(XQCommentAttributeName, 2));
    ASSERT_TRUE(comment);
    EXPECT_EQ(comment->text().string(), QStringLiteral("check this"));

    // Any readable input is written as package RTF.
    const QString plain = writeFile(dir, QStringLiteral("plain.txt"), "Just words.\n");
    const QString fromPlain = dir.filePath(QStringLiteral("from-plain.rtf"));
    run = runQly({QStringLiteral("convert"), plain, QStringLiteral("-o"), fromPlain, QStringLiteral("-t"),
                  QStringLiteral("package-rtf")});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_TRUE(readFileBytes(fromPlain).startsWith("{\\rtf1"));
    EXPECT_EQ(initWithQuilleryPackageRTF(readFileBytes(fromPlain), nullptr, true)->string(),
              QStringLiteral("Just words.\n"));
    EXPECT_FALSE(QFileInfo::exists(dir.filePath(QStringLiteral("from-plain.comments.xml"))));
}
