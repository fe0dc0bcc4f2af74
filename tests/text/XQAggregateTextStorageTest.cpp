#include <qlyappkit/text/storages/XQAggregateTextStorage.h>

#include <QTest>

#include <qlyappkit/platform/services/NamedException.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/text/storages/XQAggregateTextStorageComponent.h>
#include <qlyappkit/text/storages/XQTextStorage.h>

#include "StorageTestSupport.h"

using namespace qly;
using namespace qly::testing;

namespace {

// A component that can join an aggregate but keeps neither a word count nor comments.
class PlainComponent : public TextStorage, public XQAggregateTextStorageComponent {
public:
    explicit PlainComponent(const QString& text) : TextStorage(text) { }
    void addToAggregateTextStorage() override { ++members; }
    void removeFromAggregateTextStorage() override { --members; }
    bool isAggregateTextStorageComponent() const override { return members != 0; }
    int members = 0;
};

std::shared_ptr<XQTextStorage> storage(const QString& text) { return std::make_shared<XQTextStorage>(text); }

struct Fixture {
    std::shared_ptr<XQTextStorage> a = storage(QStringLiteral("Alpha text.")), b = storage(QStringLiteral("Beta")),
                                   c = storage(QStringLiteral("Gamma words here"));
    XQAggregateTextStorage aggregate;
    Fixture()
    {
        aggregate.setComponents(
            {{QStringLiteral("One"), a, false}, {QStringLiteral("Two"), b, true}, {QStringLiteral("Three"), c, false}});
    }
};

/// Counts the notifications of one name from the aggregate, keeping the last user info.
struct Heard {
    Heard(const QString& name, const XQAggregateTextStorage& from)
        : observer(name, static_cast<const TextStorage*>(&from), [this](const Notification& n) {
              ++count;
              info = n.userInfo;
          })
    {
    }
    int count = 0;
    QVariantMap info;
    ScopedObserver observer;
};

} // namespace

TEST(XQAggregateTextStorage, LaysOutTitlesTextsAndSeparators)
{
    Fixture f;
    XQAggregateTextStorage& agg = f.aggregate;
    // Component 1's page break governs the separator in front of it; component 0 governs none.
    EXPECT_EQ(agg.string(), QStringLiteral("One\nAlpha text.\n\fTwo\nBeta\n\nThree\nGamma words here"));
    EXPECT_EQ(agg.titleRanges(), (std::vector<Range>{{0, 3}, {17, 3}, {27, 5}}));
    EXPECT_EQ(agg.textRanges(), (std::vector<Range>{{4, 11}, {21, 4}, {33, 16}}));
    EXPECT_EQ(agg.componentRanges(), (std::vector<Range>{{0, 17}, {17, 10}, {27, 22}}));
    EXPECT_EQ(agg.wordCount(), 6);
    EXPECT_EQ(agg.wordCountForRange(Range{0, 17}), 3); // titles count in a plain range count
    // The separator string of a component looks at its own flag, and the last one has none.
    EXPECT_EQ(agg.separatorStringForComponentAtIndex(0), QStringLiteral("\n\n"));
    EXPECT_EQ(agg.separatorStringForComponentAtIndex(1), QStringLiteral("\n\f"));
    EXPECT_EQ(agg.separatorStringForComponentAtIndex(2), QString());

    // Separator and title attributes.
    EXPECT_TRUE(agg.attribute(XQAggregatedSeparatorAttributeName, 15).toBool());
    EXPECT_DOUBLE_EQ(agg.attribute(ParagraphStyleAttributeName, 16).value<ParagraphStyle>().lineHeightMultiple(), 1.2);
    EXPECT_EQ(agg.attribute(FontAttributeName, 15).value<Font>(), Font::userFont(12)); // the text has no font
    EXPECT_TRUE(agg.attribute(XQAggregatedTitleAttributeName, 1).toBool());
    EXPECT_TRUE(agg.attribute(FontAttributeName, 1).value<Font>().isBold());
    EXPECT_FALSE(agg.attribute(FontAttributeName, 3).value<Font>().isBold()); // the newline after the title
    EXPECT_TRUE(agg.titlesAreCentered());
    EXPECT_FALSE(agg.attribute(XQAggregatedTitleAttributeName, 5).isValid());
    for (const auto& s : {f.a, f.b, f.c})
        EXPECT_TRUE(s->isAggregateTextStorageComponent());

    const Font times = Font::fromFamily(QStringLiteral("Times"), 13);
    f.a->addAttribute(FontAttributeName, QVariant::fromValue(times), Range{0, f.a->length()});
    agg.setUsesSingleLineSeparators(true);
    EXPECT_EQ(agg.string(), QStringLiteral("One\nAlpha text.\n\fTwo\nBeta\nThree\nGamma words here"));
    EXPECT_EQ(agg.attribute(FontAttributeName, 15).value<Font>(), times); // the font of the text before it
    EXPECT_TRUE(agg.attribute(XQAggregatedSeparatorAttributeName, 16).toBool());
    agg.setPageBreakBefore(true, 0); // stored, governs nothing
    agg.setPageBreakBefore(false, 1);
    agg.setPageBreakBefore(true, 2);
    EXPECT_EQ(agg.string(), QStringLiteral("One\nAlpha text.\nTwo\nBeta\n\fThree\nGamma words here"));
    EXPECT_EQ(agg.textRanges()[2], (Range{32, 16}));
    EXPECT_TRUE(agg.components()[0].pageBreakBefore);

    // Hiding and showing titles.
    Heard undo(XQAggregateTextStorageDidInvalidateUndoStackNotification, agg);
    StatisticsRecorder stats(static_cast<const TextStorage*>(&agg));
    agg.setShowsTitles(false);
    EXPECT_EQ(agg.string(), QStringLiteral("Alpha text.\nBeta\n\fGamma words here"));
    EXPECT_TRUE(agg.titleRanges().empty());
    EXPECT_EQ(agg.textRanges(), (std::vector<Range>{{0, 11}, {12, 4}, {18, 16}}));
    EXPECT_EQ(agg.rangeOfTitleForComponentAtIndex(0), Range::notFound());
    agg.setShowsTitles(true);
    EXPECT_EQ(agg.string(), QStringLiteral("One\nAlpha text.\nTwo\nBeta\n\fThree\nGamma words here"));
    EXPECT_TRUE(agg.attribute(XQAggregatedTitleAttributeName, 22).toBool() == false);
    EXPECT_TRUE(agg.attribute(XQAggregatedTitleAttributeName, 17).toBool());
    EXPECT_EQ(undo.count, 2);
    EXPECT_EQ(stats.posts, 2);
    EXPECT_EQ(f.a->string(), QStringLiteral("Alpha text.")); // components untouched throughout
}

