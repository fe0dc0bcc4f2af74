#pragma once
// Footnote numbers as text in the six number styles of the inline output.
#include <QString>

namespace qly {

/// The footnote number styles (the value of XQInlineFootnotesStyle).
enum FootnoteNumberStyle : int {
    DecimalFootnoteStyle = 0,
    LowerCaseLettersFootnoteStyle = 1,
    UpperCaseLettersFootnoteStyle = 2,
    LowerCaseRomanFootnoteStyle = 3,
    UpperCaseRomanFootnoteStyle = 4,
    SymbolsFootnoteStyle = 5,
};

/// n in the given style; any style outside 0–5 is decimal. Below 1 every style but decimal gives "".
QString stringFromInt(int n, int footnoteStyle);
/// Lower-case Roman numerals, built greedily, with no upper limit (4000 is "mmmm").
QString romanNumeralsFromInt(int n);
/// Lower-case letters: 1 "a" … 26 "z", 27 "aa" … 52 "zz", 53 "aaa". Letters and symbols give ""
/// for a number that would need more than 2^20 repeats.
QString alphabeticNumberFromInt(int n);
/// The symbol series "*", dagger, double dagger, section sign, each repeated once more every round of
/// four: 5 is "**".
QString chicagoFootnoteMarkerFromInt(int n);

} // namespace qly
