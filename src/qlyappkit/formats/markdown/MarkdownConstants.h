#pragma once
// The options and markers of Markdown (and Fountain) emphasis.
#include <QString>

namespace qly {

/// Import: underscores make underlines (double for "__"); export: underline runs become underscores.
inline constexpr unsigned XQMarkdownUseUnderlinesOption = 2;
/// Import: a backslash escapes any of XQMarkdownAllEscapableCharacters, not only "*" and "_".
inline constexpr unsigned XQMarkdownEscapeAllCharactersOption = 16;

inline const QString XQMarkdownBoldItalicMarker = QStringLiteral("***");
inline const QString XQMarkdownBoldMarker = QStringLiteral("**");
inline const QString XQMarkdownItalicMarker = QStringLiteral("*");
inline const QString XQMarkdownDoubleUnderscoreMarker = QStringLiteral("__");
inline const QString XQMarkdownUnderscoreMarker = QStringLiteral("_");
inline const QString XQMarkdownEscapeCharacter = QStringLiteral("\\");

/// The characters a backslash escapes by default.
inline const QString XQMarkdownEscapableCharacters = QStringLiteral("*_");
/// The characters a backslash escapes with XQMarkdownEscapeAllCharactersOption, in their fixed order.
inline const QString XQMarkdownAllEscapableCharacters = QStringLiteral("\\`*_{}[]()#+-.!");

} // namespace qly