TEST(XQAggregateTextStorage, LocatesRangesAndDecidesEditability)
{
    Fixture f;
    XQAggregateTextStorage& agg = f.aggregate;
    int element = -1;
    EXPECT_EQ(agg.indexOfComponentContainingRange(Range{5, 3}, &element), 0);
    EXPECT_EQ(element, XQAggregateTextStorage::TextElement);
    EXPECT_EQ(agg.indexOfComponentContainingRange(Range{1, 1}, &element), 0);
    EXPECT_EQ(element, XQAggregateTextStorage::TitleElement);
    EXPECT_EQ(agg.indexOfComponentContainingRange(Range{3, 0}, &element), 0); // the title's end
    EXPECT_EQ(element, XQAggregateTextStorage::TitleElement);
    EXPECT_EQ(agg.indexOfComponentContainingRange(Range{15, 1}, &element), 0); // the separator
    EXPECT_EQ(element, XQAggregateTextStorage::SeparatorElement);
    EXPECT_EQ(agg.indexOfComponentContainingRange(Range{2, 4}, &element), 0); // across title and text
    EXPECT_EQ(element, XQAggregateTextStorage::SeparatorElement);
    EXPECT_EQ(agg.indexOfComponentContainingRange(Range{10, 10}, &element), NotFound);
    EXPECT_EQ(element, XQAggregateTextStorage::SeparatorElement);
    // An empty range at a component's end belongs to the next one, except at the very end.
    EXPECT_EQ(agg.indexOfComponentContainingRange(Range{17, 0}, &element), 1);
    EXPECT_EQ(element, XQAggregateTextStorage::TitleElement);
    EXPECT_EQ(agg.indexOfComponentContainingRange(Range{agg.length(), 0}, &element), 2);
    EXPECT_EQ(element, XQAggregateTextStorage::TextElement);
    EXPECT_EQ(agg.indexOfComponentContainingRange(Range{15, 0}, &element), 0); // the text's end
    EXPECT_EQ(element, XQAggregateTextStorage::TextElement);

    EXPECT_TRUE(agg.rangeIsEditable(Range{1, 1}, QStringLiteral("x")));
    EXPECT_TRUE(agg.rangeIsEditable(Range{5, 2}, QStringLiteral("x")));
    EXPECT_FALSE(agg.rangeIsEditable(Range{15, 1}, QStringLiteral("x")));
    EXPECT_FALSE(agg.rangeIsEditable(Range{2, 4}, QString()));
    EXPECT_FALSE(agg.rangeIsEditable(Range{1, 1}, std::nullopt)); // attributes of a shown title
    EXPECT_TRUE(agg.rangeIsEditable(Range{2, 40}, std::nullopt));
    EXPECT_TRUE(agg.rangesAreEditable({{5, 1}, {21, 2}}, QStringList{QStringLiteral("a"), QStringLiteral("b")}));
    EXPECT_FALSE(agg.rangesAreEditable({{5, 1}, {16, 1}}, QStringList{QStringLiteral("a"), QStringLiteral("b")}));
    EXPECT_FALSE(agg.rangesAreEditable({{5, 1}}, QStringList{}));

    EXPECT_EQ(agg.textStorageForRange(Range{22, 1}), f.b);
    EXPECT_EQ(agg.textStorageForRange(Range{18, 1}), nullptr);
    EXPECT_EQ(agg.textStorageForComponentAtIndex(2), f.c);
    EXPECT_EQ(agg.textStorageForComponentAtIndex(3), nullptr);
    EXPECT_EQ(agg.indexOfComponentContainingTextStorage(f.c.get()), 2);
    EXPECT_EQ(agg.indexOfComponent(agg.components()[1]), 1);
    EXPECT_EQ(agg.rangeOfEntireComponentAtIndex(1), (Range{17, 10}));
    EXPECT_EQ(agg.componentTextStoragesIntersectingRanges({{14, 8}}),
              (std::vector<std::shared_ptr<TextStorage>>{f.a, f.b}));
    EXPECT_EQ(agg.rangesLimitedToTextRanges({{14, 8}, {40, 0}}), (std::vector<Range>{{14, 1}, {21, 1}, {40, 0}}));
}

