// The grid and rows passes against rectangles worked out by hand.
#include <gtest/gtest.h>

#include "CorkboardTestSupport.h"

using namespace qly;
using namespace qly::corkboardtest;

namespace {

using R = QRectF;

} // namespace

TEST(CorkboardGrid, FitsCardsToTheVisibleWidth)
{
    // 1000 wide, three across, spacing 30: w = round((1000 - 120) / 3) = 293, h = round(0.6 × 293) = 176.
    auto view = makeView(1000, 600);
    TestDataSource cards = TestDataSource::plain(5);
    view->setDataSource(&cards);
    EXPECT_EQ(rects(view->cardRects()),
              (std::vector<R>{R(30, 30, 293, 176), R(353, 30, 293, 176), R(676, 30, 293, 176), R(30, 236, 293, 176),
                              R(353, 236, 293, 176)}));
    EXPECT_EQ(view->currentCardWidth(), 293);
    EXPECT_EQ(view->currentTextCardHeight(), 176);
    EXPECT_EQ(view->currentIndexCardSize(), QSizeF(293, 176));
    EXPECT_EQ(view->currentPhotoSize(), QSizeF(0, 0));
    // One section reaching the bottom of the visible area; the view keeps the visible size.
    EXPECT_EQ(rects(view->sectionRects()), (std::vector<R>{R(0, 0, 1000, 600)}));
    EXPECT_EQ(view->size(), QSize(1000, 600));
}

TEST(CorkboardGrid, SectionsAreBandsAndAnEmptySectionKeepsARow)
{
    // Fixed cards 200 × 120 (fit-to-width off), two across; sections of 3, 0 and 1 cards.
    auto view = makeView(500, 100);
    view->setSizesCardsToFitWidth(false);
    view->setFixedSizeCardWidth(200);
    view->setCardsAcross(2);
    TestDataSource cards = TestDataSource::withSections({3, 0, 1});
    view->setDataSource(&cards);
    // Section 0: rows at 30 and 180, bottom B = 180 + 120 + 30 = 330; the next section starts its first
    // row at 180 + 120 + 60 = 360. The empty section takes one row (B = 360 + 150 = 510); the last
    // starts at 360 + 180 = 540 and ends at 690.
    EXPECT_EQ(rects(view->cardRects()),
              (std::vector<R>{R(30, 30, 200, 120), R(260, 30, 200, 120), R(30, 180, 200, 120), R(30, 540, 200, 120)}));
    EXPECT_EQ(rects(view->sectionRects()),
              (std::vector<R>{R(0, 0, 500, 330), R(0, 330, 500, 180), R(0, 510, 500, 180)}));
    // W = max(500, 2 × 200 + 3 × 30 = 490) stays 500; sections span the board's width.
    EXPECT_EQ(view->size(), QSize(500, 690));
}

TEST(CorkboardGrid, SettingRulesAndEdgeCases)
{
    struct Case {
        const char* name;
        std::function<void(XQCorkboardView&)> set;
        int visibleWidth;
        int cards;
        std::vector<R> expected;
        QSize size;
        int across;
    };
    const std::vector<Case> cases = {
        {"cardsAcross 0 changes nothing",
         [](XQCorkboardView& v) { v.setCardsAcross(0); },
         1000,
         1,
         {R(30, 30, 293, 176)},
         QSize(1000, 600),
         3},
        {"auto across, narrow: one card, board widened to 2 spacings + w",
         [](XQCorkboardView& v) { v.setCardsAcross(-1); },
         200,
         2,
         {R(30, 30, 300, 180), R(30, 240, 300, 180)},
         QSize(360, 600),
         1},
        {"auto across, wide: as many as fit",
         [](XQCorkboardView& v) { v.setCardsAcross(-4); },
         1000,
         4,
         {R(30, 30, 300, 180), R(360, 30, 300, 180), R(690, 30, 300, 180), R(30, 240, 300, 180)},
         QSize(1020, 600) /* widened to hold the third card */,
         3},
        {"a card narrower than 10 is raised to 10",
         [](XQCorkboardView& v) { v.setInterCardSpacing(40); },
         100,
         1,
         {R(40, 40, 10, 6)},
         QSize(100, 600),
         3},
        {"fixed width without fit widens the board",
         [](XQCorkboardView& v) {
             v.setSizesCardsToFitWidth(false);
             v.setFixedSizeCardWidth(199.6);
         },
         300,
         3,
         {R(30, 30, 200, 120), R(260, 30, 200, 120), R(490, 30, 200, 120)},
         QSize(720, 600),
         3},
        {"height ratio",
         [](XQCorkboardView& v) { v.setIndexCardHeightRatio(1.0); },
         1000,
         1,
         {R(30, 30, 293, 293)},
         QSize(1000, 600),
         3},
        {"right to left: first card at the right",
         [](XQCorkboardView& v) { v.setCardsUseRightToLeftDirection(true); },
         1000,
         4,
         {R(677, 30, 293, 176), R(354, 30, 293, 176), R(31, 30, 293, 176), R(677, 236, 293, 176)},
         QSize(1000, 600),
         3},
        {"one section in column mode is a grid",
         [](XQCorkboardView& v) { v.setMultipleSectionsMode(2); },
         1000,
         2,
         {R(30, 30, 293, 176), R(353, 30, 293, 176)},
         QSize(1000, 600),
         3},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        auto view = makeView(c.visibleWidth, 600);
        c.set(*view);
        TestDataSource cards = TestDataSource::plain(c.cards);
        view->setDataSource(&cards);
        EXPECT_EQ(rects(view->cardRects()), c.expected);
        EXPECT_EQ(view->size(), c.size);
        EXPECT_EQ(view->cardsAcross(), c.across);
    }
}

