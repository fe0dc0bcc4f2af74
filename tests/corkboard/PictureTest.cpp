// Boards of twelve cards drawn to PNG in each layout, checked pixel by pixel against the rectangles:
// cards, pins and shadows where the geometry puts them, and nothing of a card outside its rectangle.
#include <gtest/gtest.h>

#include <QDir>
#include <QImage>
#include <cmath>

#include "CorkboardTestSupport.h"

using namespace qly;
using namespace qly::corkboardtest;

namespace {

struct Layout {
    const char* name;
    std::function<void(XQCorkboardView&)> set;
    std::vector<int> sections;
};

std::vector<Layout> layouts()
{
    return {
        {"grid", [](XQCorkboardView& v) { v.setCardsAcross(4); }, {12}},
        {"grid-sections", [](XQCorkboardView& v) { v.setCardsAcross(4); }, {7, 5}},
        {"rows",
         [](XQCorkboardView& v) {
             v.setMultipleSectionsMode(1);
             v.setFixedSizeCardWidth(180);
         },
         {6, 6}},
        {"columns",
         [](XQCorkboardView& v) {
             v.setMultipleSectionsMode(2);
             v.setFixedSizeCardWidth(180);
         },
         {5, 4, 3}},
        {"freeform",
         [](XQCorkboardView& v) {
             v.setUsesFreeformArrangement(true);
             v.setFixedSizeCardWidth(180);
         },
         {12}},
    };
}

TestDataSource twelveCards(const std::vector<int>& sections)
{
    std::vector<std::vector<TestCard>> cards;
    int n = 0;
    for (int count : sections) {
        cards.emplace_back();
        for (int k = 0; k < count; ++k, ++n) {
            TestCard card;
            card.title = QStringLiteral("Scene %1").arg(n + 1);
            card.text = QStringLiteral("Short text %1.").arg(n + 1);
            // Freeform: four across, well apart, clear of the board's edges so that every pin shows.
            card.coordinate = QPointF(0.2 + (n % 4) * 1.3, 0.2 + (n / 4) * 0.9);
            cards.back().push_back(card);
        }
    }
    return TestDataSource(std::move(cards));
}

/// Draws the board to a PNG file and reads it back, as a person opening the picture would.
QImage renderThroughPNG(const XQCorkboardView& view, const QString& name)
{
    const QString folder = QStringLiteral(QLY_BINARY_DIR "/corkboard-pictures");
    QDir().mkpath(folder);
    const QString path = folder + QLatin1Char('/') + name + QStringLiteral(".png");
    EXPECT_TRUE(view.renderBoard().save(path, "PNG"));
    QImage image(path);
    EXPECT_FALSE(image.isNull()) << path.toStdString();
    return image.convertToFormat(QImage::Format_RGB32);
}

int luminance(QRgb p) { return (qRed(p) * 30 + qGreen(p) * 59 + qBlue(p) * 11) / 100; }

bool isCardWhite(QRgb p) { return qRed(p) > 240 && qGreen(p) > 240 && qBlue(p) > 240; }

/// The most strongly tinted pixel of the rows a 1.5-point line at the title's foot can cover, a little
/// right of the title's middle: tint(p) says how far a pixel leans to the rule's colour.
QRgb titleRulePixel(const QImage& board, const QRectF& title, int (*tint)(QRgb))
{
    const int x = int(title.center().x()) + 40;
    const int y0 = int(std::floor(title.bottom()));
    QRgb best = board.pixel(x, y0);
    for (int y = y0 - 1; y <= y0 + 2; ++y) {
        if (tint(board.pixel(x, y)) > tint(best))
            best = board.pixel(x, y);
    }
    return best;
}

int redness(QRgb p) { return qRed(p) - qBlue(p); }
int blueness(QRgb p) { return qBlue(p) - qRed(p); }

} // namespace