TEST(XQAggregateTextStorage, RoutesEditsToComponentsAndMirrorsThemBack)
{
    Fixture f;
    XQAggregateTextStorage& agg = f.aggregate;
    StatisticsRecorder stats(static_cast<const TextStorage*>(&agg));
    agg.replaceCharacters(Range{15, 0}, QStringLiteral(" More")); // the end of component 0's text
    EXPECT_EQ(f.a->string(), QStringLiteral("Alpha text. More"));
    EXPECT_EQ(agg.wordCount(), 7);
    EXPECT_EQ(stats.posts, 1);
    // With titles hidden, typing at a component's end goes into the next component.
    agg.setShowsTitles(false);
    agg.replaceCharacters(Range{agg.componentRanges()[0].end(), 0}, QStringLiteral("New "));
    EXPECT_EQ(f.b->string(), QStringLiteral("New Beta"));
    EXPECT_EQ(f.a->string(), QStringLiteral("Alpha text. More"));
    // A separator edit that gets past the editability test changes only this text.
    agg.replaceCharacters(Range{agg.textRanges()[0].end(), 1}, QStringLiteral("#"));
    EXPECT_EQ(f.a->string(), QStringLiteral("Alpha text. More"));
    EXPECT_EQ(f.b->string(), QStringLiteral("New Beta"));
    agg.replaceCharacters(Range{agg.textRanges()[0].end(), 1}, QStringLiteral("\n"));
    agg.setShowsTitles(true);

    // An edit in a component lands at the right place here.
    f.c->replaceCharacters(Range{0, 5}, QStringLiteral("Delta"));
    EXPECT_EQ(agg.substring(agg.textRanges()[2]), QStringLiteral("Delta words here"));
    EXPECT_FALSE(agg.isChangeInstigatedByComponent());
    // Attributes both ways.
    const Attributes italic{
        {FontAttributeName, QVariant::fromValue(Font::fromFamily(QStringLiteral("Times"), 12, ItalicFontMask))}};
    const Range across = Range::fromBounds(agg.textRanges()[0].location + 6, agg.textRanges()[1].location + 3);
    agg.setAttributes(italic, across);
    EXPECT_EQ(f.a->attributes(6), italic);
    EXPECT_EQ(f.b->attributes(2), italic);
    EXPECT_FALSE(f.b->attributes(3).contains(FontAttributeName));
    EXPECT_TRUE(agg.attribute(XQAggregatedTitleAttributeName, agg.titleRanges()[1].location)
                    .toBool()); // the title keeps its own
    EXPECT_TRUE(agg.attribute(XQAggregatedSeparatorAttributeName, agg.textRanges()[0].end()).toBool());
    agg.addAttribute(XQParagraphStyleIDAttributeName, QStringLiteral("Body"), Range{agg.textRanges()[2].location, 1});
    EXPECT_EQ(f.c->attribute(XQParagraphStyleIDAttributeName, 10).toString(),
              QStringLiteral("Body")); // spread by the component...
    EXPECT_EQ(agg.attribute(XQParagraphStyleIDAttributeName, agg.textRanges()[2].location + 10).toString(),
              QStringLiteral("Body")); // ...and copied back
    f.b->removeAttribute(FontAttributeName, Range{0, 2});
    EXPECT_EQ(agg.attributedSubstring(agg.textRanges()[1]), f.b->attributedString());
    // Setting attributes on a title gives it the title attributes instead.
    agg.setAttributes(italic, agg.titleRanges()[0]);
    EXPECT_TRUE(agg.attribute(FontAttributeName, 0).value<Font>().isBold());
}

