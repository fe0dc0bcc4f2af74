// Real mouse events: clicks, shift- and command-clicks, marquee drags in freeform, and dragging cards
// to an insertion point.
#include <gtest/gtest.h>

#include <QApplication>
#include <QMouseEvent>
#include <QTest>

#include "CorkboardTestSupport.h"

using namespace qly;
using namespace qly::corkboardtest;

namespace {

// A move with the button held, as a drag sends it.
void dragTo(QWidget* widget, QPointF point, Qt::KeyboardModifiers modifiers = {})
{
    QMouseEvent event(QEvent::MouseMove, point, widget->mapToGlobal(point), Qt::NoButton, Qt::LeftButton, modifiers);
    QApplication::sendEvent(widget, &event);
}

QPoint centre(const XQCorkboardView& view, qsizetype index) { return view.cardRects()[index].center().toPoint(); }

} // namespace

TEST(CorkboardMouse, ClicksShiftClicksAndCommandClicks)
{
    auto view = makeView(1000, 600);
    TestDataSource cards = TestDataSource::plain(6);
    TestDelegate delegate;
    view->setDelegate(&delegate);
    view->setDataSource(&cards);
    view->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(view.get()));
    SelectionRecorder recorder(view.get());

    QTest::mouseClick(view.get(), Qt::LeftButton, {}, centre(*view, 1));
    EXPECT_EQ(view->selectedCardIndexes(), XQIndexSet{1});
    EXPECT_EQ(view->startIndexForShiftClicks(), 1);
    QTest::mouseClick(view.get(), Qt::LeftButton, Qt::ShiftModifier, centre(*view, 4));
    EXPECT_EQ(view->selectedCardIndexes(), XQIndexSet::range(1, 4));
    EXPECT_EQ(view->startIndexForShiftClicks(), 1); // the anchor stays for the next shift-click
    QTest::mouseClick(view.get(), Qt::LeftButton, Qt::ShiftModifier, centre(*view, 0));
    EXPECT_EQ(view->selectedCardIndexes(), XQIndexSet::range(0, 1));
    QTest::mouseClick(view.get(), Qt::LeftButton, Qt::ControlModifier, centre(*view, 5));
    EXPECT_EQ(view->selectedCardIndexes(), (XQIndexSet{0, 1, 5}));
    QTest::mouseClick(view.get(), Qt::LeftButton, Qt::ControlModifier, centre(*view, 0));
    EXPECT_EQ(view->selectedCardIndexes(), (XQIndexSet{1, 5}));
    // A plain click on one card of a selection selects it alone when the button comes up.
    QTest::mouseClick(view.get(), Qt::LeftButton, {}, centre(*view, 5));
    EXPECT_EQ(view->selectedCardIndexes(), XQIndexSet{5});
    // A click between cards clears the selection and notes the section.
    QTest::mouseClick(view.get(), Qt::LeftButton, {}, QPoint(338, 100));
    EXPECT_TRUE(view->selectedCardIndexes().isEmpty());
    EXPECT_EQ(view->clickedSection(), 0);
    EXPECT_EQ(recorder.userInfos.size(), 7u);
    EXPECT_EQ(delegate.oldSelections.size(), 7u);

    // A double-click goes to the delegate when it listens.
    QTest::mouseDClick(view.get(), Qt::LeftButton, {}, centre(*view, 3));
    EXPECT_EQ(delegate.doubleClicked, 3);
    // Otherwise it opens the card for editing.
    delegate.methods &= ~TestDelegate::Methods(XQCorkboardViewDelegate::DoubleClickedCardAtIndex);
    QTest::mouseDClick(view.get(), Qt::LeftButton, {}, centre(*view, 2));
    EXPECT_EQ(view->editedCardIndex(), 2);
    // A click elsewhere ends the edit.
    QTest::mouseClick(view.get(), Qt::LeftButton, {}, centre(*view, 0));
    EXPECT_EQ(view->editedCardIndex(), -1);
}

