#pragma once
// The bytes of pictures that travel inside RTF: what kind of picture some bytes hold and how large it is
// (read from the file's header, without decoding it), bitmaps re-encoded as PNG, PDF pages rendered, and
// the hexadecimal text RTF keeps picture data in.
#include <QByteArray>
#include <QByteArrayView>
#include <QImage>
#include <QSize>
#include <QSizeF>
#include <optional>

namespace qly {

/// What the bytes of a picture are.
enum class PictureFormat { Unknown, PNG, JPEG, PDF, OtherBitmap };

/// The format of the bytes from their signature (and, for bitmaps other than PNG and JPEG, from what the
/// image reader recognises).
PictureFormat pictureFormatOfData(const QByteArray& bytes);

/// The pixel size of a bitmap from its header, without decoding it; nothing when the bytes are no image the
/// image reader can read.
std::optional<QSize> bitmapPixelSize(const QByteArray& bytes);

/// The bitmap decoded and saved as PNG; empty when it cannot be decoded.
QByteArray PNGDataFromBitmapData(const QByteArray& bytes);
QByteArray PNGDataFromImage(const QImage& image);

/// The size in points of the first page of a PDF; nothing when the bytes are no readable PDF.
std::optional<QSizeF> PDFPageSize(const QByteArray& pdf);
/// The first page of a PDF rendered at dotsPerInch, its size in points in *pointSize; a null image when the
/// PDF cannot be read or the page would be empty.
QImage renderPDFPage(const QByteArray& pdf, double dotsPerInch, QSizeF* pointSize = nullptr);

/// Lower-case hexadecimal text of the bytes, two digits a byte, appended to out.
void appendHexadecimal(QByteArray& out, QByteArrayView bytes);
/// The bytes that hexadecimal text stands for. Blanks, tabs and line breaks between digits are ignored
/// (RTF writers break long data into lines); any other character or an odd number of digits gives nothing.
std::optional<QByteArray> bytesFromHexadecimal(QByteArrayView text);

} // namespace qly
