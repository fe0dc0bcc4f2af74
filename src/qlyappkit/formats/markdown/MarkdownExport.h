#pragma once
// Markdown and Fountain emphasis export: bold and italic fonts become "**", "*" or "***" around their
// runs (spaces and line breaks left outside), underlines become "__" (double) or "_" with
// XQMarkdownUseUnderlinesOption, and literal markers in paragraphs that get markers are escaped.
#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

/// The text with its emphasis as markers, paragraph by paragraph.
QString markdownStringWithOptions(const AttributedString& text, unsigned options);
/// One paragraph (its line break included) with its emphasis as markers.
QString markdownStringForParagraphRange(const AttributedString& text, Range paragraphRange, unsigned options);

} // namespace qly
