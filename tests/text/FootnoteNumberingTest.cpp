#include <gtest/gtest.h>

#include <climits>

#include <qlyappkit/text/notes/FootnoteNumbering.h>

using namespace qly;

namespace {

// A Roman numeral read back by the subtractive rule, independently of how it was built.
int romanValue(const QString& numeral)
{
    auto digit = [](QChar c) {
        switch (c.toLower().unicode()) {
        case u'i':
            return 1;
        case u'v':
            return 5;
        case u'x':
            return 10;
        case u'l':
            return 50;
        case u'c':
            return 100;
        case u'd':
            return 500;
        case u'm':
            return 1000;
        default:
            return -100000;
        }
    };
    int total = 0;
    for (qsizetype i = 0; i < numeral.size(); ++i) {
        const int v = digit(numeral.at(i));
        const int next = i + 1 < numeral.size() ? digit(numeral.at(i + 1)) : 0;
        total += v < next ? -v : v;
    }
    return total;
}

const QString Dagger = QStringLiteral("\u2020");
const QString DoubleDagger = QStringLiteral("\u2021");
const QString Section = QStringLiteral("\u00a7");

} // namespace

TEST(FootnoteNumbering, DecimalIsTheDefaultForUnknownStyles)
{
    EXPECT_EQ(stringFromInt(1, DecimalFootnoteStyle), "1");
    EXPECT_EQ(stringFromInt(0, DecimalFootnoteStyle), "0");
    EXPECT_EQ(stringFromInt(-12, DecimalFootnoteStyle), "-12");
    EXPECT_EQ(stringFromInt(4000, DecimalFootnoteStyle), "4000");
    EXPECT_EQ(stringFromInt(27, 6), "27");
    EXPECT_EQ(stringFromInt(27, -1), "27");
}

TEST(FootnoteNumbering, LettersRepeatPerRoundOfTheAlphabet)
{
    EXPECT_EQ(stringFromInt(0, LowerCaseLettersFootnoteStyle), "");
    EXPECT_EQ(stringFromInt(-5, UpperCaseLettersFootnoteStyle), "");
    EXPECT_EQ(stringFromInt(1, LowerCaseLettersFootnoteStyle), "a");
    EXPECT_EQ(stringFromInt(26, LowerCaseLettersFootnoteStyle), "z");
    EXPECT_EQ(stringFromInt(27, LowerCaseLettersFootnoteStyle), "aa");
    EXPECT_EQ(stringFromInt(52, LowerCaseLettersFootnoteStyle), "zz");
    EXPECT_EQ(stringFromInt(53, LowerCaseLettersFootnoteStyle), "aaa");
    EXPECT_EQ(stringFromInt(27, UpperCaseLettersFootnoteStyle), "AA");
    EXPECT_EQ(stringFromInt(53, UpperCaseLettersFootnoteStyle), "AAA");
    for (int n = 1; n <= 300; ++n) {
        const QString s = alphabeticNumberFromInt(n);
        ASSERT_EQ(s.size(), (n + 25) / 26) << n;
        EXPECT_EQ(s, QString(s.size(), QChar(u'a' + (n - 1) % 26))) << n;
    }
}

TEST(FootnoteNumbering, RomanNumeralsHaveNoUpperLimit)
{
    EXPECT_EQ(stringFromInt(0, LowerCaseRomanFootnoteStyle), "");
    EXPECT_EQ(stringFromInt(-1, UpperCaseRomanFootnoteStyle), "");
    EXPECT_EQ(stringFromInt(1, LowerCaseRomanFootnoteStyle), "i");
    EXPECT_EQ(stringFromInt(4, LowerCaseRomanFootnoteStyle), "iv");
    EXPECT_EQ(stringFromInt(1994, LowerCaseRomanFootnoteStyle), "mcmxciv");
    EXPECT_EQ(stringFromInt(3999, LowerCaseRomanFootnoteStyle), "mmmcmxcix");
    EXPECT_EQ(stringFromInt(3999, UpperCaseRomanFootnoteStyle), "MMMCMXCIX");
    EXPECT_EQ(stringFromInt(4000, LowerCaseRomanFootnoteStyle), "mmmm");
    EXPECT_EQ(stringFromInt(4000, UpperCaseRomanFootnoteStyle), "MMMM");
    EXPECT_EQ(romanNumeralsFromInt(12345), QString(12, u'm') + "cccxlv");
    // Every value reads back, and no numeral holds four equal letters in a row below 4000.
    for (int n = 1; n <= 4000; ++n) {
        const QString s = romanNumeralsFromInt(n);
        ASSERT_EQ(romanValue(s), n) << s.toStdString();
        if (n < 4000) {
            for (const char* four : {"iiii", "xxxx", "cccc", "mmmm", "vv", "ll", "dd"})
                EXPECT_FALSE(s.contains(QLatin1String(four))) << n << " " << s.toStdString();
        }
    }
}

TEST(FootnoteNumbering, SymbolsCycleThroughFourAndRepeat)
{
    EXPECT_EQ(stringFromInt(0, SymbolsFootnoteStyle), "");
    EXPECT_EQ(stringFromInt(1, SymbolsFootnoteStyle), "*");
    EXPECT_EQ(stringFromInt(2, SymbolsFootnoteStyle), Dagger);
    EXPECT_EQ(stringFromInt(3, SymbolsFootnoteStyle), DoubleDagger);
    EXPECT_EQ(stringFromInt(4, SymbolsFootnoteStyle), Section);
    EXPECT_EQ(stringFromInt(5, SymbolsFootnoteStyle), "**");
    EXPECT_EQ(stringFromInt(6, SymbolsFootnoteStyle), Dagger + Dagger);
    EXPECT_EQ(stringFromInt(8, SymbolsFootnoteStyle), Section + Section);
    EXPECT_EQ(stringFromInt(9, SymbolsFootnoteStyle), "***");
    EXPECT_EQ(chicagoFootnoteMarkerFromInt(12), Section + Section + Section);
}

TEST(FootnoteNumbering, AbsurdNumbersDoNotExhaustMemory)
{
    EXPECT_EQ(stringFromInt(INT_MAX, SymbolsFootnoteStyle), "");
    EXPECT_EQ(stringFromInt(INT_MAX, LowerCaseLettersFootnoteStyle), "");
    // Large but sane values still follow the rule.
    EXPECT_EQ(stringFromInt(4 * 1000, SymbolsFootnoteStyle), QString(1000, QChar(0x00a7)));
    const QString roman = romanNumeralsFromInt(INT_MAX);
    EXPECT_EQ(roman.count(u'm'), INT_MAX / 1000);
}
