// Points to cards and sections, the extreme cards of a band, and reading order by bands.
#include <gtest/gtest.h>

#include <qlyappkit/platform/text/Range.h>

#include "CorkboardTestSupport.h"

using namespace qly;
using namespace qly::corkboardtest;

TEST(CorkboardHitTesting, PointsFindCardsAndSections)
{
    auto view = makeView(1000, 600);
    TestDataSource cards = TestDataSource::withSections({2, 1});
    view->setDataSource(&cards);
    const QRectF first = view->cardRects()[0]; // 30, 30, 293 × 176
    struct Case {
        QPointF point;
        qsizetype card;
    };
    for (const Case& c : std::vector<Case>{
             {first.topLeft(), 0},
             {QPointF(first.right() - 0.01, first.bottom() - 0.01), 0},
             {QPointF(first.right(), first.center().y()), -1}, // the right and bottom edges lie outside
             {QPointF(first.center().x(), first.bottom()), -1},
             {QPointF(340, 100), -1}, // the gap between cards
             {QPointF(360, 100), 1},
             {QPointF(100, view->cardRects()[2].y() + 1), 2},
             {QPointF(-5, -5), -1},
             {QPointF(1e9, 1e9), -1},
             {QPointF(qQNaN(), 10), -1},
         }) {
        EXPECT_EQ(view->indexOfCardAtPoint(c.point), c.card) << c.point.x() << "," << c.point.y();
    }
    EXPECT_EQ(view->indexOfSectionAtPoint(QPointF(5, 5)), 0);
    EXPECT_EQ(view->indexOfSectionAtPoint(QPointF(5, view->sectionRects()[1].y() + 1)), 1);
    EXPECT_EQ(view->indexOfSectionAtPoint(QPointF(-1, 5)), NotFound);
    EXPECT_TRUE(view->rectIntersectsExistingCard(QRectF(320, 100, 10, 10)));
    EXPECT_FALSE(view->rectIntersectsExistingCard(QRectF(324, 100, 28, 10)));
    EXPECT_EQ(view->indexesOfCardsIntersectingRect(QRectF(300, 100, 100, 100)), (XQIndexSet{0, 1}));
    EXPECT_EQ(view->indexesOfCardsIntersectingRect(QRectF(300, 100, 0, 200)), XQIndexSet());
}

TEST(CorkboardHitTesting, FreeformFindsTheFrontMostCard)
{
    auto view = makeView(600, 600);
    view->setUsesFreeformArrangement(true);
    view->setFixedSizeCardWidth(100);
    TestDataSource cards = TestDataSource::plain(3);
    cards.card(0).coordinate = QPointF(0, 0);
    cards.card(1).coordinate = QPointF(0.5, 0.2); // overlaps card 0
    cards.card(2).coordinate = QPointF(3, 3);
    view->setDataSource(&cards);
    const QPointF both(70, 30);
    EXPECT_EQ(view->indexOfCardAtPoint(both), 1); // later cards are drawn on top by default
    cards.drawingOrder = {1, 2, 0};
    EXPECT_EQ(view->cardIndexesInDrawingOrder(), (QList<qsizetype>{1, 2, 0}));
    EXPECT_EQ(view->indexOfCardAtPoint(both), 0);
    // An order that does not list every card once is not used.
    for (const QList<qsizetype>& bad : {QList<qsizetype>{1, 0}, QList<qsizetype>{1, 1, 0}, QList<qsizetype>{0, 1, 7}}) {
        cards.drawingOrder = bad;
        EXPECT_EQ(view->cardIndexesInDrawingOrder(), (QList<qsizetype>{0, 1, 2}));
    }
}

TEST(CorkboardHitTesting, SectionOfACard)
{
    auto view = makeView(1000, 600);
    TestDataSource cards = TestDataSource::withSections({2, 0, 3});
    view->setDataSource(&cards);
    struct Case {
        qsizetype index, section, offset;
    };
    for (const Case& c : std::vector<Case>{{0, 0, 0},
                                           {1, 0, 0},
                                           {2, 2, 2},
                                           {4, 2, 2},
                                           {5, 2, 2} /* one past the end */,
                                           {6, NotFound, NotFound},
                                           {-1, NotFound, NotFound}}) {
        qsizetype offset = -7;
        EXPECT_EQ(view->sectionIndexForCardIndex(c.index, &offset), c.section) << c.index;
        EXPECT_EQ(offset, c.offset) << c.index;
    }
    // One section: always section 0 at 0.
    TestDataSource single = TestDataSource::plain(2);
    view->setDataSource(&single);
    qsizetype offset = -7;
    EXPECT_EQ(view->sectionIndexForCardIndex(1, &offset), 0);
    EXPECT_EQ(offset, 0);
}

