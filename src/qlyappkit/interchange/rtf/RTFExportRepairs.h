#pragma once
// Repairs on attributed text made before RTF export (and after import): list indents, hyperlink
// colours and white highlights.
#include <QStringList>

#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>

namespace qly {

/// List paragraphs whose style has tab stops take their indents from them: the first stop is where
/// the marker stands (first-line indent), the second (or the first when alone) where the text wraps.
void fixUpListIndents(AttributedString& text);
/// Every link gets the link colour (blue) and a single underline where it has none; returns the link
/// targets, in text order, each once.
QStringList addColorAndUnderlineToAllHyperlinks(AttributedString& text);
/// Removes background colours that are white.
void removeWhiteHighlights(AttributedString& text);

} // namespace qly
