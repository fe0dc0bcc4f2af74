#pragma once
// The page a formatted screenplay is laid out on, for writers that place paragraphs on paper (RTF).
#include <qlyappkit/platform/text/AttributedString.h>

#include <QVariantMap>

namespace qly {

/// US Letter with one-inch margins: the text column is 468 points wide, and the element indents of
/// the default attributes are measured from its left edge.
QVariantMap screenplayDocumentAttributes();
/// The width of the text column screenplayDocumentAttributes() gives.
double screenplayTextWidth();

/// A copy of text whose positive tail indents (measured from the column's left edge) are given from
/// its right edge instead (zero or negative), the only form a right indent takes in RTF.
AttributedString attributedStringWithTailIndentsFromTrailingEdge(const AttributedString& text, double textWidth);

} // namespace qly
