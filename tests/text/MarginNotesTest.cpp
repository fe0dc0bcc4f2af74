#include <gtest/gtest.h>

#include <qlyappkit/platform/services/NotificationCenter.h>
#include <qlyappkit/platform/text/TextStorage.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>
#include <qlyappkit/text/notes/MarginNotes.h>

#include "NoteTestSupport.h"

using namespace qly;
using namespace notetest;

namespace {

XQCommentPtr commentAt(const MutableAttributedString& text, qsizetype i)
{
    return commentFromVariant(text.attribute(XQCommentAttributeName, i));
}

Attributes linked(const XQCommentPtr& c)
{
    Attributes a = withComment(c);
    a.insert(LinkAttributeName, QStringLiteral("quillcmt://") + c->uniqueID());
    a.insert(ToolTipAttributeName, c->tooltipString());
    return a;
}

// Counts the batches a storage processes.
class BatchCounter {
public:
    explicit BatchCounter(const TextStorage& storage)
        : m_observer(TextStorageDidProcessEditingNotification, &storage, [this](const Notification&) { ++batches; })
    {
    }
    int batches = 0;

private:
    ScopedObserver m_observer;
};

} // namespace

TEST(MarginNotes, CommentsBecomeAnnotationsAfterTheirAnchors)
{
    const XQCommentPtr yellow = comment(QStringLiteral("Check this"), false, Color(1, 1, 0));
    const XQCommentPtr colourless = comment(QStringLiteral("Plain"), false, std::nullopt);
    const XQCommentPtr foot = comment(QStringLiteral("Footnote"), true);
    TextStorage text(build({{QStringLiteral("The "), {}},
                            {QStringLiteral("word"), linked(yellow)},
                            {QStringLiteral(" and "), {}},
                            {QStringLiteral("fact"), linked(foot)},
                            {QStringLiteral(" end"), linked(colourless)}}));
    BatchCounter counter(text);
    convertMarginCommentsToInlineAnnotations(text);
    EXPECT_EQ(counter.batches, 1);
    ASSERT_EQ(text.string(), "The word Check this and fact end Plain");
    const AttributedString out = text.attributedString();
    EXPECT_EQ(coverage(out, XQAnnotationAttributeName), "--------###########-------------######");
    EXPECT_EQ(*colourAt(out, XQAnnotationAttributeName, 8), Color(0.5, 0.5, 0));
    EXPECT_EQ(*colourAt(out, XQAnnotationAttributeName, 33), Color::standardAnnotationColor());
    // Comment anchors lose comment, link and tool tip; the footnote anchor keeps all of them.
    EXPECT_EQ(coverage(out, XQCommentAttributeName), QString(24, u'-') + "####" + QString(10, u'-'));
    EXPECT_EQ(coverage(out, LinkAttributeName), coverage(out, XQCommentAttributeName));
    EXPECT_EQ(coverage(out, ToolTipAttributeName), coverage(out, XQCommentAttributeName));
}

TEST(MarginNotes, OnlyAnchorsInsideTheRangeAreConverted)
{
    const XQCommentPtr a = comment(QStringLiteral("A"));
    const XQCommentPtr b = comment(QStringLiteral("B"));
    MutableAttributedString text(
        build({{QStringLiteral("one"), linked(a)}, {QStringLiteral(" "), {}}, {QStringLiteral("two"), linked(b)}}));
    convertMarginCommentsToInlineAnnotationsInRange(text, Range{4, 3});
    EXPECT_EQ(text.string(), "one two B");
    EXPECT_EQ(commentAt(text, 0), a);
}

TEST(MarginNotes, AnnotationsBecomeCommentsOnTheNextFreeWord)
{
    TextStorage text(build(
        {{QStringLiteral("The quick"), {}},
         {QStringLiteral(" fast "), annotation(0.2, 0.4, 0.6, {{ParagraphStyleAttributeName, QVariant::fromValue([] {
                                                                    ParagraphStyle s;
                                                                    s.setHeadIndent(40);
                                                                    return s;
                                                                }())}})},
         {QStringLiteral("brown fox"), {}}}));
    BatchCounter counter(text);
    convertInlineAnnotationsToMarginComments(text);
    EXPECT_EQ(counter.batches, 1);
    ASSERT_EQ(text.string(), "The quickbrown fox");
    // Deleting the annotation leaves "quickbrown" as the word at its place.
    const XQCommentPtr c = commentAt(text, 4);
    ASSERT_TRUE(c);
    EXPECT_EQ(coverage(text.attributedString(), XQCommentAttributeName), "----##########----");
    EXPECT_EQ(c->string(), "fast");
    EXPECT_FALSE(c->isFootnote());
    ASSERT_TRUE(c->color());
    EXPECT_NEAR(c->color()->redComponent(), 0.6, 1e-12);
    EXPECT_NEAR(c->color()->greenComponent(), 0.7, 1e-12);
    EXPECT_NEAR(c->color()->blueComponent(), 0.8, 1e-12);
    EXPECT_FALSE(c->text().attribute(XQAnnotationAttributeName, 0).isValid());
    EXPECT_EQ(c->text().attribute(ParagraphStyleAttributeName, 0).value<ParagraphStyle>(),
              ParagraphStyle::defaultParagraphStyle());
}

