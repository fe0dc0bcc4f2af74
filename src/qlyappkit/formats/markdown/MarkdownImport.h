#pragma once
// Markdown and Fountain emphasis import: "**bold**", "*italic*", "__bold__", "_italic_" (or underlines
// with XQMarkdownUseUnderlinesOption) become font traits and underline attributes, and the markers go.
// Everything else in the text passes through untouched. Unpaired markers stay as literal text.
#include <qlyappkit/platform/text/MutableAttributedString.h>

namespace qly {

/// The plain string with attributes on every character, its emphasis imported (see convertMarkdownWithOptions).
AttributedString initWithMarkdownString(const QString& string, const Attributes& attributes, unsigned options);

/// The whole import, in place: every paragraph's asterisk passes then its underscore passes, then the
/// escape pass.
void convertMarkdownWithOptions(MutableAttributedString& text, unsigned options);

/// The "**" then "*" passes over one paragraph; *usedParagraphRange receives the paragraph's range
/// after marker removal. Returns the paragraph's new length.
qsizetype convertAsterisksInParagraphRange(MutableAttributedString& text, Range paragraphRange,
                                           Range* usedParagraphRange = nullptr);
/// The "__" then "_" passes over one paragraph. With useUnderlines "__" makes a double underline and
/// "_" pairs simply disappear (their text keeps no underline and gets no italic).
qsizetype convertUnderscoresInParagraphRange(MutableAttributedString& text, Range paragraphRange,
                                             Range* usedParagraphRange, bool useUnderlines);

/// Gives the range the font at its start (the user font when it has none) with the trait added
/// (ItalicFontMask or BoldFontMask). The whole range takes that one font, so mixed fonts are
/// flattened to the first. Nothing changes when the family has no such face.
void convertRange(MutableAttributedString& text, Range range, unsigned fontTrait);

/// Deletes the backslash of an escape ("\*", "\_", or any of the fifteen escapable characters with
/// XQMarkdownEscapeAllCharactersOption). Only the first backslash of the whole text is examined.
void convertEscapedMarkdownCharactersWithOptions(MutableAttributedString& text, unsigned options);

} // namespace qly
