#include <gtest/gtest.h>

#include <limits>

#include <qlyappkit/platform/strings/EscapeParsing.h>

using namespace qly;

namespace {

const QString Endnotes = QStringLiteral("<$--ENDNOTES-->");
const QString Marker = QStringLiteral("<$x>");

QString s(const char16_t* text) { return QString::fromUtf16(text); }

} // namespace

TEST(EscapeParsing, UnescapedSearchCountsTheBackslashesBeforeAMatch)
{
    // Two backslashes escape each other; one or three escape the marker.
    EXPECT_EQ(rangeOfUnescapedString(s(u"a\\\\") + Endnotes, Endnotes), (Range{3, Endnotes.size()}));
    EXPECT_TRUE(rangeOfUnescapedString(s(u"a\\") + Endnotes, Endnotes).isNotFound());
    EXPECT_TRUE(rangeOfUnescapedString(s(u"\\\\\\") + Endnotes, Endnotes).isNotFound());
    EXPECT_EQ(rangeOfUnescapedString(Endnotes + s(u" tail"), Endnotes), (Range{0, Endnotes.size()}));

    // A rejected match is skipped and the search goes on after it.
    EXPECT_EQ(rangeOfUnescapedString(s(u"\\<$x> and <$x>"), Marker), (Range{10, 4}));

    // The backslashes are counted in the whole string, also when they lie before the range.
    EXPECT_TRUE(rangeOfUnescapedString(s(u"\\<$x>"), Marker, 0, Range{1, 4}).isNotFound());
    EXPECT_EQ(rangeOfUnescapedString(s(u"\\\\<$x>"), Marker, 0, Range{2, 4}), (Range{2, 4}));

    // Options and range limits.
    EXPECT_EQ(rangeOfUnescapedString(s(u"ab <$X>"), Marker, CaseInsensitiveSearch), (Range{3, 4}));
    EXPECT_TRUE(rangeOfUnescapedString(s(u"ab <$X>"), Marker, 0u).isNotFound());
    EXPECT_TRUE(rangeOfUnescapedString(s(u"<$x> <$x>"), Marker, 0, Range{1, 7}).isNotFound());
    EXPECT_EQ(rangeOfUnescapedString(s(u"<$x> <$x>"), Marker, 0, Range{1, 500}), (Range{5, 4}));
    EXPECT_TRUE(rangeOfUnescapedString(s(u"<$x>"), Marker, 0, Range{0, 0}).isNotFound());
    EXPECT_TRUE(rangeOfUnescapedString(s(u"<$x>"), Marker, 0, Range::notFound()).isNotFound());
    EXPECT_TRUE(rangeOfUnescapedString(s(u"<$x>"), QString()).isNotFound());
    EXPECT_TRUE(rangeOfUnescapedString(QString(), Marker).isNotFound());
}

TEST(EscapeParsing, BackwardSearchContinuesBeforeARejectedMatch)
{
    const QString text = s(u"<$x> <$x> \\<$x>");
    EXPECT_EQ(rangeOfUnescapedString(text, Marker, BackwardsSearch), (Range{5, 4}));
    EXPECT_EQ(rangeOfUnescapedString(text, Marker, 0u), (Range{0, 4}));
    // Only the part before the rejected match is searched again: nothing left there.
    EXPECT_TRUE(rangeOfUnescapedString(text, Marker, BackwardsSearch, Range{10, 5}).isNotFound());
    EXPECT_TRUE(rangeOfUnescapedString(s(u"\\<$x>\\<$x>"), Marker, BackwardsSearch).isNotFound());
}

TEST(EscapeParsing, TerminatingSetRejectsMatchesRunningIntoOtherText)
{
    // The first marker runs into a letter; the next one is followed by a space.
    const QString text = s(u"<$x>a <$x> end");
    EXPECT_EQ(rangeOfUnescapedString(text, Marker, isWhitespaceOrNewline), (Range{6, 4}));
    EXPECT_EQ(rangeOfUnescapedString(text, Marker, 0, Range{0, text.size()}, nullptr), (Range{0, 4}));
    // The end of the string terminates as well.
    EXPECT_EQ(rangeOfUnescapedString(s(u"<$x>a <$x>"), Marker, isWhitespaceOrNewline), (Range{6, 4}));
    EXPECT_TRUE(rangeOfUnescapedString(s(u"<$x>a <$x>b"), Marker, isWhitespaceOrNewline).isNotFound());
    // Backwards, a rejected last match gives way to an earlier one.
    EXPECT_EQ(rangeOfUnescapedString(s(u"<$x>\n<$x>b"), Marker, BackwardsSearch, Range{0, 10}, isWhitespaceOrNewline),
              (Range{0, 4}));
    // The character after the match is judged as a whole code point.
    const CharacterSet emoji = [](char32_t c) { return c == 0x1F600; };
    EXPECT_EQ(rangeOfUnescapedString(s(u"<$x>\U0001F600"), Marker, emoji), (Range{0, 4}));
    EXPECT_TRUE(rangeOfUnescapedString(s(u"<$x>\U0001F601"), Marker, emoji).isNotFound());
}

