#include "RTFImportPictures_p.h"

#include <QBuffer>
#include <QImage>
#include <QImageReader>
#include <QImageWriter>
#include <cmath>

namespace qly::rtfimport {

namespace {

constexpr double TwipsPerPoint = 20.0;
constexpr double PointsPerInch = 72.0;
constexpr double MetresPerInch = 0.0254;
constexpr double CentimetresPerInch = 2.54;
constexpr int ReencodedJPEGQuality = 90;

quint32 bigEndian32(const QByteArray& d, qsizetype at)
{
    return quint32(uchar(d[at])) << 24 | quint32(uchar(d[at + 1])) << 16 | quint32(uchar(d[at + 2])) << 8
         | quint32(uchar(d[at + 3]));
}

quint16 bigEndian16(const QByteArray& d, qsizetype at) { return quint16(uchar(d[at]) << 8 | uchar(d[at + 1])); }

// The density of a PNG's "pHYs" chunk, which comes before the image data when present.
std::optional<double> pngPixelsPerPoint(const QByteArray& d)
{
    for (qsizetype at = 8; at + 8 <= d.size();) {
        const quint32 length = bigEndian32(d, at);
        const QByteArray type = d.mid(at + 4, 4);
        if (type == "IDAT" || type == "IEND" || length > quint32(d.size()))
            return std::nullopt;
        if (type == "pHYs") {
            if (length < 9 || at + 8 + 9 > d.size() || d[at + 8 + 8] != 1) // unit 1: the metre
                return std::nullopt;
            const quint32 perMetre = bigEndian32(d, at + 8);
            if (perMetre == 0)
                return std::nullopt;
            return perMetre * MetresPerInch / PointsPerInch;
        }
        at += 12 + qsizetype(length);
    }
    return std::nullopt;
}

// The density of a JPEG's "JFIF" segment, the first after the start of image when present.
std::optional<double> jpegPixelsPerPoint(const QByteArray& d)
{
    if (d.size() < 2 + 4 + 14 || uchar(d[2]) != 0xFF || uchar(d[3]) != 0xE0 || d.mid(6, 5) != QByteArray("JFIF\0", 5))
        return std::nullopt;
    const int units = uchar(d[13]);
    const quint16 density = bigEndian16(d, 14);
    if (density == 0)
        return std::nullopt;
    if (units == 1) // dots per inch
        return density / PointsPerInch;
    if (units == 2) // dots per centimetre
        return density * CentimetresPerInch / PointsPerInch;
    return std::nullopt;
}

} // namespace

QSizeF pictureDisplaySize(QSizeF ownSize, int goalWidth, int goalHeight, int scaleX, int scaleY)
{
    double w = goalWidth, h = goalHeight;
    if (w > 0 && h == 0 && ownSize.width() > 0)
        h = ownSize.height() / ownSize.width() * w;
    else if (h > 0 && w == 0 && ownSize.height() > 0)
        w = ownSize.width() / ownSize.height() * h;
    QSizeF size = w > 0 && h > 0 ? QSizeF(w / TwipsPerPoint, h / TwipsPerPoint) : ownSize;
    // Only reductions: a scale of 100 or more is ignored.
    if (scaleX >= 1 && scaleX <= 99)
        size.setWidth(size.width() * scaleX / 100.0);
    if (scaleY >= 1 && scaleY <= 99)
        size.setHeight(size.height() * scaleY / 100.0);
    return size;
}

std::optional<double> statedPixelsPerPoint(const QByteArray& data)
{
    if (data.startsWith("\x89PNG\r\n\x1a\n"))
        return pngPixelsPerPoint(data);
    if (data.startsWith("\xFF\xD8"))
        return jpegPixelsPerPoint(data);
    return std::nullopt;
}

std::optional<QByteArray> resizedPictureMaintainingResolution(const QByteArray& data, QSize pixels,
                                                              double pixelsPerPoint, QSizeF displaySize,
                                                              bool isJPEG)
{
    const QSize wanted(std::max(1, int(std::lround(displaySize.width() * pixelsPerPoint))),
                       std::max(1, int(std::lround(displaySize.height() * pixelsPerPoint))));
    if (!pixels.isValid() || wanted == pixels || wanted.width() > pixels.width() || wanted.height() > pixels.height())
        return std::nullopt;
    QByteArray source = data;
    QBuffer in(&source);
    in.open(QIODevice::ReadOnly);
    QImageReader reader(&in);
    QImage image = reader.read();
    if (image.isNull())
        return std::nullopt;
    image = image.scaled(wanted, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    // The new file states the resolution it was made at, the one assumed included.
    const int dotsPerMetre = int(std::lround(pixelsPerPoint * PointsPerInch / MetresPerInch));
    image.setDotsPerMeterX(dotsPerMetre);
    image.setDotsPerMeterY(dotsPerMetre);
    QByteArray encoded;
    QBuffer out(&encoded);
    out.open(QIODevice::WriteOnly);
    QImageWriter writer(&out, isJPEG ? "jpeg" : "png");
    if (isJPEG)
        writer.setQuality(ReencodedJPEGQuality);
    if (!writer.write(image))
        return std::nullopt;
    return encoded;
}

} // namespace qly::rtfimport