TEST(CorkboardPicture, CardsPinsAndShadowsAreWhereTheRectanglesSay)
{
    for (const Layout& layout : layouts()) {
        SCOPED_TRACE(layout.name);
        auto view = makeView(900, 300);
        layout.set(*view);
        TestDataSource cards = twelveCards(layout.sections);
        view->setDataSource(&cards);
        ASSERT_EQ(view->cardRects().count(), 12);
        const QImage board = renderThroughPNG(*view, QString::fromLatin1(layout.name));
        ASSERT_EQ(board.size(), view->size());
        view->setHasDropShadows(false);
        const QImage flat = renderThroughPNG(*view, QString::fromLatin1(layout.name) + QStringLiteral("-flat"));

        for (qsizetype i = 0; i < 12; ++i) {
            const QRect card = view->cardRects()[i].toRect();
            // The card's blank lower corner is card white; the board under it is not.
            EXPECT_TRUE(isCardWhite(board.pixel(card.left() + 4, card.bottom() - 4))) << "card " << i;
            if (card.left() >= 12) {
                EXPECT_FALSE(isCardWhite(board.pixel(card.left() - 12, card.center().y()))) << "left of card " << i;
            }
            // The pin's head: a red disc across the card's top edge.
            const QRectF pin = view->pinRectForCardAtIndex(i);
            const QRgb head = board.pixel(QPointF(pin.x() + 9.5, pin.y() + 7.5).toPoint());
            EXPECT_GT(qRed(head), qGreen(head) + 50) << "pin of card " << i;
            // Below the card the shadow darkens the cork.
            const QPoint below(card.center().x(), card.bottom() + 5);
            EXPECT_LT(luminance(board.pixel(below)), luminance(flat.pixel(below)) - 8) << "shadow of card " << i;
        }
        // The title rule in the theme's red runs under each title.
        const QRectF title = view->titleRectForCardAtIndex(0);
        const QRgb rule = titleRulePixel(board, title, redness);
        EXPECT_GT(qRed(rule), qBlue(rule) + 60);
    }
}

TEST(CorkboardPicture, NothingIsDrawnOutsideTheCards)
{
    for (const Layout& layout : layouts()) {
        SCOPED_TRACE(layout.name);
        auto view = makeView(900, 300);
        layout.set(*view);
        TestDataSource cards = twelveCards(layout.sections);
        for (qsizetype i = 0; i < cards.total(); ++i)
            cards.card(i).text = QString("A line of text long enough to wrap and run past the card. ").repeated(12);
        view->setDataSource(&cards);
        // A plain background, no shadows or pins: every pixel that is not the background belongs to a
        // card (or to the seam between sections).
        view->setBackgroundColor(Color(0, 1, 0));
        view->setHasDropShadows(false);
        view->setShowsPins(false);
        view->setShowsCardNumbers(true);
        const QImage board = renderThroughPNG(*view, QString::fromLatin1(layout.name) + QStringLiteral("-bare"));
        const QRgb green = qRgb(0, 255, 0);
        const auto nearSeam = [&](int x, int y) {
            for (qsizetype s = 1; s < view->sectionRects().count(); ++s) {
                const QRectF band = view->sectionRects()[s];
                if (std::abs(y - band.top()) <= 2 || std::abs(x - band.left()) <= 2)
                    return true;
            }
            return false;
        };
        qsizetype outside = 0, inked = 0;
        for (int y = 0; y < board.height(); ++y) {
            for (int x = 0; x < board.width(); ++x) {
                if (board.pixel(x, y) == green)
                    continue;
                ++inked;
                bool onCard = false;
                for (const QRectF& card : view->cardRects().rects)
                    onCard = onCard || card.adjusted(-1, -1, 1, 1).contains(QPointF(x + 0.5, y + 0.5));
                if (!onCard && !nearSeam(x, y))
                    ++outside;
            }
        }
        EXPECT_EQ(outside, 0);
        double cardArea = 0;
        for (const QRectF& card : view->cardRects().rects)
            cardArea += card.width() * card.height();
        EXPECT_GE(double(inked), cardArea * 0.95); // the cards are really there
    }
}

TEST(CorkboardPicture, SelectionAndThemeShowOnTheBoard)
{
    auto view = makeView(900, 300);
    TestDataSource cards = twelveCards({12});
    view->setDataSource(&cards);
    view->selectCardIndexes(XQIndexSet{2}, false);
    view->setBlueAndBlackIndexCardTheme();
    const QImage board = renderThroughPNG(*view, QStringLiteral("blue-black-selected"));
    const QRectF selected = view->cardRects()[2];
    // A blue frame just outside the selected card, none around the others.
    const QRgb frame = board.pixel(QPointF(selected.center().x(), selected.top() - 1).toPoint());
    EXPECT_GT(qBlue(frame), qRed(frame) + 80);
    const QRectF other = view->cardRects()[1];
    const QRgb plain = board.pixel(QPointF(other.center().x() + 30, other.top() - 1).toPoint());
    EXPECT_LT(qBlue(plain), qRed(plain) + 40);
    // The title rule and the pins follow the theme: blue.
    const QRectF title = view->titleRectForCardAtIndex(0);
    const QRgb rule = titleRulePixel(board, title, blueness);
    EXPECT_GT(qBlue(rule), qRed(rule) + 60);
}