TEST(EscapeParsing, OccurrencesCountUnescapedMatchesForwards)
{
    const QString text = s(u"<$x> \\<$x> \\\\<$x> <$x>");
    EXPECT_EQ(occurrencesOfUnescapedString(text, Marker, 0, Range{0, text.size()}), 3);
    EXPECT_EQ(occurrencesOfUnescapedString(text, Marker, BackwardsSearch, Range{0, text.size()}), 3);
    EXPECT_EQ(occurrencesOfUnescapedString(text, Marker, 0, Range{1, text.size() - 1}), 2);
    EXPECT_EQ(occurrencesOfUnescapedString(s(u"aaaaa"), QStringLiteral("aa"), 0, Range{0, 5}), 2);
    EXPECT_EQ(occurrencesOfUnescapedString(s(u"<$X><$x>"), Marker, CaseInsensitiveSearch, Range{0, 8}), 2);
    EXPECT_EQ(occurrencesOfUnescapedString(text, QString(), 0, Range{0, text.size()}), 0);
    EXPECT_EQ(occurrencesOfUnescapedString(QString(), Marker, 0, Range{0, 10}), 0);
}

TEST(EscapeParsing, IntegerAtEndNeedsACharacterAfterTheDigitsInsideTheRange)
{
    const QString n = QStringLiteral("<$n>");
    EXPECT_EQ(integerAtEndOfUnescapedString(s(u"page <$n>12 of"), n, 0, Range{0, 14}), 12);
    EXPECT_EQ(integerAtEndOfUnescapedString(s(u"<$n>12"), n, 0, Range{0, 6}), 0);
    EXPECT_EQ(integerAtEndOfUnescapedString(s(u"<$n>12x"), n, 0, Range{0, 6}), 0);
    EXPECT_EQ(integerAtEndOfUnescapedString(s(u"<$n>12x"), n, 0, Range{0, 7}), 12);
    // The range cuts the digits: still nothing after them inside the range.
    EXPECT_EQ(integerAtEndOfUnescapedString(s(u"<$n>123 "), n, 0, Range{0, 6}), 0);
    EXPECT_EQ(integerAtEndOfUnescapedString(s(u"<$n>123 "), n, 0, Range{0, 8}), 123);
    EXPECT_EQ(integerAtEndOfUnescapedString(s(u"<$n>007."), n, 0, Range{0, 8}), 7);

    EXPECT_EQ(integerAtEndOfUnescapedString(s(u"<$n>x12 "), n, 0, Range{0, 8}), 0);
    EXPECT_EQ(integerAtEndOfUnescapedString(s(u"<$m>12 "), n, 0, Range{0, 7}), 0);
    // The escaped marker is passed over for the live one.
    EXPECT_EQ(integerAtEndOfUnescapedString(s(u"\\<$n>5 <$n>7 "), n, 0, Range{0, 13}), 7);
    EXPECT_EQ(integerAtEndOfUnescapedString(s(u"\\<$n>5 "), n, 0, Range{0, 7}), 0);
    EXPECT_EQ(integerAtEndOfUnescapedString(s(u"<$n>99999999999999999999999 "), n, 0, Range{0, 28}),
              std::numeric_limits<qint64>::max());
}