TEST(XQAggregateTextStorage, TitlesRenameComponentsAndAnnounceOncePerBurst)
{
    Fixture f;
    XQAggregateTextStorage& agg = f.aggregate;
    Heard titles(XQAggregateTextStorageComponentTitleDidChangeNotification, agg);
    Heard undo(XQAggregateTextStorageDidInvalidateUndoStackNotification, agg);
    // Typing "s" then "!" at the end of the title "Two".
    agg.replaceCharacters(Range{20, 0}, QStringLiteral("s"));
    EXPECT_EQ(agg.components()[1].title, QStringLiteral("Twos")); // renamed at once
    QTest::qWait(30);
    agg.replaceCharacters(Range{21, 0}, QStringLiteral("!"));
    EXPECT_EQ(agg.components()[1].title, QStringLiteral("Twos!"));
    EXPECT_EQ(agg.textRanges()[1], (Range{23, 4}));
    EXPECT_TRUE(agg.attribute(XQAggregatedTitleAttributeName, 21).toBool());
    EXPECT_EQ(titles.count, 0);
    QTest::qWait(60);
    EXPECT_EQ(titles.count, 0); // 0.1 s after the last keystroke, not the first
    QTest::qWait(150);
    EXPECT_EQ(titles.count, 1);
    EXPECT_EQ(titles.info.value(QStringLiteral("newTitle")).toString(), QStringLiteral("Twos!"));
    EXPECT_EQ(titles.info.value(QStringLiteral("componentIndex")).toLongLong(), 1);
    EXPECT_GE(undo.count, 2);
    EXPECT_EQ(f.b->string(), QStringLiteral("Beta"));

    // Programmatic titles: renamed through the text, no delayed announcement.
    const int undoBefore = undo.count;
    agg.setTitle(QStringLiteral("First"), 0);
    EXPECT_EQ(agg.substring(agg.titleRanges()[0]), QStringLiteral("First"));
    EXPECT_EQ(undo.count, undoBefore + 1);
    agg.setTitle(QString(), 2);
    EXPECT_EQ(agg.titleRanges()[2].length, 0);
    agg.replaceCharacters(Range{agg.titleRanges()[2].location, 0}, QStringLiteral("T")); // typing into an empty title
    EXPECT_EQ(agg.components()[2].title, QStringLiteral("T"));
    EXPECT_TRUE(agg.attribute(XQAggregatedTitleAttributeName, agg.titleRanges()[2].location).toBool());
    // The component is gone before the announcement is due: nothing is announced.
    agg.setComponents({agg.components()[0], agg.components()[1]});
    QTest::qWait(200);
    EXPECT_EQ(titles.count, 1);

    agg.setShowsTitles(false);
    agg.setTitle(QStringLiteral("Hidden"), 1);
    EXPECT_EQ(agg.components()[1].title, QStringLiteral("Hidden"));
    agg.setShowsTitles(true);
    EXPECT_EQ(agg.substring(agg.titleRanges()[1]), QStringLiteral("Hidden"));

    agg.setTitleColor(Color(0, 0, 1), 1);
    EXPECT_EQ(agg.attribute(ForegroundColorAttributeName, agg.titleRanges()[1].location),
              QVariant::fromValue(Color(0, 0, 1)));

    WarningCapture warnings;
    agg.setTitle(QStringLiteral("x"), 2);
    agg.setTitleColor(Color(), 5);
    agg.setPageBreakBefore(true, -1);
    EXPECT_EQ(
        warnings.messages,
        (QStringList{
            QStringLiteral("*** XQAggregateTextStorage Error: Invalid index in -setTitle:forComponentAtIndex:"),
            QStringLiteral("*** XQAggregateTextStorage Error: Invalid index in -setTitleColor:forComponentAtIndex:"),
            QStringLiteral(
                "*** XQAggregateTextStorage Error: Invalid index in -setPageBreakBefore:forComponentAtIndex:")}));
}

