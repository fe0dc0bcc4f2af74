#include <gtest/gtest.h>

#include <qlyappkit/platform/values/ParagraphStyle.h>
#include <qlyappkit/text/notes/NoteConversions.h>
#include <qlyappkit/text/notes/NoteStripping.h>

#include "NoteTestSupport.h"

using namespace qly;
using namespace notetest;

namespace {

Attributes linked(const XQCommentPtr& c, Attributes more = {})
{
    more = withComment(c, more);
    more.insert(LinkAttributeName, QStringLiteral("quillcmt://") + c->uniqueID());
    return more;
}

} // namespace

TEST(LinkedCommentsToInline, EachOptionTreatsCommentsItsOwnWay)
{
    const XQCommentPtr note = comment(QStringLiteral("check"), false, Color(0.2, 0.4, 0.6));
    const XQCommentPtr foot = comment(QStringLiteral("source"), true);
    const AttributedString text = build({{QStringLiteral("A "), {}},
                                         {QStringLiteral("word"), linked(note)},
                                         {QStringLiteral(" and "), {}},
                                         {QStringLiteral("fact"), linked(foot)},
                                         {QStringLiteral("."), {}}});

    // Option 0: comments dropped, footnotes inline (kind 2) after their anchors.
    AttributedString out = attributedStringByConvertingLinkedCommentsToInlineAttributesWithCommentOption(text, 0);
    EXPECT_EQ(out.string(), "A word and fact source.");
    EXPECT_EQ(coverage(out, XQCommentAttributeName), QString(23, u'-'));
    EXPECT_EQ(coverage(out, LinkAttributeName), QString(23, u'-'));
    EXPECT_EQ(coverage(out, XQFootnoteAttributeName), "---------------#######-");
    EXPECT_EQ(out.attribute(XQFootnoteAttributeName, 15).toInt(), XQLinkedFootnoteMadeInlineKind);

    // Option 1: the comment's text follows its anchor in the comment's colour; the anchor keeps it.
    out = attributedStringByConvertingLinkedCommentsToInlineAttributesWithCommentOption(text, 1);
    EXPECT_EQ(out.string(), "A word check and fact source.");
    EXPECT_EQ(coverage(out, XQLinkedCommentAttributeName), "------######" + QString(17, u'-'));
    EXPECT_EQ(*colourAt(out, XQLinkedCommentAttributeName, 6), Color(0.2, 0.4, 0.6));
    EXPECT_EQ(coverage(out, XQCommentAttributeName), "--####" + QString(23, u'-'));
    EXPECT_EQ(coverage(out, LinkAttributeName), QString(29, u'-'));

    // Option 2: comments become footnotes of kind 3.
    out = attributedStringByConvertingLinkedCommentsToInlineAttributesWithCommentOption(text, 2);
    EXPECT_EQ(out.string(), "A word check and fact source.");
    EXPECT_EQ(out.attribute(XQFootnoteAttributeName, 7).toInt(), XQLinkedCommentAsFootnoteKind);
    EXPECT_EQ(out.attribute(XQFootnoteAttributeName, 22).toInt(), XQLinkedFootnoteMadeInlineKind);
    EXPECT_FALSE(coverage(out, XQCommentAttributeName).contains(u'#'));
}

TEST(LinkedCommentsToInline, AFootnoteAnchoredOnTheMarkerReplacesIt)
{
    const XQCommentPtr foot = comment(QStringLiteral("source"), true);
    const XQCommentPtr starComment = comment(QStringLiteral("remark"), false);
    const AttributedString text = build({{QStringLiteral("Fact"), {}},
                                         {QStringLiteral("*"), linked(foot)},
                                         {QStringLiteral(" and"), {}},
                                         {QStringLiteral("*"), linked(starComment)}});
    const AttributedString out =
        attributedStringByConvertingLinkedCommentsToInlineAttributesWithCommentOption(text, 2, QStringLiteral("*"));
    // Only footnotes are replaced; a comment on the same marker text goes after it.
    EXPECT_EQ(out.string(), "Fact source and* remark");
    EXPECT_EQ(coverage(out, XQFootnoteAttributeName), "----#######-----#######");
}

