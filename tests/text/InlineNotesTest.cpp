#include <gtest/gtest.h>

#include <QImage>

#include <qlyappkit/platform/values/ParagraphStyle.h>
#include <qlyappkit/platform/values/TextAttachment.h>
#include <qlyappkit/text/notes/FootnoteNumbering.h>
#include <qlyappkit/text/notes/FootnoteRule.h>
#include <qlyappkit/text/notes/InlineNotes.h>

#include "NoteTestSupport.h"

using namespace qly;
using namespace notetest;

namespace {

const QChar WordJoiner(0x2060);

AttributedString inlineAll(const AttributedString& text, const QVariantMap& options = {})
{
    return attributedStringWithAnnotationsInline(text, true, true, false, options);
}

/// The texts of the runs carrying the attribute, in order, without word joiners.
QStringList runTexts(const AttributedString& text, const QString& name)
{
    QStringList out;
    text.enumerateAttribute(name, Range{0, text.length()}, [&](const QVariant& value, Range range) {
        if (value.isValid())
            out << text.substring(range).remove(WordJoiner);
        return true;
    });
    return out;
}

QList<int> runNumbers(const AttributedString& text, const QString& name)
{
    QList<int> out;
    text.enumerateAttribute(name, Range{0, text.length()}, [&](const QVariant& value, Range) {
        if (value.isValid())
            out << value.toInt();
        return true;
    });
    return out;
}

/// A text of n footnotes "nK", each after a word.
AttributedString manyFootnotes(int n)
{
    AttributedString text;
    for (int k = 1; k <= n; ++k) {
        text.append(QStringLiteral("w "), {});
        text.append(QStringLiteral("n%1").arg(k), footnote());
    }
    return text;
}

ParagraphStyle styleAt(const AttributedString& text, qsizetype i)
{
    return text.attribute(ParagraphStyleAttributeName, i).value<ParagraphStyle>();
}

} // namespace

TEST(InlineNotes, DefaultOptionsGiveSuperscriptReducedMarksAndARuleBeforeTheNotes)
{
    const Attributes body = withFont(QStringLiteral("Times"), 15, BoldFontMask);
    const AttributedString text = build({{QStringLiteral("Body text"), body},
                                         {QStringLiteral("A note."), footnote(body)},
                                         {QStringLiteral(" more."), body}});
    const AttributedString out = inlineAll(text);
    ASSERT_EQ(out.string(), QStringLiteral("Body text\u20601 more.\n\n\uFFFC\n1 A note."));
    ASSERT_TRUE(out.checkInvariants());

    // The mark: word joiner and number, superscript, unbold, two thirds of the size before it.
    for (qsizetype i : {9, 10}) {
        EXPECT_EQ(out.attribute(SuperscriptAttributeName, i).toInt(), 1);
        EXPECT_EQ(out.attribute(XQInlineFootnoteMarkerAttributeName, i).toInt(), 1);
        EXPECT_EQ(fontAt(out, i)->familyName(), "Times");
        EXPECT_FALSE(fontAt(out, i)->isBold());
        EXPECT_EQ(fontAt(out, i)->pointSize(), 10.0);
        EXPECT_FALSE(out.attribute(XQFootnoteAttributeName, i).isValid());
    }
    EXPECT_FALSE(out.attribute(XQInlineFootnoteMarkerAttributeName, 11).isValid());

    // The rule: a real PNG, 150 points wide and as tall as the last character's font, rule at half height.
    const QVariant attachment = out.attribute(AttachmentAttributeName, 19);
    ASSERT_EQ(attachment.metaType(), QMetaType::fromType<TextAttachment>());
    const TextAttachment rule = attachment.value<TextAttachment>();
    EXPECT_TRUE(rule.contents().startsWith("\x89PNG\r\n\x1a\n"));
    EXPECT_EQ(rule.bounds(), QSizeF(150, 15));
    const QImage image = QImage::fromData(rule.contents(), "PNG");
    ASSERT_EQ(image.size(), QSize(150, 15));
    for (int x : {0, 75, 149}) {
        EXPECT_EQ(image.pixelColor(x, 8), QColor(Qt::black)) << x;
        EXPECT_EQ(image.pixelColor(x, 0).alpha(), 0) << x;
        EXPECT_EQ(image.pixelColor(x, 14).alpha(), 0) << x;
    }
    EXPECT_EQ(fontAt(out, 19)->pointSize(), 15.0);

    // The label before the note's text, from the note's own font, and the note's paragraph.
    EXPECT_EQ(out.attribute(XQInlineFootnoteLabelAttributeName, 21).toInt(), 1);
    EXPECT_FALSE(out.attribute(XQInlineFootnoteLabelAttributeName, 22).isValid());
    EXPECT_EQ(out.attribute(SuperscriptAttributeName, 21).toInt(), 1);
    EXPECT_EQ(fontAt(out, 21)->pointSize(), 10.0);
    EXPECT_FALSE(fontAt(out, 21)->isBold());
    EXPECT_TRUE(fontAt(out, 23)->isBold()); // the note keeps its own font
    EXPECT_EQ(styleAt(out, 20), ParagraphStyle::defaultParagraphStyle());
    EXPECT_FALSE(out.attribute(XQFootnoteAttributeName, 23).isValid());
}