TEST(XQAggregateTextStorage, RefusesBadComponentsAndCountsOnlyWhenAllCount)
{
    Fixture f;
    XQAggregateTextStorage& agg = f.aggregate;
    const QString before = agg.string();
    try {
        agg.setComponents({{QStringLiteral("x"), f.a, false}, {QStringLiteral("nil"), nullptr, false}});
        FAIL() << "no exception";
    } catch (const NamedException& e) {
        EXPECT_EQ(e.name(), QStringLiteral("XQAggregateTextStorage - nil component."));
        EXPECT_EQ(e.reason(),
                  QStringLiteral("Attempted to load a nil coponent text storage in XQAggregateTextStorage"));
    }
    try {
        agg.setComponents({{QStringLiteral("plain"), std::make_shared<TextStorage>(QStringLiteral("t")), false}});
        FAIL() << "no exception";
    } catch (const NamedException& e) {
        EXPECT_EQ(e.name(), QStringLiteral("XQAggregateTextStorage - invalid component."));
        EXPECT_EQ(e.reason(),
                  QStringLiteral("Attempted to load a component text storage that does not conform to the "
                                 "XQAggregateTextStorageComponent protocol."));
    }
    EXPECT_EQ(agg.string(), before);
    EXPECT_EQ(agg.numberOfComponents(), 3);

    auto plain = std::make_shared<PlainComponent>(QStringLiteral("plain words"));
    agg.setComponents({{QStringLiteral("P"), plain, false}, agg.components()[1]});
    EXPECT_EQ(agg.wordCount(), 0);
    EXPECT_FALSE(agg.componentsHaveComments());
    EXPECT_EQ(plain->members, 1);
    EXPECT_FALSE(f.a->isAggregateTextStorageComponent()); // dropped from the aggregate
    EXPECT_TRUE(f.b->isAggregateTextStorageComponent());
    agg.replaceCharacters(Range{2, 0}, QStringLiteral("my "));
    EXPECT_EQ(plain->string(), QStringLiteral("my plain words"));

    // An equal array changes nothing; an empty one empties the storage.
    const int edits = [&] {
        int n = 0;
        ScopedObserver o(TextStorageDidProcessEditingNotification, static_cast<const TextStorage*>(&agg),
                         [&](const Notification&) { ++n; });
        agg.setComponents(agg.components());
        return n;
    }();
    EXPECT_EQ(edits, 0);
    agg.setComponents({});
    EXPECT_EQ(agg.length(), 0);
    EXPECT_EQ(plain->members, 0);

    // Membership ends with the aggregate.
    {
        XQAggregateTextStorage shortLived;
        shortLived.setComponents({{QString(), f.c, false}});
        EXPECT_TRUE(f.c->isAggregateTextStorageComponent());
    }
    EXPECT_FALSE(f.c->isAggregateTextStorageComponent());
    f.c->replaceCharacters(Range{0, 0}, QStringLiteral("safe "));

    // The dictionary form keeps title, storage and page break.
    const XQTextComponent component{QStringLiteral("T"), f.a, true};
    const QVariantMap dictionary = component.dictionary();
    EXPECT_EQ(dictionary.value(XQTextComponentTitleKey).toString(), QStringLiteral("T"));
    EXPECT_EQ(XQTextComponent::fromDictionary(dictionary), component);
    EXPECT_EQ(XQTextComponent::fromDictionary({}).title, QString());
}

