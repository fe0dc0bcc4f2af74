#pragma once
// Small attribute queries on attributed strings that the rich-text model and the interchange formats
// lean on. "The walk" below steps through the longest stretches of one attribute's value inside a
// range (AttributedString::enumerateAttribute). Ranges are clipped to the text.
#include <QVariantList>
#include <optional>

#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>

namespace qly {

/// The attributes at index less the attachment attribute. No bounds guard of its own: an index
/// outside the text gets what AttributedString::attributes() gives there (a warning, no attributes).
Attributes attributesWithoutAttachmentsAtIndex(const AttributedString& text, qsizetype index,
                                               Range* effectiveRange = nullptr);
/// The same, but nothing for an index at or past the end (or negative).
std::optional<Attributes> attributesAtIndexWithoutAttachments(const AttributedString& text, qsizetype index,
                                                              Range* effectiveRange = nullptr);

/// True when some run in range has a value for the attribute; false for an empty range.
bool attributeExistsInRange(const AttributedString& text, const QString& name, Range range);

/// The first value in range and its run (clipped to range). effectiveRange is set to not-found first;
/// the range is clipped to the text's end, and a start at or past the end gives nothing (invalid).
QVariant firstAttribute(const AttributedString& text, const QString& name, Range range,
                        Range* effectiveRange = nullptr);
/// As firstAttribute(), stepping backwards from the range's last character.
QVariant lastAttribute(const AttributedString& text, const QString& name, Range range, Range* effectiveRange = nullptr);

/// Every value of the walk over range, in order, duplicates kept, absent stretches left out.
QVariantList valuesForAttribute(const AttributedString& text, const QString& name, Range range);

/// The paragraph alignment covering the most characters (runs without a paragraph style count as
/// left); natural for empty text. On a tie the alignment that led first stays ahead.
TextAlignment mostCommonTextAlignment(const AttributedString& text);

/// True when a paragraph style in range has text blocks (tables); false for an empty range.
bool rangeContainsTextBlocks(const AttributedString& text, Range range);

/// A copy without its attachment characters (U+FFFC carrying an attachment).
AttributedString attributedStringWithoutAttachments(const AttributedString& text);
/// A copy without the attachments whose file is a regular file or symbolic link and whose file-name
/// extension is not an image type.
AttributedString attributedStringByRemovingNonImageAttachments(const AttributedString& text);
/// True for the file-name extensions (any letter case) that count as images: those QImageReader reads,
/// and PDF.
bool isImageFileExtension(const QString& extension);

/// The paragraph style that covers the most characters (the first to lead keeps a tie), or the default
/// style when no character has one.
ParagraphStyle mostUsedParagraphStyle(const AttributedString& text);

/// The attribute's value that covers the most characters (values compared by equality), provided it
/// covers more characters than are without the attribute; nothing otherwise. Of equal totals the value
/// met first wins. With a valid type, values of other types count as absent.
std::optional<QVariant> mostUsedAttributeValue(const AttributedString& text, const QString& name,
                                               QMetaType type = QMetaType());
/// The font that covers the most characters, by the rule of mostUsedAttributeValue(); nothing when
/// no font covers more characters than go without one.
std::optional<Font> mostUsedFont(const AttributedString& text);

} // namespace qly
