#include <qlyappkit/platform/values/TextAttachment.h>

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QMutex>

#include <optional>

namespace qly {

// The contents of a linked file and the decoded picture are read on first use; the mutex guards
// that lazy state, since copies of one attachment may be read from several threads.
struct TextAttachment::Data {
    QString fileName;
    QString linkedPath;
    mutable QMutex mutex;
    mutable QByteArray contents;
    mutable bool contentsLoaded = false;
    mutable QImage image;
    mutable bool imageDecoded = false;
    std::optional<QSizeF> bounds;

    QByteArray loadedContents() const // mutex held
    {
        if (!contentsLoaded) {
            QFile file(linkedPath);
            if (file.open(QIODevice::ReadOnly))
                contents = file.readAll();
            contentsLoaded = true;
        }
        return contents;
    }
    QImage decodedImage() const // mutex held
    {
        if (!imageDecoded) {
            image = QImage::fromData(loadedContents());
            imageDecoded = true;
        }
        return image;
    }
};

TextAttachment::TextAttachment(const QString& fileName, const QByteArray& contents) : d(std::make_shared<Data>())
{
    d->fileName = fileName;
    d->contents = contents;
    d->contentsLoaded = true;
}

TextAttachment TextAttachment::fromImage(const QImage& image, const QString& fileName)
{
    // Saved in the format the file name asks for (PNG when its suffix names no known format).
    const QByteArray suffix = QFileInfo(fileName).suffix().toLower().toLatin1();
    const bool jpeg = suffix == "jpg" || suffix == "jpeg";
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, jpeg ? "JPEG" : "PNG");
    TextAttachment attachment(fileName, bytes);
    attachment.d->image = image;
    attachment.d->imageDecoded = true;
    return attachment;
}

TextAttachment TextAttachment::linkedToFile(const QString& path)
{
    TextAttachment attachment;
    attachment.d = std::make_shared<Data>();
    attachment.d->fileName = QFileInfo(path).fileName();
    attachment.d->linkedPath = path;
    return attachment;
}

QString TextAttachment::fileName() const { return d ? d->fileName : QString(); }

QByteArray TextAttachment::contents() const
{
    if (!d)
        return {};
    QMutexLocker lock(&d->mutex);
    return d->loadedContents();
}

QString TextAttachment::linkedFilePath() const { return d ? d->linkedPath : QString(); }

bool TextAttachment::isLinkedFile() const { return d && !d->linkedPath.isEmpty(); }

QImage TextAttachment::image() const
{
    if (!d)
        return {};
    QMutexLocker lock(&d->mutex);
    return d->decodedImage();
}

QSizeF TextAttachment::bounds() const
{
    if (!d)
        return {};
    QMutexLocker lock(&d->mutex);
    if (d->bounds)
        return *d->bounds;
    const QImage img = d->decodedImage();
    return img.isNull() ? QSizeF() : QSizeF(img.width(), img.height());
}

void TextAttachment::setBounds(const QSizeF& size)
{
    if (!d)
        d = std::make_shared<Data>();
    QMutexLocker lock(&d->mutex);
    d->bounds = size;
}

bool TextAttachment::hasExplicitBounds() const
{
    if (!d)
        return false;
    QMutexLocker lock(&d->mutex);
    return d->bounds.has_value();
}

} // namespace qly