TEST(InlineNotes, MarkFontFallsBackToTheUserFont)
{
    const AttributedString text = build(
        {{QStringLiteral("x"), withFont(QStringLiteral("No Such Family"), 30)}, {QStringLiteral("n"), footnote()}});
    const AttributedString out = inlineAll(text);
    EXPECT_EQ(*fontAt(out, 1), Font::userFont(8));
}

TEST(InlineNotes, MarkerStylesAndPeriodLabels)
{
    const Attributes noteStyle =
        withFont(QStringLiteral("Times"), 10, ItalicFontMask, {{ForegroundColorAttributeName, colourValue(1, 0, 0)}});
    const AttributedString text = build({{QStringLiteral("Word"), withFont(QStringLiteral("Helvetica"), 12)},
                                         {QStringLiteral("Note"), footnote(noteStyle)},
                                         {QStringLiteral("."), withFont(QStringLiteral("Helvetica"), 12)}});

    // Bit 2 clear: bracketed marks in the attributes of the note they replace, less its colour.
    AttributedString out = inlineAll(text, {{XQInlineFootnotesMarkerStyle, 0}});
    ASSERT_EQ(out.string(), QStringLiteral("Word[1].\n\n\uFFFC\n[1] Note"));
    EXPECT_EQ(fontAt(out, 4)->pointSize(), 10.0);
    EXPECT_TRUE(fontAt(out, 4)->isItalic());
    EXPECT_FALSE(out.attribute(SuperscriptAttributeName, 4).isValid());
    EXPECT_FALSE(out.attribute(ForegroundColorAttributeName, 4).isValid());
    EXPECT_EQ(runTexts(out, XQInlineFootnoteLabelAttributeName), QStringList{"[1]"});
    EXPECT_FALSE(fontAt(out, 12)->isItalic());
    EXPECT_EQ(fontAt(out, 12)->pointSize(), 10.0);
    EXPECT_TRUE(colourAt(out, ForegroundColorAttributeName, 16).has_value()); // the note's own colour

    // Bit 4 alone: bracketed, reduced, not superscript.
    out = inlineAll(text, {{XQInlineFootnotesMarkerStyle, ReducedFootnoteMarkers}});
    EXPECT_EQ(out.substring(Range{4, 3}), "[1]");
    EXPECT_EQ(fontAt(out, 4)->familyName(), "Helvetica");
    EXPECT_EQ(fontAt(out, 4)->pointSize(), 8.0);
    EXPECT_FALSE(out.attribute(SuperscriptAttributeName, 4).isValid());

    // Period style: the label is the plain number and a full stop, neither superscript nor reduced.
    out = inlineAll(text, {{XQInlineFootnotesMarkerStyle, 0}, {XQInlineFootnotesUsePeriodMarkerStyle, true}});
    ASSERT_EQ(out.string(), QStringLiteral("Word[1].\n\n\uFFFC\n1. Note"));
    EXPECT_EQ(runTexts(out, XQInlineFootnoteLabelAttributeName), QStringList{"1."});
    out = inlineAll(text, {{XQInlineFootnotesUsePeriodMarkerStyle, true}});
    ASSERT_EQ(out.string(), QStringLiteral("Word\u20601.\n\n\uFFFC\n1. Note"));
    EXPECT_EQ(out.attribute(SuperscriptAttributeName, 5).toInt(), 1);
    const qsizetype label = out.string().lastIndexOf(QStringLiteral("1."));
    EXPECT_FALSE(out.attribute(SuperscriptAttributeName, label).isValid());
    EXPECT_EQ(fontAt(out, label)->pointSize(), 10.0);

    // The older form passes the marker style through and draws the rule.
    out = attributedStringWithAnnotationsInline(text, true, true, false, 0);
    EXPECT_EQ(out.string(), QStringLiteral("Word[1].\n\n\uFFFC\n[1] Note"));
}

