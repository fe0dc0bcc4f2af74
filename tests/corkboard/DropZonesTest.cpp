// Drop zones around cards and the insertion index a background click or a drop lands on.
#include <gtest/gtest.h>

#include "CorkboardTestSupport.h"

using namespace qly;
using namespace qly::corkboardtest;

namespace {

using R = QRectF;

struct Zone {
    qsizetype card;
    R zone;
    double offset;
};

void expectZones(const XQCorkboardView& view, const std::vector<Zone>& zones)
{
    for (const Zone& z : zones) {
        double offset = 99;
        EXPECT_EQ(view.dropZoneForCardAtIndex(z.card, &offset), z.zone) << "card " << z.card;
        EXPECT_EQ(offset, z.offset) << "card " << z.card;
    }
}

struct Click {
    QPointF point;
    qsizetype insertion;
};

void expectClicks(const XQCorkboardView& view, const std::vector<Click>& clicks)
{
    for (const Click& c : clicks)
        EXPECT_EQ(view.nextCardForBackgroundClickAtPoint(c.point), c.insertion) << c.point.x() << "," << c.point.y();
}

} // namespace

TEST(CorkboardDropZones, GridZonesReachTheEdgesOfTheirSection)
{
    // Cards 293 × 176 three across: 0 1 2 / 3 4; half the spacing is 15.
    auto view = makeView(1000, 600);
    TestDataSource cards = TestDataSource::plain(5);
    view->setDataSource(&cards);
    expectZones(*view,
                {
                    {0, R(0, 0, 338, 221), -15}, // first row: up to the top; the first card: to the left
                    {1, R(338, 0, 323, 221), 0},
                    {2, R(661, 0, 339, 221), 16}, // a row's last card: to the board's right edge
                    {3, R(15, 221, 323, 221), 0}, // the last row grows down; no leading growth
                    {4, R(338, 221, 323, 221), 0}, // the board's last card: no growth to the edge
                });
    // The halfway mark is the card's centre line.
    for (qsizetype i = 0; i < 5; ++i) {
        double offset = 0;
        const R zone = view->dropZoneForCardAtIndex(i, &offset);
        EXPECT_DOUBLE_EQ(zone.x() + (zone.width() - offset) / 2, view->cardRects()[i].center().x()) << i;
    }
    expectClicks(*view,
                 {
                     {QPointF(5, 100), 0}, // the left margin beside the first card
                     {QPointF(345, 100), 1}, // just right of card 0: before card 1
                     {QPointF(330, 100), 1}, // right half of card 0's zone
                     {QPointF(985, 100), 3}, // the gap right of a row's last card: after it
                     {QPointF(10, 300), -1}, // the left margin of the second row: no zone
                     {QPointF(900, 300), -1}, // far right of the board's last card
                     {QPointF(450, 300), 4},
                     {QPointF(600, 300), 5},
                 });
    EXPECT_TRUE(view->dropZoneForCardAtIndex(5).isNull());
    EXPECT_TRUE(view->dropZoneForCardAtIndex(-1).isNull());
}

TEST(CorkboardDropZones, OneCardAcrossUsesColumnZones)
{
    auto view = makeView(400, 600);
    view->setCardsAcross(1);
    view->setMultipleSectionsMode(2); // a single section: still a grid, but one card across has columns
    TestDataSource cards = TestDataSource::plain(3);
    view->setDataSource(&cards);
    EXPECT_TRUE(view->hasColumns());
    // Column zones span the section's width; card 1 (k = 1) is not the column's first card.
    const R band = view->sectionRects()[0];
    const R card1 = view->cardRects()[1];
    const R zone1 = view->dropZoneForCardAtIndex(1);
    EXPECT_EQ(zone1.top(), card1.top() - 15);
    EXPECT_EQ(zone1.left(), band.left() - 15); // the first (only) column grows by half the spacing
}

TEST(CorkboardDropZones, RightToLeftZonesGrowTheOtherWay)
{
    auto view = makeView(1000, 600);
    view->setCardsUseRightToLeftDirection(true);
    TestDataSource cards = TestDataSource::plain(5);
    view->setDataSource(&cards);
    expectZones(*view,
                {
                    {0, R(662, 0, 338, 221), 15}, // the leading edge is the right one
                    {2, R(0, 0, 339, 221), -16}, // a row's last card reaches x 0
                });
    expectClicks(*view,
                 {
                     {QPointF(900, 100), 0}, // right of card 0's centre: before it
                     {QPointF(700, 100), 1},
                     {QPointF(5, 100), 3}, // left of the row's last card: after it
                 });
}

TEST(CorkboardDropZones, ColumnZonesSpanTheirColumn)
{
    // Columns of 2, 3 and 1 cards (fixed width 200; card 2 a picture), row origins 30, 227, 377,
    // board 720 × 527.
    auto view = makeView(600, 400);
    view->setMultipleSectionsMode(2);
    view->setFixedSizeCardWidth(200);
    TestDataSource cards = TestDataSource::withSections({2, 3, 1});
    cards.card(2).image = true;
    view->setDataSource(&cards);
    expectZones(*view,
                {
                    // The column's first card reaches the top; the first column grows left.
                    {0, R(-15, 0, 260, 212), -15},
                    // The column's last card reaches the bottom of the board.
                    {1, R(-15, 197, 260, 330), 150},
                    {3, R(245, 197, 230, 165), -15},
                    // The last column grows by half the spacing in width.
                    {5, R(475, 0, 260, 527), 315 - 15},
                });
    expectClicks(*view,
                 {
                     {QPointF(100, 100), 0},
                     {QPointF(100, 400), 2}, // below card 1: after it
                     {QPointF(300, 210), 3},
                     {QPointF(600, 100), 5},
                     {QPointF(600, 300), 6},
                 });
}

TEST(CorkboardDropZones, FreeformHasNoInsertionPointsAndTheDragIsShared)
{
    auto view = makeView(600, 600);
    view->setUsesFreeformArrangement(true);
    TestDataSource cards = TestDataSource::plain(2);
    view->setDataSource(&cards);
    EXPECT_EQ(view->nextCardForBackgroundClickAtPoint(QPointF(10, 10)), -1);

    XQCorkboardView other;
    XQCorkboardView::setDropCardIndex(4, XQCorkboardDropOperation::On);
    XQCorkboardView::setDraggedCardIndex(1);
    EXPECT_EQ(other.dropCardIndex(), 4);
    EXPECT_EQ(other.dropOperation(), XQCorkboardDropOperation::On);
    EXPECT_EQ(view->relativeIndexOfDraggedCard(), 10);
    TestDataSource without = TestDataSource::plain(
        2,
        TestDataSource::AllMethods
            & ~TestDataSource::Methods(XQCorkboardViewDataSource::RelativeDragIndexForCardAtIndex));
    view->setDataSource(&without);
    EXPECT_EQ(view->relativeIndexOfDraggedCard(), -1);
    XQCorkboardView::setDropCardIndex(-1, XQCorkboardDropOperation::None);
    XQCorkboardView::setDraggedCardIndex(-1);
}
