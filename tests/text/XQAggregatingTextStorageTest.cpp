#include <qlyappkit/text/storages/XQAggregatingTextStorage.h>

#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/text/storages/XQTextStorage.h>

#include "StorageTestSupport.h"

using namespace qly;
using namespace qly::testing;

namespace {

std::shared_ptr<XQTextStorage> storage(const QString& text) { return std::make_shared<XQTextStorage>(text); }

int processedEdits(TextStorage& s, const std::function<void()>& action)
{
    int count = 0;
    ScopedObserver observer(TextStorageDidProcessEditingNotification, &s, [&](const Notification&) { ++count; });
    action();
    return count;
}

} // namespace

TEST(XQAggregatingTextStorage, JoinsComponentsWithTheSeparator)
{
    XQAggregatingTextStorage empty;
    EXPECT_EQ(empty.length(), 0);
    EXPECT_EQ(empty.componentSeparator(), QVariant(QStringLiteral("\n")));
    EXPECT_EQ(empty.wordCount(), 0);
    EXPECT_EQ(empty.indexOfTextStorageContainingRange(Range{0, 0}), -1);

    auto a = storage(QStringLiteral("alpha beta")), b = storage(QStringLiteral("gamma")), c = storage(QString());
    XQAggregatingTextStorage joined;
    joined.setTextStorageComponents({a, b, c});
    EXPECT_EQ(joined.string(), QStringLiteral("alpha beta\ngamma\n"));
    EXPECT_EQ(joined.textRanges(), (std::vector<Range>{{0, 10}, {11, 5}, {17, 0}}));
    EXPECT_EQ(joined.wordCount(), 3);
    EXPECT_EQ(joined.wordCountForRange(Range{6, 100}), 2); // clipped to the text
    EXPECT_EQ(joined.rangeOfTextStorageAtIndex(1), (Range{11, 5}));
    EXPECT_EQ(joined.rangeOfTextStorageAtIndex(3), Range::notFound());
    EXPECT_EQ(joined.indexOfTextStorageComponent(b.get()), 1);
    EXPECT_EQ(joined.indexOfTextStorageComponent(nullptr), -1);
    EXPECT_EQ(joined.indexOfTextStorageContainingRange(Range{12, 4}), 1);
    EXPECT_EQ(joined.indexOfTextStorageContainingRange(Range{9, 3}), -1); // across the separator
    EXPECT_EQ(joined.indexOfTextStorageContainingRange(Range{17, 0}), 2);
    EXPECT_TRUE(joined.rangesAreEditable({{0, 3}, {16, 0}}));
    EXPECT_FALSE(joined.rangesAreEditable({{0, 3}, {10, 1}}));

    // Typing into a separator does nothing; at the end of a component it goes into that component.
    const int edits = processedEdits(joined, [&] { joined.replaceCharacters(Range{10, 1}, QStringLiteral("x")); });
    EXPECT_EQ(edits, 0);
    EXPECT_EQ(joined.string(), QStringLiteral("alpha beta\ngamma\n"));
    joined.replaceCharacters(Range{10, 0}, QStringLiteral(" delta"));
    EXPECT_EQ(a->string(), QStringLiteral("alpha beta delta"));
    EXPECT_EQ(joined.textRanges()[1], (Range{17, 5}));
    EXPECT_EQ(joined.wordCount(), 4);
    joined.replaceCharacters(Range{joined.length(), 0}, QStringLiteral("last"));
    EXPECT_EQ(c->string(), QStringLiteral("last"));

    // Attributes are passed on too, within one component only.
    const Attributes bold{
        {FontAttributeName, QVariant::fromValue(Font::fromFamily(QStringLiteral("Times"), 12, BoldFontMask))}};
    joined.setAttributes(bold, Range{18, 3});
    EXPECT_EQ(b->attributes(1), bold);
    joined.addAttribute(XQKeepWithNextAttributeName, true, Range{0, 2});
    EXPECT_EQ(a->attribute(XQKeepWithNextAttributeName, 15), QVariant(true)); // spread by the component
    EXPECT_EQ(joined.attribute(XQKeepWithNextAttributeName, 15), QVariant(true)); // and copied back
    joined.setAttributes(bold, Range{5, 15}); // across components: refused
    EXPECT_FALSE(joined.attributes(5).contains(FontAttributeName));
}

