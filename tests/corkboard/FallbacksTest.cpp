// A data source that implements only what it must: every optional method falls back as documented
// and none is called.
#include <gtest/gtest.h>

#include <QPainter>

#include <qlyappkit/platform/text/Range.h>

#include "CorkboardTestSupport.h"

using namespace qly;
using namespace qly::corkboardtest;

using DS = XQCorkboardViewDataSource;

TEST(CorkboardFallbacks, OnlyACardCountIsEnough)
{
    // TestDataSource fails the test when a method it does not claim is called.
    TestDataSource cards = TestDataSource::plain(4, DS::Methods(DS::NumberOfCardsInCorkboardView));
    auto view = makeView(1000, 600);
    view->setDataSource(&cards);
    EXPECT_EQ(view->numberOfSections(), 1);
    EXPECT_EQ(view->numberOfCardsInSection(0), 0);
    EXPECT_EQ(view->numberOfCards(), 4);
    EXPECT_FALSE(view->isDisplayingMultipleSections());
    EXPECT_FALSE(view->isImageCard(0)); // neither image method: a text card
    EXPECT_EQ(view->cardRects().count(), 4);
    EXPECT_EQ(view->sectionRects().count(), 1);
    EXPECT_EQ(view->cardIndexesInDrawingOrder(), (QList<qsizetype>{0, 1, 2, 3}));
    EXPECT_EQ(view->relativeIndexOfDraggedCard(), -1);
    double offset = -1;
    view->titleRectForCardAtIndex(0, view->cardRects()[0], &offset);
    EXPECT_EQ(offset, 0); // no icon method
    qsizetype first = -1;
    EXPECT_EQ(view->sectionIndexForCardIndex(2, &first), 0);
    EXPECT_EQ(first, 0);
    // Painting asks for nothing it may not ask for.
    const QImage picture = view->renderBoard();
    EXPECT_FALSE(picture.isNull());
    // Editing hands nothing back.
    view->editCardAtIndex(1, true);
    view->endEditing();
    // Freeform without coordinates: no cards placed, and the arrows do nothing.
    view->setUsesFreeformArrangement(true);
    EXPECT_EQ(view->cardRects().count(), 0);
    view->selectCardIndexes(XQIndexSet{0}, false);
    view->moveRight();
    EXPECT_EQ(view->selectedCardIndexes(), XQIndexSet{0});
    for (const QString& call : cards.calls)
        EXPECT_EQ(call, QStringLiteral("numberOfCards"));
}

TEST(CorkboardFallbacks, SectionsNeedBothSectionMethods)
{
    // Sections without per-section counts: the plain card count is used, in one band.
    TestDataSource cards = TestDataSource::withSections(
        {2, 3}, DS::Methods(DS::NumberOfSectionsInCorkboardView) | DS::NumberOfCardsInCorkboardView);
    auto view = makeView(1000, 600);
    view->setMultipleSectionsMode(2);
    view->setDataSource(&cards);
    EXPECT_EQ(view->numberOfSections(), 2);
    EXPECT_EQ(view->numberOfCards(), 5);
    EXPECT_EQ(view->sectionRects().count(), 1); // a single grid band, not columns
    EXPECT_EQ(view->cardRects()[1].y(), view->cardRects()[0].y());
    qsizetype first = -1;
    EXPECT_EQ(view->sectionIndexForCardIndex(4, &first), 0); // no sections to walk: section 0
    EXPECT_EQ(first, 0);

    // Neither count: no cards at all.
    TestDataSource nothing = TestDataSource::withSections({2, 3}, DS::Methods(DS::NumberOfSectionsInCorkboardView));
    view->setDataSource(&nothing);
    EXPECT_EQ(view->numberOfCards(), 0);
    EXPECT_EQ(view->sectionIndexForCardIndex(0, &first), NotFound);
    EXPECT_EQ(first, NotFound);

    // No data source at all.
    view->setDataSource(nullptr);
    EXPECT_EQ(view->numberOfCards(), 0);
    EXPECT_EQ(view->cardRects().count(), 0);
    EXPECT_FALSE(view->cardIndexesSortedInCoordinateOrder(0).has_value());
}

TEST(CorkboardFallbacks, PictureCardsWithoutTheImageQuestion)
{
    // Without cardAtIndexIsImage a card is a picture card when it has an image.
    TestDataSource cards =
        TestDataSource::plain(2, DS::Methods(DS::NumberOfCardsInCorkboardView) | DS::ImageForCardAtIndex);
    cards.card(1).image = true;
    auto view = makeView(1000, 600);
    view->setDataSource(&cards);
    EXPECT_FALSE(view->isImageCard(0));
    EXPECT_TRUE(view->isImageCard(1));
    EXPECT_EQ(view->cardRects()[1].width(), 244);
}
