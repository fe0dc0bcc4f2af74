#include <qlyappkit/interchange/pictures/PictureData.h>

#include <QBuffer>
#include <QImageReader>
#include <QPdfDocument>
#include <cmath>

namespace qly {

namespace {

const QByteArray PNGSignature = QByteArrayLiteral("\x89PNG\r\n\x1a\n");
const QByteArray JPEGSignature = QByteArrayLiteral("\xff\xd8\xff");
const QByteArray PDFSignature = QByteArrayLiteral("%PDF-");
// Readers accept the PDF header anywhere in the first kilobyte.
constexpr qsizetype PDFHeaderWindow = 1024;
// A rendering larger than this many pixels is scaled down: a page of absurd size must not exhaust memory.
constexpr double MaximumRenderedPixels = 64.0 * 1024 * 1024;

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

bool isHexBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

bool loadPDF(QPdfDocument& document, QBuffer& buffer, const QByteArray& pdf)
{
    buffer.setData(pdf);
    if (!buffer.open(QIODevice::ReadOnly))
        return false;
    document.load(&buffer);
    return document.status() == QPdfDocument::Status::Ready && document.pageCount() >= 1;
}

} // namespace

PictureFormat pictureFormatOfData(const QByteArray& bytes)
{
    if (bytes.startsWith(PNGSignature))
        return PictureFormat::PNG;
    if (bytes.startsWith(JPEGSignature))
        return PictureFormat::JPEG;
    if (QByteArrayView(bytes).first(std::min(bytes.size(), PDFHeaderWindow)).contains(PDFSignature))
        return PictureFormat::PDF;
    return bitmapPixelSize(bytes) ? PictureFormat::OtherBitmap : PictureFormat::Unknown;
}

std::optional<QSize> bitmapPixelSize(const QByteArray& bytes)
{
    if (bytes.isEmpty())
        return std::nullopt;
    QBuffer buffer;
    buffer.setData(bytes);
    if (!buffer.open(QIODevice::ReadOnly))
        return std::nullopt;
    QImageReader reader(&buffer);
    reader.setDecideFormatFromContent(true);
    if (!reader.canRead())
        return std::nullopt;
    const QSize size = reader.size();
    if (size.isValid() && !size.isEmpty())
        return size;
    // Formats whose header does not tell the size are decoded.
    const QImage image = reader.read();
    if (image.isNull())
        return std::nullopt;
    return image.size();
}

QByteArray PNGDataFromImage(const QImage& image)
{
    if (image.isNull())
        return {};
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!image.save(&buffer, "PNG"))
        return {};
    return bytes;
}

QByteArray PNGDataFromBitmapData(const QByteArray& bytes) { return PNGDataFromImage(QImage::fromData(bytes)); }

std::optional<QSizeF> PDFPageSize(const QByteArray& pdf)
{
    QBuffer buffer;
    QPdfDocument document;
    if (!loadPDF(document, buffer, pdf))
        return std::nullopt;
    const QSizeF size = document.pagePointSize(0);
    if (size.isEmpty())
        return std::nullopt;
    return size;
}

QImage renderPDFPage(const QByteArray& pdf, double dotsPerInch, QSizeF* pointSize)
{
    QBuffer buffer;
    QPdfDocument document;
    if (!loadPDF(document, buffer, pdf))
        return QImage();
    const QSizeF points = document.pagePointSize(0);
    if (pointSize)
        *pointSize = points;
    QSizeF pixels = points * dotsPerInch / 72.0;
    const double area = pixels.width() * pixels.height();
    if (!(area > 0))
        return QImage();
    if (area > MaximumRenderedPixels)
        pixels *= std::sqrt(MaximumRenderedPixels / area);
    const QSize size = pixels.toSize();
    if (size.isEmpty())
        return QImage();
    return document.render(0, size);
}

void appendHexadecimal(QByteArray& out, QByteArrayView bytes)
{
    static const char digits[] = "0123456789abcdef";
    const qsizetype at = out.size();
    out.resize(at + 2 * bytes.size());
    char* p = out.data() + at;
    for (const char c : bytes) {
        const auto b = static_cast<unsigned char>(c);
        *p++ = digits[b >> 4];
        *p++ = digits[b & 0xF];
    }
}

std::optional<QByteArray> bytesFromHexadecimal(QByteArrayView text)
{
    QByteArray bytes;
    bytes.reserve(text.size() / 2);
    int high = -1;
    for (const char c : text) {
        const int v = hexValue(c);
        if (v < 0) {
            if (isHexBlank(c))
                continue;
            return std::nullopt;
        }
        if (high < 0) {
            high = v;
        } else {
            bytes.append(char((high << 4) | v));
            high = -1;
        }
    }
    if (high >= 0)
        return std::nullopt;
    return bytes;
}

} // namespace qly
