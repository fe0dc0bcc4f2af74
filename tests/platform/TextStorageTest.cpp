// The editing protocol: batching, the edited range and change in length, attribute fixing and the
// notification, observers.
#include <gtest/gtest.h>

#include <QRandomGenerator>
#include <iostream>

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

TEST(TextStorage, EditedRangeOfABatchWhoseDeletionSwallowsAnEarlierEdit)
{
    TextStorage storage(QStringLiteral("hello world"));
    Recorded seen{};
    ScopedObserver listen(TextStorageDidProcessEditingNotification, &storage, [&](const Notification&) {
        seen = {storage.editedMask(), storage.editedRange(), storage.changeInLength()};
    });
    storage.beginEditing();
    storage.addAttribute(UnderlineStyleAttributeName, 1, Range{8, 1});
    storage.replaceCharacters(Range{5, 6}, QString());
    storage.endEditing();
    EXPECT_EQ(storage.string(), QStringLiteral("hello"));
    EXPECT_EQ(seen.mask, TextStorage::EditedCharacters | TextStorage::EditedAttributes);
    EXPECT_EQ(seen.range, (Range{5, 0})); // not {5,3}: that runs past the end of a 5-unit text
    EXPECT_EQ(seen.delta, -6);

    // An earlier edit partly cut by a later replacement keeps what survives of it.
    storage.replaceCharacters(Range{0, 5}, QStringLiteral("abcdefghij"));
    storage.beginEditing();
    storage.addAttribute(UnderlineStyleAttributeName, 2, Range{2, 5}); // c..g
    storage.replaceCharacters(Range{4, 6}, QStringLiteral("XY")); // e..j -> XY: "abcdXY"
    storage.endEditing();
    EXPECT_EQ(storage.string(), QStringLiteral("abcdXY"));
    EXPECT_EQ(seen.range, (Range{2, 4}));
    EXPECT_EQ(seen.delta, -4);
}

namespace {

/// One character of the reference: where it came from in the text before the batch (-1 for a
/// character inserted by the batch), and whether a deletion left a seam just before it.
struct ModelCharacter {
    QChar c;
    qsizetype origin;
    bool seamBefore = false;
};

QString batchText(QRandomGenerator& rng, int maxLength)
{
    static const QString alphabet = QStringLiteral("abcdef ghij\nklm.");
    QString s;
    const int n = int(rng.bounded(maxLength + 1));
    for (int i = 0; i < n; ++i)
        s += alphabet.at(int(rng.bounded(int(alphabet.size()))));
    return s;
}

Range randomRange(QRandomGenerator& rng, qsizetype length, int maxLength)
{
    const qsizetype at = qsizetype(rng.bounded(int(length + 1)));
    return Range{at, std::min<qsizetype>(length - at, rng.bounded(maxLength + 1))};
}

} // namespace

// Batches of overlapping, swallowing attribute and character edits against a reference: after
// endEditing the edited range lies inside the text, covers every position whose character or
// attributes changed (and every place where characters were deleted), and the change in length is
// the difference in length.
TEST(TextStorage, RandomBatchesReportARangeThatCoversEveryChange)
{
    QRandomGenerator rng(2024);
    TextStorage storage(QStringLiteral("hello world, a text to edit in batches"));
    Recorded seen{};
    int processed = 0;
    ScopedObserver listen(TextStorageDidProcessEditingNotification, &storage, [&](const Notification&) {
        seen = {storage.editedMask(), storage.editedRange(), storage.changeInLength()};
        ++processed;
    });
    int checks = 0;
    for (int round = 0; round < 3000; ++round) {
        if (storage.length() > 120)
            storage.replaceCharacters(Range{0, storage.length() - 40}, QString());
        const AttributedString before = storage.attributedString();
        std::vector<ModelCharacter> model;
        for (qsizetype i = 0; i < before.length(); ++i)
            model.push_back({before.string().at(i), i});
        bool endSeam = false;
        auto seamAt = [&](qsizetype p) {
            if (p < qsizetype(model.size()))
                model[size_t(p)].seamBefore = true;
            else
                endSeam = true;
        };

        const int ops = 1 + int(rng.bounded(6));
        processed = 0;
        storage.beginEditing();
        for (int k = 0; k < ops; ++k) {
            const qsizetype n = storage.length();
            switch (rng.bounded(4)) {
            case 0:
            case 1: {
                // Replace, insert or delete, often a long stretch that swallows earlier edits.
                const Range r = randomRange(rng, n, rng.bounded(3) ? 4 : 30);
                const QString s = rng.bounded(3) ? batchText(rng, 5) : QString();
                storage.replaceCharacters(r, s);
                bool seam = r.length > 0 && s.isEmpty();
                for (qsizetype i = r.location; i < r.end(); ++i)
                    seam = seam || model[size_t(i)].seamBefore;
                if (r.end() == qsizetype(model.size()) && endSeam && s.isEmpty())
                    seam = true;
                model.erase(model.begin() + r.location, model.begin() + r.end());
                std::vector<ModelCharacter> inserted;
                for (QChar c : s)
                    inserted.push_back({c, -1});
                model.insert(model.begin() + r.location, inserted.begin(), inserted.end());
                if (seam)
                    seamAt(r.location);
                break;
            }
            case 2:
                storage.addAttribute(UnderlineStyleAttributeName, int(rng.bounded(3)), randomRange(rng, n, 8));
                break;
            case 3:
                storage.setAttributes({{ToolTipAttributeName, QStringLiteral("t%1").arg(rng.bounded(3))}},
                                      randomRange(rng, n, 8));
                break;
            }
        }
        storage.endEditing();
        const qsizetype length = storage.length();
        // A batch of edits over empty ranges may have reported nothing, and then changed nothing.
        ASSERT_LE(processed, 1) << "round " << round;
        if (processed == 0) {
            ASSERT_EQ(storage.attributedString(), before) << "round " << round;
            continue;
        }
        QString modelText;
        for (const ModelCharacter& m : model)
            modelText += m.c;
        ASSERT_EQ(storage.string(), modelText) << "round " << round;

        ++checks;
        ASSERT_GE(seen.range.location, 0) << "round " << round;
        ASSERT_LE(seen.range.end(), length) << "round " << round << ": edited range " << seen.range.location << "+"
                                            << seen.range.length << " runs past the end of a text of " << length;
        ASSERT_EQ(seen.delta, length - before.length()) << "round " << round;
        for (qsizetype i = 0; i < length; ++i) {
            const ModelCharacter& m = model[size_t(i)];
            const bool changed = m.origin < 0 || storage.attributes(i) != before.attributes(m.origin);
            if (changed) {
                ASSERT_TRUE(seen.range.location <= i && i < seen.range.end())
                    << "round " << round << ": position " << i << " changed outside the edited range "
                    << seen.range.location << "+" << seen.range.length;
            }
            if (m.seamBefore) {
                ASSERT_TRUE(seen.range.location <= i && i <= seen.range.end())
                    << "round " << round << ": deletion before " << i << " outside the edited range "
                    << seen.range.location << "+" << seen.range.length;
            }
        }
        if (endSeam) {
            ASSERT_EQ(seen.range.end(), length) << "round " << round << ": deletion at the end not covered";
        }
    }
    std::cout << "[ CHECKS   ] " << checks << " batches checked" << std::endl;
}