TEST(InlineNotes, EveryNumberStyleNumbersMarksAndLabels)
{
    const AttributedString six = manyFootnotes(6);
    AttributedString out = inlineAll(six, {{XQInlineFootnotesStyle, SymbolsFootnoteStyle}});
    const QStringList symbols{"*", "\u2020", "\u2021", "\u00a7", "**", "\u2020\u2020"};
    EXPECT_EQ(runTexts(out, XQInlineFootnoteMarkerAttributeName), symbols);
    EXPECT_EQ(runTexts(out, XQInlineFootnoteLabelAttributeName), symbols);
    EXPECT_EQ(runNumbers(out, XQInlineFootnoteMarkerAttributeName), (QList<int>{1, 2, 3, 4, 5, 6}));
    EXPECT_TRUE(out.string().endsWith(QStringLiteral("\n\u2020\u2020 n6")));

    const AttributedString many = manyFootnotes(27);
    out = inlineAll(many, {{XQInlineFootnotesStyle, LowerCaseLettersFootnoteStyle}});
    QStringList marks = runTexts(out, XQInlineFootnoteMarkerAttributeName);
    ASSERT_EQ(marks.size(), 27);
    EXPECT_EQ(marks[0], "a");
    EXPECT_EQ(marks[25], "z");
    EXPECT_EQ(marks[26], "aa");
    marks = runTexts(inlineAll(many, {{XQInlineFootnotesStyle, UpperCaseLettersFootnoteStyle}}),
                     XQInlineFootnoteMarkerAttributeName);
    EXPECT_EQ(marks[26], "AA");
    marks = runTexts(inlineAll(many, {{XQInlineFootnotesStyle, LowerCaseRomanFootnoteStyle}}),
                     XQInlineFootnoteMarkerAttributeName);
    EXPECT_EQ(marks[3], "iv");
    EXPECT_EQ(marks[26], "xxvii");
    marks = runTexts(inlineAll(many, {{XQInlineFootnotesStyle, UpperCaseRomanFootnoteStyle}}),
                     XQInlineFootnoteMarkerAttributeName);
    EXPECT_EQ(marks[8], "IX");
    marks = runTexts(inlineAll(many, {{XQInlineFootnotesStyle, DecimalFootnoteStyle}}),
                     XQInlineFootnoteMarkerAttributeName);
    EXPECT_EQ(marks[26], "27");
    marks = runTexts(inlineAll(many, {{XQInlineFootnotesStyle, 9}}), XQInlineFootnoteMarkerAttributeName);
    EXPECT_EQ(marks[26], "27");
}

TEST(InlineNotes, SeparatorTypes)
{
    const AttributedString text = build({{QStringLiteral("a"), {}}, {QStringLiteral("b"), footnote()}});
    EXPECT_EQ(inlineAll(text, {{XQInlineFootnotesSeparatorType, LineFeedFootnoteSeparator}}).string(),
              QStringLiteral("a\u20601\n\n1 b"));
    EXPECT_EQ(inlineAll(text, {{XQInlineFootnotesSeparatorType, DashesFootnoteSeparator}}).string(),
              QStringLiteral("a\u20601\n\n----------\n1 b"));
    EXPECT_EQ(inlineAll(text, {{XQInlineFootnotesSeparatorType, 7}}).string(), QStringLiteral("a\u20601\n\n\n1 b"));
    // A note whose text is blank gets its label only; a note starting with a space gets no second one.
    const AttributedString blank = build({{QStringLiteral("a"), {}},
                                          {QStringLiteral(" "), footnote()},
                                          {QStringLiteral("c"), {}},
                                          {QStringLiteral(" spaced"), footnote()}});
    EXPECT_EQ(inlineAll(blank, {{XQInlineFootnotesSeparatorType, 0}}).string(),
              QStringLiteral("a\u20601c\u20602\n\n1\n2 spaced"));
    // No notes, no separator.
    EXPECT_EQ(inlineAll(AttributedString(QStringLiteral("plain"))).string(), "plain");
}