TEST(LinkedCommentsToInline, EmptyCommentsAreLeftAlone)
{
    const XQCommentPtr empty = XQComment::create(AttributedString(), false);
    const AttributedString text = build({{QStringLiteral("x"), linked(empty)}});
    const AttributedString out = attributedStringByConvertingLinkedCommentsToInlineAttributesWithCommentOption(text, 2);
    EXPECT_EQ(out, text);
}

TEST(LinkedCommentsToInline, TheLeadingSpaceTakesTheCommentTextsFirstAttributes)
{
    const Attributes italic = withFont(QStringLiteral("Times"), 10, ItalicFontMask);
    XQCommentPtr c = XQComment::create(build({{QStringLiteral("styled"), italic}}), true);
    const AttributedString out = attributedStringByConvertingLinkedCommentsToInlineAttributesWithCommentOption(
        build({{QStringLiteral("w"), linked(c, withFont(QStringLiteral("Helvetica"), 12))}}), 0);
    ASSERT_EQ(out.string(), "w styled");
    EXPECT_EQ(fontAt(out, 1)->familyName(), "Times");
    EXPECT_TRUE(fontAt(out, 1)->isItalic());
    EXPECT_EQ(fontAt(out, 0)->familyName(), "Helvetica");
}

TEST(NoteKindConversions, InlineCommentsDarkenIntoAnnotationsAndAnnotationsBecomeFootnotes)
{
    const AttributedString text =
        build({{QStringLiteral("a"), {}},
               {QStringLiteral("bc"), {{XQLinkedCommentAttributeName, colourValue(1.0, 0.5, 0.0)}}},
               {QStringLiteral("d"), annotation(0, 0, 1)}});
    const AttributedString annotated = attributedStringByConvertingLinkedCommentsToAnnotations(text);
    EXPECT_FALSE(coverage(annotated, XQLinkedCommentAttributeName).contains(u'#'));
    const Color dark = *colourAt(annotated, XQAnnotationAttributeName, 1);
    EXPECT_NEAR(dark.redComponent(), 0.3, 1e-12);
    EXPECT_NEAR(dark.greenComponent(), 0.15, 1e-12);
    EXPECT_NEAR(dark.blueComponent(), 0.0, 1e-12);
    EXPECT_EQ(*colourAt(annotated, XQAnnotationAttributeName, 3), Color(0, 0, 1));

    const AttributedString footnotes = attributedStringByConvertingInlineAnnotationsToFootnotes(annotated);
    EXPECT_EQ(coverage(footnotes, XQAnnotationAttributeName), "----");
    EXPECT_EQ(coverage(footnotes, XQFootnoteAttributeName), "-###");
    EXPECT_EQ(footnotes.attribute(XQFootnoteAttributeName, 3).toInt(), XQLinkedCommentAsFootnoteKind);
}

TEST(NoteKindConversions, TablesAreTakenOutOfNotesOnly)
{
    ParagraphStyle cell;
    cell.setTextBlocks({TextBlock{std::make_shared<TextTable>(TextTable{2}), 0, 1, 0, 1}});
    cell.setHeadIndent(7);
    const QVariant cellStyle = QVariant::fromValue(cell);
    const AttributedString text =
        build({{QStringLiteral("body"), {{ParagraphStyleAttributeName, cellStyle}}},
               {QStringLiteral("note"), footnote({{ParagraphStyleAttributeName, cellStyle}})},
               {QStringLiteral("ann"), annotation(1, 0, 0, {{ParagraphStyleAttributeName, cellStyle}})}});
    const AttributedString out = attributedStringByRemovingTextBlocksFromNotes(text);
    auto styleAt = [&](qsizetype i) { return out.attribute(ParagraphStyleAttributeName, i).value<ParagraphStyle>(); };
    EXPECT_EQ(styleAt(0).textBlocks().size(), 1);
    EXPECT_TRUE(styleAt(4).textBlocks().isEmpty());
    EXPECT_TRUE(styleAt(9).textBlocks().isEmpty());
    EXPECT_EQ(styleAt(9).headIndent(), 7.0);
    EXPECT_EQ(out.string(), text.string());
}

