// Long randomised editing sessions on both aggregating storages: edits typed into the joined text,
// into the components directly and into titles, components added and removed, separators changed.
// After every step each component's text must equal its slice of the joined text (attributes too),
// the ranges must tile the text, and the word counts must equal full recounts; and the storages' own
// checkInvariants() must hold.
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/text/storages/XQAggregateTextStorage.h>
#include <qlyappkit/text/storages/XQAggregatingTextStorage.h>
#include <qlyappkit/text/storages/XQTextStorage.h>

#include <iostream>

#include "StorageTestSupport.h"

using namespace qly;
using namespace qly::testing;

namespace {

const Attributes kItalic{
    {FontAttributeName, QVariant::fromValue(Font::fromFamily(QStringLiteral("Times"), 12, ItalicFontMask))}};

std::shared_ptr<XQTextStorage> makeComponent(QRandomGenerator& rng)
{
    auto storage = std::make_shared<XQTextStorage>(proseText(rng, 10 + int(rng.bounded(60))));
    if (storage->length() > 10 && rng.bounded(2))
        storage->addComment(AttributedString(QStringLiteral("remark")), Range{2, 6});
    return storage;
}

Range randomRangeIn(QRandomGenerator& rng, Range within, int maxLength)
{
    const qsizetype at = within.location + qsizetype(rng.bounded(int(within.length + 1)));
    const qsizetype len = std::min<qsizetype>(within.end() - at, rng.bounded(maxLength + 1));
    return Range{at, len};
}

::testing::AssertionResult componentMatches(const TextStorage& aggregate, Range slice, const XQTextStorage& component)
{
    const AttributedString own = component.attributedString();
    if (aggregate.attributedSubstring(slice) != own)
        return ::testing::AssertionFailure()
            << "slice " << slice.location << "+" << slice.length << " is \"" << aggregate.substring(slice).toStdString()
            << "\", component has \"" << own.string().toStdString() << "\" (or attributes differ)";
    if (component.wordCount() != fullWordCount(own))
        return ::testing::AssertionFailure()
            << "component count " << component.wordCount() << " != " << fullWordCount(own);
    if (component.comments() != scanComments(own))
        return ::testing::AssertionFailure() << "component comments list is stale";
    if (!commentLinksConsistent(own))
        return ::testing::AssertionFailure() << "component comment links are inconsistent";
    return ::testing::AssertionSuccess();
}

::testing::AssertionResult aggregateConsistent(const XQAggregateTextStorage& aggregate,
                                               const std::vector<std::shared_ptr<XQTextStorage>>& components)
{
    const qsizetype n = aggregate.numberOfComponents();
    if (n != qsizetype(components.size()))
        return ::testing::AssertionFailure() << "component count";
    qsizetype pos = 0, words = 0;
    std::vector<XQCommentPtr> comments;
    for (qsizetype i = 0; i < n; ++i) {
        const Range component = aggregate.componentRanges()[size_t(i)];
        const Range text = aggregate.textRanges()[size_t(i)];
        if (component.location != pos)
            return ::testing::AssertionFailure()
                << "component " << i << " starts at " << component.location << ", not " << pos;
        if (aggregate.showsTitles()) {
            const Range title = aggregate.titleRanges()[size_t(i)];
            if (title.location != pos || aggregate.substring(title) != aggregate.components()[size_t(i)].title
                || aggregate.characterAt(title.end()) != u'\n' || text.location != title.end() + 1)
                return ::testing::AssertionFailure() << "title of component " << i;
            for (qsizetype j = title.location; j < title.end(); ++j) {
                if (!aggregate.attribute(XQAggregatedTitleAttributeName, j).toBool())
                    return ::testing::AssertionFailure() << "title character without title attributes at " << j;
            }
        } else if (text.location != pos) {
            return ::testing::AssertionFailure() << "text of component " << i << " is not at its start";
        }
        auto matches = componentMatches(aggregate, text, *components[size_t(i)]);
        if (!matches)
            return matches << " (component " << i << ")";
        if (aggregate.components()[size_t(i)].text != components[size_t(i)])
            return ::testing::AssertionFailure() << "storage of component " << i;
        const Range separator = Range::fromBounds(text.end(), component.end());
        QString expected;
        if (i + 1 < n)
            expected = aggregate.components()[size_t(i + 1)].pageBreakBefore ? QStringLiteral("\n\f")
                : aggregate.usesSingleLineSeparators()                       ? QStringLiteral("\n")
                                                                             : QStringLiteral("\n\n");
        if (aggregate.substring(separator) != expected)
            return ::testing::AssertionFailure() << "separator after component " << i;
        for (qsizetype j = separator.location; j < separator.end(); ++j) {
            if (!aggregate.attribute(XQAggregatedSeparatorAttributeName, j).toBool())
                return ::testing::AssertionFailure() << "separator character without its mark at " << j;
        }
        words += fullWordCount(components[size_t(i)]->attributedString());
        comments.insert(comments.end(), components[size_t(i)]->comments().begin(),
                        components[size_t(i)]->comments().end());
        pos = component.end();
    }
    if (pos != aggregate.length())
        return ::testing::AssertionFailure() << "ranges end at " << pos << ", text at " << aggregate.length();
    if (aggregate.wordCount() != words)
        return ::testing::AssertionFailure() << "word count " << aggregate.wordCount() << " != " << words;
    if (aggregate.comments() != comments)
        return ::testing::AssertionFailure() << "comments list";
    if (!aggregate.attributedString().checkInvariants())
        return ::testing::AssertionFailure() << "text invariants";
    return ::testing::AssertionSuccess();
}

std::vector<XQTextComponent> componentList(const XQAggregateTextStorage& aggregate) { return aggregate.components(); }

/// The storage's own invariant check, counted.
template <typename Storage>::testing::AssertionResult invariantsHold(const Storage& storage, int& checks)
{
    ++checks;
    QString failure;
    if (storage.checkInvariants(&failure))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "checkInvariants: " << failure.toStdString();
}

void reportChecks(int checks)
{
    ::testing::Test::RecordProperty("invariantChecks", checks);
    std::cout << "[ CHECKS   ] " << checks << " invariant checks" << std::endl;
}

} // namespace