TEST(XQAggregateTextStorage, CommentsAcrossComponents)
{
    Fixture f;
    XQAggregateTextStorage& agg = f.aggregate;
    EXPECT_TRUE(agg.componentsHaveComments());
    Heard changes(XQTextStorageCommentsDidChangeNotification, agg);
    const XQCommentPtr inC =
        agg.addComment(AttributedString(QStringLiteral("on gamma")), Range{agg.textRanges()[2].location + 6, 5});
    ASSERT_TRUE(inC);
    EXPECT_EQ(f.c->comments(), std::vector<XQCommentPtr>{inC});
    EXPECT_EQ(f.c->rangeOfComment(inC), (Range{6, 5}));
    EXPECT_EQ(commentFromVariant(agg.attribute(XQCommentAttributeName, agg.textRanges()[2].location + 7)), inC);
    const XQCommentPtr inA = f.a->addFootnoteComment(AttributedString(QStringLiteral("fn")), Range{0, 5});
    EXPECT_EQ(agg.comments(), (std::vector<XQCommentPtr>{inA, inC}));
    EXPECT_GE(changes.count, 2);
    EXPECT_EQ(agg.rangeOfComment(inC), (Range{agg.textRanges()[2].location + 6, 5}));
    EXPECT_EQ(agg.rangeOfComment(XQComment::create()), Range::notFound());

    // Outside any text: nothing.
    EXPECT_EQ(agg.addComment(AttributedString(QStringLiteral("x")), Range{1, 1}), nullptr);
    EXPECT_EQ(agg.addComment(AttributedString(QStringLiteral("x")), Range{10, 10}), nullptr);

    agg.setCommentText(AttributedString(QStringLiteral("new text")), Range{agg.textRanges()[2].location + 6, 5});
    ASSERT_EQ(agg.comments().size(), 2u);
    EXPECT_EQ(agg.comments()[1]->string(), QStringLiteral("new text"));
    EXPECT_NE(agg.comments()[1], inC);
    agg.removeCommentsAtRange(Range{agg.textRanges()[0].location + 1, 0});
    EXPECT_EQ(agg.comments().size(), 1u);
    EXPECT_TRUE(f.a->comments().empty());
    EXPECT_EQ(agg.attributedSubstring(agg.textRanges()[0]), f.a->attributedString());
    EXPECT_TRUE(commentLinksConsistent(agg.attributedSubstring(agg.textRanges()[2])));
}

TEST(XQAggregateTextStorage, CheckInvariantsNamesWhatIsWrong)
{
    Fixture f;
    XQAggregateTextStorage& agg = f.aggregate;
    QString failure;
    EXPECT_TRUE(agg.checkInvariants(&failure)) << failure.toStdString();
    agg.setShowsTitles(false);
    agg.setPageBreakBefore(false, 1);
    EXPECT_TRUE(agg.checkInvariants(&failure)) << failure.toStdString();
    // A separator edit that changes the length gets past the storage (the editor's editability test
    // refuses it): the ranges no longer tile the text, and the check says so.
    agg.replaceCharacters(Range{agg.textRanges()[0].end(), 1}, QStringLiteral("##"));
    EXPECT_FALSE(agg.checkInvariants(&failure));
    EXPECT_FALSE(failure.isEmpty());
}

TEST(XQAggregateTextStorage, MirrorsABatchWhoseDeletionSwallowsAnEarlierEdit)
{
    auto a = storage(QStringLiteral("hello world")), b = storage(QStringLiteral("next"));
    XQAggregateTextStorage agg;
    agg.setComponents({{QStringLiteral("A"), a, false}, {QStringLiteral("B"), b, false}});
    a->beginEditing();
    a->addAttribute(UnderlineStyleAttributeName, 1, Range{8, 1});
    a->replaceCharacters(Range{5, 6}, QString());
    a->endEditing();
    EXPECT_EQ(a->string(), QStringLiteral("hello"));
    EXPECT_EQ(agg.string(), QStringLiteral("A\nhello\n\nB\nnext"));
    QString failure;
    EXPECT_TRUE(agg.checkInvariants(&failure)) << failure.toStdString();
    // Later edits still land in the right place.
    agg.replaceCharacters(Range{agg.textRanges()[1].location, 0}, QStringLiteral("the "));
    EXPECT_EQ(b->string(), QStringLiteral("the next"));
    EXPECT_TRUE(agg.checkInvariants(&failure)) << failure.toStdString();
}
