// The rectangles inside a card, the cached metrics, and title shrinking.
#include <gtest/gtest.h>

#include <QFontMetricsF>

#include <qlyappkit/geometry/XQTextMeasuring.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>

#include "CorkboardTestSupport.h"

using namespace qly;
using namespace qly::corkboardtest;

namespace {

using R = QRectF;

double lineHeightOf(const char* face, double size)
{
    return XQDefaultLineHeightForFont(Font(QString::fromLatin1(face), size));
}

} // namespace

TEST(CorkboardMetrics, TitleHeightIsTheTallerTitleFontPlusTwo)
{
    XQCorkboardView view;
    const double expected =
        std::max(std::round(lineHeightOf("Courier", 14)), std::round(lineHeightOf("Chalkboard", 12))) + 2;
    EXPECT_GT(expected, 10);
    EXPECT_EQ(view.titleHeight(), expected);
    view.setUsesTwoLineTitles(true);
    EXPECT_EQ(view.titleHeight(), 2 * expected);
    view.setUsesTwoLineTitles(false);
    // Without fonts in the attributes the title height is 18.
    view.setTextTitleAttributes({});
    view.setImageTitleAttributes({});
    EXPECT_EQ(view.titleHeight(), 18);
    // A bigger title font is picked up at once.
    Attributes big;
    big.insert(FontAttributeName, QVariant::fromValue(Font(QStringLiteral("Courier"), 30)));
    view.setTextTitleAttributes(big);
    EXPECT_EQ(view.titleHeight(), std::round(lineHeightOf("Courier", 30)) + 2);
}

TEST(CorkboardMetrics, LineHeightBaselineAndMinimumTextHeight)
{
    auto view = makeView(1000, 600);
    TestDataSource cards = TestDataSource::plain(1);
    view->setDataSource(&cards);
    EXPECT_DOUBLE_EQ(
        view->lineHeight(),
        XQHeightForStringDrawingBySettingPadding(QStringLiteral("LineHeight"), 1e7, view->textAttributes(), 0));
    EXPECT_EQ(view->baselineOffset(), 0);
    EXPECT_DOUBLE_EQ(view->minimumTextHeight(), 176 - 2 - (view->titleHeight() + 1));
    view->setDrawsTextOnLine(true);
    // The baseline of Courier 12 (set in Liberation Mono) lies at its ascent.
    const QFontMetricsF metrics(Font(QStringLiteral("Courier"), 12).toQFont());
    EXPECT_NEAR(view->baselineOffset(), metrics.ascent(), 1.0);
    EXPECT_DOUBLE_EQ(view->minimumTextHeight(), 176 - 2 - (view->titleHeight() + 1) - view->baselineOffset());
    view->setUsesRoundedStyle(true);
    EXPECT_DOUBLE_EQ(view->minimumTextHeight(), 176 - 2 - (view->titleHeight() + 1) - 4 - view->baselineOffset());
}

TEST(CorkboardCardRects, TitleTextPinAndChipFollowTheCard)
{
    auto view = makeView(1000, 600);
    TestDataSource cards = TestDataSource::plain(2);
    cards.card(1).image = true;
    TestDelegate delegate;
    view->setDelegate(&delegate);
    view->setDataSource(&cards);
    const double t = view->titleHeight();
    const R card = view->cardRects()[0]; // 30, 30, 293 × 176
    EXPECT_EQ(view->titleRectForCardAtIndex(0), R(31, 31, 291, t));
    EXPECT_EQ(view->textRectForCardAtIndex(0), R(31, 31 + t + 1, 291, 174 - t - 1));
    EXPECT_EQ(view->labelChipRectForCardAtIndex(0), R(308, 31, 14, t));
    // Picture cards' chips are two points shorter.
    const R image = view->cardRects()[1];
    EXPECT_EQ(view->labelChipRectForCardAtIndex(1).height(), t - 2);
    EXPECT_EQ(view->labelChipRectForCardAtIndex(1).right(), image.right() - 1);
    // The pin (20 × 24) is centred, its head above the card's top edge: y = 30 + 24 / 1.65 − 24.
    EXPECT_EQ(view->pinRectForCardAtIndex(0), R(30 + 293 / 2.0 - 10, 30 + 24 / 1.65 - 24, 20, 24));
    view->setDrawsPinsOnRight(true);
    EXPECT_EQ(view->pinRectForCardAtIndex(0).right(), card.right());

    // Variants of the text rectangle.
    delegate.colorChips = 2;
    EXPECT_EQ(view->textRectForCardAtIndex(0).width(), 291 - 10);
    view->setUsesRoundedStyle(true);
    EXPECT_EQ(view->textRectForCardAtIndex(0), R(35, 31 + t + 1, 291 - 8 - 6, 174 - t - 1 - 4));
    view->setUsesRoundedStyle(false);
    delegate.colorChips = 0;
    view->setDrawsTextOnLine(true);
    EXPECT_EQ(view->textRectForCardAtIndex(0),
              R(31, 31 + t + 1 + view->baselineOffset(), 291, 174 - t - 1 - view->baselineOffset()));

    // Indexes without a card give empty rectangles.
    for (qsizetype bad : {qsizetype(-1), qsizetype(2), qsizetype(99)}) {
        EXPECT_TRUE(view->titleRectForCardAtIndex(bad, card).isNull());
        EXPECT_TRUE(view->textRectForCardAtIndex(bad, card).isNull());
        EXPECT_TRUE(view->pinRectForCardAtIndex(bad).isNull());
        EXPECT_TRUE(view->labelChipRectForCardAtIndex(bad, card).isNull());
    }
}

