#include <qlyappkit/interchange/package/PackagePictureGroups.h>

#include <QFileInfo>
#include <cmath>
#include <limits>

#include <qlyappkit/interchange/pictures/PictureData.h>
#include <qlyappkit/interchange/rtf/RTFTextToolkit.h>

namespace qly {

namespace {

// Points to whole twips, truncated; sizes that are no number or too large for RTF's integers give 0.
int twipsFromPoints(double points)
{
    const double twips = points * PackageRTFTwipsPerPoint;
    if (!std::isfinite(twips) || twips <= 0)
        return 0;
    if (twips >= double(std::numeric_limits<int>::max()))
        return std::numeric_limits<int>::max();
    return int(twips);
}

QSize goalTwips(const TextAttachment& attachment, const QSizeF& naturalPoints)
{
    const QSizeF points = attachment.hasExplicitBounds() ? attachment.bounds() : naturalPoints;
    return QSize(twipsFromPoints(points.width()), twipsFromPoints(points.height()));
}

void appendWord(QByteArray& rtf, const char* word)
{
    rtf.append('\\');
    rtf.append(word);
}

void appendWord(QByteArray& rtf, const char* word, int value)
{
    appendWord(rtf, word);
    rtf.append(QByteArray::number(value));
}

// " {\*\WORD NAME}" with the name escaped as the platform writes text.
void appendNameGroup(QByteArray& rtf, const char* word, const QString& name)
{
    rtf.append("{\\*");
    appendWord(rtf, word);
    rtf.append(' ');
    rtf.append(RTFEscapedText(name).toLatin1());
    rtf.append('}');
}

void appendPDFGroup(QByteArray& rtf, const PackagePicture& picture)
{
    rtf.append("{\\*");
    appendWord(rtf, PackageRTFPDFWord);
    rtf.append(" {");
    if (!picture.fileName.isEmpty()) {
        appendNameGroup(rtf, PackageRTFPDFFileNameWord, picture.fileName);
        rtf.append(' ');
    }
    appendHexadecimal(rtf, picture.data);
    rtf.append("}}");
}

} // namespace

std::optional<PackagePicture> packagePictureForAttachment(const TextAttachment& attachment)
{
    if (attachment.isNull())
        return std::nullopt;
    PackagePicture picture;
    picture.fileName = QFileInfo(attachment.fileName()).completeBaseName();
    const QByteArray bytes = attachment.contents();
    switch (pictureFormatOfData(bytes)) {
    case PictureFormat::PDF: {
        picture.kind = PackagePicture::Kind::PDF;
        picture.data = bytes;
        QSizeF pagePoints;
        const QImage preview = renderPDFPage(bytes, PackageRTFPDFPreviewDotsPerInch, &pagePoints);
        picture.previewPNG = PNGDataFromImage(preview);
        picture.pixels = preview.size();
        picture.goalTwips = goalTwips(attachment, pagePoints);
        return picture;
    }
    case PictureFormat::JPEG:
    case PictureFormat::PNG:
        if (const std::optional<QSize> pixels = bitmapPixelSize(bytes)) {
            picture.kind = bytes.startsWith("\x89PNG") ? PackagePicture::Kind::PNG : PackagePicture::Kind::JPEG;
            picture.data = bytes;
            picture.pixels = *pixels;
            picture.goalTwips = goalTwips(attachment, QSizeF(*pixels));
            return picture;
        }
        break; // a damaged header: decoding below decides
    case PictureFormat::OtherBitmap:
    case PictureFormat::Unknown:
        break;
    }
    // Any other bitmap is written as PNG; an attachment made from a decoded image may hold it already.
    QImage image = QImage::fromData(bytes);
    if (image.isNull())
        image = attachment.image();
    if (image.isNull())
        return std::nullopt;
    picture.kind = PackagePicture::Kind::PNG;
    picture.data = PNGDataFromImage(image);
    if (picture.data.isEmpty())
        return std::nullopt;
    picture.pixels = image.size();
    picture.goalTwips = goalTwips(attachment, QSizeF(image.size()));
    return picture;
}

void appendPackagePictureGroup(QByteArray& rtf, const PackagePicture& picture)
{
    const bool isPDF = picture.kind == PackagePicture::Kind::PDF;
    if (isPDF && picture.previewPNG.isEmpty()) {
        appendPDFGroup(rtf, picture);
        return;
    }
    rtf.append("{\\*");
    appendWord(rtf, PackageRTFShapePictWord);
    rtf.append(" {");
    appendWord(rtf, PackageRTFPictWord);
    if (!picture.fileName.isEmpty()) {
        rtf.append(' ');
        appendNameGroup(rtf, PackageRTFPictureFileNameWord, picture.fileName);
    }
    if (isPDF) {
        rtf.append(' ');
        appendPDFGroup(rtf, picture);
    }
    rtf.append(' ');
    appendWord(rtf, PackageRTFPixelWidthWord, picture.pixels.width());
    rtf.append(' ');
    appendWord(rtf, PackageRTFPixelHeightWord, picture.pixels.height());
    rtf.append(' ');
    appendWord(rtf, PackageRTFGoalWidthWord, picture.goalTwips.width());
    rtf.append(' ');
    appendWord(rtf, PackageRTFGoalHeightWord, picture.goalTwips.height());
    rtf.append(' ');
    appendWord(rtf, picture.kind == PackagePicture::Kind::JPEG ? PackageRTFJPEGWord : PackageRTFPNGWord);
    rtf.append(' ');
    appendHexadecimal(rtf, isPDF ? picture.previewPNG : picture.data);
    rtf.append("}}");
}

} // namespace qly
