#include <qlyappkit/platform/values/ParagraphStyle.h>

using namespace qly;

TEST(ParagraphStyle, Defaults)
{
    const ParagraphStyle style;
    EXPECT_EQ(style.alignment(), NaturalTextAlignment);
    EXPECT_EQ(int(style.alignment()), 4);
    for (double v : {style.firstLineHeadIndent(), style.headIndent(), style.tailIndent(), style.lineSpacing(),
                     style.paragraphSpacing(), style.paragraphSpacingBefore(), style.minimumLineHeight(),
                     style.maximumLineHeight(), style.lineHeightMultiple()})
        EXPECT_EQ(v, 0);
    ASSERT_EQ(style.tabStops().size(), 12);
    for (int i = 0; i < 12; ++i) {
        EXPECT_EQ(style.tabStops()[i].alignment, LeftTextAlignment);
        EXPECT_EQ(style.tabStops()[i].location, 28.0 * (i + 1));
    }
    EXPECT_TRUE(style.textLists().isEmpty());
    EXPECT_TRUE(style.textBlocks().isEmpty());
    EXPECT_EQ(style.headerLevel(), 0);

    EXPECT_EQ(ParagraphStyle::defaultParagraphStyle(), style);
    ParagraphStyle changed = style;
    changed.setTabStops({TextTab{RightTextAlignment, 28}});
    EXPECT_NE(changed, style);
    EXPECT_EQ(ParagraphStyle::defaultParagraphStyle().tabStops().size(), 12);
}