TEST(XQAggregatingTextStorage, ComponentEditsAreCopiedInWithoutEcho)
{
    auto a = storage(QStringLiteral("one")), b = storage(QStringLiteral("two three"));
    XQAggregatingTextStorage joined;
    joined.setTextStorageComponents({a, b});
    StatisticsRecorder stats(static_cast<const TextStorage*>(&joined));
    // The component processes its own edit once: the copy in the aggregate does not come back to it.
    const int componentEdits = processedEdits(*b, [&] { b->replaceCharacters(Range{3, 0}, QStringLiteral(" and")); });
    EXPECT_EQ(componentEdits, 1);
    EXPECT_EQ(b->string(), QStringLiteral("two and three"));
    EXPECT_EQ(joined.string(), QStringLiteral("one\ntwo and three"));
    EXPECT_EQ(joined.wordCount(), 4);
    EXPECT_EQ(stats.posts, 1);
    EXPECT_TRUE(stats.lastInfo.isEmpty());
    // And an edit typed into the aggregate is made once in the component.
    const int forwarded = processedEdits(*a, [&] { joined.replaceCharacters(Range{0, 3}, QStringLiteral("1")); });
    EXPECT_EQ(forwarded, 1);
    EXPECT_EQ(a->string(), QStringLiteral("1"));
    EXPECT_EQ(joined.textRanges()[1], (Range{2, 13}));

    // A component that does not count words makes the total 0 at the next range update.
    auto plain = std::make_shared<TextStorage>(QStringLiteral("not counted"));
    joined.addTextStorageComponent(plain);
    EXPECT_EQ(joined.wordCount(), 0);
    EXPECT_EQ(joined.string(), QStringLiteral("1\ntwo and three\nnot counted"));
    plain->replaceCharacters(Range{0, 4}, QString());
    EXPECT_EQ(joined.string(), QStringLiteral("1\ntwo and three\ncounted"));

    // Once the aggregate is gone its components can still be edited.
    {
        XQAggregatingTextStorage shortLived;
        shortLived.setTextStorageComponents({a});
    }
    a->replaceCharacters(Range{0, 0}, QStringLiteral("x"));
    EXPECT_EQ(a->string(), QStringLiteral("x1"));
}

TEST(XQAggregatingTextStorage, SeparatorsAndComponentChanges)
{
    auto a = storage(QStringLiteral("aa")), b = storage(QStringLiteral("bbb")), c = storage(QStringLiteral("c"));
    XQAggregatingTextStorage joined;
    joined.setTextStorageComponents({a, b, c});
    joined.setComponentSeparator(QStringLiteral("--"));
    EXPECT_EQ(joined.string(), QStringLiteral("aa--bbb--c"));
    EXPECT_EQ(joined.textRanges(), (std::vector<Range>{{0, 2}, {4, 3}, {9, 1}})); // +1, then +2
    const AttributedString styled(QStringLiteral(" | "),
                                  {{ForegroundColorAttributeName, QVariant::fromValue(Color(1, 0, 0))}});
    joined.setComponentSeparator(styled);
    EXPECT_EQ(joined.string(), QStringLiteral("aa | bbb | c"));
    EXPECT_EQ(joined.attribute(ForegroundColorAttributeName, 3), QVariant::fromValue(Color(1, 0, 0)));
    EXPECT_EQ(joined.componentSeparator().value<AttributedString>(), styled);

    WarningCapture warnings;
    joined.setComponentSeparator(QVariant(42));
    joined.insertTextStorageComponent(storage(QStringLiteral("x")), 4);
    joined.insertTextStorageComponent(nullptr, 0);
    joined.removeTextStorageComponentAtIndex(-1);
    joined.removeTextStorageComponentAtIndex(3);
    EXPECT_EQ(warnings.messages,
              (QStringList{QStringLiteral("*** XQAggregatingTextStorage Error: invalid component separator. Component "
                                          "separator must be of type NSString or NSAttributedString."),
                           QStringLiteral("*** XQAggregatingTextStorage Error: Invalid index or text component"),
                           QStringLiteral("*** XQAggregatingTextStorage Error: Invalid index or text component"),
                           QStringLiteral("*** XQAggregatingTextStorage Error: index out of bounds"),
                           QStringLiteral("*** XQAggregatingTextStorage Error: index out of bounds")}));
    EXPECT_EQ(joined.string(), QStringLiteral("aa | bbb | c"));

    joined.insertTextStorageComponent(storage(QStringLiteral("first")), 0);
    EXPECT_EQ(joined.string(), QStringLiteral("first | aa | bbb | c"));
    joined.addTextStorageComponent(storage(QStringLiteral("end")));
    EXPECT_EQ(joined.string(), QStringLiteral("first | aa | bbb | c | end"));
    joined.removeTextStorageComponentAtIndex(4);
    joined.removeTextStorageComponentAtIndex(1);
    EXPECT_EQ(joined.string(), QStringLiteral("first | bbb | c"));
    EXPECT_EQ(joined.textStorageComponents(),
              (std::vector<XQAggregatingTextStorage::Component>{joined.textStorageComponents()[0], b, c}));
    // The removed component is no longer heard.
    a->replaceCharacters(Range{0, 0}, QStringLiteral("zz"));
    EXPECT_EQ(joined.string(), QStringLiteral("first | bbb | c"));
    joined.setTextStorageComponents({});
    EXPECT_EQ(joined.length(), 0);
    EXPECT_TRUE(joined.textRanges().empty());

    // A text given at creation stays, but nothing in it is editable without components.
    XQAggregatingTextStorage fixed(AttributedString(QStringLiteral("given")));
    EXPECT_EQ(fixed.string(), QStringLiteral("given"));
    fixed.replaceCharacters(Range{0, 5}, QString());
    EXPECT_EQ(fixed.string(), QStringLiteral("given"));
}