TEST(CorkboardCardRects, IconOffsetMakesRoomForTheIcon)
{
    struct IconSource : TestDataSource {
        using TestDataSource::TestDataSource;
        QImage icon;
        QImage iconForCardAtIndex(XQCorkboardView*, qsizetype) override { return icon; }
    };
    auto view = makeView(1000, 600);
    IconSource cards({std::vector<TestCard>(1)});
    view->setDataSource(&cards);
    double offset = -1;
    view->titleRectForCardAtIndex(0, view->cardRects()[0], &offset);
    EXPECT_EQ(offset, 0); // no icon
    cards.icon = QImage(12, 8, QImage::Format_ARGB32);
    view->titleRectForCardAtIndex(0, view->cardRects()[0], &offset);
    EXPECT_EQ(offset, 12 + 2.0);
    cards.icon = QImage(40, 2 * int(view->titleHeight()), QImage::Format_ARGB32); // scaled to the title's height
    view->setUsesRoundedStyle(true);
    view->titleRectForCardAtIndex(0, view->cardRects()[0], &offset);
    EXPECT_DOUBLE_EQ(offset, 20 + 4.0);
}

TEST(CorkboardCardRects, LongTitlesShrinkToFitDownToTheMinimum)
{
    XQCorkboardView view;
    // 25 characters of a fixed-pitch face: about 210 points at 14, 180 at 12.
    const QString title = QStringLiteral("The lamp went out at dawn");
    const R original(0, 100, 180, 20);
    Attributes attributes = view.textTitleAttributes();
    R rect;
    // Off by default: nothing changes.
    view.adjustedTitleRectAndAttributes(&rect, &attributes, title, original);
    EXPECT_EQ(rect, original);
    EXPECT_EQ(attributes, view.textTitleAttributes());

    view.setTitlesShrinkToFit(true);
    view.adjustedTitleRectAndAttributes(&rect, &attributes, title, original);
    const Font chosen = attributes.value(FontAttributeName).value<Font>();
    EXPECT_LT(chosen.pointSize(), 14);
    EXPECT_GE(chosen.pointSize(), 10);
    const double height = XQDefaultLineHeightForFont(chosen);
    EXPECT_DOUBLE_EQ(rect.height(), height);
    EXPECT_DOUBLE_EQ(rect.y(), 100 + std::round((20 - height) * 0.5));
    // The chosen size is the largest that fits: one point more would not.
    QFont larger = chosen.withSize(chosen.pointSize() + 1).toQFont();
    larger.setLetterSpacing(QFont::AbsoluteSpacing, -0.16);
    EXPECT_GT(QFontMetricsF(larger).horizontalAdvance(title), 180);

    // A title that fits keeps its font.
    Attributes fits = view.textTitleAttributes();
    view.adjustedTitleRectAndAttributes(&rect, &fits, QStringLiteral("Dawn"), original);
    EXPECT_EQ(fits, view.textTitleAttributes());
    EXPECT_EQ(rect, original);
    // A font already at the minimum is left alone, however long the title.
    view.setMinTitleFontSize(14);
    Attributes minimum = view.textTitleAttributes();
    view.adjustedTitleRectAndAttributes(&rect, &minimum, title, original);
    EXPECT_EQ(minimum, view.textTitleAttributes());
}

TEST(CorkboardCardRects, CardNumbersRestartAtSections)
{
    auto view = makeView(1000, 600);
    TestDataSource cards = TestDataSource::withSections({2, 3});
    view->setDataSource(&cards);
    EXPECT_EQ(view->cardNumberForCardAtIndex(1), 2);
    EXPECT_EQ(view->cardNumberForCardAtIndex(2), 1);
    EXPECT_EQ(view->cardNumberForCardAtIndex(4), 3);
    view->setCardNumbersRestartAtSections(false);
    EXPECT_EQ(view->cardNumberForCardAtIndex(4), 5);
}
