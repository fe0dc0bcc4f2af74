#include <gtest/gtest.h>

#include <qlyappkit/platform/values/Color.h>

using namespace qly;

namespace {
void expectColor(const Color& c, double r, double g, double b, double a = 1.0)
{
    EXPECT_NEAR(c.redComponent(), r, 1e-12);
    EXPECT_NEAR(c.greenComponent(), g, 1e-12);
    EXPECT_NEAR(c.blueComponent(), b, 1e-12);
    EXPECT_NEAR(c.alphaComponent(), a, 1e-12);
}
} // namespace

TEST(ColorBlending, MixesEveryComponentTowardTheOtherColour)
{
    const Color orange(1.0, 0.5, 0.0, 1.0);
    expectColor(orange.blendedColorWithFraction(0.7, Color::blackColor()), 0.3, 0.15, 0.0);
    expectColor(orange.blendedColorWithFraction(0.5, Color::whiteColor()), 1.0, 0.75, 0.5);
    expectColor(orange.blendedColorWithFraction(0.0, Color::blackColor()), 1.0, 0.5, 0.0);
    expectColor(orange.blendedColorWithFraction(1.0, Color::blackColor()), 0.0, 0.0, 0.0);
    // Alpha is mixed too, and the fraction is clamped.
    expectColor(Color(0.2, 0.4, 0.6, 0.0).blendedColorWithFraction(0.25, Color(1, 1, 1, 1)), 0.4, 0.55, 0.7, 0.25);
    expectColor(orange.blendedColorWithFraction(3.0, Color::blackColor()), 0, 0, 0);
    expectColor(orange.blendedColorWithFraction(-1.0, Color::blackColor()), 1.0, 0.5, 0.0);
}

TEST(ColorBlending, HexadecimalColoursParseInLongAndShortForms)
{
    auto c = Color::fromHexString(QStringLiteral("FF8000"));
    ASSERT_TRUE(c);
    expectColor(*c, 1.0, 128 / 255.0, 0.0);
    c = Color::fromHexString(QStringLiteral(" #1e90ff "));
    ASSERT_TRUE(c);
    expectColor(*c, 30 / 255.0, 144 / 255.0, 1.0);
    c = Color::fromHexString(QStringLiteral("#f0A"));
    ASSERT_TRUE(c);
    expectColor(*c, 1.0, 0.0, 170 / 255.0);
    for (const char* bad : {"", "#", "12345", "1234567", "GG0000", "#12 456", "0x1234", "ff80"})
        EXPECT_FALSE(Color::fromHexString(QString::fromLatin1(bad))) << bad;
}

TEST(ColorBlending, StandardAnnotationColourIsOpaqueRed)
{
    const Color red = Color::standardAnnotationColor();
    EXPECT_GT(red.redComponent(), 0.5);
    EXPECT_EQ(red.greenComponent(), 0.0);
    EXPECT_EQ(red.blueComponent(), 0.0);
    EXPECT_EQ(red.alphaComponent(), 1.0);
}