TEST(CorkboardMouse, DraggingCardsDropsThemBetweenCards)
{
    auto view = makeView(1000, 600);
    TestDataSource cards = TestDataSource::plain(5);
    TestDelegate delegate;
    view->setDelegate(&delegate);
    view->setDataSource(&cards);
    view->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(view.get()));

    QTest::mousePress(view.get(), Qt::LeftButton, {}, centre(*view, 0));
    dragTo(view.get(), QPointF(centre(*view, 0)) + QPointF(40, 0));
    // In the gap right of the first row's last card: after card 2.
    dragTo(view.get(), QPointF(985, 100));
    EXPECT_EQ(XQCorkboardView::dropCardIndex(), 3);
    EXPECT_EQ(XQCorkboardView::dropOperation(), XQCorkboardDropOperation::Before);
    EXPECT_EQ(XQCorkboardView::draggedCardIndex(), 0);
    QTest::mouseRelease(view.get(), Qt::LeftButton, {}, QPoint(985, 100));
    EXPECT_EQ(delegate.movedIndexes, XQIndexSet{0});
    EXPECT_EQ(delegate.movedTo, 3);
    EXPECT_EQ(XQCorkboardView::dropCardIndex(), -1);
    EXPECT_EQ(XQCorkboardView::draggedCardIndex(), -1);
    // A short wiggle is a click, not a drag.
    delegate.calls.clear();
    QTest::mousePress(view.get(), Qt::LeftButton, {}, centre(*view, 1));
    dragTo(view.get(), QPointF(centre(*view, 1)) + QPointF(1, 1));
    QTest::mouseRelease(view.get(), Qt::LeftButton, {}, centre(*view, 1));
    EXPECT_TRUE(std::find(delegate.calls.begin(), delegate.calls.end(), QStringLiteral("move"))
                == delegate.calls.end());
}

TEST(CorkboardMouse, MarqueeSelectsInFreeform)
{
    // 100 × 60 cards at (0,0), (150,0), (0,150) and (300,300).
    auto view = makeView(700, 700);
    view->setUsesFreeformArrangement(true);
    view->setFixedSizeCardWidth(100);
    TestDataSource cards = TestDataSource::plain(4);
    cards.card(1).coordinate = QPointF(1.5, 0);
    cards.card(2).coordinate = QPointF(0, 1.5);
    cards.card(3).coordinate = QPointF(3, 3);
    view->setDataSource(&cards);
    view->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(view.get()));

    // From empty board below-right of card 1 up and left across cards 0 and 1.
    QTest::mousePress(view.get(), Qt::LeftButton, {}, QPoint(260, 100));
    dragTo(view.get(), QPointF(200, 50));
    EXPECT_EQ(view->selectedCardIndexes(), XQIndexSet{1});
    dragTo(view.get(), QPointF(50, 30));
    EXPECT_EQ(view->selectedCardIndexes(), (XQIndexSet{0, 1}));
    EXPECT_EQ(view->marqueeSelectionBounds(), QRectF(50, 30, 210, 70));
    // Back out of card 0: it leaves the selection again.
    dragTo(view.get(), QPointF(120, 30));
    EXPECT_EQ(view->selectedCardIndexes(), XQIndexSet{1});
    QTest::mouseRelease(view.get(), Qt::LeftButton, {}, QPoint(120, 30));
    EXPECT_TRUE(view->marqueeSelectionBounds().isEmpty());

    // With shift the cards touched join the selection as it was; with command they leave it.
    view->selectCardIndexes(XQIndexSet{3}, false);
    QTest::mousePress(view.get(), Qt::LeftButton, Qt::ShiftModifier, QPoint(120, 200));
    dragTo(view.get(), QPointF(50, 170), Qt::ShiftModifier);
    EXPECT_EQ(view->selectedCardIndexes(), (XQIndexSet{2, 3}));
    QTest::mouseRelease(view.get(), Qt::LeftButton, Qt::ShiftModifier, QPoint(50, 170));
    QTest::mousePress(view.get(), Qt::LeftButton, Qt::ControlModifier, QPoint(420, 420));
    dragTo(view.get(), QPointF(350, 350), Qt::ControlModifier);
    EXPECT_EQ(view->selectedCardIndexes(), XQIndexSet{2});
    QTest::mouseRelease(view.get(), Qt::LeftButton, Qt::ControlModifier, QPoint(350, 350));

    // The marquee is for freeform boards only.
    view->setUsesFreeformArrangement(false);
    view->marqueeSelection(QPointF(0, 0), QPointF(500, 500), XQIndexSet(), XQCorkboardView::MarqueeSelect);
    EXPECT_EQ(view->selectedCardIndexes(), XQIndexSet{2});
}

TEST(CorkboardMouse, DraggingAFreeformCardMovesIt)
{
    auto view = makeView(700, 700);
    view->setUsesFreeformArrangement(true);
    view->setFixedSizeCardWidth(100);
    TestDataSource cards = TestDataSource::plain(2);
    cards.card(1).coordinate = QPointF(2, 2);
    view->setDataSource(&cards);
    view->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(view.get()));
    QTest::mousePress(view.get(), Qt::LeftButton, {}, QPoint(210, 210));
    EXPECT_EQ(view->selectedCardIndexes(), XQIndexSet{1});
    dragTo(view.get(), QPointF(260, 230));
    QTest::mouseRelease(view.get(), Qt::LeftButton, {}, QPoint(260, 230));
    EXPECT_EQ(cards.card(1).coordinate, QPointF(2.5, 2.2));
    EXPECT_EQ(view->cardRects()[1].topLeft(), QPointF(250, 220));
    EXPECT_EQ(cards.card(0).coordinate, QPointF(0, 0));
}