TEST(EscapeParsing, CurlyBracketExpansionBalancesBraces)
{
    // Range inside a simple group: through the closing brace.
    EXPECT_EQ(expandedRangeToIncludeCurlyBracketsAroundRange(s(u"a {b c} d"), Range{3, 1}), (Range{2, 5}));
    // The range already closes the group: from the brace to the range's end.
    EXPECT_EQ(expandedRangeToIncludeCurlyBracketsAroundRange(s(u"a {b c} d"), Range{3, 4}), (Range{2, 5}));
    EXPECT_EQ(expandedRangeToIncludeCurlyBracketsAroundRange(s(u"{a}"), Range{1, 0}), (Range{0, 3}));

    // Nested groups: an inner group after the range must be closed as well.
    EXPECT_EQ(expandedRangeToIncludeCurlyBracketsAroundRange(s(u"{x {y} z} w"), Range{1, 1}), (Range{0, 9}));
    EXPECT_EQ(expandedRangeToIncludeCurlyBracketsAroundRange(s(u"{x {y} z} w"), Range{4, 1}), (Range{3, 3}));
    // An open brace inside the range needs one more closing brace.
    EXPECT_EQ(expandedRangeToIncludeCurlyBracketsAroundRange(s(u"{a {b} c}"), Range{1, 3}), (Range{0, 9}));

    // Escaped braces do not count; double-escaped ones do.
    EXPECT_EQ(expandedRangeToIncludeCurlyBracketsAroundRange(s(u"{a \\} b}"), Range{1, 1}), (Range{0, 8}));
    EXPECT_EQ(expandedRangeToIncludeCurlyBracketsAroundRange(s(u"{\\{a}"), Range{3, 1}), (Range{0, 5}));
    EXPECT_EQ(expandedRangeToIncludeCurlyBracketsAroundRange(s(u"\\\\{a}"), Range{3, 1}), (Range{2, 3}));
    EXPECT_TRUE(expandedRangeToIncludeCurlyBracketsAroundRange(s(u"\\{a}"), Range{2, 1}).isNotFound());

    // No brace before the range.
    EXPECT_TRUE(expandedRangeToIncludeCurlyBracketsAroundRange(s(u"a} {b"), Range{0, 1}).isNotFound());
    EXPECT_TRUE(expandedRangeToIncludeCurlyBracketsAroundRange(QString(), Range{0, 0}).isNotFound());

    // Unbalanced: the result ends at the last position reached.
    EXPECT_EQ(expandedRangeToIncludeCurlyBracketsAroundRange(s(u"{a {b"), Range{1, 1}), (Range{0, 2}));
    EXPECT_EQ(expandedRangeToIncludeCurlyBracketsAroundRange(s(u"{a {b} c"), Range{1, 1}), (Range{0, 6}));
}

TEST(EscapeParsing, RangesWithAnyValuesAreClipped)
{
    constexpr qsizetype max = std::numeric_limits<qsizetype>::max(), min = std::numeric_limits<qsizetype>::min();
    EXPECT_EQ(clippedRange(Range{3, max}, 10), (Range{3, 7}));
    EXPECT_EQ(clippedRange(Range{max, 5}, 10), (Range{10, 0}));
    EXPECT_EQ(clippedRange(Range{min, max}, 10), (Range{0, 0}));
    EXPECT_EQ(clippedRange(Range{-4, 6}, 10), (Range{0, 2}));
    EXPECT_EQ(clippedRange(Range{4, -6}, 10), (Range{4, 0}));
    EXPECT_EQ(clippedRange(Range{min, min}, 10), (Range{0, 0}));
    EXPECT_EQ(clippedRange(Range{12, 3}, 10), (Range{10, 0}));

    // Every search and count takes such ranges.
    const QString text = s(u"{a \\x <$x>12 } x");
    EXPECT_EQ(rangeOfUnescapedString(text, u"x"_qs, 0, Range{1, max}), (Range{8, 1}));
    EXPECT_EQ(rangeOfUnescapedString(text, u"x"_qs, BackwardsSearch, Range{1, max}), (Range{15, 1}));
    EXPECT_TRUE(rangeOfUnescapedString(text, u"x"_qs, 0, Range{max, max}).isNotFound());
    EXPECT_EQ(occurrencesOfUnescapedString(text, u"x"_qs, 0, Range{-5, max}), 2);
    EXPECT_EQ(occurrencesOfUnescapedString(text, u"x"_qs, 0, Range{min, max}), 0);
    EXPECT_EQ(integerAtEndOfUnescapedString(text, Marker, 0, Range{2, max}), 12);
    EXPECT_EQ(expandedRangeToIncludeCurlyBracketsAroundRange(text, Range{3, max}), (Range{0, text.size()}));
    EXPECT_EQ(expandedRangeToIncludeCurlyBracketsAroundRange(text, Range{3, min}), (Range{0, 14}));
}
