// Random settings and card counts: whatever the settings, the grid, rows and column passes never
// overlap two cards, keep every card inside its section and the board, and size the board to hold them.
#include <gtest/gtest.h>

#include <random>

#include "CorkboardTestSupport.h"

using namespace qly;
using namespace qly::corkboardtest;

namespace {

bool overlap(const QRectF& a, const QRectF& b)
{
    return a.left() < b.right() && b.left() < a.right() && a.top() < b.bottom() && b.top() < a.bottom();
}

bool inside(const QRectF& inner, const QRectF& outer)
{
    constexpr double e = 1e-9;
    return inner.left() >= outer.left() - e && inner.top() >= outer.top() - e && inner.right() <= outer.right() + e
        && inner.bottom() <= outer.bottom() + e;
}

} // namespace

TEST(CorkboardLayoutProperties, RandomBoardsKeepEveryCardInPlace)
{
    std::mt19937 random(20261122);
    const auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(random); };
    for (int round = 0; round < 400; ++round) {
        const int mode = pick(0, 2);
        const int sectionCount = pick(1, 5);
        std::vector<std::vector<TestCard>> sections(static_cast<size_t>(sectionCount));
        for (auto& section : sections) {
            section.resize(size_t(pick(0, 14)));
            for (TestCard& card : section)
                card.image = pick(0, 4) == 0;
        }
        TestDataSource cards(std::move(sections));
        auto view = makeView(pick(50, 1600), pick(10, 900));
        view->setMultipleSectionsMode(mode);
        view->setInterCardSpacing(pick(0, 60));
        view->setFixedSizeCardWidth(pick(10, 400));
        view->setIndexCardHeightRatio(pick(20, 150) / 100.0);
        view->setSizesCardsToFitWidth(pick(0, 1) == 1);
        view->setCardsAcross(pick(0, 3) == 0 ? -1 : pick(1, 7));
        // Right to left runs from the visible right edge, so it is checked where the board is no
        // wider than that: fitted grids.
        const bool rtl = mode == 0 && view->sizesCardsToFitWidth() && !view->autoCalculatesCardsAcross() && pick(0, 1);
        view->setCardsUseRightToLeftDirection(rtl);
        view->setDataSource(&cards);

        const std::string context = "round " + std::to_string(round) + " mode " + std::to_string(mode) + " across "
            + std::to_string(view->cardsAcross()) + " spacing " + std::to_string(view->interCardSpacing()) + " width "
            + std::to_string(view->fixedSizeCardWidth()) + (rtl ? " rtl" : "");
        SCOPED_TRACE(context);
        const auto& rects = view->cardRects().rects;
        ASSERT_EQ(qsizetype(rects.size()), cards.total());
        ASSERT_EQ(view->sectionRects().count(), sectionCount);
        const QRectF frame(0, 0, view->width(), view->height());
        qsizetype global = 0;
        for (int s = 0; s < sectionCount; ++s) {
            const QRectF section = view->sectionRects()[s];
            EXPECT_TRUE(inside(section, frame)) << "section " << s;
            for (size_t k = 0; k < cards.sections[size_t(s)].size(); ++k, ++global) {
                const QRectF& card = rects[size_t(global)];
                EXPECT_GT(card.width(), 0);
                EXPECT_TRUE(inside(card, section)) << "card " << global << " outside section " << s;
                EXPECT_TRUE(inside(card, frame)) << "card " << global << " outside the board";
                EXPECT_EQ(view->sectionIndexForCardIndex(global), s);
            }
        }
        for (size_t i = 0; i < rects.size(); ++i) {
            for (size_t j = i + 1; j < rects.size(); ++j)
                ASSERT_FALSE(overlap(rects[i], rects[j])) << "cards " << i << " and " << j;
        }
        // Hit testing agrees with the rectangles: each card's centre finds that card.
        for (size_t i = 0; i < rects.size(); ++i)
            ASSERT_EQ(view->indexOfCardAtPoint(rects[i].center()), qsizetype(i));
    }
}

TEST(CorkboardLayoutProperties, FreeformBoardsHoldEveryCard)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<double> coordinate(-2.0, 30.0);
    for (int round = 0; round < 100; ++round) {
        TestDataSource cards = TestDataSource::plain(int(random() % 40));
        for (qsizetype i = 0; i < cards.total(); ++i) {
            cards.card(i).coordinate = QPointF(coordinate(random), coordinate(random));
            cards.card(i).image = random() % 5 == 0;
        }
        auto view = makeView(300, 300);
        view->setUsesFreeformArrangement(true);
        view->setFixedSizeCardWidth(double(random() % 300 + 10));
        view->setDataSource(&cards);
        const QRectF frame(0, 0, view->width(), view->height());
        for (const QRectF& card : view->cardRects().rects) {
            EXPECT_TRUE(inside(card, frame));
            EXPECT_GE(card.x(), 0);
            EXPECT_GE(card.y(), 0);
        }
    }
}
