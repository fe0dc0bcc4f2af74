#pragma once
// The picture groups of package RTF: how an embedded picture is written (JPEG and PNG as "\shppict"
// groups with their pixel and intended sizes, PDF as a "\quillerypdf" group) and the record the writer
// makes of each picture attachment first.
//
// A PDF group is written inside the "\pict" group of a PNG rendering of its first page, so that other RTF
// readers, which skip the unknown PDF group, show the rendering at the picture's size; this reader takes
// the PDF and drops the rendering.
#include <QByteArray>
#include <QSize>
#include <QString>
#include <optional>

#include <qlyappkit/platform/values/TextAttachment.h>

namespace qly {

// Control words of the picture groups, without their backslash.
inline constexpr char PackageRTFPictWord[] = "pict";
inline constexpr char PackageRTFShapePictWord[] = "shppict";
inline constexpr char PackageRTFFallbackPictWord[] = "nonshppict";
inline constexpr char PackageRTFObjectWord[] = "object";
inline constexpr char PackageRTFPDFWord[] = "quillerypdf";
inline constexpr char PackageRTFPDFFileNameWord[] = "pdffilename";
inline constexpr char PackageRTFPictureFileNameWord[] = "nisusfilename";
inline constexpr char PackageRTFJPEGWord[] = "jpegblip";
inline constexpr char PackageRTFPNGWord[] = "pngblip";
inline constexpr char PackageRTFPixelWidthWord[] = "picw";
inline constexpr char PackageRTFPixelHeightWord[] = "pich";
inline constexpr char PackageRTFGoalWidthWord[] = "picwgoal";
inline constexpr char PackageRTFGoalHeightWord[] = "pichgoal";
inline constexpr char PackageRTFScaleXWord[] = "picscalex";
inline constexpr char PackageRTFScaleYWord[] = "picscaley";
inline constexpr char PackageRTFBinaryWord[] = "bin";

/// Goal sizes are twips: a point is 20.
inline constexpr double PackageRTFTwipsPerPoint = 20.0;
/// The resolution PDF pages are rendered at for other readers' sake.
inline constexpr double PackageRTFPDFPreviewDotsPerInch = 144.0;

/// One embedded picture as the writer records it before it asks the platform for RTF.
struct PackagePicture {
    enum class Kind { JPEG, PNG, PDF };
    Kind kind = Kind::PNG;
    QByteArray data; ///< JPEG, PNG or PDF bytes
    QString fileName; ///< without extension; empty when the picture has none
    QSize pixels; ///< bitmaps (and a PDF's rendering): width and height in pixels
    QSize goalTwips; ///< the size shown, in twips (points × 20, truncated)
    QByteArray previewPNG; ///< PDF only: the first page rendered as PNG; empty when it cannot be rendered
};

/// The record of an embedded picture attachment: "jpg"/"jpeg" files keep their JPEG bytes and "png" files
/// their PNG bytes, "pdf" files their PDF bytes; any other picture (and a file whose bytes do not match its
/// extension) is decoded and written as PNG. Nothing when the attachment holds no picture.
std::optional<PackagePicture> packagePictureForAttachment(const TextAttachment& attachment);

/// Appends the RTF group of a picture:
/// "{\*\shppict {\pict {\*\nisusfilename NAME} \picwW \pichH \picwgoalGW \pichgoalGH \pngblip HEX}}"
/// (or "\jpegblip"; the name group only when there is a name), and for a PDF
/// "{\*\quillerypdf {{\*\pdffilename NAME} HEX}}", inside a rendering's "\pict" group when it has one.
void appendPackagePictureGroup(QByteArray& rtf, const PackagePicture& picture);

} // namespace qly
