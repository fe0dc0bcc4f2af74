// Whether a text fits on one page, and how many pages it takes.
#include <gtest/gtest.h>

#include <qlyappkit/platform/layout/TextContainer.h>
#include <qlyappkit/text/fitting/XQPageFittingHelper.h>

#include "FittingTestSupport.h"

namespace qly {
namespace {

using namespace fittingtest;

TEST(XQPageFittingHelper, FitsOrNot)
{
    // Pages one, two or three lines high inside zero margins.
    auto page = [](double lines) { return QSizeF(300, lines * line() + 0.5); };
    struct Case {
        const char* name;
        QString text;
        double lines;
        bool fits;
    };
    const std::vector<Case> cases = {
        {"empty", QString(), 1, true},
        {"only a form feed", QStringLiteral("\f"), 1, true},
        {"one line on a one-line page", QStringLiteral("Short"), 1, true},
        {"two lines on a one-line page", QStringLiteral("One\nTwo"), 1, false},
        {"two lines on a two-line page", QStringLiteral("One\nTwo"), 2, true},
        {"leading form feed dropped", QStringLiteral("\fShort"), 1, true},
        {"newline and form feed dropped", QStringLiteral("\n\fShort"), 1, true},
        {"newline alone kept", QStringLiteral("\nShort"), 1, false},
        {"trailing form feed dropped", QStringLiteral("One\nTwo\f"), 2, true},
        {"form feed inside: never fits", QStringLiteral("One\fTwo"), 3, false},
        {"long text", longParagraph(400), 3, false},
        {"long text on a long page", longParagraph(400), 100, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const AttributedString text(c.text, body());
        XQPageFittingHelper helper(page(c.lines), XQMakeMargins(0, 0, 0, 0));
        helper.layoutWithText(text);
        EXPECT_EQ(helper.textFitsOnOnePage(), c.fits);
        EXPECT_EQ(fitsOnOnePageWithPageSize(text, page(c.lines), 0, 0, 0, 0), c.fits);
    }
    XQPageFittingHelper helper;
    helper.layoutWithText(nullptr);
    EXPECT_TRUE(helper.textFitsOnOnePage());
}

TEST(XQPageFittingHelper, MarginsTakeTheirPairFromTheRightSide)
{
    XQPageFittingHelper helper(QSizeF(612, 792), XQMakeMargins(72, 90, 36, 54));
    // Width less both horizontal margins and one line-fragment padding; height less both vertical ones.
    EXPECT_EQ(helper.textView().frame(), QRectF(0, 0, 612 - (72 + 90 + 5), 792 - (36 + 54)));
    EXPECT_EQ(helper.textView().textContainer()->size(), QSizeF(612 - 167, 792 - 90));

    // Two lines fit between vertical margins that leave room for two, not for three.
    const AttributedString two(QStringLiteral("One\nTwo"), body());
    const double height = 2 * line() + 0.5;
    EXPECT_TRUE(fitsOnOnePageWithPageSize(two, QSizeF(300, height + 100), XQMakeMargins(10, 10, 60, 40)));
    EXPECT_FALSE(fitsOnOnePageWithPageSize(two, QSizeF(300, height + 100), XQMakeMargins(10, 10, 60, 41)));
    EXPECT_FALSE(fitsOnOnePageWithPageSize(two, QSizeF(300, height + 100), XQMakeMargins(10, 10, 61, 40)));
}

TEST(XQPageFittingHelper, CountsThePagesATextTakes)
{
    XQPageFittingHelper helper(QSizeF(300, 10 * line() + 0.5), XQMakeMargins(0, 0, 0, 0));
    EXPECT_EQ(helper.numberOfPagesForText(AttributedString()), 1);
    EXPECT_EQ(helper.numberOfPagesForText(AttributedString(QStringLiteral("a\fb\fc"), body())), 3);
    QString lines;
    for (int i = 0; i < 25; ++i)
        lines += QStringLiteral("line %1\n").arg(i);
    EXPECT_EQ(helper.numberOfPagesForText(AttributedString(lines, body())), 3);
    EXPECT_EQ(
        helper.numberOfPagesForText(AttributedString(lines.left(lines.indexOf(QStringLiteral("line 10"))), body())), 1);
}

} // namespace
} // namespace qly