TEST(CorkboardGrid, CardsAcrossSetterFollowsTheSign)
{
    XQCorkboardView view;
    EXPECT_EQ(view.cardsAcross(), 3);
    EXPECT_FALSE(view.autoCalculatesCardsAcross());
    view.setCardsAcross(-2);
    EXPECT_TRUE(view.autoCalculatesCardsAcross());
    view.setCardsAcross(0);
    EXPECT_TRUE(view.autoCalculatesCardsAcross());
    view.setCardsAcross(5);
    EXPECT_FALSE(view.autoCalculatesCardsAcross());
    EXPECT_EQ(view.cardsAcross(), 5);
    view.setFixedSizeCardWidth(120.5);
    EXPECT_EQ(view.fixedSizeCardWidth(), 121);
}

TEST(CorkboardGrid, ImageCardsAreSquareCentredInTheirColumnAndRaiseTheRow)
{
    // w = 293, h = 176: image width 293 − round(48.8) = 244 (not under h), so 244 × 244, inset 24.5.
    auto view = makeView(1000, 300);
    TestDataSource cards = TestDataSource::plain(4);
    cards.card(1).image = true;
    view->setDataSource(&cards);
    EXPECT_EQ(
        rects(view->cardRects()),
        (std::vector<R>{R(30, 30, 293, 176), R(377.5, 30, 244, 244), R(676, 30, 293, 176), R(30, 304, 293, 176)}));
    EXPECT_EQ(view->currentPhotoSize(), QSizeF(244, 244));
    EXPECT_EQ(view->maximumCardHeightInRowOfCardAtIndex(0), 244);
    EXPECT_EQ(view->maximumCardHeightInRowOfCardAtIndex(3), 176);
    // A very flat ratio: the image width is under the card height, so the image takes the card width.
    view->setIndexCardHeightRatio(2.0);
    EXPECT_EQ(view->cardRects()[1], R(353, 30, 293, 586));
    EXPECT_EQ(XQCorkboardView::imageCardWidthForIndexCardWidth(300), 250);
    EXPECT_DOUBLE_EQ(XQCorkboardView::indexCardWidthForImageCardWidth(250), 250.0 * 5 / 6);
}

TEST(CorkboardGrid, RowsModePutsEachSectionOnOneRow)
{
    // Rows mode ignores fit-to-width: cards are 300 × 180; the widest row sets the width.
    auto view = makeView(800, 200);
    view->setMultipleSectionsMode(1);
    TestDataSource cards = TestDataSource::withSections({3, 2});
    view->setDataSource(&cards);
    EXPECT_EQ(rects(view->cardRects()),
              (std::vector<R>{R(30, 30, 300, 180), R(360, 30, 300, 180), R(690, 30, 300, 180), R(30, 270, 300, 180),
                              R(360, 270, 300, 180)}));
    EXPECT_EQ(rects(view->sectionRects()), (std::vector<R>{R(0, 0, 1020, 240), R(0, 240, 1020, 240)}));
    EXPECT_EQ(view->size(), QSize(1020, 480));
    // The tallest card of a row is looked up with the in-section offset read as a global index: the
    // second section's cards report the picture card of the first section's row.
    cards.card(1).image = true;
    view->reloadData();
    EXPECT_EQ(view->cardRects()[1], R(385, 30, 250, 250));
    EXPECT_EQ(view->cardRects()[3], R(30, 340, 300, 180));
    EXPECT_EQ(view->maximumCardHeightInRowOfCardAtIndex(0), 250);
    EXPECT_EQ(view->maximumCardHeightInRowOfCardAtIndex(3), 250);
    EXPECT_EQ(view->maximumCardHeightInRowOfCardAtIndex(4), 250);
}
