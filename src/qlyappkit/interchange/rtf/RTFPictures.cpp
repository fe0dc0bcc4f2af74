#include <qlyappkit/interchange/rtf/RTFPictures.h>

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <vector>

#include <qlyappkit/interchange/pictures/PictureData.h>
#include <qlyappkit/interchange/rtf/RTFTextToolkit.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/text/attributes/AttributeQueries.h>

namespace qly {

std::optional<RTFImageRecord> RTFImageRecordForAttachment(const TextAttachment& attachment, int pdfResolution)
{
    if (attachment.isNull())
        return std::nullopt;
    QByteArray bytes = attachment.contents();
    if (attachment.isLinkedFile()) {
        QFile file(attachment.linkedFilePath());
        if (file.open(QIODevice::ReadOnly))
            bytes = file.readAll();
    }
    const QFileInfo info(attachment.fileName().isEmpty() ? attachment.linkedFilePath() : attachment.fileName());
    const QString extension = info.suffix().toLower();
    RTFImageRecord record;
    record.filename = RTFFragmentFromString(info.completeBaseName());
    QSizeF intended = attachment.hasExplicitBounds() ? attachment.bounds() : QSizeF();
    QImage image;
    if (extension == QLatin1String("pdf")) {
        QSizeF points;
        image = renderPDFPage(bytes, pdfResolution > 0 ? pdfResolution : 600, &points);
        if (image.isNull())
            return std::nullopt;
        if (intended.isEmpty())
            intended = points;
        QBuffer out(&record.imgData);
        out.open(QIODevice::WriteOnly);
        image.save(&out, "PNG");
    } else {
        image = QImage::fromData(bytes);
        if (image.isNull())
            image = attachment.image();
        if (image.isNull())
            return std::nullopt;
        record.isJPEG = extension == QLatin1String("jpg") || extension == QLatin1String("jpeg");
        const bool isPNG = bytes.startsWith("\x89PNG");
        if (record.isJPEG || isPNG) {
            record.imgData = bytes;
        } else {
            QBuffer out(&record.imgData);
            out.open(QIODevice::WriteOnly);
            image.save(&out, "PNG");
        }
        if (intended.isEmpty())
            intended = QSizeF(image.width(), image.height()); // one pixel per point
    }
    record.picw = image.width();
    record.pich = image.height();
    record.picwgoal = int(intended.width() * 20.0);
    record.pichgoal = int(intended.height() * 20.0);
    return record;
}

QString RTFPictureGroup(const RTFImageRecord& record, bool writeFilename)
{
    const QString name = writeFilename && !record.filename.isEmpty()
        ? QStringLiteral(" {\\*\\nisusfilename %1}").arg(record.filename)
        : QString();
    const QString scale =
        record.picscale > 0 ? QStringLiteral("picscalex%1\\picscaley%1\\").arg(record.picscale) : QString();
    return QStringLiteral("{\\*\\shppict{\\pict%1\\picw%2\\pich%3\\picwgoal%4\\pichgoal%5\\%6%7 %8}}")
        .arg(name)
        .arg(record.picw)
        .arg(record.pich)
        .arg(record.picwgoal)
        .arg(record.pichgoal)
        .arg(scale, record.isJPEG ? QStringLiteral("jpegblip") : QStringLiteral("pngblip"),
             QString::fromLatin1(record.imgData.toHex()));
}

AttributedString attributedStringByConvertingLinkedImagesToRegularAttachments(const AttributedString& text)
{
    AttributedString result = text;
    std::vector<std::pair<Range, TextAttachment>> changes;
    text.enumerateAttribute(AttachmentAttributeName, Range{0, text.length()}, [&](const QVariant& v, Range r) {
        if (v.metaType() != QMetaType::fromType<TextAttachment>())
            return true;
        const TextAttachment attachment = v.value<TextAttachment>();
        if (!attachment.isLinkedFile())
            return true;
        const QFileInfo info(attachment.linkedFilePath());
        if (!isImageFileExtension(info.suffix()))
            return true;
        QFile file(info.absoluteFilePath());
        if (!file.open(QIODevice::ReadOnly))
            return true;
        TextAttachment regular(info.fileName(), file.readAll());
        if (attachment.hasExplicitBounds())
            regular.setBounds(attachment.bounds());
        changes.push_back({r, regular});
        return true;
    });
    for (const auto& [range, attachment] : changes)
        result.addAttribute(AttachmentAttributeName, QVariant::fromValue(attachment), range);
    return result;
}

} // namespace qly
