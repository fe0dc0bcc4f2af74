#include <qlyappkit/formats/html/ImageAttachments.h>

#include <QBuffer>
#include <QFileInfo>
#include <QImage>
#include <QImageReader>
#include <QImageWriter>
#include <QPainter>

#include <atomic>
#include <thread>
#include <vector>

#include <qlyappkit/interchange/rtf/RTFPictures.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>

namespace qly {

namespace {

constexpr int PDFResolution = 144; // dots per inch: sharp on screens that double pixels
constexpr int JPEGQuality = 90;
// Light compression (the fastest level that still compresses): pictures encoded for a page are written
// about twice as fast as at the default level, for files a few per cent larger.
constexpr int PNGQuality = 80;
const QByteArray PDFSignature = QByteArrayLiteral("%PDF");

bool isPDF(const TextAttachment& attachment, const QByteArray& bytes)
{
    const QString name = attachment.fileName().isEmpty() ? attachment.linkedFilePath() : attachment.fileName();
    return bytes.startsWith(PDFSignature)
        || QFileInfo(name).suffix().compare(QLatin1String("pdf"), Qt::CaseInsensitive) == 0;
}

// JPEG has no transparency: what was transparent shows on white, as on a page.
QImage onWhite(const QImage& image)
{
    if (!image.hasAlphaChannel())
        return image;
    QImage flat(image.size(), QImage::Format_RGB32);
    flat.fill(Qt::white);
    QPainter painter(&flat);
    painter.drawImage(0, 0, image);
    return flat;
}

QByteArray formatOf(const QByteArray& bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    return reader.canRead() ? reader.format() : QByteArray();
}

} // namespace

bool isImageAttachment(const TextAttachment& attachment)
{
    if (attachment.isNull())
        return false;
    const QByteArray bytes = attachment.contents();
    return !bytes.isEmpty() && (isPDF(attachment, bytes) || !formatOf(bytes).isEmpty());
}

TextAttachment firstImageInRange(const AttributedString& text, Range range, Range* effectiveRange, QString* fileName)
{
    if (effectiveRange)
        *effectiveRange = Range::notFound();
    const qsizetype start = std::clamp<qsizetype>(range.location, 0, text.length());
    const qsizetype end = std::clamp<qsizetype>(start + std::max<qsizetype>(range.length, 0), start, text.length());
    TextAttachment found;
    text.enumerateAttribute(AttachmentAttributeName, Range{start, end - start}, [&](const QVariant& value, Range run) {
        if (value.metaType() != QMetaType::fromType<TextAttachment>())
            return true;
        const TextAttachment attachment = value.value<TextAttachment>();
        if (!isImageAttachment(attachment))
            return true;
        // The attachment stands on its attachment character; other characters of the run show nothing.
        const QString characters = text.substring(run);
        const qsizetype at = characters.indexOf(QChar(AttachmentCharacter));
        if (at < 0)
            return true;
        found = attachment;
        if (effectiveRange)
            *effectiveRange = Range{run.location + at, 1};
        if (fileName)
            *fileName = attachment.fileName();
        return false;
    });
    return found;
}

namespace {

// Bitmap bytes as JPEG or PNG: kept when already so, else decoded and encoded. Touches no shared state,
// so that pictures can be encoded on several threads at once.
std::optional<ImageRepresentation> bitmapRepresentation(const QByteArray& bytes, const QSizeF& explicitSize,
                                                        bool asJPEG)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    const QByteArray format = reader.format();
    if (format.isEmpty())
        return std::nullopt;
    const QByteArray wanted = asJPEG ? QByteArrayLiteral("jpeg") : QByteArrayLiteral("png");
    const QSize pixels = reader.size();
    if (format == wanted && pixels.isValid() && !pixels.isEmpty())
        return ImageRepresentation{bytes, explicitSize.isEmpty() ? QSizeF(pixels) : explicitSize};

    const QImage image = reader.read();
    if (image.isNull())
        return std::nullopt;
    QByteArray encoded;
    QBuffer out(&encoded);
    out.open(QIODevice::WriteOnly);
    QImageWriter writer(&out, wanted);
    writer.setQuality(asJPEG ? JPEGQuality : PNGQuality);
    const QImage source = asJPEG ? onWhite(image) : image;
    if (!writer.write(source))
        return std::nullopt;
    return ImageRepresentation{encoded, explicitSize.isEmpty() ? QSizeF(image.size()) : explicitSize};
}

} // namespace

std::optional<ImageRepresentation> imageRepresentation(const TextAttachment& attachment, bool asJPEG)
{
    if (attachment.isNull())
        return std::nullopt;
    const QByteArray bytes = attachment.contents();
    if (bytes.isEmpty())
        return std::nullopt;
    const QSizeF explicitSize = attachment.hasExplicitBounds() ? attachment.bounds() : QSizeF();

    if (isPDF(attachment, bytes)) {
        const std::optional<RTFImageRecord> record = RTFImageRecordForAttachment(attachment, PDFResolution);
        if (!record || record->isJPEG)
            return std::nullopt;
        const QSizeF pageSize(record->picwgoal / 20.0, record->pichgoal / 20.0); // twips to points
        return ImageRepresentation{record->imgData, explicitSize.isEmpty() ? pageSize : explicitSize};
    }

    return bitmapRepresentation(bytes, explicitSize, asJPEG);
}

std::vector<std::optional<ImageRepresentation>> imageRepresentations(const std::vector<TextAttachment>& attachments,
                                                                     const std::vector<bool>& asJPEG)
{
    std::vector<std::optional<ImageRepresentation>> results(attachments.size());
    // The attachments are read here, on this thread (they may load linked files or decode lazily);
    // the workers see bytes only.
    struct Work {
        size_t index;
        QByteArray bytes;
        QSizeF explicitSize;
    };
    std::vector<Work> work;
    for (size_t i = 0; i < attachments.size(); ++i) {
        const TextAttachment& attachment = attachments[i];
        if (attachment.isNull())
            continue;
        const QByteArray bytes = attachment.contents();
        if (bytes.isEmpty())
            continue;
        if (isPDF(attachment, bytes))
            results[i] = imageRepresentation(attachment, asJPEG[i]); // the PDF library is not for threads
        else
            work.push_back({i, bytes, attachment.hasExplicitBounds() ? attachment.bounds() : QSizeF()});
    }
    std::atomic<size_t> next{0};
    const auto worker = [&] {
        for (size_t k = next++; k < work.size(); k = next++)
            results[work[k].index] = bitmapRepresentation(work[k].bytes, work[k].explicitSize, asJPEG[work[k].index]);
    };
    const size_t threads = std::min<size_t>(work.size(), std::max(1u, std::thread::hardware_concurrency()));
    std::vector<std::thread> helpers;
    for (size_t t = 1; t < threads; ++t)
        helpers.emplace_back(worker);
    worker();
    for (std::thread& helper : helpers)
        helper.join();
    return results;
}

} // namespace qly
