#pragma once
// How a text list's marker format ("{decimal}.", "({lower-roman})", "{disc}", "→") maps to an RTF list
// level: a numbering format (\levelnfc) and the text around the number, or the literal bullet text.
#include <QString>

namespace qly::rtf {

inline constexpr int BulletNumberFormat = 23;
inline constexpr int NoNumberFormat = 255;

struct LevelFormat {
    int numberFormat = BulletNumberFormat;
    QString before; ///< text before the number; for bullets the whole marker text
    QString after; ///< text after the number (empty for bullets)
};

LevelFormat levelFormatForMarkerFormat(const QString& markerFormat);
/// The marker format for a numbered level (before + "{kind}" + after).
QString markerFormatForNumberedLevel(int numberFormat, const QString& before, const QString& after);
/// The marker format for a bullet text: the named bullet ("{disc}") where the text holds one.
QString markerFormatForBulletText(const QString& text);

} // namespace qly::rtf