TEST(XQAggregatingTextStorage, CheckInvariantsNamesWhatIsWrong)
{
    auto a = storage(QStringLiteral("one two")), b = storage(QStringLiteral("three"));
    XQAggregatingTextStorage joined;
    joined.setTextStorageComponents({a, b});
    QString failure;
    EXPECT_TRUE(joined.checkInvariants(&failure)) << failure.toStdString();
    // A component in the middle of its own batch differs from its slice until the batch ends.
    a->beginEditing();
    a->replaceCharacters(Range{0, 0}, QStringLiteral("zero "));
    EXPECT_FALSE(joined.checkInvariants(&failure));
    EXPECT_FALSE(failure.isEmpty());
    a->endEditing();
    EXPECT_TRUE(joined.checkInvariants(&failure)) << failure.toStdString();
    EXPECT_EQ(joined.string(), QStringLiteral("zero one two\nthree"));
}

TEST(XQAggregatingTextStorage, AStorageShownTwiceStaysEqualToBothSlices)
{
    auto a = storage(QStringLiteral("same text")), b = storage(QStringLiteral("other"));
    XQAggregatingTextStorage joined;
    joined.setTextStorageComponents({a, b, a});
    QString failure;
    // Typed into one place, the edit reaches the other place through the storage.
    joined.replaceCharacters(Range{4, 0}, QStringLiteral(" old"));
    EXPECT_EQ(a->string(), QStringLiteral("same old text"));
    EXPECT_EQ(joined.string(), QStringLiteral("same old text\nother\nsame old text"));
    EXPECT_TRUE(joined.checkInvariants(&failure)) << failure.toStdString();
    joined.replaceCharacters(Range{joined.textRanges()[2].location, 5}, QString());
    EXPECT_EQ(joined.string(), QStringLiteral("old text\nother\nold text"));
    EXPECT_TRUE(joined.checkInvariants(&failure)) << failure.toStdString();
    // Edited directly, it shows up in both places.
    a->replaceCharacters(Range{0, 0}, QStringLiteral("the "));
    EXPECT_EQ(joined.string(), QStringLiteral("the old text\nother\nthe old text"));
    EXPECT_EQ(joined.wordCount(), 7);
    EXPECT_TRUE(joined.checkInvariants(&failure)) << failure.toStdString();
    // Removing one place keeps the other one heard.
    joined.removeTextStorageComponentAtIndex(0);
    a->replaceCharacters(Range{0, 4}, QString());
    EXPECT_EQ(joined.string(), QStringLiteral("other\nold text"));
    EXPECT_TRUE(joined.checkInvariants(&failure)) << failure.toStdString();
}

TEST(XQAggregatingTextStorage, MirrorsABatchWhoseDeletionSwallowsAnEarlierEdit)
{
    auto a = storage(QStringLiteral("hello world")), b = storage(QStringLiteral("next"));
    XQAggregatingTextStorage joined;
    joined.setTextStorageComponents({a, b});
    a->beginEditing();
    a->addAttribute(UnderlineStyleAttributeName, 1, Range{8, 1});
    a->replaceCharacters(Range{5, 6}, QString());
    a->endEditing();
    EXPECT_EQ(a->string(), QStringLiteral("hello"));
    EXPECT_EQ(joined.string(), QStringLiteral("hello\nnext"));
    QString failure;
    EXPECT_TRUE(joined.checkInvariants(&failure)) << failure.toStdString();
    joined.replaceCharacters(Range{joined.textRanges()[1].location, 0}, QStringLiteral("the "));
    EXPECT_EQ(b->string(), QStringLiteral("the next"));
    EXPECT_TRUE(joined.checkInvariants(&failure)) << failure.toStdString();
}
