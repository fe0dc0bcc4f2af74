#pragma once
// The questions the Markdown import and export ask of a text: whether a paragraph holds emphasis that
// export would mark, and what surrounds a marker.
#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

/// True when a font run in range has the bold or italic trait; false for an empty range.
bool containsBoldOrItalicsInParagraphRange(const AttributedString& text, Range range);
/// True when an underline run in range has a non-zero value; false for an empty range.
bool containsUnderlineAttributeInParagraphRange(const AttributedString& text, Range range);
/// True when range does not start at 0 and the character before it is a backslash.
bool markdownAtRangeIsEscaped(const AttributedString& text, Range range);
/// True when range does not start at 0 and the character before it is whitespace (line breaks too).
bool markdownAtRangeHasWhitespacePrefix(const AttributedString& text, Range range);
/// True when range ends before the text does and the character right after it is whitespace.
bool markdownAtRangeHasWhitespaceSuffix(const AttributedString& text, Range range);
/// The part of range from its first to its last non-whitespace character; not-found (length 0) when
/// range holds none.
Range markdownRangeByTrimmingWhitespaceFromRange(const QString& string, Range range);

} // namespace qly
