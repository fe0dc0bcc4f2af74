#include <gtest/gtest.h>

#include <qlyappkit/text/notes/TaggedFootnotes.h>

#include "NoteTestSupport.h"

using namespace qly;
using namespace notetest;

TEST(TaggedFootnotes, ReferencesTakeTheBodyOfTheirDefinition)
{
    const Attributes italic = withFont(QStringLiteral("Times"), 11, ItalicFontMask);
    const AttributedString text = build({{QStringLiteral("First"), {}},
                                         {QStringLiteral("[1]"), footnote()},
                                         {QStringLiteral(" and again"), {}},
                                         {QStringLiteral(" [1] "), footnote()},
                                         {QStringLiteral("."), {}},
                                         {QStringLiteral(" \n "), {}},
                                         {QStringLiteral(" [1]  "), footnote()},
                                         {QStringLiteral("The body"), footnote(italic)},
                                         {QStringLiteral(" "), footnote()},
                                         {QStringLiteral(" end"), {}}});
    // The definition and the plain whitespace before it go; its own leading space was footnote text.
    const AttributedString out = attributedStringByConvertingTaggedFootnotesToStandardFootnotes(text);
    EXPECT_EQ(out.string(), "FirstThe body and againThe body. end");
    EXPECT_EQ(coverage(out, XQFootnoteAttributeName), "-----########----------########-----");
    EXPECT_TRUE(out.attribute(XQFootnoteAttributeName, 5).toBool());
    // The body keeps its own attributes.
    EXPECT_TRUE(fontAt(out, 5)->isItalic());
    EXPECT_TRUE(fontAt(out, 23)->isItalic());
}

TEST(TaggedFootnotes, DefinitionsMayComeFirstAndUnknownTagsStay)
{
    const AttributedString text = build({{QStringLiteral("Intro"), {}},
                                         {QStringLiteral("[a] Alpha body"), footnote()},
                                         {QStringLiteral(" text "), {}},
                                         {QStringLiteral("[a]"), footnote()},
                                         {QStringLiteral(" and "), {}},
                                         {QStringLiteral("[zz]"), footnote()},
                                         {QStringLiteral(" or "), {}},
                                         {QStringLiteral("[]"), footnote()},
                                         {QStringLiteral(" plain"), footnote()}});
    const AttributedString out = attributedStringByConvertingTaggedFootnotesToStandardFootnotes(text);
    // "[]" is too short to be a tag; a footnote that is not a reference stays as it is.
    EXPECT_EQ(out.string(), "Intro text Alpha body and [zz] or [] plain");
}

TEST(TaggedFootnotes, TextWithoutReferencesIsUnchanged)
{
    const AttributedString text = build({{QStringLiteral("a"), {}}, {QStringLiteral("note [1] inside"), footnote()}});
    EXPECT_EQ(attributedStringByConvertingTaggedFootnotesToStandardFootnotes(text), text);
    const AttributedString plain(QStringLiteral("[1] not a footnote [1]"));
    EXPECT_EQ(attributedStringByConvertingTaggedFootnotesToStandardFootnotes(plain), plain);
}

TEST(TaggedFootnotes, WhitespaceHelpersStopAtFootnoteText)
{
    const AttributedString text = build({{QStringLiteral("word"), {}},
                                         {QStringLiteral(" "), footnote()},
                                         {QStringLiteral(" \n\t"), {}},
                                         {QStringLiteral("[2] Body text "), footnote()}});
    EXPECT_EQ(rangeIncludingPreviousWhitespaceExceptingFootnotesFromRange(text, Range{8, 14}), (Range{5, 17}));
    EXPECT_EQ(rangeIncludingPreviousWhitespaceExceptingFootnotesFromRange(text, Range{4, 1}), (Range{4, 1}));
    EXPECT_EQ(rangeIncludingPreviousWhitespaceExceptingFootnotesFromRange(text, Range{0, 2}), (Range{0, 2}));

    Range found;
    const auto body = attributedFootnoteInAttributedStringWithTag(text, QStringLiteral("[2]"), &found);
    ASSERT_TRUE(body);
    EXPECT_EQ(body->string(), "Body text");
    EXPECT_EQ(found, (Range{5, 17}));
    EXPECT_FALSE(attributedFootnoteInAttributedStringWithTag(text, QStringLiteral("[3]"), &found));
    EXPECT_TRUE(found.isNotFound());
    // A footnote that is only the tag does not define it.
    EXPECT_FALSE(attributedFootnoteInAttributedStringWithTag(build({{QStringLiteral("[2]"), footnote()}}),
                                                             QStringLiteral("[2]")));
}
