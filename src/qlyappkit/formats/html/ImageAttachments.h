#pragma once
// The image utilities of attributed strings that the HTML export needs: finding image attachments and
// encoding them as JPEG or PNG files with their size in points.
#include <QByteArray>
#include <QSizeF>
#include <QString>
#include <optional>
#include <vector>

#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/values/TextAttachment.h>

namespace qly {

/// True for an attachment that holds (or links to) a picture: bytes an image reader recognises, or PDF.
bool isImageAttachment(const TextAttachment& attachment);

/// The first image attachment in range (clipped to the text): effectiveRange receives its attachment
/// character's range and fileName its own file name (empty when it has none). A null attachment, with
/// effectiveRange not found, when the range holds none.
TextAttachment firstImageInRange(const AttributedString& text, Range range, Range* effectiveRange = nullptr,
                                 QString* fileName = nullptr);

/// An image as file bytes with its display size.
struct ImageRepresentation {
    QByteArray bytes;
    QSizeF pointSize; ///< as set on the attachment, else one point per pixel (PDF: its page size)
};

/// The attachment's picture as JPEG (asJPEG) or PNG bytes. Bytes already in the asked format are kept
/// as they are; other pictures are decoded and encoded, a PDF's first page rendered. Nothing when the
/// picture cannot be read or has no size.
std::optional<ImageRepresentation> imageRepresentation(const TextAttachment& attachment, bool asJPEG);
/// The same for many attachments (asJPEG[i] for attachments[i]): pictures that must be encoded are
/// encoded on all cores at once, PDFs one after another.
std::vector<std::optional<ImageRepresentation>> imageRepresentations(const std::vector<TextAttachment>& attachments,
                                                                     const std::vector<bool>& asJPEG);

} // namespace qly
