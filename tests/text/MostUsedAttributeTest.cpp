// The most used value of an attribute: it must cover more characters than go without the attribute,
// and of equal totals the first met wins.
#include <qlyappkit/text/attributes/AttributeQueries.h>

#include <qlyappkit/platform/text/PlatformAttributes.h>

using namespace qly;

namespace {

QVariant font(const char* name, double size) { return QVariant::fromValue(Font(QString::fromLatin1(name), size)); }

// A text of runs: each run's length and its font (an invalid QVariant: no font).
AttributedString textOfRuns(const std::vector<std::pair<int, QVariant>>& runs)
{
    AttributedString text;
    for (const auto& [length, value] : runs) {
        Attributes attributes;
        if (value.isValid())
            attributes.insert(FontAttributeName, value);
        text.append(QString(length, u'x'), attributes);
    }
    return text;
}

} // namespace

TEST(MostUsedAttribute, TheWinnerMustBeatTheCharactersWithoutOne)
{
    const QVariant times = font("Times", 12), courier = font("Courier", 10), times14 = font("Times", 14);
    struct Case {
        const char* what;
        std::vector<std::pair<int, QVariant>> runs;
        QVariant expected; // invalid: nothing
    };
    const Case cases[] = {
        {"empty text", {}, {}},
        {"no font anywhere", {{5, {}}}, {}},
        {"one font everywhere", {{5, times}}, times},
        // Runs of one value apart from each other add up.
        {"totals over separate runs", {{3, times}, {4, courier}, {3, times}}, times},
        {"sizes tell fonts apart", {{3, times}, {4, times14}}, times14},
        // A tie with the unattributed characters is no win.
        {"tie with characters without a font", {{4, {}}, {4, times}}, {}},
        {"fewer than those without", {{5, {}}, {3, times}, {2, courier}}, {}},
        {"more than those without", {{3, {}}, {4, times}}, times},
        // Of equal totals the first met wins.
        {"tie between fonts", {{4, courier}, {4, times}}, courier},
        {"tie between fonts, other order", {{4, times}, {2, courier}, {2, courier}}, times},
        // A value of another type counts as no font.
        {"not a font", {{6, QVariant(QStringLiteral("Times"))}, {5, times}}, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const AttributedString text = textOfRuns(c.runs);
        const std::optional<Font> found = mostUsedFont(text);
        if (!c.expected.isValid()) {
            EXPECT_FALSE(found) << found->fontName().toStdString();
        } else {
            ASSERT_TRUE(found);
            EXPECT_EQ(*found, c.expected.value<Font>());
        }
    }
    // Without a type filter any value counts, a string as much as a font.
    const AttributedString mixed = textOfRuns({{6, QVariant(QStringLiteral("Times"))}, {5, times}});
    EXPECT_EQ(mostUsedAttributeValue(mixed, FontAttributeName), QVariant(QStringLiteral("Times")));
}

TEST(MostUsedAttribute, TotalsAddUpAmongManyDistinctValues)
{
    // Thousands of distinct sizes, two of which come back later in the text.
    AttributedString text;
    for (int i = 0; i < 5000; ++i)
        text.append(QStringLiteral("ab"), {{FontAttributeName, font("Times", 1000 + i)}});
    text.append(QStringLiteral("abc"), {{FontAttributeName, font("Times", 1500)}});
    text.append(QStringLiteral("ab"), {{FontAttributeName, font("Times", 1000)}});
    const std::optional<Font> found = mostUsedFont(text);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->pointSize(), 1500);
}