TEST(NoteStripping, RemovesInlineNotesAndOptionallyLinkedOnes)
{
    const XQCommentPtr note = comment(QStringLiteral("c"), false);
    const XQCommentPtr foot = comment(QStringLiteral("f"), true);
    Attributes noteAnchor = linked(note, {{ToolTipAttributeName, QStringLiteral("Comment: c")}});
    const AttributedString text = build({{QStringLiteral("Start "), {}},
                                         {QStringLiteral("[ann]"), annotation(1, 0, 0)},
                                         {QStringLiteral(" mid"), {}},
                                         {QStringLiteral("(fn)"), footnote()},
                                         {QStringLiteral(" anchor"), noteAnchor},
                                         {QStringLiteral(" foot"), linked(foot)}});

    AttributedString out = attributedStringByStrippingAnnotations(text, true, false, false);
    EXPECT_EQ(out.string(), "Start  mid(fn) anchor foot");
    EXPECT_TRUE(coverage(out, XQCommentAttributeName).contains(u'#'));

    out = attributedStringByStrippingAnnotations(text, true, true, false);
    EXPECT_EQ(out.string(), "Start  mid anchor foot");

    // Linked comments lose comment, link and tool tip with the annotations; footnote anchors stay.
    out = attributedStringByStrippingAnnotations(text, true, false, true);
    EXPECT_EQ(out.string(), "Start  mid(fn) anchor foot");
    EXPECT_EQ(coverage(out, XQCommentAttributeName), QString(21, u'-') + "#####");
    EXPECT_EQ(coverage(out, LinkAttributeName), QString(21, u'-') + "#####");
    EXPECT_FALSE(coverage(out, ToolTipAttributeName).contains(u'#'));

    out = attributedStringByStrippingAnnotations(text, false, true, true);
    EXPECT_EQ(out.string(), "Start [ann] mid anchor foot");
    EXPECT_EQ(coverage(out, XQCommentAttributeName), QString(15, u'-') + "#######" + "-----");

    // Only the comment attribute goes, from the chosen kinds.
    out = attributedStringByStrippingLinkedComments(text, false, true);
    EXPECT_EQ(out.string(), text.string());
    EXPECT_EQ(coverage(out, XQCommentAttributeName), QString(19, u'-') + "#######" + "-----");
    EXPECT_EQ(coverage(out, LinkAttributeName), QString(19, u'-') + "############");
}

TEST(NoteStripping, FootnotesAndWhitespaceOnly)
{
    EXPECT_FALSE(containsFootnotesAndWhitespaceOnly(AttributedString()));
    EXPECT_FALSE(containsFootnotesAndWhitespaceOnly(AttributedString(QStringLiteral(" \n\t"))));
    EXPECT_TRUE(containsFootnotesAndWhitespaceOnly(build({{QStringLiteral("note"), footnote()}})));
    EXPECT_TRUE(containsFootnotesAndWhitespaceOnly(build({{QStringLiteral(" \n"), {}},
                                                          {QStringLiteral("note"), footnote()},
                                                          {QStringLiteral("\u00a0\u2029 "), {}},
                                                          {QStringLiteral("two"), footnote()}})));
    EXPECT_FALSE(
        containsFootnotesAndWhitespaceOnly(build({{QStringLiteral("note"), footnote()}, {QStringLiteral(" ."), {}}})));
    EXPECT_FALSE(containsFootnotesAndWhitespaceOnly(build({{QStringLiteral("ann"), annotation(1, 0, 0)}})));
}