TEST(AggregateSession, RandomSessionKeepsComponentsAndSlicesEqual)
{
    LeafCapacityGuard tinyLeaves(24);
    QRandomGenerator rng(77);
    std::vector<std::shared_ptr<XQTextStorage>> storages;
    std::vector<XQTextComponent> list;
    for (int i = 0; i < 5; ++i) {
        storages.push_back(makeComponent(rng));
        list.push_back(XQTextComponent{QStringLiteral("Part %1").arg(i), storages.back(), i == 2});
    }
    XQAggregateTextStorage aggregate;
    aggregate.setComponents(list);
    int checks = 0;
    ASSERT_TRUE(aggregateConsistent(aggregate, storages));
    ASSERT_TRUE(invariantsHold(aggregate, checks));

    int refused = 0, routed = 0;
    for (int step = 0; step < 2500; ++step) {
        const qsizetype n = aggregate.numberOfComponents();
        const qsizetype i = n ? qsizetype(rng.bounded(int(n))) : 0;
        const unsigned op = rng.bounded(100);
        if (n == 0 || op < 3) {
            // Add a component somewhere.
            auto fresh = makeComponent(rng);
            const qsizetype at = qsizetype(rng.bounded(int(n + 1)));
            list = componentList(aggregate);
            list.insert(list.begin() + at, XQTextComponent{QStringLiteral("New"), fresh, rng.bounded(3) == 0});
            storages.insert(storages.begin() + at, fresh);
            aggregate.setComponents(list);
        } else if (op < 5 && n > 1) {
            list = componentList(aggregate);
            list.erase(list.begin() + i);
            storages.erase(storages.begin() + i);
            aggregate.setComponents(list);
        } else if (op < 8) {
            aggregate.setPageBreakBefore(rng.bounded(2), i);
        } else if (op < 9) {
            aggregate.setUsesSingleLineSeparators(!aggregate.usesSingleLineSeparators());
        } else if (op < 10) {
            aggregate.setShowsTitles(!aggregate.showsTitles());
        } else if (op < 12) {
            aggregate.setTitle(randomSnippet(rng, 8).remove(u'\n'), i);
        } else if (op < 13) {
            aggregate.setTitleColor(Color(0.1 * rng.bounded(10), 0.2, 0.3), i);
        } else if (op < 25 && aggregate.showsTitles()) {
            // Typing into a title.
            const Range r = randomRangeIn(rng, aggregate.titleRanges()[size_t(i)], 3);
            QString typed = randomSnippet(rng, 3).remove(u'\n');
            ASSERT_TRUE(aggregate.rangeIsEditable(r, typed));
            aggregate.replaceCharacters(r, typed);
        } else if (op < 55) {
            // Typing into a component's text through the aggregate.
            const Range r = randomRangeIn(rng, aggregate.textRanges()[size_t(i)], rng.bounded(4) ? 2 : 12);
            const QString typed = rng.bounded(3) ? randomSnippet(rng, 4) : QString();
            ASSERT_TRUE(aggregate.rangeIsEditable(r, typed));
            aggregate.replaceCharacters(r, typed);
            ++routed;
        } else if (op < 62) {
            // Anywhere: only what the editability test allows reaches the storage.
            const Range r = randomRangeIn(rng, Range{0, aggregate.length()}, 6);
            const QString typed = randomSnippet(rng, 3);
            if (aggregate.rangeIsEditable(r, typed))
                aggregate.replaceCharacters(r, typed);
            else
                ++refused;
        } else if (op < 74) {
            // Attribute changes in the aggregate, possibly across components.
            const Range r = randomRangeIn(rng, Range{0, aggregate.length()}, 40);
            if (aggregate.rangeIsEditable(r, std::nullopt)) {
                switch (rng.bounded(4)) {
                case 0:
                    aggregate.setAttributes(kItalic, r);
                    break;
                case 1:
                    aggregate.addAttribute(XQKeepWithNextAttributeName, true, r);
                    break;
                case 2:
                    aggregate.addAttribute(XQParagraphStyleIDAttributeName, QStringLiteral("Quote"), r);
                    break;
                case 3:
                    aggregate.removeAttribute(FontAttributeName, r);
                    break;
                }
            }
        } else if (op < 78) {
            const Range r = randomRangeIn(rng, aggregate.textRanges()[size_t(i)], 8);
            if (r.length > 0)
                aggregate.addComment(AttributedString(QStringLiteral("c%1").arg(step)), r);
            else
                aggregate.removeCommentsAtRange(r);
        } else {
            // Edits made in a component directly, as another editor on the same document would.
            XQTextStorage& component = *storages[size_t(i)];
            const Range r = randomRangeIn(rng, Range{0, component.length()}, 6);
            switch (rng.bounded(5)) {
            case 0:
            case 1:
                component.replaceCharacters(Range{r.location, 0}, randomSnippet(rng, 5));
                break;
            case 2:
                component.replaceCharacters(r, QString());
                break;
            case 3:
                component.setAttributes(kItalic, r);
                break;
            case 4:
                component.beginEditing();
                component.replaceCharacters(r, randomSnippet(rng, 3));
                component.addAttribute(XQKeepWithNextAttributeName, true,
                                       Range{0, std::min<qsizetype>(2, component.length())});
                component.endEditing();
                break;
            }
        }
        ASSERT_TRUE(aggregateConsistent(aggregate, storages)) << "step " << step << " op " << op;
        ASSERT_TRUE(invariantsHold(aggregate, checks)) << "step " << step << " op " << op;
        for (const auto& storage : storages)
            ASSERT_TRUE(storage->isAggregateTextStorageComponent());
    }
    EXPECT_GT(refused, 0);
    EXPECT_GT(routed, 500);
    // Releasing the aggregate releases its components' membership and its observation.
    const XQTextComponent first = aggregate.components().front();
    aggregate.setComponents({});
    EXPECT_TRUE(invariantsHold(aggregate, checks));
    EXPECT_FALSE(storages.front()->isAggregateTextStorageComponent());
    EXPECT_EQ(aggregate.length(), 0);
    storages.front()->replaceCharacters(Range{0, 0}, QStringLiteral("unheard "));
    EXPECT_EQ(aggregate.length(), 0);
    EXPECT_TRUE(invariantsHold(aggregate, checks));
    reportChecks(checks);
}