TEST(InlineNotes, NoteParagraphsFollowTheTextsMostUsedStyle)
{
    ParagraphStyle body;
    body.setFirstLineHeadIndent(20);
    body.setHeadIndent(10);
    body.setTailIndent(-5);
    body.setLineSpacing(3);
    body.setParagraphSpacing(6);
    body.setParagraphSpacingBefore(2);
    body.setAlignment(JustifiedTextAlignment);
    body.setLineHeightMultiple(1.5);
    body.setMinimumLineHeight(11);
    body.setMaximumLineHeight(30);
    ParagraphStyle rare = body;
    rare.setHeadIndent(50);
    ParagraphStyle own;
    own.setAlignment(CenterTextAlignment);
    own.setTabStops({TextTab{RightTextAlignment, 99}});
    own.setHeadIndent(77);
    own.setParagraphSpacing(40);

    const AttributedString text =
        build({{QStringLiteral("A long paragraph of body text.\n"),
                {{ParagraphStyleAttributeName, QVariant::fromValue(body)}}},
               {QStringLiteral("Short.\n"), {{ParagraphStyleAttributeName, QVariant::fromValue(rare)}}},
               {QStringLiteral("Note"), footnote({{ParagraphStyleAttributeName, QVariant::fromValue(own)}})}});

    for (bool indent : {false, true}) {
        const AttributedString out = inlineAll(text, {{XQInlineFootnotesIndentToMatchText, indent}});
        const qsizetype label = out.length() - 6;
        ASSERT_EQ(out.substring(Range{label, 6}), "1 Note");
        for (qsizetype i = label; i < out.length(); ++i) {
            const ParagraphStyle s = styleAt(out, i);
            EXPECT_EQ(s.firstLineHeadIndent(), indent ? 20.0 : 0.0);
            EXPECT_EQ(s.headIndent(), indent ? 10.0 : 0.0);
            EXPECT_EQ(s.tailIndent(), indent ? -5.0 : 0.0);
            EXPECT_EQ(s.lineSpacing(), 3.0);
            EXPECT_EQ(s.paragraphSpacing(), 6.0);
            EXPECT_EQ(s.paragraphSpacingBefore(), 2.0);
            EXPECT_EQ(s.alignment(), JustifiedTextAlignment);
            EXPECT_EQ(s.lineHeightMultiple(), 1.5);
            EXPECT_EQ(s.minimumLineHeight(), 11.0);
            EXPECT_EQ(s.maximumLineHeight(), 30.0);
            EXPECT_EQ(s.tabStops(), own.tabStops()); // the rest is the note's own
        }
    }
}

TEST(InlineNotes, AnnotationsAreWrittenBetweenMarkersInTheirColour)
{
    const AttributedString text =
        build({{QStringLiteral("See "), withFont(QStringLiteral("Helvetica"), 12)},
               {QStringLiteral("this remark"), annotation(0, 0.5, 0, withFont(QStringLiteral("Times"), 9))},
               {QStringLiteral(" now."), withFont(QStringLiteral("Helvetica"), 12)}});
    AttributedString out = inlineAll(text);
    ASSERT_EQ(out.string(), "See [this remark] now.");
    EXPECT_EQ(coverage(out, ForegroundColorAttributeName), "----#############-----");
    EXPECT_EQ(*colourAt(out, ForegroundColorAttributeName, 4), Color(0, 0.5, 0));
    EXPECT_FALSE(coverage(out, XQAnnotationAttributeName).contains(u'#'));
    EXPECT_EQ(fontAt(out, 4)->familyName(), "Times"); // the opening marker: the annotation's attributes
    EXPECT_EQ(fontAt(out, 16)->familyName(), "Times");

    out = inlineAll(text,
                    {{XQInlineAnnotationOpeningMarker, QStringLiteral("<<")},
                     {XQInlineAnnotationClosingMarker, QStringLiteral(">>")}});
    EXPECT_EQ(out.string(), "See <<this remark>> now.");
    out = inlineAll(text, {{XQInlineAnnotationOpeningMarker, QString()}, {XQInlineAnnotationClosingMarker, QString()}});
    EXPECT_EQ(out.string(), "See this remark now.");

    // Not inline: deleted, or left with its attribute.
    out = attributedStringWithAnnotationsInline(text, false, true, true, QVariantMap());
    EXPECT_EQ(out.string(), "See  now.");
    out = attributedStringWithAnnotationsInline(text, false, true, false, QVariantMap());
    EXPECT_EQ(out, text);

    // A footnote inside an inline annotation is part of the annotation, not a note of its own.
    const AttributedString both =
        build({{QStringLiteral("a"), annotation(1, 0, 0)}, {QStringLiteral("b"), annotation(1, 0, 0, footnote())}});
    EXPECT_EQ(inlineAll(both).string(), "[ab]");
}