TEST(MarginNotes, AnchorWordsSkipSpacesAndNotedWordsAndFallBackToAPlaceholder)
{
    const XQCommentPtr taken = comment(QStringLiteral("earlier"));
    const AttributedString text = build({{QStringLiteral("Hello, "), {}},
                                         {QStringLiteral("world"), withComment(taken)},
                                         {QStringLiteral(" and "), {}},
                                         {QStringLiteral("more"), footnote()},
                                         {QStringLiteral(" words. "), {}}});
    EXPECT_EQ(attributeRangeForCommentToBePlacedAtIndex(text, 0), (Range{0, 5}));
    EXPECT_EQ(attributeRangeForCommentToBePlacedAtIndex(text, 2), (Range{0, 5}));
    // The comma, the space, the commented word and the footnote are passed over.
    EXPECT_EQ(attributeRangeForCommentToBePlacedAtIndex(text, 5), (Range{13, 3}));
    EXPECT_EQ(attributeRangeForCommentToBePlacedAtIndex(text, 8), (Range{13, 3}));
    EXPECT_EQ(attributeRangeForCommentToBePlacedAtIndex(text, 15), (Range{13, 3}));
    EXPECT_EQ(attributeRangeForCommentToBePlacedAtIndex(text, 16), (Range{22, 5}));
    EXPECT_TRUE(attributeRangeForCommentToBePlacedAtIndex(text, 27).isNotFound());
    EXPECT_TRUE(attributeRangeForCommentToBePlacedAtIndex(text, text.length()).isNotFound());

    MutableAttributedString atEnd(
        build({{QStringLiteral("Last words."), {}}, {QStringLiteral(" note"), annotation(1, 0, 0)}}));
    convertInlineAnnotationsToMarginComments(atEnd);
    ASSERT_EQ(atEnd.string(), "Last words.(Linked Comment)");
    EXPECT_EQ(coverage(atEnd.attributedString(), XQCommentAttributeName), QString(11, u'-') + QString(16, u'#'));
    EXPECT_EQ(commentAt(atEnd, 11)->string(), "note");
    EXPECT_FALSE(atEnd.attribute(XQAnnotationAttributeName, 11).isValid());
}

TEST(MarginNotes, SeveralAnnotationsInOneTextEachFindTheirWord)
{
    MutableAttributedString text(build({{QStringLiteral("Alpha"), {}},
                                        {QStringLiteral(" one"), annotation(1, 0, 0)},
                                        {QStringLiteral(" beta"), {}},
                                        {QStringLiteral(" two"), annotation(0, 0, 1)},
                                        {QStringLiteral(" gamma"), {}}}));
    convertInlineAnnotationsToMarginComments(text);
    ASSERT_EQ(text.string(), "Alpha beta gamma");
    EXPECT_EQ(coverage(text.attributedString(), XQCommentAttributeName), "------####-#####");
    EXPECT_EQ(commentAt(text, 6)->string(), "one");
    EXPECT_EQ(commentAt(text, 11)->string(), "two");
}

TEST(MarginNotes, CommentsSurviveARoundTripThroughAnnotations)
{
    const XQCommentPtr c = comment(QStringLiteral("Remember the dog"), false, Color(0.8, 0.6, 0.4));
    MutableAttributedString text(build(
        {{QStringLiteral("The "), {}}, {QStringLiteral("house"), linked(c)}, {QStringLiteral(" stood empty."), {}}}));
    convertMarginCommentsToInlineAnnotations(text);
    EXPECT_EQ(text.string(), "The house Remember the dog stood empty.");
    convertInlineAnnotationsToMarginComments(text);
    EXPECT_EQ(text.string(), "The house stood empty.");
    const XQCommentPtr back = commentAt(text, 10);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->string(), "Remember the dog");
    EXPECT_EQ(coverage(text.attributedString(), XQCommentAttributeName), "----------#####-------");
    // Darkened by half on the way in, lightened by half on the way out.
    EXPECT_NEAR(back->color()->redComponent(), 0.7, 1e-12);
    EXPECT_NEAR(back->color()->blueComponent(), 0.6, 1e-12);
}

