#include <qlyappkit/platform/values/TextAttachment.h>

#include <QBuffer>
#include <QImageReader>

using qly::TextAttachment;

TEST(TextAttachment, ImagesAndBounds)
{
    QImage picture(6, 4, QImage::Format_RGB32);
    picture.fill(Qt::blue);
    const TextAttachment png = TextAttachment::fromImage(picture);
    EXPECT_EQ(png.fileName(), QStringLiteral("image.png"));
    EXPECT_TRUE(png.contents().startsWith("\x89PNG"));
    EXPECT_EQ(png.bounds(), QSizeF(6, 4)); // one pixel per point

    const TextAttachment jpeg = TextAttachment::fromImage(picture, QStringLiteral("photo.JPG"));
    QBuffer buffer;
    buffer.setData(jpeg.contents());
    EXPECT_EQ(QImageReader(&buffer).format(), QByteArray("jpeg"));

    // Bytes decode on demand.
    const TextAttachment fromBytes(QStringLiteral("copy.png"), png.contents());
    EXPECT_EQ(fromBytes.image().size(), QSize(6, 4));
    EXPECT_FALSE(fromBytes.isLinkedFile());
    EXPECT_TRUE(fromBytes.linkedFilePath().isEmpty());

    // Set bounds belong to the object: every copy sees them.
    TextAttachment copy = fromBytes;
    copy.setBounds(QSizeF(12, 8));
    EXPECT_EQ(fromBytes.bounds(), QSizeF(12, 8));
    EXPECT_TRUE(fromBytes.hasExplicitBounds());
    EXPECT_EQ(copy, fromBytes);
    EXPECT_NE(TextAttachment(QStringLiteral("copy.png"), png.contents()), fromBytes);

    // Contents that are not a picture, a missing linked file, and no attachment at all.
    const TextAttachment text(QStringLiteral("notes.txt"), QByteArray("just text"));
    EXPECT_TRUE(text.image().isNull());
    EXPECT_TRUE(text.bounds().isEmpty());
    const TextAttachment missing = TextAttachment::linkedToFile(QStringLiteral("/nonexistent/dir/gone.png"));
    EXPECT_TRUE(missing.isLinkedFile());
    EXPECT_EQ(missing.fileName(), QStringLiteral("gone.png"));
    EXPECT_TRUE(missing.contents().isEmpty());
    EXPECT_TRUE(missing.image().isNull());
    const TextAttachment none;
    EXPECT_TRUE(none.isNull());
    EXPECT_TRUE(none.fileName().isEmpty());
    EXPECT_TRUE(none.image().isNull());
    EXPECT_FALSE(none.hasExplicitBounds());
    EXPECT_EQ(none, TextAttachment());
}
