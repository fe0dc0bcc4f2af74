// The column and freeform passes against rectangles worked out by hand.
#include <gtest/gtest.h>

#include <qlyappkit/geometry/XQTextMeasuring.h>

#include "CorkboardTestSupport.h"

using namespace qly;
using namespace qly::corkboardtest;

namespace {

using R = QRectF;

} // namespace

TEST(CorkboardColumns, SectionsAreColumnsSharingRowOrigins)
{
    // Fixed width 200 (fit-to-width ignored), h = 120; three columns of 2, 3 and 1 cards, the second
    // column's first card a picture (167 × 167, inset 16.5) that pushes rows 1 and 2 down.
    auto view = makeView(600, 400);
    view->setMultipleSectionsMode(2);
    view->setFixedSizeCardWidth(200);
    TestDataSource cards = TestDataSource::withSections({2, 3, 1});
    cards.card(2).image = true;
    view->setDataSource(&cards);
    EXPECT_TRUE(view->hasColumns());
    EXPECT_EQ(view->columnModeRowOrigins().floats, (std::vector<double>{30, 227, 377}));
    EXPECT_EQ(rects(view->cardRects()),
              (std::vector<R>{R(30, 30, 200, 120), R(30, 227, 200, 120), R(276.5, 30, 167, 167), R(260, 227, 200, 120),
                              R(260, 377, 200, 120), R(490, 30, 200, 120)}));
    // W = max(600, 3 × 200 + 4 × 30 = 720); columns 230 wide from x 15, the first widened to 0, the last
    // to the board's right edge; all as tall as the board (377 + 120 + 30 = 527, over the visible 400).
    EXPECT_EQ(rects(view->sectionRects()),
              (std::vector<R>{R(0, 0, 245, 527), R(245, 0, 230, 527), R(475, 0, 245, 527)}));
    EXPECT_EQ(view->size(), QSize(720, 527));
    // A row is as tall as the room to the next row's origin.
    EXPECT_EQ(view->maximumCardHeightInRowOfCardAtIndex(0), 227 - 30 - 30);
    EXPECT_EQ(view->maximumCardHeightInRowOfCardAtIndex(4), 120);
}

TEST(CorkboardColumns, LastColumnPushesLaterRowsBelowItsLastCard)
{
    // The last column's only card is a picture taller than the first column's first row: row 1 moves
    // down to round(30 + 167 + 30) = 227.
    auto view = makeView(200, 100);
    view->setMultipleSectionsMode(2);
    view->setFixedSizeCardWidth(200);
    TestDataSource cards = TestDataSource::withSections({2, 1});
    cards.card(2).image = true;
    view->setDataSource(&cards);
    EXPECT_EQ(view->columnModeRowOrigins().floats, (std::vector<double>{30, 227}));
    EXPECT_EQ(view->cardRects()[1], R(30, 227, 200, 120));
    // The room down to the next row.
    EXPECT_EQ(view->maximumCardHeightInRowOfCardAtIndex(2), 167);
}

TEST(CorkboardColumns, RightToLeftColumnsRunLeftwards)
{
    auto view = makeView(720, 300);
    view->setMultipleSectionsMode(2);
    view->setFixedSizeCardWidth(200);
    view->setCardsUseRightToLeftDirection(true);
    TestDataSource cards = TestDataSource::withSections({1, 1, 1});
    view->setDataSource(&cards);
    EXPECT_EQ(rects(view->cardRects()),
              (std::vector<R>{R(490, 30, 200, 120), R(260, 30, 200, 120), R(30, 30, 200, 120)}));
    // Section x = 15 + (720 − 230 − 30) − s × 230: 475, 245, 15; the rightmost (first) column reaches
    // the right edge, the leftmost (last) starts at 0.
    EXPECT_EQ(rects(view->sectionRects()),
              (std::vector<R>{R(475, 0, 245, 300), R(245, 0, 230, 300), R(0, 0, 245, 300)}));
}

TEST(CorkboardFreeform, CardsSitAtTheirCoordinatesInCardWidths)
{
    auto view = makeView(400, 300);
    view->setUsesFreeformArrangement(true);
    view->setFixedSizeCardWidth(100);
    TestDataSource cards = TestDataSource::plain(3);
    cards.card(0).coordinate = QPointF(1.0, 0.5);
    cards.card(1).coordinate = QPointF(-2.0, 3.254);
    cards.card(2).coordinate = QPointF(4.5, 0);
    cards.card(2).image = true;
    view->setDataSource(&cards);
    // 100 × 60 text cards; negative positions become 0; the picture card is 83 × 83.
    EXPECT_EQ(rects(view->cardRects()), (std::vector<R>{R(100, 50, 100, 60), R(0, 325, 100, 60), R(450, 0, 83, 83)}));
    EXPECT_TRUE(view->sectionRects().rects.empty());
    // W = max(400, 7 × 100, 450 + 2 × 83 + 30); H = max(300, 7 × 60, 325 + 2 × 60 + 30).
    EXPECT_EQ(view->size(), QSize(700, 475));
    EXPECT_EQ(view->currentTextCardHeight(), 60);
}

TEST(CorkboardFreeform, WithoutCoordinatesThereAreNoCards)
{
    auto view = makeView(400, 300);
    view->setUsesFreeformArrangement(true);
    TestDataSource cards = TestDataSource::plain(
        3, TestDataSource::AllMethods & ~TestDataSource::Methods(XQCorkboardViewDataSource::CoordinateOfCardAtIndex));
    view->setDataSource(&cards);
    EXPECT_TRUE(view->cardRects().rects.empty());
    EXPECT_EQ(view->indexOfCardAtPoint(QPointF(10, 10)), -1);
}

TEST(CorkboardFreeform, ResizingGrowsTextCardsToTheirText)
{
    auto view = makeView(400, 300);
    view->setUsesFreeformArrangement(true);
    view->setFixedSizeCardWidth(200);
    view->setAllowsFreeformCardResizing(true);
    TestDataSource cards = TestDataSource::plain(4);
    cards.card(0).text = QString("A long synopsis that wraps. ").repeated(20);
    cards.card(1).text = QStringLiteral("Short.");
    cards.card(3).text = cards.card(0).text;
    cards.card(3).image = true;
    view->setDataSource(&cards);
    const double h = 120;
    // Text area width for a 200-wide card: 198, less 4 padding; height measured by the text system.
    const double textWidth = view->textRectForCardAtIndex(0, R(0, 0, 200, 100)).width();
    EXPECT_EQ(textWidth, 198);
    const double measured =
        XQHeightForStringDrawingBySettingPadding(cards.card(0).text, textWidth, view->textAttributes(), 4.0);
    EXPECT_GT(measured, h);
    EXPECT_DOUBLE_EQ(view->cardRects()[0].height(), measured + view->titleHeight() + 3.0 + 4.0);
    EXPECT_EQ(view->cardRects()[1].height(), h); // short text: never below the standard height
    EXPECT_EQ(view->cardRects()[2].height(), h); // no text
    EXPECT_EQ(view->cardRects()[3].height(), 167); // pictures are not resized
    // Turning resizing off gives every text card the standard height again.
    view->setAllowsFreeformCardResizing(false);
    EXPECT_EQ(view->cardRects()[0].height(), h);
}
