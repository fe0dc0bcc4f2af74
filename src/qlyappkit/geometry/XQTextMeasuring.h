#pragma once
// Heights of text in points, measured with the layout engine: the line height of a font, and the
// height a string takes when wrapped at a width. Main thread only (they share one layout manager).
#include <QString>

#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

class Font;

/// The height of one line of the font alone: ascent + descent + leading.
double XQDefaultLineHeightForFont(const Font& font);
/// The height of the string with the attributes, wrapped at width (line-fragment padding 5 on each side).
double XQHeightForStringDrawing(const QString& string, double width, const Attributes& attributes);
double XQHeightForStringDrawing(const AttributedString& string, double width);
/// As XQHeightForStringDrawing, with the given line-fragment padding on each side.
double XQHeightForStringDrawingBySettingPadding(const QString& string, double width, const Attributes& attributes,
                                                double padding);
double XQHeightForStringDrawingBySettingPadding(const AttributedString& string, double width, double padding);

} // namespace qly