TEST(AggregateSession, RandomSessionOfTheJoiningStorage)
{
    LeafCapacityGuard tinyLeaves(24);
    QRandomGenerator rng(78);
    std::vector<std::shared_ptr<XQTextStorage>> storages;
    XQAggregatingTextStorage joined;
    std::vector<XQAggregatingTextStorage::Component> initial;
    for (int i = 0; i < 4; ++i) {
        storages.push_back(makeComponent(rng));
        initial.push_back(storages.back());
    }
    joined.setTextStorageComponents(initial);
    QString separator = QStringLiteral("\n");

    auto consistent = [&]() -> ::testing::AssertionResult {
        const auto& ranges = joined.textRanges();
        if (ranges.size() != storages.size())
            return ::testing::AssertionFailure() << "range count";
        qsizetype pos = 0, words = 0;
        for (size_t i = 0; i < storages.size(); ++i) {
            if (ranges[i].location != pos)
                return ::testing::AssertionFailure()
                    << "range " << i << " at " << ranges[i].location << ", not " << pos;
            auto matches = componentMatches(joined, ranges[i], *storages[i]);
            if (!matches)
                return matches << " (component " << i << ")";
            pos = ranges[i].end();
            if (i + 1 < storages.size()) {
                if (joined.substring(Range{pos, separator.size()}) != separator)
                    return ::testing::AssertionFailure() << "separator after " << i;
                pos += separator.size();
            }
            words += fullWordCount(storages[i]->attributedString());
        }
        if (pos != joined.length())
            return ::testing::AssertionFailure() << "ranges end at " << pos << ", text at " << joined.length();
        if (joined.wordCount() != words)
            return ::testing::AssertionFailure() << "word count " << joined.wordCount() << " != " << words;
        return ::testing::AssertionSuccess();
    };
    int checks = 0;
    ASSERT_TRUE(consistent());
    ASSERT_TRUE(invariantsHold(joined, checks));

    for (int step = 0; step < 2500; ++step) {
        const qsizetype n = qsizetype(storages.size());
        const unsigned op = rng.bounded(100);
        const qsizetype i = n ? qsizetype(rng.bounded(int(n))) : 0;
        if (n == 0 || op < 4) {
            auto fresh = makeComponent(rng);
            const qsizetype at = qsizetype(rng.bounded(int(n + 1)));
            joined.insertTextStorageComponent(fresh, at);
            storages.insert(storages.begin() + at, fresh);
        } else if (op < 7) {
            joined.removeTextStorageComponentAtIndex(i);
            storages.erase(storages.begin() + i);
        } else if (op < 9) {
            static const QString choices[] = {QStringLiteral("\n"), QStringLiteral("\n\n"), QStringLiteral(" * "),
                                              QStringLiteral("\n---\n")};
            separator = choices[rng.bounded(4)];
            if (rng.bounded(2))
                joined.setComponentSeparator(separator);
            else
                joined.setComponentSeparator(AttributedString(separator, kItalic));
        } else if (op < 60) {
            const Range r = randomRangeIn(rng, Range{0, joined.length()}, rng.bounded(4) ? 2 : 10);
            const QString typed = rng.bounded(3) ? randomSnippet(rng, 4) : QString();
            const qsizetype before = joined.length();
            const bool editable = joined.rangeIsEditable(r);
            joined.replaceCharacters(r, typed);
            // Refused edits change nothing at all.
            if (!editable) {
                ASSERT_EQ(joined.length(), before);
            }
        } else if (op < 72) {
            const Range r = randomRangeIn(rng, joined.textRanges()[size_t(i)], 20);
            if (rng.bounded(2))
                joined.setAttributes(kItalic, r);
            else
                joined.addAttribute(XQKeepWithNextAttributeName, true, r);
        } else {
            XQTextStorage& component = *storages[size_t(i)];
            const Range r = randomRangeIn(rng, Range{0, component.length()}, 6);
            switch (rng.bounded(4)) {
            case 0:
            case 1:
                component.replaceCharacters(Range{r.location, 0}, randomSnippet(rng, 5));
                break;
            case 2:
                component.replaceCharacters(r, QString());
                break;
            case 3:
                component.addComment(AttributedString(QStringLiteral("c")), r);
                break;
            }
        }
        ASSERT_TRUE(consistent()) << "step " << step << " op " << op;
        ASSERT_TRUE(invariantsHold(joined, checks)) << "step " << step << " op " << op;
    }
    reportChecks(checks);
}

