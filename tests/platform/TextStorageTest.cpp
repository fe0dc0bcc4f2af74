// The editing protocol: batching, the edited range and change in length, attribute fixing and the
// notification, observers.
#include <gtest/gtest.h>

#include <qlyappkit/platform/services/NotificationCenter.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/text/TextStorage.h>

using namespace qly;

namespace {

struct Recorded {
    int mask;
    Range range;
    qsizetype delta;
};

class RecordingStorage : public TextStorage {
public:
    using TextStorage::TextStorage;
    std::vector<Range> fixed;
    void fixAttributesInRange(Range range) override
    {
        fixed.push_back(range);
        // An edit made while fixing joins the batch being processed instead of recursing.
        if (range.length > 0)
            TextStorage::setAttributes({{KernAttributeName, 1.0}}, Range{range.location, 1});
    }
};

class Observer : public TextStorageObserver {
public:
    std::vector<Recorded> calls;
    void textStorageEdited(TextStorage&, int mask, Range range, qsizetype delta) override
    {
        calls.push_back({mask, range, delta});
    }
};

} // namespace

TEST(TextStorage, BatchedEditsAreProcessedOnceWithTheirUnion)
{
    RecordingStorage storage(QStringLiteral("Hello world"));
    Observer observer;
    storage.addObserver(&observer);
    std::vector<Recorded> posted;
    ScopedObserver listen(TextStorageDidProcessEditingNotification, &storage, [&](const Notification&) {
        posted.push_back({storage.editedMask(), storage.editedRange(), storage.changeInLength()});
    });

    storage.beginEditing();
    storage.replaceCharacters(Range{0, 5}, QStringLiteral("Hi")); // "Hi world", delta -3
    storage.beginEditing();
    storage.replaceCharacters(Range{8, 0}, QStringLiteral("!!")); // "Hi world!!", +2
    storage.endEditing();
    EXPECT_TRUE(posted.empty()) << "nested endEditing must not process";
    storage.setAttributes({{UnderlineStyleAttributeName, 1}}, Range{3, 2});
    storage.endEditing();

    ASSERT_EQ(posted.size(), 1u);
    EXPECT_EQ(posted[0].mask, TextStorage::EditedCharacters | TextStorage::EditedAttributes);
    EXPECT_EQ(posted[0].range, (Range{0, 10}));
    EXPECT_EQ(posted[0].delta, -1);
    ASSERT_EQ(storage.fixed.size(), 1u);
    EXPECT_EQ(storage.fixed[0], (Range{0, 10}));
    EXPECT_EQ(storage.attributes(0).value(KernAttributeName).toDouble(), 1.0);
    ASSERT_EQ(observer.calls.size(), 1u);
    EXPECT_EQ(observer.calls[0].delta, -1);
    EXPECT_EQ(storage.editedMask(), 0);

    // An edit outside any batch is processed at once.
    storage.replaceCharacters(Range{2, 0}, QStringLiteral("X"));
    ASSERT_EQ(posted.size(), 2u);
    EXPECT_EQ(posted[1].range, (Range{2, 1}));
    EXPECT_EQ(posted[1].delta, 1);
    EXPECT_EQ(storage.string(), QStringLiteral("HiX world!!"));
    storage.removeObserver(&observer);
    storage.replaceCharacters(Range{0, 1}, QString());
    EXPECT_EQ(observer.calls.size(), 2u);
}

TEST(TextStorage, EditedRangeFollowsLaterEditsBeforeIt)
{
    TextStorage storage(QStringLiteral("0123456789"));
    Range seen;
    ScopedObserver listen(TextStorageDidProcessEditingNotification, &storage,
                          [&](const Notification&) { seen = storage.editedRange(); });
    storage.beginEditing();
    storage.replaceCharacters(Range{8, 1}, QStringLiteral("ab")); // edited {8,2}
    storage.replaceCharacters(Range{0, 3}, QString()); // shifts it to {5,2}; adds {0,0}
    storage.endEditing();
    EXPECT_EQ(seen, (Range{0, 7}));
    EXPECT_EQ(storage.string(), QStringLiteral("34567ab9"));
}
