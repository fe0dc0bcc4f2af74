#pragma once
// The older MultiMarkdown emphasis import: the same markers and passes as the Markdown import, but
// traits are added run by run (mixed fonts keep their differences), an opening "_" must not be
// followed by another "_", underscores always make bold or italic, and every "\*" becomes "*".
#include <qlyappkit/platform/text/MutableAttributedString.h>

namespace qly {

/// A copy of text with its MultiMarkdown emphasis imported.
AttributedString attributedStringByConvertingMultiMarkdown(const AttributedString& text);
/// The plain string (no attributes) with its MultiMarkdown emphasis imported.
AttributedString attributedStringByConvertingMultiMarkdownFromString(const QString& string);

/// The import, in place.
void convertMultiMarkdown(MutableAttributedString& text);
/// Adds the trait (ItalicFontMask or BoldFontMask) to each font run of range separately (the user
/// font where a run has none); a run whose family has no such face keeps its font.
void convertMMDRange(MutableAttributedString& text, Range range, unsigned fontTrait);

} // namespace qly
