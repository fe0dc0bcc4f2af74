#include <qlyappkit/platform/strings/StringSearch.h>

using namespace qly;

TEST(StringSearch, ForwardBackwardAndCase)
{
    const QString text = QStringLiteral("abc ABC abc");
    EXPECT_EQ(rangeOfString(text, QStringLiteral("abc")), (Range{0, 3}));
    EXPECT_EQ(rangeOfString(text, QStringLiteral("abc"), BackwardsSearch), (Range{8, 3}));
    EXPECT_EQ(rangeOfString(text, QStringLiteral("ABC")), (Range{4, 3}));
    EXPECT_EQ(rangeOfString(text, QStringLiteral("aBc"), CaseInsensitiveSearch, Range{1, 10}), (Range{4, 3}));
    EXPECT_EQ(rangeOfString(text, QStringLiteral("aBc"), CaseInsensitiveSearch | BackwardsSearch, Range{0, 7}),
              (Range{4, 3}));
    EXPECT_TRUE(rangeOfString(text, QStringLiteral("aBc")).isNotFound());
    EXPECT_EQ(rangeOfString(text, QStringLiteral("aBc")), Range::notFound());

    // Literal and numeric are accepted and change nothing.
    EXPECT_EQ(rangeOfString(text, QStringLiteral("ABC"), LiteralSearch | NumericSearch), (Range{4, 3}));
    EXPECT_EQ(rangeOfString(QStringLiteral("x10 x9"), QStringLiteral("9"), NumericSearch), (Range{5, 1}));

    // Empty needle never found, not even in empty text.
    EXPECT_TRUE(rangeOfString(text, QString()).isNotFound());
    EXPECT_TRUE(rangeOfString(QString(), QString()).isNotFound());
    EXPECT_TRUE(rangeOfString(QString(), QStringLiteral("a")).isNotFound());

    // UTF-16 units: a surrogate half is found inside a pair; case folding keeps lengths.
    const QString emoji = QStringLiteral("a\U0001F600b");
    EXPECT_EQ(rangeOfString(emoji, QString(QChar(0xDE00))), (Range{2, 1}));
    EXPECT_EQ(rangeOfString(QStringLiteral("straSSe"), QStringLiteral("sse"), CaseInsensitiveSearch), (Range{4, 3}));
    EXPECT_TRUE(
        rangeOfString(QStringLiteral("stra\u00DFe"), QStringLiteral("SSE"), CaseInsensitiveSearch).isNotFound());
    EXPECT_EQ(rangeOfString(QStringLiteral("\u00C9t\u00C9"), QStringLiteral("\u00E9"),
                            CaseInsensitiveSearch | BackwardsSearch),
              (Range{2, 1}));

    EXPECT_TRUE(stringsEqual(QStringLiteral("Abc"), QStringLiteral("aBC"), CaseInsensitiveSearch));
    EXPECT_FALSE(stringsEqual(QStringLiteral("Abc"), QStringLiteral("aBC"), 0));
    EXPECT_TRUE(stringsEqual(QString(), QStringLiteral(""), 0));
}

TEST(StringSearch, Anchors)
{
    const QString text = QStringLiteral("abcabc");
    EXPECT_EQ(rangeOfString(text, QStringLiteral("abc"), AnchoredSearch), (Range{0, 3}));
    EXPECT_TRUE(rangeOfString(text, QStringLiteral("bc"), AnchoredSearch).isNotFound());
    EXPECT_EQ(rangeOfString(text, QStringLiteral("bc"), AnchoredSearch | BackwardsSearch), (Range{4, 2}));
    EXPECT_TRUE(rangeOfString(text, QStringLiteral("ab"), AnchoredSearch | BackwardsSearch).isNotFound());
    // Anchored at the given range's ends, not the text's.
    EXPECT_EQ(rangeOfString(text, QStringLiteral("ca"), AnchoredSearch, Range{2, 3}), (Range{2, 2}));
    EXPECT_EQ(rangeOfString(text, QStringLiteral("ab"), AnchoredSearch | BackwardsSearch, Range{1, 4}), (Range{3, 2}));
    EXPECT_EQ(rangeOfString(text, QStringLiteral("AB"), AnchoredSearch | CaseInsensitiveSearch, Range{3, 3}),
              (Range{3, 2}));
    EXPECT_TRUE(rangeOfString(text, QStringLiteral("abc"), AnchoredSearch, Range{1, 5}).isNotFound());
}

TEST(StringSearch, RangeIsClippedToText)
{
    const QString text = QStringLiteral("one two one");
    // A match must lie wholly inside the range.
    EXPECT_TRUE(rangeOfString(text, QStringLiteral("two"), 0, Range{5, 5}).isNotFound());
    EXPECT_TRUE(rangeOfString(text, QStringLiteral("one"), BackwardsSearch, Range{1, 9}).isNotFound());
    EXPECT_EQ(rangeOfString(text, QStringLiteral("one"), BackwardsSearch, Range{1, 10}), (Range{8, 3}));
    // Out-of-bounds ranges are clipped, never read past the text.
    EXPECT_EQ(rangeOfString(text, QStringLiteral("one"), BackwardsSearch, Range{4, 1000}), (Range{8, 3}));
    EXPECT_EQ(rangeOfString(text, QStringLiteral("one"), 0, Range{-5, 8}), (Range{0, 3}));
    EXPECT_TRUE(rangeOfString(text, QStringLiteral("one"), 0, Range{-5, 7}).isNotFound());
    EXPECT_TRUE(rangeOfString(text, QStringLiteral("one"), 0, Range{100, 5}).isNotFound());
    EXPECT_TRUE(rangeOfString(text, QStringLiteral("one"), 0, Range{0, -3}).isNotFound());
    EXPECT_TRUE(rangeOfString(text, QStringLiteral("one"), 0, Range::notFound()).isNotFound());
    EXPECT_EQ(
        rangeOfString(text, QStringLiteral("one"), BackwardsSearch, Range{2, std::numeric_limits<qsizetype>::max()}),
        (Range{8, 3}));
    EXPECT_EQ(rangeOfString(text, QStringLiteral("one"), AnchoredSearch | BackwardsSearch, Range{0, 1000}),
              (Range{8, 3}));
}
