#pragma once
// Pictures of exported RTF: each image attachment becomes a record (its bytes as PNG or JPEG and its
// sizes) and then a "\shppict" group.
#include <QByteArray>
#include <QString>
#include <optional>

#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/values/TextAttachment.h>

namespace qly {

struct RTFImageRecord {
    QByteArray imgData; ///< encoded bytes (JPEG or PNG)
    QString filename; ///< without extension, RTF-escaped
    bool isJPEG = false;
    int picw = 0, pich = 0; ///< pixels
    int picwgoal = 0, pichgoal = 0; ///< intended size in twips
    int picscale = 0; ///< percent; 0 for none
};

/// The record of an attachment: "jpg"/"jpeg" files keep their JPEG bytes, "pdf" files are rendered
/// to PNG at pdfResolution dots per inch, other images are written as PNG. Nothing when the
/// attachment holds no image that can be read.
std::optional<RTFImageRecord> RTFImageRecordForAttachment(const TextAttachment& attachment, int pdfResolution);

/// "{\*\shppict{\pict…\picwN\pichN\picwgoalN\pichgoalN\[picscalexN\picscaleyN\]jpegblip|pngblip hex}}",
/// with a "\nisusfilename" group when writeFilename is set and the record has a name.
QString RTFPictureGroup(const RTFImageRecord& record, bool writeFilename);

/// A copy in which attachments linked to image files (PDF included) hold the files' bytes instead.
AttributedString attributedStringByConvertingLinkedImagesToRegularAttachments(const AttributedString& text);

} // namespace qly
