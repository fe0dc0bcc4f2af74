// Markdown, Fountain and MultiMarkdown emphasis import.
#include <gtest/gtest.h>

#include "formats/EmphasisTestSupport.h"

#include <qlyappkit/formats/markdown/MarkdownConstants.h>
#include <qlyappkit/formats/markdown/MarkdownImport.h>
#include <qlyappkit/formats/markdown/MultiMarkdownImport.h>

#include <random>

using namespace qly;
using namespace qly::emphasistest;

namespace {

const Attributes BaseAttributes{{FontAttributeName, QVariant::fromValue(Font::userFont())}};

QString imported(const QString& markdown, unsigned options)
{
    return taggedEmphasis(initWithMarkdownString(markdown, BaseAttributes, options));
}

struct ImportCase {
    const char* markdown;
    unsigned options;
    const char* expected;
};

} // namespace

TEST(MarkdownImport, MarkersBecomeEmphasis)
{
    constexpr unsigned U = XQMarkdownUseUnderlinesOption, E = XQMarkdownEscapeAllCharactersOption;
    const ImportCase cases[] = {
        {"**a** *b*", 0, "<b>a</b> <i>b</i>"},
        {"__a__ _b_", 0, "<b>a</b> <i>b</i>"},
        {"***a***", 0, "<bi>a</bi>"},
        {"a*b*c and x**y**z", 0, "a<i>b</i>c and x<b>y</b>z"},
        // An opener needs no whitespace after it, a closer none before it.
        // The double pass leaves an unpaired "**" in place, and the single pass then reads it as an
        // empty pair of "*" (nothing stops an opener being followed by its closer), so it goes.
        {"** a**", 0, " a"},
        {"a ** b", 0, "a  b"},
        {"a * b * c", 0, "a * b * c"},
        {"*a *b*", 0, "<i>a *b</i>"},
        {"a*", 0, "a*"},
        {"a *\nb*", 0, "a *\nb*"},
        // Markers never pair across paragraphs; each paragraph pairs its own.
        {"*a\nb*", 0, "*a\nb*"},
        {"*a*\r\n**b**\u2029_c_", 0, "<i>a</i>\r\n<b>b</b>\u2029<i>c</i>"},
        // Escapes: an escaped marker neither opens nor closes, and only the first backslash of the
        // whole text is removed.
        {"\\*a*", 0, "*a*"},
        {"\\*a\\*", 0, "*a\\*"},
        {"x \\_y_ \\_z", 0, "x _y_ \\_z"},
        {"\\#a", 0, "\\#a"},
        {"\\#a", E, "#a"},
        // A marker after a backslash counts as escaped even when that backslash is itself escaped.
        {"\\\\*a*", E, "\\*a*"},
        {"\\\\*a*", 0, "\\\\*a*"},
        // With underlines "__" is a double underline and "_" pairs just disappear.
        {"__a__", U, "<u9>a</u9>"},
        {"_a_", U, "a"},
        {"**b** __u__ _x_", U, "<b>b</b> <u9>u</u9> x"},
        // A leftover opener of a double marker is seen again by the single pass.
        {"__a_", 0, "a_"},
        {"", 0, ""},
    };
    for (const ImportCase& c : cases) {
        const QString markdown = QString::fromUtf8(c.markdown);
        EXPECT_EQ(imported(markdown, c.options), QString::fromUtf8(c.expected))
            << "input: " << c.markdown << " options " << c.options;
    }
}

TEST(MarkdownImport, ParagraphPassesReportTheShortenedRange)
{
    MutableAttributedString text(QStringLiteral("x\n**a** *b*\ny"), BaseAttributes);
    Range used;
    EXPECT_EQ(convertAsterisksInParagraphRange(text, Range{2, 10}, &used), 4);
    EXPECT_EQ(used, (Range{2, 4}));
    EXPECT_EQ(taggedEmphasis(text.attributedString()), QStringLiteral("x\n<b>a</b> <i>b</i>\ny"));

    MutableAttributedString underscored(QStringLiteral("__a__ _b_"), BaseAttributes);
    EXPECT_EQ(convertUnderscoresInParagraphRange(underscored, Range{0, 9}, &used, true), 3);
    EXPECT_EQ(used, (Range{0, 3}));
    EXPECT_EQ(taggedEmphasis(underscored.attributedString()), QStringLiteral("<u9>a</u9> b"));
}

