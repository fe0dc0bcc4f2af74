#include <qlyappkit/platform/values/Color.h>

#include <cmath>
#include <limits>

using qly::Color;

TEST(Color, ComponentsAndQColorConversion)
{
    // Components keep their exact decimal values (no 8- or 16-bit channels in between).
    const Color c(0.1, 0.2, 0.3, 0.7);
    EXPECT_EQ(c.redComponent(), 0.1);
    EXPECT_EQ(c.greenComponent(), 0.2);
    EXPECT_EQ(c.blueComponent(), 0.3);
    EXPECT_EQ(c.alphaComponent(), 0.7);
    EXPECT_EQ(c.withAlpha(0.25), Color(0.1, 0.2, 0.3, 0.25));
    EXPECT_EQ(Color::white(0.5), Color(0.5, 0.5, 0.5, 1));
    EXPECT_EQ(Color(), Color::blackColor());
    EXPECT_NE(Color(0.1, 0.2, 0.3), Color(0.1, 0.2, 0.30000001));

    const QColor q = Color(1, 0.5, 0, 0.25).toQColor();
    EXPECT_EQ(q.red(), 255);
    EXPECT_EQ(q.green(), 128);
    EXPECT_EQ(q.blue(), 0);
    EXPECT_EQ(q.alpha(), 64);

    const Color back = Color::fromQColor(QColor(255, 0, 51, 255));
    EXPECT_EQ(back, Color(1, 0, 0.2, 1));
    // Colours in other models are converted first.
    const Color fromHsv = Color::fromQColor(QColor::fromHsvF(0, 1, 1));
    EXPECT_DOUBLE_EQ(fromHsv.redComponent(), 1);
    EXPECT_DOUBLE_EQ(fromHsv.greenComponent(), 0);
    EXPECT_DOUBLE_EQ(fromHsv.blueComponent(), 0);
}

TEST(Color, CalibratedComponentsAreClampedToZeroToOne)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(Color::calibratedRGB(0.25, 0.5, 0.75, 0.5), Color(0.25, 0.5, 0.75, 0.5));
    EXPECT_EQ(Color::calibratedRGB(1e39, -2, nan), Color(1, 0, 0, 1));
    EXPECT_EQ(Color::calibratedRGB(infinity, -infinity, 1, 7), Color(1, 0, 1, 1));
    // -0 becomes +0, which "%f" does not print with a sign.
    EXPECT_FALSE(std::signbit(Color::calibratedRGB(-0.0, 0, 0, -0.0).redComponent()));
    EXPECT_FALSE(std::signbit(Color::calibratedRGB(-0.0, 0, 0, -0.0).alphaComponent()));
}
