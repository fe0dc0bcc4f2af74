#pragma once
// The platform's character sets, by Unicode general category.
#include <QChar>
#include <QString>

namespace qly {

/// Unicode Z* plus U+0009–U+000D and U+0085.
bool isWhitespaceOrNewline(char32_t c);
/// L*, M*, N*.
bool isAlphanumeric(char32_t c);
/// P*.
bool isPunctuation(char32_t c);
/// Line and paragraph breaks: U+000A–U+000D, U+0085, U+2028, U+2029.
bool isNewline(char32_t c);

/// A predicate over code points, as the trimming and splitting operations take it.
using CharacterSet = bool (*)(char32_t);

/// True when the text holds at least one alphanumeric character (surrogate pairs decoded).
bool containsAlphanumeric(QStringView text);

} // namespace qly