TEST(InlineNotes, InlineCommentsBecomeDarkerAnnotationsAndTheirAnchorsAreHighlighted)
{
    const XQCommentPtr c = comment(QStringLiteral("check"), false, Color(1, 1, 0));
    const AttributedString text =
        build({{QStringLiteral("word"), withComment(c)},
               {QStringLiteral(" check"), {{XQLinkedCommentAttributeName, colourValue(1, 1, 0)}}},
               {QStringLiteral("."), {}}});
    AttributedString out = inlineAll(text);
    ASSERT_EQ(out.string(), "word[ check].");
    const Color ink = *colourAt(out, ForegroundColorAttributeName, 5);
    EXPECT_NEAR(ink.redComponent(), 0.3, 1e-12);
    EXPECT_NEAR(ink.blueComponent(), 0.0, 1e-12);
    EXPECT_EQ(coverage(out, BackgroundColorAttributeName), "####---------");
    EXPECT_EQ(*colourAt(out, BackgroundColorAttributeName, 0), Color(1, 1, 0));

    out = attributedStringWithAnnotationsInline(text, false, true, true, QVariantMap());
    EXPECT_EQ(out.string(), "word.");
    EXPECT_FALSE(coverage(out, BackgroundColorAttributeName).contains(u'#'));
}

TEST(InlineNotes, FootnotesNotInlineAreDeletedOrKept)
{
    const AttributedString text =
        build({{QStringLiteral("a"), {}}, {QStringLiteral("note"), footnote()}, {QStringLiteral("b"), {}}});
    EXPECT_EQ(attributedStringWithAnnotationsInline(text, true, false, true, QVariantMap()).string(), "ab");
    EXPECT_EQ(attributedStringWithAnnotationsInline(text, true, false, false, QVariantMap()), text);
}

TEST(InlineNotes, TaggedFootnotesAreResolvedBeforeNumbering)
{
    const AttributedString text = build({{QStringLiteral("Claim"), {}},
                                         {QStringLiteral("[s]"), footnote()},
                                         {QStringLiteral(" again"), {}},
                                         {QStringLiteral("[s]"), footnote()},
                                         {QStringLiteral(" "), {}},
                                         {QStringLiteral("[s] The source."), footnote()}});
    const AttributedString out = inlineAll(text, {{XQInlineFootnotesSeparatorType, 0}});
    EXPECT_EQ(out.string(), QStringLiteral("Claim\u20601 again\u20602\n\n1 The source.\n2 The source."));
}

TEST(InlineNotes, GroupsRestartNumbering)
{
    const QVariantMap lineFeed{{XQInlineFootnotesSeparatorType, 0}, {XQInlineFootnotesMarkerStyle, 0}};
    auto convert = [&](const AttributedString& text, int group) {
        return attributedStringWithAnnotationsInline(text, true, true, false, lineFeed, group);
    };
    // Three sections, each with its own notes.
    const AttributedString sections = build({{QStringLiteral("One"), {}},
                                             {QStringLiteral("a"), footnote()},
                                             {QStringLiteral("\n\fTwo"), {}},
                                             {QStringLiteral("b"), footnote()},
                                             {QStringLiteral(" "), {}},
                                             {QStringLiteral("c"), footnote()},
                                             {QStringLiteral("\n\fThree"), {}},
                                             {QStringLiteral("d"), footnote()}});
    AttributedString out = convert(sections, FootnoteGroupPerSection);
    EXPECT_EQ(out.string(), QStringLiteral("One[1]\n\n[1] a\n\fTwo[1] [2]\n\n[1] b\n[2] c\n\fThree[1]\n\n[1] d"));
    EXPECT_EQ(runNumbers(out, XQInlineFootnoteMarkerAttributeName), (QList<int>{1, 1, 2, 1}));

    // Around the last page break only.
    out = convert(sections, FootnoteGroupsAroundLastPageBreak);
    EXPECT_EQ(out.string(), QStringLiteral("One[1]\n\fTwo[2] [3]\n\n[1] a\n[2] b\n[3] c\n\fThree[1]\n\n[1] d"));

    // Group type 0, or no page break at all: one group.
    const QString single = QStringLiteral("One[1]\n\fTwo[2] [3]\n\fThree[4]\n\n[1] a\n[2] b\n[3] c\n[4] d");
    EXPECT_EQ(convert(sections, SingleFootnoteGroup).string(), single);
    const AttributedString unbroken = build({{QStringLiteral("x"), {}},
                                             {QStringLiteral("a"), footnote()},
                                             {QStringLiteral(" y"), {}},
                                             {QStringLiteral("b"), footnote()}});
    EXPECT_EQ(convert(unbroken, FootnoteGroupPerSection).string(), QStringLiteral("x[1] y[2]\n\n[1] a\n[2] b"));
    EXPECT_EQ(convert(unbroken, FootnoteGroupsAroundLastPageBreak).string(),
              QStringLiteral("x[1] y[2]\n\n[1] a\n[2] b"));
}

