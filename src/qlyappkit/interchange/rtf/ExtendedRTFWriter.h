#pragma once
// The extended RTF writer: attributed text to RTF that word processors read with real footnotes and
// endnotes, annotations (comments with their ranges and authors), bookmarks, page-reference fields,
// sections, headers and footers, columns, keep-with-next paragraphs and pictures.
//
// The text is rewritten so that each feature the plain RTF writer cannot express travels as a unique
// text marker; the plain writer makes base RTF; the markers are then replaced by the RTF they stand
// for in passes that each scan the RTF once.
//
// Linked comments are written as annotations when their text follows their anchors inline (marked
// XQLinkedCommentAttributeName, as attributedStringByConvertingLinkedCommentsToInlineAttributesWithCommentOption
// with InlineLinkedComments makes them); the anchor keeps XQCommentAttributeName and becomes the
// annotation's range. Options are the XQRTF… keys of RTFOptions.h.
#include <QByteArray>
#include <QVariantMap>

#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

/// 7-bit RTF for the range (clipped to the text). Missing options read as off; missing page
/// attributes as a 612 × 792 pt page with 90 pt side and 72 pt top and bottom margins.
QByteArray extendedRTFFromRange(const AttributedString& text, Range range, const QVariantMap& documentAttributes,
                                const QVariantMap& RTFAttributes = {});

} // namespace qly