TEST(MarkdownImport, TraitsFlattenMixedFontsUnlessMultiMarkdown)
{
    const Font times = Font::fromFamily(QStringLiteral("Times"), 14);
    const Font courier = Font::fromFamily(QStringLiteral("Courier"), 10);
    AttributedString mixed(QStringLiteral("**ab**"));
    mixed.setAttributes({{FontAttributeName, QVariant::fromValue(times)}}, Range{0, 3});
    mixed.setAttributes({{FontAttributeName, QVariant::fromValue(courier)}}, Range{3, 3});

    MutableAttributedString flattened(mixed);
    convertMarkdownWithOptions(flattened, 0);
    ASSERT_EQ(flattened.string(), QStringLiteral("ab"));
    for (qsizetype i : {0, 1})
        EXPECT_EQ(flattened.attribute(FontAttributeName, i).value<Font>(),
                  Font::fromFamily(QStringLiteral("Times"), 14, BoldFontMask));

    const AttributedString perRun = attributedStringByConvertingMultiMarkdown(mixed);
    ASSERT_EQ(perRun.string(), QStringLiteral("ab"));
    EXPECT_EQ(perRun.attribute(FontAttributeName, 0).value<Font>(),
              Font::fromFamily(QStringLiteral("Times"), 14, BoldFontMask));
    EXPECT_EQ(perRun.attribute(FontAttributeName, 1).value<Font>(),
              Font::fromFamily(QStringLiteral("Courier"), 10, BoldFontMask));
}

TEST(MarkdownImport, AFamilyWithoutTheFaceKeepsItsFontButLosesTheMarkers)
{
    const Font unknown = Font::fromFamily(QStringLiteral("No Such Family Anywhere"), 12);
    const AttributedString text =
        initWithMarkdownString(QStringLiteral("**a** *b*"), {{FontAttributeName, QVariant::fromValue(unknown)}}, 0);
    EXPECT_EQ(text.string(), QStringLiteral("a b"));
    for (qsizetype i = 0; i < text.length(); ++i)
        EXPECT_EQ(text.attribute(FontAttributeName, i).value<Font>(), unknown);

    // Text without a font starts from the user font.
    EXPECT_EQ(taggedEmphasis(initWithMarkdownString(QStringLiteral("*a*"), {}, 0)), QStringLiteral("<i>a</i>"));
}