TEST(CorkboardHitTesting, ExtremeCardsNeedAThirdInsideTheBand)
{
    // Freeform cards 90 × 54: a row at y 0 (cards 0 … 2), card 3 lower, so that only a sliver of it
    // lies inside the first row's band, and card 4 half inside.
    auto view = makeView(800, 800);
    view->setUsesFreeformArrangement(true);
    view->setFixedSizeCardWidth(90);
    TestDataSource cards = TestDataSource::plain(5);
    cards.card(0).coordinate = QPointF(2, 0);
    cards.card(1).coordinate = QPointF(1, 0);
    cards.card(2).coordinate = QPointF(3, 0);
    cards.card(3).coordinate = QPointF(0, 0.5); // y 45: 9 of 54 points inside a band 0 … 54
    cards.card(4).coordinate = QPointF(4, 0.3); // y 27: 27 of 54 inside
    view->setDataSource(&cards);
    const QRectF band(0, 0, 800, 54);
    const XQIndexSet all = XQIndexSet::range(0, 4);
    EXPECT_EQ(view->leftMostCardInRect(band, all), 1);
    EXPECT_EQ(view->rightMostCardInRect(band, all), 4);
    EXPECT_EQ(view->leftMostCardInRect(band, XQIndexSet{0, 2}), 0);
    EXPECT_EQ(view->leftMostCardInRect(band, XQIndexSet{3}), -1);
    EXPECT_EQ(view->leftMostCardInRect(band, XQIndexSet()), -1);
    const QRectF column(0, 0, 30, 800); // a third of card 3's width, nothing of the others
    EXPECT_EQ(view->topMostCardInRect(column, all), 3);
    EXPECT_EQ(view->topMostCardInRect(QRectF(0, 0, 29, 800), all), -1);
    EXPECT_EQ(view->topMostCardInRect(view->rect(), all), 0); // ties keep the lower index
    EXPECT_EQ(view->bottomMostCardInRect(view->rect(), all), 3); // bottom edge 99, card 4 ends at 81
}

TEST(CorkboardHitTesting, CoordinateOrdersReadBandByBand)
{
    // Cards 100 × 60 at (x, y) in card widths:   0 (0,0)   1 (2,0)   2 (1,0.1)
    //                                            3 (0,1)   4 (2,1.2)
    auto view = makeView(700, 700);
    view->setUsesFreeformArrangement(true);
    view->setFixedSizeCardWidth(100);
    TestDataSource cards = TestDataSource::plain(5);
    const QPointF at[] = {{0, 0}, {2, 0}, {1, 0.1}, {0, 1}, {2, 1.2}};
    for (int i = 0; i < 5; ++i)
        cards.card(i).coordinate = at[i];
    view->setDataSource(&cards);
    const std::vector<QList<qsizetype>> expected = {
        {0, 2, 1, 3, 4}, // rows from the top, left to right
        {1, 2, 0, 4, 3}, // rows from the top, right to left
        {0, 3, 2, 1, 4}, // columns from the left, top to bottom
        {3, 0, 2, 4, 1}, // columns from the left, bottom to top
        {3, 4, 0, 2, 1}, // rows from the bottom, left to right
        {4, 3, 1, 2, 0}, // rows from the bottom, right to left
        {1, 4, 2, 0, 3}, // columns from the right, top to bottom
        {4, 1, 2, 3, 0}, // columns from the right, bottom to top
    };
    for (int order = 0; order < 8; ++order) {
        const std::optional<QList<qsizetype>> sorted = view->cardIndexesSortedInCoordinateOrder(order);
        ASSERT_TRUE(sorted.has_value());
        EXPECT_EQ(*sorted, expected[size_t(order)]) << "order " << order;
    }
    TestDataSource none = TestDataSource::plain(0);
    view->setDataSource(&none);
    EXPECT_FALSE(view->cardIndexesSortedInCoordinateOrder(0).has_value());
}
