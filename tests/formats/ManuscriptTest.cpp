// Manuscript conversions: italics and underlines, em dashes and ellipses.
#include <gtest/gtest.h>

#include "formats/EmphasisTestSupport.h"

#include <qlyappkit/formats/manuscript/ManuscriptEmphasis.h>
#include <qlyappkit/formats/manuscript/ManuscriptPunctuation.h>

using namespace qly;
using namespace qly::emphasistest;

TEST(Manuscript, ItalicsBecomeUnderlinesWithoutTheirEdgeSpaces)
{
    const struct {
        const char* tagged;
        const char* expected;
    } cases[] = {
        {"<i>  word  </i>roman", "  <u1>word</u1>  roman"},
        {"<i>   </i>x", "   x"},
        {"a <i>b c</i>\t<i>d</i>", "a <u1>b c</u1>\t<u1>d</u1>"},
        {"<i>\tline\n</i>next", "\t<u1>line\n</u1>next"},
        {"<bi>both</bi>", "<bu1>both</bu1>"},
        {"<iu9>x</iu9>", "<u1>x</u1>"},
        {"", ""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(taggedEmphasis(
                      attributedStringByConvertingItalicsToUnderlines(fromTaggedEmphasis(QString::fromUtf8(c.tagged)))),
                  QString::fromUtf8(c.expected))
            << c.tagged;
    }
}

TEST(Manuscript, NeighbouringItalicRunsShareOneUnderline)
{
    // "very " in Times italic then "well" in Courier italic: one underline over "very well".
    AttributedString text;
    text.append(
        QStringLiteral("very "),
        {{FontAttributeName, QVariant::fromValue(Font::fromFamily(QStringLiteral("Times"), 12, ItalicFontMask))}});
    text.append(
        QStringLiteral("well"),
        {{FontAttributeName, QVariant::fromValue(Font::fromFamily(QStringLiteral("Courier"), 12, ItalicFontMask))}});
    text.append(QStringLiteral(" done"),
                {{FontAttributeName, QVariant::fromValue(Font::fromFamily(QStringLiteral("Times"), 12))}});
    const AttributedString result = attributedStringByConvertingItalicsToUnderlines(text);
    EXPECT_EQ(taggedEmphasis(result), QStringLiteral("<u1>very well</u1> done"));
    // Each run keeps its family and size, less the italic.
    EXPECT_EQ(result.attribute(FontAttributeName, 0).value<Font>(), Font::fromFamily(QStringLiteral("Times"), 12));
    EXPECT_EQ(result.attribute(FontAttributeName, 5).value<Font>(), Font::fromFamily(QStringLiteral("Courier"), 12));
    // The receiver is left alone.
    EXPECT_TRUE(text.attribute(FontAttributeName, 0).value<Font>().isItalic());

    // A run that follows an italic run ending in spaces still trims its own leading spaces.
    EXPECT_EQ(taggedEmphasis(attributedStringByConvertingItalicsToUnderlines(
                  fromTaggedEmphasis(QStringLiteral("<i>a </i>b<i> c</i>")))),
              QStringLiteral("<u1>a</u1> b <u1>c</u1>"));
}

TEST(Manuscript, UnderlinesBecomeItalics)
{
    const struct {
        const char* tagged;
        const char* expected;
    } cases[] = {
        {"a <u1>b</u1> <u9>c</u9> <u2>d</u2>", "a <i>b</i> <i>c</i> <i>d</i>"},
        {"<bu1>x</bu1>y", "<bi>x</bi>y"},
        {"plain", "plain"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(taggedEmphasis(
                      attributedStringByConvertingUnderlinesToItalics(fromTaggedEmphasis(QString::fromUtf8(c.tagged)))),
                  QString::fromUtf8(c.expected))
            << c.tagged;
    }
    // Text without a font gets the user font's italic; a family without an italic face here still
    // gets the trait, so the emphasis reaches the word processor.
    AttributedString bare(QStringLiteral("u"), {{UnderlineStyleAttributeName, 1}});
    EXPECT_EQ(attributedStringByConvertingUnderlinesToItalics(bare).attribute(FontAttributeName, 0).value<Font>(),
              Font::userFont().convertedToHaveTrait(ItalicFontMask).value());
    const Font unknown = Font::fromFamily(QStringLiteral("No Such Family Anywhere"), 11);
    AttributedString unusual(QStringLiteral("u"),
                             {{UnderlineStyleAttributeName, 1}, {FontAttributeName, QVariant::fromValue(unknown)}});
    EXPECT_EQ(attributedStringByConvertingUnderlinesToItalics(unusual).attribute(FontAttributeName, 0).value<Font>(),
              Font::fromFamily(unknown.familyName(), 11, ItalicFontMask));
}

TEST(Manuscript, EmDashesAndEllipsesBecomeASCII)
{
    const struct {
        const char16_t* input;
        int mode;
        bool ellipses;
        const char16_t* expected;
    } cases[] = {
        {u"a\u2014b", 2, false, u"a---b"},
        {u"a\u2014b", 1, false, u"a--b"},
        {u"a\u2014b", 7, false, u"a--b"},
        {u"a\u2014b", 0, false, u"a\u2014b"},
        {u"\u2014\u2014x\u2026", 2, true, u"------x..."},
        {u"wait\u2026 \u2026", 0, true, u"wait... ..."},
        {u"wait\u2026", 1, false, u"wait\u2026"},
        {u"", 2, true, u""},
    };
    for (const auto& c : cases) {
        const QString input = QString::fromUtf16(c.input);
        EXPECT_EQ(attributedStringByConvertingEmDashesToHyphens(AttributedString(input), c.mode, c.ellipses).string(),
                  QString::fromUtf16(c.expected))
            << input.toStdString() << " mode " << c.mode;
    }
    // The replacement keeps the replaced character's attributes.
    const AttributedString text = fromTaggedEmphasis(QStringLiteral("a<b>\u2014</b>b<i>\u2026</i>"));
    EXPECT_EQ(taggedEmphasis(attributedStringByConvertingEmDashesToHyphens(text, 2, true)),
              QStringLiteral("a<b>---</b>b<i>...</i>"));
}
