#pragma once
// Linked pictures in stored text. An attachment that links to a file instead of holding it (a picture the
// writer keeps outside the document) is written as a text tag that names the file, so that saving neither
// embeds the file nor loses the link:
//
//     <$QlyLinkedImage:images/figure%201.png|144,96>
//
// The path follows the prefix percent-encoded as UTF-8 (so it never holds "|", ">" or non-ASCII
// characters), exactly as the attachment holds it: a relative path stays relative. "|" and the display
// size in points ("width,height") follow only when the attachment's size was set explicitly. The tag takes
// the attributes of the attachment character, less the attachment. The two conversions are inverse: a tag
// made by the first becomes the same link again by the second. Linked files of any kind are kept this way,
// not only pictures.
#include <QSizeF>
#include <QString>
#include <optional>

#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

inline const QString XQLinkedImageTagOpening = QStringLiteral("<$QlyLinkedImage:");
inline const QString XQLinkedImageTagSizeSeparator = QStringLiteral("|");
inline const QString XQLinkedImageTagClosing = QStringLiteral(">");

/// The tag for a link to path, with the display size when there is one.
QString linkedImageTag(const QString& path, const std::optional<QSizeF>& size = std::nullopt);

/// A copy in which every attachment character whose attachment links to a file is replaced by its tag.
AttributedString
attributedStringByConvertingSymbolicLinkImageAttachmentsToLinkedImageTags(const AttributedString& text);
/// A copy in which every well-formed tag is replaced by an attachment character linking to its file, with
/// the tag's first character's attributes. Malformed tags (no closing, an empty path, a broken size) stay
/// as text.
AttributedString
attributedStringByConvertingLinkedImageTagsToSymbolicLinkImageAttachments(const AttributedString& text);

} // namespace qly
