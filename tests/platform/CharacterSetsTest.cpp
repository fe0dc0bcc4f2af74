#include <qlyappkit/platform/strings/CharacterSets.h>

using namespace qly;

TEST(CharacterSets, Whitespace)
{
    for (char32_t c :
         {U'\t', U'\n', U'\v', U'\f', U'\r', U' ', char32_t(0x85), char32_t(0xA0), char32_t(0x1680), char32_t(0x2000),
          char32_t(0x200A), char32_t(0x2028), char32_t(0x2029), char32_t(0x202F), char32_t(0x205F), char32_t(0x3000)})
        EXPECT_TRUE(isWhitespaceOrNewline(c)) << std::hex << unsigned(c);
    for (char32_t c : {U'a', U'0', U'.', char32_t(0x08), char32_t(0x0E), char32_t(0x1F), char32_t(0x84),
                       char32_t(0x200B), char32_t(0xFEFF), char32_t(0x180E), char32_t(0x1F600)})
        EXPECT_FALSE(isWhitespaceOrNewline(c)) << std::hex << unsigned(c);

    for (char32_t c : {U'\n', U'\v', U'\f', U'\r', char32_t(0x85), char32_t(0x2028), char32_t(0x2029)})
        EXPECT_TRUE(isNewline(c)) << std::hex << unsigned(c);
    for (char32_t c : {U'\t', U' ', char32_t(0xA0), char32_t(0x2027)})
        EXPECT_FALSE(isNewline(c)) << std::hex << unsigned(c);
}

TEST(CharacterSets, Alphanumeric)
{
    for (char32_t c : {U'a', U'Z', U'0', U'9', char32_t(0xE9) /* é */, char32_t(0x301) /* combining acute */,
                       char32_t(0x903) /* Devanagari visarga, Mc */, char32_t(0x20DD) /* enclosing circle, Me */,
                       char32_t(0x661) /* Arabic-Indic one */, char32_t(0x967) /* Devanagari one */,
                       char32_t(0xFF11) /* full-width one */, char32_t(0x2163) /* Roman numeral four, Nl */,
                       char32_t(0xB2) /* superscript two, No */, char32_t(0x4E2D), char32_t(0x5D0), char32_t(0x2B0),
                       char32_t(0x1D400) /* mathematical bold A */, char32_t(0x1F101) /* digit zero comma, No */})
        EXPECT_TRUE(isAlphanumeric(c)) << std::hex << unsigned(c);
    for (char32_t c : {U' ', U'_', U'-', U'@', U'[', U'`', U'{', char32_t(0x7F), char32_t(0xA0), char32_t(0x2019),
                       char32_t(0x20AC), char32_t(0x1F600), char32_t(0xFFFC)})
        EXPECT_FALSE(isAlphanumeric(c)) << std::hex << unsigned(c);

    EXPECT_TRUE(containsAlphanumeric(u"  ...\u0661"));
    EXPECT_TRUE(containsAlphanumeric(u"\U0001D400")); // a letter outside the BMP, as a surrogate pair
    EXPECT_FALSE(containsAlphanumeric(u" .,!\U0001F600\uFFFC"));
    EXPECT_FALSE(containsAlphanumeric(u""));
    // An unpaired surrogate is not a letter.
    const QChar lone[] = {QChar(0xD835), QChar(u' ')};
    EXPECT_FALSE(containsAlphanumeric(QStringView(lone, 2)));
}

TEST(CharacterSets, Punctuation)
{
    for (char32_t c : {U'.',
                       U',',
                       U'!',
                       U'?',
                       U'_',
                       U'-',
                       U'(',
                       U')',
                       U'"',
                       U'\'',
                       U'@',
                       U'#',
                       U'%',
                       U'&',
                       U'*',
                       char32_t(0xA1),
                       char32_t(0xAB),
                       char32_t(0xBB),
                       char32_t(0x2014),
                       char32_t(0x2018),
                       char32_t(0x2019),
                       char32_t(0x201C),
                       char32_t(0x2026),
                       char32_t(0x3002),
                       char32_t(0x55D)})
        EXPECT_TRUE(isPunctuation(c)) << std::hex << unsigned(c);
    // Symbols (S*) are not punctuation.
    for (char32_t c :
         {U'a', U'1', U' ', U'+', U'$', U'<', U'=', U'^', U'`', U'|', U'~', char32_t(0xA9), char32_t(0x20AC)})
        EXPECT_FALSE(isPunctuation(c)) << std::hex << unsigned(c);
}