namespace {

/// A batch of one to six overlapping attribute and character edits made on a component directly,
/// later deletions often swallowing earlier edits.
void randomComponentBatch(QRandomGenerator& rng, XQTextStorage& component)
{
    component.beginEditing();
    const int ops = 1 + int(rng.bounded(6));
    for (int k = 0; k < ops; ++k) {
        const Range r = randomRangeIn(rng, Range{0, component.length()}, rng.bounded(3) ? 4 : 25);
        switch (rng.bounded(5)) {
        case 0:
            component.replaceCharacters(r, randomSnippet(rng, 5));
            break;
        case 1:
            component.replaceCharacters(r, QString());
            break;
        case 2:
            component.setAttributes(kItalic, r);
            break;
        case 3:
            component.addAttribute(XQKeepWithNextAttributeName, true, r);
            break;
        case 4:
            component.addAttribute(UnderlineStyleAttributeName, int(rng.bounded(3)), r);
            break;
        }
    }
    component.endEditing();
}

} // namespace

// Batches made on the components directly, with edits that overlap and swallow each other, reach
// both aggregates at the right place.
TEST(AggregateSession, ComponentBatchesAreMirroredWhereTheyHappened)
{
    LeafCapacityGuard tinyLeaves(24);
    QRandomGenerator rng(79);
    std::vector<std::shared_ptr<XQTextStorage>> storages;
    std::vector<XQTextComponent> list;
    std::vector<XQAggregatingTextStorage::Component> plain;
    for (int i = 0; i < 4; ++i) {
        storages.push_back(makeComponent(rng));
        list.push_back(XQTextComponent{QStringLiteral("Part %1").arg(i), storages.back(), i == 1});
        plain.push_back(storages.back());
    }
    XQAggregateTextStorage aggregate;
    aggregate.setComponents(list);
    XQAggregatingTextStorage joined;
    joined.setTextStorageComponents(plain);
    int checks = 0;
    for (int step = 0; step < 1500; ++step) {
        const size_t i = rng.bounded(int(storages.size()));
        if (rng.bounded(4) == 0) {
            // Now and then an edit typed into either aggregate, so both directions interleave.
            const Range r = randomRangeIn(rng, aggregate.textRanges()[i], 3);
            aggregate.replaceCharacters(r, randomSnippet(rng, 3));
            const Range s = randomRangeIn(rng, joined.textRanges()[i], 3);
            joined.replaceCharacters(s, randomSnippet(rng, 3));
        } else {
            randomComponentBatch(rng, *storages[i]);
        }
        ASSERT_TRUE(aggregateConsistent(aggregate, storages)) << "step " << step;
        ASSERT_TRUE(invariantsHold(aggregate, checks)) << "step " << step;
        ASSERT_TRUE(invariantsHold(joined, checks)) << "step " << step;
    }
    reportChecks(checks);
}
