#include <qlyappkit/platform/rtf/RTFListFormats_p.h>

namespace qly::rtf {

namespace {

struct NamedBullet {
    const char* name;
    char16_t character;
};
constexpr NamedBullet kBullets[] = {
    {"disc", 0x2022},   {"circle", 0x25E6}, {"square", 0x25AA}, {"diamond", 0x25C6},
    {"hyphen", 0x2043}, {"check", 0x2713},  {"box", 0x2610},
};

struct NamedNumbering {
    const char* name;
    int numberFormat;
};
// The first name of a format is the one read back.
constexpr NamedNumbering kNumberings[] = {
    {"decimal", 0},     {"upper-roman", 1}, {"lower-roman", 2}, {"upper-alpha", 3},
    {"lower-alpha", 4}, {"upper-latin", 3}, {"lower-latin", 4},
};

} // namespace

LevelFormat levelFormatForMarkerFormat(const QString& markerFormat)
{
    const qsizetype open = markerFormat.indexOf(QLatin1Char('{'));
    const qsizetype close = open >= 0 ? markerFormat.indexOf(QLatin1Char('}'), open) : -1;
    if (open < 0 || close < 0)
        return LevelFormat{BulletNumberFormat, markerFormat, {}};
    const QString name = markerFormat.mid(open + 1, close - open - 1);
    const QString before = markerFormat.left(open);
    const QString after = markerFormat.mid(close + 1);
    for (const NamedBullet& b : kBullets) {
        if (name == QLatin1String(b.name))
            return LevelFormat{BulletNumberFormat, before + QChar(b.character) + after, {}};
    }
    for (const NamedNumbering& n : kNumberings) {
        if (name == QLatin1String(n.name))
            return LevelFormat{n.numberFormat, before, after};
    }
    // Numberings RTF cannot name (octal, hexadecimal …) are written as decimal.
    return LevelFormat{0, before, after};
}

QString markerFormatForNumberedLevel(int numberFormat, const QString& before, const QString& after)
{
    const char* name = "decimal";
    for (const NamedNumbering& n : kNumberings) {
        if (n.numberFormat == numberFormat) {
            name = n.name;
            break;
        }
    }
    return before + QLatin1Char('{') + QLatin1String(name) + QLatin1Char('}') + after;
}

QString markerFormatForBulletText(const QString& text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        for (const NamedBullet& b : kBullets) {
            if (text.at(i).unicode() == b.character)
                return text.left(i) + QLatin1Char('{') + QLatin1String(b.name) + QLatin1Char('}') + text.mid(i + 1);
        }
    }
    return text;
}

} // namespace qly::rtf
