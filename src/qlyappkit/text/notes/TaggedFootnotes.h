#pragma once
// Tagged footnotes: an inline footnote that holds only a bracketed tag ("[12]") refers to the
// footnote elsewhere in the text whose text starts with the same tag; the tag is replaced by that
// footnote's body and the defining footnote goes away.
#include <optional>

#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

/// A copy in which each reference (an inline footnote whose trimmed text is at least three characters,
/// starting with "[" and ending with "]") is replaced by the body of its definition (the first inline
/// footnote whose trimmed text starts with the tag and is longer), marked as an inline footnote. The
/// definition is deleted, with the whitespace before it that is not footnote text, when its tag is
/// first referred to; later references to the same tag get the same body. A reference without a
/// definition stays as it is.
AttributedString attributedStringByConvertingTaggedFootnotesToStandardFootnotes(const AttributedString& text);

/// The body (what follows the tag, trimmed) of the first inline footnote whose trimmed text starts
/// with tag and is longer than it, and the footnote's range grown over the whitespace before it that
/// is not footnote text. Nothing (and a not-found range) when there is no such footnote.
std::optional<AttributedString>
attributedFootnoteInAttributedStringWithTag(const AttributedString& text, const QString& tag,
                                            Range* effectiveRangeIncludingExtraWhitespace = nullptr);

/// The range grown backwards over whitespace and line breaks that are not inline footnote text.
Range rangeIncludingPreviousWhitespaceExceptingFootnotesFromRange(const AttributedString& text, Range range);

} // namespace qly
