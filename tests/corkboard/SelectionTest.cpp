// The selection: replaced as a whole, announced only when it changes, trimmed by reloads.
#include <gtest/gtest.h>

#include <QTest>

#include <qlyappkit/platform/text/Range.h>

#include "CorkboardTestSupport.h"

using namespace qly;
using namespace qly::corkboardtest;

TEST(CorkboardSelection, SelectingAnnouncesRealChangesOnly)
{
    auto view = makeView(1000, 600);
    TestDataSource cards = TestDataSource::plain(6);
    TestDelegate delegate;
    view->setDelegate(&delegate);
    view->setDataSource(&cards);
    SelectionRecorder recorder(view.get());

    view->selectCardIndexes(XQIndexSet{1, 3}, false);
    ASSERT_EQ(recorder.userInfos.size(), 1u);
    EXPECT_EQ(recorder.userInfos[0].value(XQCorkboardOldSelectionKey).value<XQIndexSet>(), XQIndexSet());
    EXPECT_FALSE(recorder.userInfos[0].contains(XQCorkboardBringToFrontKey));
    EXPECT_EQ(delegate.oldSelections, std::vector<XQIndexSet>{XQIndexSet()});

    // The same set again: nothing posted, the delegate not told.
    view->selectCardIndexes(XQIndexSet{3, 1}, false, true);
    EXPECT_EQ(recorder.userInfos.size(), 1u);
    EXPECT_EQ(delegate.oldSelections.size(), 1u);

    // Extending unites; bringing to front is announced.
    view->selectCardIndexes(XQIndexSet{4}, true, true);
    EXPECT_EQ(view->selectedCardIndexes(), (XQIndexSet{1, 3, 4}));
    ASSERT_EQ(recorder.userInfos.size(), 2u);
    EXPECT_EQ(recorder.userInfos[1].value(XQCorkboardOldSelectionKey).value<XQIndexSet>(), (XQIndexSet{1, 3}));
    EXPECT_EQ(recorder.userInfos[1].value(XQCorkboardBringToFrontKey), QVariant(true));

    // Replacing: a copy of the new set.
    view->selectCardIndexes(XQIndexSet{0}, false);
    EXPECT_EQ(view->selectedCardIndexes(), XQIndexSet{0});
    view->selectAll();
    EXPECT_EQ(view->selectedCardIndexes(), XQIndexSet::range(0, 5));
    view->deselectAll();
    EXPECT_TRUE(view->selectedCardIndexes().isEmpty());
    EXPECT_EQ(recorder.userInfos.size(), 5u);
    EXPECT_EQ(delegate.oldSelections.back(), XQIndexSet::range(0, 5));
}

TEST(CorkboardSelection, NothingOrAnIndexOfNotFoundClears)
{
    auto view = makeView(1000, 600);
    TestDataSource cards = TestDataSource::plain(6);
    view->setDataSource(&cards);
    const std::vector<std::optional<XQIndexSet>> clearing = {std::nullopt, XQIndexSet{2, NotFound}, XQIndexSet{-1, 3}};
    for (const std::optional<XQIndexSet>& special : clearing) {
        for (bool extend : {false, true}) {
            view->selectCardIndexes(XQIndexSet{1, 2}, false);
            QTest::mouseClick(view.get(), Qt::LeftButton, {}, view->cardRects()[2].center().toPoint());
            EXPECT_EQ(view->startIndexForShiftClicks(), 2);
            view->selectCardIndexes(special, extend);
            EXPECT_TRUE(view->selectedCardIndexes().isEmpty());
            EXPECT_EQ(view->startIndexForShiftClicks(), -1);
        }
    }
    // An empty set replaces (clears) or, extending, leaves the selection as it is.
    view->selectCardIndexes(XQIndexSet{1}, false);
    view->selectCardIndexes(XQIndexSet(), true);
    EXPECT_EQ(view->selectedCardIndexes(), XQIndexSet{1});
    view->selectCardIndexes(XQIndexSet(), false);
    EXPECT_TRUE(view->selectedCardIndexes().isEmpty());
}

TEST(CorkboardSelection, ReloadClearsASelectionNamingAMissingCard)
{
    auto view = makeView(1000, 600);
    TestDataSource cards = TestDataSource::plain(6);
    view->setDataSource(&cards);
    int reloads = 0;
    ScopedObserver observer(XQCorkboardViewDidReloadNotification, view.get(), [&](const Notification&) { ++reloads; });
    view->selectCardIndexes(XQIndexSet{1, 4}, false);
    cards.sections[0].resize(5);
    view->reloadData(); // 4 still exists
    EXPECT_EQ(view->selectedCardIndexes(), (XQIndexSet{1, 4}));
    cards.sections[0].resize(4);
    view->reloadData(); // 4 is gone: the whole selection goes
    EXPECT_TRUE(view->selectedCardIndexes().isEmpty());
    EXPECT_EQ(reloads, 2);
    // Re-tiling alone keeps the selection.
    view->selectCardIndexes(XQIndexSet{0}, false);
    view->setInterCardSpacing(10);
    EXPECT_EQ(view->selectedCardIndexes(), XQIndexSet{0});
}

TEST(CorkboardSelection, IndexSetOperations)
{
    const XQIndexSet a{5, 1, 3, 3};
    EXPECT_EQ(a.indexes(), (std::vector<qsizetype>{1, 3, 5}));
    EXPECT_EQ(a.firstIndex(), 1);
    EXPECT_EQ(a.lastIndex(), 5);
    EXPECT_EQ(XQIndexSet().firstIndex(), -1);
    EXPECT_EQ(a.unitedWith(XQIndexSet{2, 5}), (XQIndexSet{1, 2, 3, 5}));
    EXPECT_EQ(a.minus(XQIndexSet{1, 4}), (XQIndexSet{3, 5}));
    EXPECT_EQ(a.below(5), (XQIndexSet{1, 3}));
    EXPECT_EQ(XQIndexSet::range(3, 1), XQIndexSet());
    EXPECT_TRUE(a.contains(3));
    EXPECT_FALSE(a.contains(4));
}
