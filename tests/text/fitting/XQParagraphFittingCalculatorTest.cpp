// The paragraph measurer: fragments of one paragraph laid out between two sentinel paragraphs.
#include <gtest/gtest.h>

#include <qlyappkit/text/fitting/XQParagraphFittingCalculator.h>

#include "FittingTestSupport.h"

namespace qly {
namespace {

using namespace fittingtest;

TEST(XQParagraphFittingCalculator, OneLineEmptyAndLongParagraphs)
{
    XQParagraphFittingCalculator& calculator = XQParagraphFittingCalculator::sharedInstance();
    EXPECT_EQ(&calculator, &XQParagraphFittingCalculator::sharedInstance());
    calculator.setContainerWidth(300);

    calculator.setParagraphText(AttributedString(QStringLiteral("One short line"), body()));
    ASSERT_EQ(calculator.lineFragmentRects().size(), 1u);
    EXPECT_DOUBLE_EQ(calculator.lineFragmentRects()[0].y(), 0);
    EXPECT_DOUBLE_EQ(calculator.paragraphHeight(), line());
    EXPECT_DOUBLE_EQ(calculator.firstLineHeight(), line());

    // An empty paragraph is the fragment of its empty line (in the default font).
    calculator.setParagraphText(AttributedString());
    ASSERT_EQ(calculator.lineFragmentRects().size(), 1u);
    EXPECT_DOUBLE_EQ(calculator.paragraphHeight(), calculator.lineFragmentRects()[0].height());
    EXPECT_DOUBLE_EQ(calculator.paragraphHeight(), LayoutManager::defaultLineHeightForFont(Font::userFont()));

    calculator.setParagraphText(AttributedString(longParagraph(80), body()));
    const size_t lines = calculator.lineFragmentRects().size();
    ASSERT_GT(lines, 3u);
    EXPECT_NEAR(calculator.paragraphHeight(), double(lines) * line(), 1e-9);
    for (size_t i = 0; i < lines; ++i)
        EXPECT_NEAR(calculator.lineFragmentRects()[i].y(), double(i) * line(), 1e-9);
    EXPECT_EQ(calculator.numberOfLinesOfParagraphThatFitInHeight(0), 0);
    EXPECT_EQ(calculator.numberOfLinesOfParagraphThatFitInHeight(line() - 0.01), 0);
    EXPECT_EQ(calculator.numberOfLinesOfParagraphThatFitInHeight(2.5 * line()), 2);
    EXPECT_EQ(calculator.numberOfLinesOfParagraphThatFitInHeight(1e9), int(lines));

    // A narrower container re-runs the layout at once: more lines.
    calculator.setContainerWidth(150);
    EXPECT_GT(calculator.lineFragmentRects().size(), lines);
    EXPECT_DOUBLE_EQ(calculator.containerWidth(), 150);
}

TEST(XQParagraphFittingCalculator, SpacingCountsAsInADocument)
{
    XQParagraphFittingCalculator& calculator = XQParagraphFittingCalculator::sharedInstance();
    calculator.setContainerWidth(300);
    ParagraphStyle style;
    style.setParagraphSpacingBefore(10);
    style.setParagraphSpacing(6);
    style.setLineSpacing(2);
    calculator.setParagraphText(AttributedString(longParagraph(40), withStyle(body(), style)));
    const auto& rects = calculator.lineFragmentRects();
    ASSERT_GE(rects.size(), 2u);
    // Measured from the end of the sentinel line before: spacing before sits inside the first fragment.
    EXPECT_DOUBLE_EQ(rects[0].y(), 0);
    EXPECT_DOUBLE_EQ(rects[0].height(), 10 + line() + 2);
    EXPECT_DOUBLE_EQ(rects.back().height(), line() + 2 + 6);
    EXPECT_NEAR(calculator.paragraphHeight(), double(rects.size()) * (line() + 2) + 16, 1e-9);
    EXPECT_DOUBLE_EQ(calculator.firstLineHeight(), 10 + line() + 2);
    EXPECT_EQ(calculator.numberOfLinesOfParagraphThatFitInHeight(10 + line() + 2), 1);
}

TEST(XQParagraphFittingCalculator, NothingMeasuredWithoutParagraphText)
{
    XQParagraphFittingCalculator calculator;
    calculator.setContainerWidth(200);
    EXPECT_FALSE(calculator.paragraphText().has_value());
    EXPECT_TRUE(calculator.lineFragmentRects().empty());
    EXPECT_EQ(calculator.paragraphHeight(), 0);
    EXPECT_EQ(calculator.firstLineHeight(), 0);
    EXPECT_EQ(calculator.numberOfLinesOfParagraphThatFitInHeight(100), 0);
}

} // namespace
} // namespace qly
