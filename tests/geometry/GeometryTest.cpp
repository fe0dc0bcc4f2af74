// Rectangle and float arrays, margins, and text measured with the layout engine.
#include <gtest/gtest.h>

#include <QFontMetricsF>

#include <qlyappkit/geometry/XQGeometryArrays.h>
#include <qlyappkit/geometry/XQMargins.h>
#include <qlyappkit/geometry/XQTextMeasuring.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>

namespace qly {
namespace {

const Attributes Serif12{{FontAttributeName, QVariant::fromValue(Font(QStringLiteral("Times"), 12))}};

TEST(GeometryArrays, GrowInOrderAndEmpty)
{
    XQRectArray rects;
    XQInitRectArray(&rects);
    for (int i = 0; i < 5; ++i)
        XQAddRectToArray(&rects, QRectF(i, 2 * i, 10, 20));
    ASSERT_EQ(rects.count(), 5);
    EXPECT_EQ(rects[3], QRectF(3, 6, 10, 20));
    XQInitRectArray(&rects);
    EXPECT_EQ(rects.count(), 0);
    XQAddRectToArray(&rects, QRectF(1, 1, 1, 1));
    XQEmptyRectArray(&rects);
    EXPECT_EQ(rects.count(), 0);
    EXPECT_EQ(rects.rects.capacity(), 0u);

    XQFloatArray floats;
    XQInitFloatArray(&floats);
    XQAddFloatToArray(&floats, 1.5);
    XQAddFloatToArray(&floats, -2);
    ASSERT_EQ(floats.count(), 2);
    EXPECT_EQ(floats[1], -2);
    XQEmptyFloatArray(&floats);
    EXPECT_EQ(floats.count(), 0);
    // Null arrays are ignored rather than crashing.
    XQAddRectToArray(nullptr, QRectF());
    XQAddFloatToArray(nullptr, 1);
}

TEST(GeometryMargins, KeepTheOrderTheyWereMadeIn)
{
    constexpr XQMargins margins = XQMakeMargins(1, 2, 3, 4);
    EXPECT_EQ(margins.left, 1);
    EXPECT_EQ(margins.right, 2);
    EXPECT_EQ(margins.top, 3);
    EXPECT_EQ(margins.bottom, 4);
}

TEST(TextMeasuring, DefaultLineHeightIncludesTheLeading)
{
    for (const char* name : {"Times", "Helvetica-Bold", "Courier"}) {
        SCOPED_TRACE(name);
        const Font font(QString::fromLatin1(name), 14);
        const QFontMetricsF metrics(font.toQFont());
        EXPECT_DOUBLE_EQ(XQDefaultLineHeightForFont(font), metrics.ascent() + metrics.descent() + metrics.leading());
    }
}

TEST(TextMeasuring, HeightGrowsWithWrappedLines)
{
    const double line = XQDefaultLineHeightForFont(Font(QStringLiteral("Times"), 12));
    const QString fifty = QStringLiteral("word ").repeated(49) + QStringLiteral("end");
    EXPECT_DOUBLE_EQ(XQHeightForStringDrawing(QStringLiteral("Short"), 200, Serif12), line);
    EXPECT_DOUBLE_EQ(XQHeightForStringDrawing(QStringLiteral("One\nTwo"), 200, Serif12), 2 * line);
    EXPECT_DOUBLE_EQ(XQHeightForStringDrawing(QString(), 200, Serif12), 0);
    const double wide = XQHeightForStringDrawing(fifty, 300, Serif12);
    const double narrow = XQHeightForStringDrawing(fifty, 150, Serif12);
    EXPECT_GT(wide, 3 * line);
    EXPECT_GT(narrow, wide);
    // Whole lines only.
    EXPECT_NEAR(std::fmod(narrow, line), 0, 1e-6);
    // A bigger font is taller.
    const Attributes big{{FontAttributeName, QVariant::fromValue(Font(QStringLiteral("Times"), 24))}};
    EXPECT_GT(XQHeightForStringDrawing(fifty, 300, big), wide);
    // Attributed text measures in its own fonts.
    AttributedString mixed(QStringLiteral("small "), Serif12);
    mixed.append(QStringLiteral("BIG"), big);
    EXPECT_GT(XQHeightForStringDrawing(mixed, 300), line * 1.5);
}

TEST(TextMeasuring, PaddingTakesRoomFromTheLine)
{
    const QString text = QStringLiteral("A line of known width");
    const double natural = QFontMetricsF(Font(QStringLiteral("Times"), 12).toQFont()).horizontalAdvance(text);
    const double line = XQDefaultLineHeightForFont(Font(QStringLiteral("Times"), 12));
    const double width = std::ceil(natural) + 4;
    EXPECT_DOUBLE_EQ(XQHeightForStringDrawingBySettingPadding(text, width, Serif12, 0), line);
    EXPECT_DOUBLE_EQ(XQHeightForStringDrawingBySettingPadding(text, width, Serif12, 5), 2 * line);
    // The default padding is the text container's, 5 points.
    EXPECT_DOUBLE_EQ(XQHeightForStringDrawing(text, width, Serif12), 2 * line);
}

} // namespace
} // namespace qly