TEST(MarginNotes, FootnotesMoveBetweenMarkerAnchorsAndInlineText)
{
    const XQCommentPtr onMarker = comment(QStringLiteral("By marker"), true);
    const XQCommentPtr onWord = comment(QStringLiteral("By word"), true);
    const XQCommentPtr remark = comment(QStringLiteral("Not a footnote"), false);
    TextStorage text(build({{QStringLiteral("Fact"), {}},
                            {QStringLiteral("*"), linked(onMarker)},
                            {QStringLiteral(" and "), {}},
                            {QStringLiteral("claim"), linked(onWord)},
                            {QStringLiteral(" "), {}},
                            {QStringLiteral("aside"), linked(remark)}}));
    BatchCounter counter(text);
    convertMarginFootnotesToInlineFootnotesWithMarker(text, QStringLiteral("*"));
    EXPECT_EQ(counter.batches, 1);
    ASSERT_EQ(text.string(), "Fact By marker and claim By word aside");
    const AttributedString inlined = text.attributedString();
    EXPECT_EQ(coverage(inlined, XQFootnoteAttributeName), "----##########----------########------");
    EXPECT_EQ(coverage(inlined, XQCommentAttributeName), QString(33, u'-') + "#####");

    convertInlineFootnotesToMarginFootnotesWithMarker(text, QStringLiteral("*"));
    EXPECT_EQ(counter.batches, 2);
    ASSERT_EQ(text.string(), "Fact* and claim* aside");
    const XQCommentPtr first = commentAt(text, 4);
    const XQCommentPtr second = commentAt(text, 15);
    ASSERT_TRUE(first && second);
    EXPECT_TRUE(first->isFootnote());
    EXPECT_EQ(first->string(), "By marker");
    EXPECT_EQ(second->string(), "By word");
    EXPECT_EQ(coverage(text.attributedString(), XQCommentAttributeName), "----#----------#-#####");
    EXPECT_FALSE(coverage(text.attributedString(), XQFootnoteAttributeName).contains(u'#'));

    // Without a marker the footnote is anchored on a word.
    MutableAttributedString plain(
        build({{QStringLiteral("Word"), {}}, {QStringLiteral(" note"), footnote()}, {QStringLiteral(" next"), {}}}));
    convertInlineFootnotesToMarginFootnotesInRange(plain, Range{0, plain.length()}, QString());
    ASSERT_EQ(plain.string(), "Word next");
    EXPECT_EQ(coverage(plain.attributedString(), XQCommentAttributeName), "-----####");
    EXPECT_TRUE(commentAt(plain, 5)->isFootnote());
}

TEST(MarginNotes, FootnotesCanTakeTheWordTheyFollow)
{
    struct Case {
        const char* name;
        AttributedString text;
        const char* coverage; ///< the anchor of the footnote once it is linked
    };
    const XQCommentPtr remark = comment(QStringLiteral("A remark"), false);
    const Case cases[] = {
        {"after a word",
         build(
             {{QStringLiteral("Calm sea"), {}}, {QStringLiteral(" Note."), footnote()}, {QStringLiteral(" then"), {}}}),
         "-----###-----"},
        {"after a sentence's end",
         build({{QStringLiteral("Calm water."), {}},
                {QStringLiteral(" Note."), footnote()},
                {QStringLiteral(" She"), {}}}),
         "-----#####-----"},
        {"after a word with a comment: the next free word",
         build({{QStringLiteral("Calm "), {}},
                {QStringLiteral("sea"), withComment(remark)},
                {QStringLiteral(" Note."), footnote()},
                {QStringLiteral(" then"), {}}}),
         "-----###-####"},
        {"at the start: the next word",
         build({{QStringLiteral("Note."), footnote()}, {QStringLiteral("Start here"), {}}}), "#####-----"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        MutableAttributedString text(c.text);
        convertInlineFootnotesToMarginFootnotes(text, InlineNoteAnchor::PrecedingWord);
        EXPECT_EQ(coverage(text.attributedString(), XQCommentAttributeName), QString::fromLatin1(c.coverage))
            << text.string().toStdString();
        EXPECT_FALSE(coverage(text.attributedString(), XQFootnoteAttributeName).contains(u'#'));
    }
}