TEST(InlineNotes, EndnotesMarkerSplitsTheNotesUnlessEscaped)
{
    const QVariantMap lineFeed{{XQInlineFootnotesSeparatorType, 0}, {XQInlineFootnotesMarkerStyle, 0}};
    auto convert = [&](const QString& between) {
        const AttributedString text = build({{QStringLiteral("Text"), {}},
                                             {QStringLiteral("a"), footnote()},
                                             {between, {}},
                                             {QStringLiteral("More"), {}},
                                             {QStringLiteral("b"), footnote()}});
        return attributedStringWithAnnotationsInline(text, true, true, false, lineFeed,
                                                     FootnoteGroupsAroundEndnotesMarker)
            .string();
    };
    // The marker and the line feed before it go; the first group's notes stand where the marker was.
    EXPECT_EQ(convert(QStringLiteral("\n<$--ENDNOTES-->\n")), QStringLiteral("Text[1]\n\n[1] a\nMore[1]\n\n[1] b"));
    // The last marker counts.
    EXPECT_EQ(convert(QStringLiteral(" <$--ENDNOTES--> <$--ENDNOTES-->")),
              QStringLiteral("Text[1] <$--ENDNOTES--> \n\n[1] aMore[1]\n\n[1] b"));
    // Escaped, it is plain text and the notes stay in one group; two backslashes escape each other.
    EXPECT_EQ(convert(QStringLiteral("\n\\<$--ENDNOTES-->\n")),
              QStringLiteral("Text[1]\n\\<$--ENDNOTES-->\nMore[2]\n\n[1] a\n[2] b"));
    EXPECT_EQ(convert(QStringLiteral("\\\\<$--ENDNOTES-->")), QStringLiteral("Text[1]\\\\\n\n[1] aMore[1]\n\n[1] b"));

    // Without footnotes or linked comments the group type is ignored: the marker stays.
    const AttributedString plain = build({{QStringLiteral("Text "), {}},
                                          {QStringLiteral("ann"), annotation(1, 0, 0)},
                                          {QStringLiteral("\n<$--ENDNOTES-->"), {}}});
    EXPECT_EQ(
        attributedStringWithAnnotationsInline(plain, true, true, false, lineFeed, FootnoteGroupsAroundEndnotesMarker)
            .string(),
        "Text [ann]\n<$--ENDNOTES-->");
}

TEST(InlineNotes, RuleAttachmentKeepsItsShapeForOddSizes)
{
    for (double height : {0.0, 1.0, 9.0, 24.4}) {
        const TextAttachment rule = footnoteSeparatorRuleAttachment(height);
        const QImage image = QImage::fromData(rule.contents(), "PNG");
        const int h = std::max(1, qRound(height));
        ASSERT_EQ(image.size(), QSize(150, h)) << height;
        int blackRows = 0;
        for (int y = 0; y < h; ++y)
            blackRows += image.pixelColor(10, y).alpha() == 255;
        EXPECT_EQ(blackRows, 1) << height;
        EXPECT_EQ(image.pixelColor(10, std::min(qRound(h / 2.0), h - 1)), QColor(Qt::black)) << height;
    }
}
