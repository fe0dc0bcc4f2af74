#include <qlyappkit/text/notes/FootnoteNumbering.h>

#include <QtGlobal>
#include <array>

namespace qly {

namespace {

struct RomanDigit {
    int value;
    const char* spelling;
};
constexpr std::array<RomanDigit, 13> RomanDigits{{
    {1000, "m"},
    {900, "cm"},
    {500, "d"},
    {400, "cd"},
    {100, "c"},
    {90, "xc"},
    {50, "l"},
    {40, "xl"},
    {10, "x"},
    {9, "ix"},
    {5, "v"},
    {4, "iv"},
    {1, "i"},
}};

constexpr std::array<char16_t, 4> FootnoteSymbols{u'*', u'\u2020', u'\u2021', u'\u00a7'};

// Repeated letters and symbols grow with n; past this many a "number" is no footnote number at all,
// and building it would only exhaust memory.
constexpr int MaximumRepeats = 1 << 20;

// A symbol or letter repeated ceil(n / cycle) times: the round of the cycle that n falls in.
QString repeatedForRound(QChar symbol, int n, int cycle)
{
    const int repeats = (n - 1) / cycle + 1;
    if (repeats > MaximumRepeats) {
        qWarning("Footnote number %d is too large for a repeated-symbol style", n);
        return QString();
    }
    return QString(repeats, symbol);
}

} // namespace

QString romanNumeralsFromInt(int n)
{
    QString out;
    if (n < 1)
        return out;
    // The thousands alone can be long (no upper limit); reserve for them.
    out.reserve(n / 1000 + 16);
    for (const RomanDigit& digit : RomanDigits) {
        const int count = n / digit.value;
        for (int i = 0; i < count; ++i)
            out += QLatin1String(digit.spelling);
        n -= count * digit.value;
    }
    return out;
}

QString alphabeticNumberFromInt(int n)
{
    if (n < 1)
        return QString();
    return repeatedForRound(QChar(u'a' + (n - 1) % 26), n, 26);
}

QString chicagoFootnoteMarkerFromInt(int n)
{
    if (n < 1)
        return QString();
    return repeatedForRound(QChar(FootnoteSymbols[size_t((n - 1) % 4)]), n, 4);
}

QString stringFromInt(int n, int footnoteStyle)
{
    switch (footnoteStyle) {
    case LowerCaseLettersFootnoteStyle:
        return alphabeticNumberFromInt(n);
    case UpperCaseLettersFootnoteStyle:
        return alphabeticNumberFromInt(n).toUpper();
    case LowerCaseRomanFootnoteStyle:
        return romanNumeralsFromInt(n);
    case UpperCaseRomanFootnoteStyle:
        return romanNumeralsFromInt(n).toUpper();
    case SymbolsFootnoteStyle:
        return chicagoFootnoteMarkerFromInt(n);
    default:
        return QString::number(n);
    }
}

} // namespace qly
