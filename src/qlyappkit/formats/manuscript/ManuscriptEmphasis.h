#pragma once
// Emphasis for manuscripts submitted in the typewriter style: italics become underlines, and back.
// Both return a new text and leave the given one alone.
#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

/// Italic runs lose their italic and get a single underline over their text without the spaces and
/// tabs at its ends; neighbouring italic runs are underlined as one stretch, the spaces between them
/// included.
AttributedString attributedStringByConvertingItalicsToUnderlines(const AttributedString& text);
/// Underlined text (any underline style) becomes italic and loses its underline.
AttributedString attributedStringByConvertingUnderlinesToItalics(const AttributedString& text);

} // namespace qly
