// Markdown emphasis export, its queries, and export followed by import.
#include <gtest/gtest.h>

#include "formats/EmphasisTestSupport.h"

#include <qlyappkit/formats/markdown/MarkdownConstants.h>
#include <qlyappkit/formats/markdown/MarkdownExport.h>
#include <qlyappkit/formats/markdown/MarkdownImport.h>
#include <qlyappkit/formats/markdown/MarkdownQueries.h>

#include <random>

using namespace qly;
using namespace qly::emphasistest;

TEST(MarkdownExport, EmphasisBecomesMarkers)
{
    constexpr unsigned U = XQMarkdownUseUnderlinesOption;
    const struct {
        const char* tagged;
        unsigned options;
        const char* expected;
    } cases[] = {
        {"", 0, ""},
        {"Some *x*", 0, "Some *x*"},
        {"Some *x* <b>bold</b>", 0, "Some \\*x\\* **bold**"},
        {"<b> word </b>", 0, " **word** "},
        {"<b>   </b>x", 0, "   x"},
        {"<i>a</i> <bi>b</bi>", 0, "*a* ***b***"},
        {"<b>bold\n</b>plain\n<i>it</i>", 0, "**bold**\nplain\n*it*"},
        // Underlines only with the option; a paragraph with only underlines escapes only underscores.
        {"<u1>a</u1> <u9>b</u9>", 0, "a b"},
        {"<u1>a</u1> <u9>b</u9>", U, "_a_ __b__"},
        {"<u1>snake_case</u1> 2*3", U, "_snake\\_case_ 2*3"},
        {"snake_case <u9>x</u9>", 0, "snake_case x"},
        // Markers between two spaces stay bare; at a paragraph's edges they are escaped.
        {"a * b _ c <b>d</b>", 0, "a * b _ c **d**"},
        {"*x <b>d</b> y_", 0, "\\*x **d** y\\_"},
        // The escape before a marker right after a bold run takes the run's attributes and joins it.
        {"<b>d</b>_", 0, "**d\\**_"},
        // Already escaped markers are left alone.
        {"\\*x <i>d</i>", 0, "\\*x *d*"},
        // An inserted marker takes the attributes before it, so an underline run takes in the
        // closing marker of a bold run it ends with.
        {"<bu1>a</bu1>", U, "_**a**_"},
        {"<b>a</b><i>b</i>", 0, "**a***b*"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(markdownStringWithOptions(fromTaggedEmphasis(QString::fromUtf8(c.tagged)), c.options),
                  QString::fromUtf8(c.expected))
            << c.tagged << " options " << c.options;
    }
}

TEST(MarkdownExport, OneParagraphAtATime)
{
    const AttributedString text = fromTaggedEmphasis(QStringLiteral("x\n<b>y</b>\nz"));
    EXPECT_EQ(markdownStringForParagraphRange(text, Range{2, 2}, 0), QStringLiteral("**y**\n"));
    EXPECT_EQ(markdownStringForParagraphRange(text, Range{0, 2}, 0), QStringLiteral("x\n"));
    EXPECT_EQ(markdownStringForParagraphRange(text, Range{4, 0}, 0), QString());
}

TEST(MarkdownQueries, MarkerSurroundingsAndTrimming)
{
    const AttributedString text = fromTaggedEmphasis(QStringLiteral("a \\*<b>b</b>\t<u1>c</u1>"));
    EXPECT_TRUE(markdownAtRangeIsEscaped(text, Range{3, 1}));
    EXPECT_FALSE(markdownAtRangeIsEscaped(text, Range{0, 1}));
    EXPECT_FALSE(markdownAtRangeIsEscaped(text, Range{2, 1}));
    EXPECT_TRUE(markdownAtRangeHasWhitespacePrefix(text, Range{2, 1}));
    EXPECT_FALSE(markdownAtRangeHasWhitespacePrefix(text, Range{0, 1}));
    EXPECT_TRUE(markdownAtRangeHasWhitespaceSuffix(text, Range{4, 1}));
    EXPECT_FALSE(markdownAtRangeHasWhitespaceSuffix(text, Range{6, 1}));
    EXPECT_FALSE(markdownAtRangeHasWhitespaceSuffix(text, Range{0, 7}));

    EXPECT_TRUE(containsBoldOrItalicsInParagraphRange(text, Range{0, 5}));
    EXPECT_FALSE(containsBoldOrItalicsInParagraphRange(text, Range{0, 4}));
    EXPECT_FALSE(containsBoldOrItalicsInParagraphRange(text, Range{4, 0}));
    EXPECT_TRUE(containsUnderlineAttributeInParagraphRange(text, Range{5, 2}));
    EXPECT_FALSE(containsUnderlineAttributeInParagraphRange(text, Range{0, 6}));
    EXPECT_FALSE(containsUnderlineAttributeInParagraphRange(text, Range{6, 0}));

    EXPECT_EQ(markdownRangeByTrimmingWhitespaceFromRange(QStringLiteral(" \t ab c\n "), Range{0, 9}), (Range{3, 4}));
    EXPECT_EQ(markdownRangeByTrimmingWhitespaceFromRange(QStringLiteral("x   \n"), Range{1, 4}), Range::notFound());
    EXPECT_EQ(markdownRangeByTrimmingWhitespaceFromRange(QStringLiteral("x"), Range{1, 0}), Range::notFound());
}

namespace {

// Random words in runs of random emphasis (from tags), spaces and line breaks between words going with
// either neighbour; no literal markers.
AttributedString randomEmphasis(std::mt19937& random, const QStringList& tags)
{
    QString tagged;
    const int words = 1 + int(random() % 12);
    for (int w = 0; w < words; ++w) {
        const QString tag = tags[qsizetype(random() % tags.size())];
        const QString word = QStringLiteral("w%1").arg(w);
        const QString gap = random() % 5 == 0 ? QStringLiteral("\n") : QStringLiteral(" ");
        const bool gapInside = random() % 2 == 0 && w + 1 < words;
        QString body = word + (gapInside ? gap : QString());
        if (!tag.isEmpty())
            tagged += QStringLiteral("<%1>%2</%1>").arg(tag, body);
        else
            tagged += body;
        if (!gapInside && w + 1 < words)
            tagged += gap;
    }
    return fromTaggedEmphasis(tagged);
}

// What survives a trip: the characters, and per character its emphasis, except on whitespace at the
// edges of runs, which export deliberately leaves outside the markers.
QString emphasisOfWords(const AttributedString& text)
{
    QString out;
    for (qsizetype i = 0; i < text.length(); ++i) {
        const QChar c = text.characterAt(i);
        out += c;
        if (!c.isSpace())
            out += QStringLiteral("[%1]").arg(emphasisTag(text.attributes(i)));
    }
    return out;
}

} // namespace

TEST(MarkdownRoundTrip, EmphasisSurvivesExportAndImport)
{
    // Bold and italic; double underlines with the underline option. (A single underline exports as
    // "_", which imports as no underline; and where underline and font runs interleave, a marker
    // takes the attributes before it, so the markers need not nest: neither is expected to survive.)
    const struct {
        QStringList tags;
        unsigned options;
    } kinds[] = {
        {{QString(), QStringLiteral("b"), QStringLiteral("i"), QStringLiteral("bi")}, 0},
        {{QString(), QStringLiteral("b"), QStringLiteral("i"), QStringLiteral("bi")}, XQMarkdownUseUnderlinesOption},
        {{QString(), QStringLiteral("u9")}, XQMarkdownUseUnderlinesOption},
        {{QString(), QStringLiteral("bu9"), QStringLiteral("iu9")}, XQMarkdownUseUnderlinesOption},
    };
    std::mt19937 random(7);
    for (const auto& kind : kinds) {
        for (int round = 0; round < 400; ++round) {
            const AttributedString original = randomEmphasis(random, kind.tags);
            const QString markdown = markdownStringWithOptions(original, kind.options);
            const AttributedString back = initWithMarkdownString(
                markdown, {{FontAttributeName, QVariant::fromValue(Font::userFont())}}, kind.options);
            ASSERT_EQ(emphasisOfWords(back), emphasisOfWords(original))
                << "original " << taggedEmphasis(original).toStdString() << "\nmarkdown " << markdown.toStdString();
        }
    }
}

TEST(MarkdownRoundTrip, LiteralMarkersStayText)
{
    // Escaped on export because the paragraph has bold; after import every marker is still a
    // character and not emphasis. Only the first backslash of the text goes (the import's rule), so
    // later escapes keep theirs.
    const AttributedString original = fromTaggedEmphasis(QStringLiteral("2*3 is <b>six</b>, file_name and a_b"));
    const QString markdown = markdownStringWithOptions(original, 0);
    EXPECT_EQ(markdown, QStringLiteral("2\\*3 is **six**, file\\_name and a\\_b"));
    const AttributedString back =
        initWithMarkdownString(markdown, {{FontAttributeName, QVariant::fromValue(Font::userFont())}}, 0);
    EXPECT_EQ(taggedEmphasis(back), QStringLiteral("2*3 is <b>six</b>, file\\_name and a\\_b"));

    // Markers between spaces are never escaped nor taken as emphasis.
    const AttributedString spaced = fromTaggedEmphasis(QStringLiteral("a * b _ c <i>d</i>"));
    EXPECT_EQ(taggedEmphasis(initWithMarkdownString(markdownStringWithOptions(spaced, 0),
                                                    {{FontAttributeName, QVariant::fromValue(Font::userFont())}}, 0)),
              QStringLiteral("a * b _ c <i>d</i>"));
}