TEST(MultiMarkdownImport, DiffersInUnderscoresAndEscapes)
{
    const struct {
        const char* markdown;
        const char* expected;
    } cases[] = {
        {"**a** *b* __c__ _d_", "<b>a</b> <i>b</i> <b>c</b> <i>d</i>"},
        // An opening "_" may not be followed by another "_".
        {"__a_", "_<i>a</i>"},
        // Every backslash-asterisk becomes an asterisk, and no other escape is touched.
        {"\\*a\\* \\_b\\_", "*a* \\_b\\_"},
        {"\\\\*", "\\*"},
        {"x\\**y*", "x*<i>y</i>"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(taggedEmphasis(attributedStringByConvertingMultiMarkdownFromString(QString::fromUtf8(c.markdown))),
                  QString::fromUtf8(c.expected))
            << c.markdown;
    }
}

// ------------------------------------------------------------------------------------------------
// The import against a plain model: the rules as written, on a QString and one trait mask per
// character, with no attention to speed. Random texts of markers, escapes, spaces and breaks.

namespace {

struct ModelText {
    QString s;
    std::vector<unsigned> traits; // bit 1 italic, 2 bold, 4 double underline

    bool escaped(qsizetype i) const { return i > 0 && s.at(i - 1) == u'\\'; }
    bool spaceBefore(qsizetype i) const { return i > 0 && s.at(i - 1).isSpace(); }
    bool spaceAfter(qsizetype i) const { return i < s.size() && s.at(i).isSpace(); }
    void remove(qsizetype at, qsizetype n)
    {
        s.remove(at, n);
        traits.erase(traits.begin() + at, traits.begin() + at + n);
    }
};

void modelPass(ModelText& t, qsizetype start, qsizetype& end, const QString& m, unsigned trait, bool perRun,
               bool mustNotRepeat)
{
    const qsizetype L = m.size();
    qsizetype open = -1, from = start;
    while (true) {
        const qsizetype at = t.s.indexOf(m, from);
        if (at < 0 || at + L > end)
            return;
        from = at + L;
        if (open < 0) {
            if (!t.escaped(at) && !t.spaceAfter(at + L)
                && !(mustNotRepeat && at + L < t.s.size() && t.s.at(at + L) == m.at(0)))
                open = at;
        } else if (!t.escaped(at) && !t.spaceBefore(at)) {
            const unsigned first = t.traits[size_t(open)];
            for (qsizetype i = open; i < at + L; ++i)
                t.traits[size_t(i)] = (perRun ? t.traits[size_t(i)] : first) | trait;
            t.remove(at, L);
            t.remove(open, L);
            end -= 2 * L;
            from = std::max(start, at - 2 * L);
            open = -1;
        }
    }
}

enum class Rules { Markdown, MarkdownWithUnderlines, MultiMarkdown };

ModelText modelImport(const QString& input, Rules rules)
{
    const bool multiMarkdown = rules == Rules::MultiMarkdown;
    const bool underlines = rules == Rules::MarkdownWithUnderlines;
    ModelText t{input, std::vector<unsigned>(size_t(input.size()), 0)};
    qsizetype start = 0;
    while (start < t.s.size()) {
        qsizetype end = start;
        while (end < t.s.size() && t.s.at(end) != u'\n')
            ++end;
        if (end < t.s.size())
            ++end;
        modelPass(t, start, end, QStringLiteral("**"), 2, multiMarkdown, false);
        modelPass(t, start, end, QStringLiteral("*"), 1, multiMarkdown, false);
        // With underlines "__" adds the double underline (4 here) to each character as it is, and a
        // "_" pair adds nothing that survives.
        modelPass(t, start, end, QStringLiteral("__"), underlines ? 4 : 2, multiMarkdown || underlines, false);
        modelPass(t, start, end, QStringLiteral("_"), underlines ? 0 : 1, multiMarkdown || underlines, multiMarkdown);
        start = end;
    }
    if (multiMarkdown) {
        for (qsizetype at = t.s.indexOf(QStringLiteral("\\*")); at >= 0;
             at = t.s.indexOf(QStringLiteral("\\*"), at + 1))
            t.remove(at, 1);
    } else {
        const qsizetype at = t.s.indexOf(u'\\');
        if (at >= 0 && at + 1 < t.s.size() && (t.s.at(at + 1) == u'*' || t.s.at(at + 1) == u'_'))
            t.remove(at, 1);
    }
    return t;
}

QString modelTagged(const ModelText& t)
{
    AttributedString text;
    for (qsizetype i = 0; i < t.s.size(); ++i) {
        const unsigned traits = t.traits[size_t(i)];
        Attributes attributes{{FontAttributeName,
                               QVariant::fromValue(Font::fromFamily(QStringLiteral("Helvetica"), 12,
                                                                    traits & (BoldFontMask | ItalicFontMask)))}};
        if (traits & 4)
            attributes.insert(UnderlineStyleAttributeName, 9);
        text.append(QString(t.s.at(i)), attributes);
    }
    return taggedEmphasis(text);
}

} // namespace

TEST(MarkdownImport, AgreesWithAPlainModelOnRandomTexts)
{
    std::mt19937 random(20261122);
    const QString alphabet = QStringLiteral("****__\\ a\nb");
    for (int round = 0; round < 3000; ++round) {
        QString input;
        const int length = int(random() % 28);
        for (int i = 0; i < length; ++i)
            input += alphabet.at(qsizetype(random() % alphabet.size()));
        const Rules rules = Rules(round % 3);
        const QString expected = modelTagged(modelImport(input, rules));
        const QString actual = rules == Rules::MultiMarkdown
            ? taggedEmphasis(attributedStringByConvertingMultiMarkdownFromString(input))
            : imported(input, rules == Rules::MarkdownWithUnderlines ? XQMarkdownUseUnderlinesOption : 0);
        ASSERT_EQ(actual, expected) << "rules " << int(rules) << ", input: \"" << input.toStdString() << "\"";
    }
}

TEST(MarkdownImport, HostileTextsFinishWithTheExpectedResult)
{
    // A million asterisks pair up four by four and vanish; so do underscores.
    EXPECT_EQ(initWithMarkdownString(QString(1000000, u'*'), BaseAttributes, 0).length(), 0);
    EXPECT_EQ(initWithMarkdownString(QString(1000000, u'_'), BaseAttributes, 0).length(), 0);
    // A word inside 100,000 asterisks on either side: the word survives and the text stays sound.
    const QString nested = QString(100000, u'*') + QStringLiteral("w") + QString(100000, u'*');
    const AttributedString text = initWithMarkdownString(nested, BaseAttributes, 0);
    EXPECT_TRUE(text.string().contains(u'w'));
    EXPECT_TRUE(text.checkInvariants());
    // A megabyte-long line of alternating markers and letters.
    QString line;
    for (int i = 0; i < 250000; ++i)
        line += QStringLiteral("*a_b");
    const AttributedString alternating = initWithMarkdownString(line, BaseAttributes, XQMarkdownUseUnderlinesOption);
    EXPECT_LT(alternating.length(), line.size());
    EXPECT_TRUE(alternating.checkInvariants());
}
