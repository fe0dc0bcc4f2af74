// Print settings: the page layout Qt prints with, paper names, and the stored names of orientations and
// paginations.
#include <QRectF>

#include <qlyappkit/platform/values/PrintInfo.h>

using namespace qly;

TEST(PrintInfo, PageLayoutFollowsPaperOrientationAndMargins)
{
    PrintInfo info;
    info.setLeftMargin(10);
    info.setRightMargin(20);
    info.setTopMargin(30);
    info.setBottomMargin(40);
    QPageLayout layout = info.pageLayout();
    EXPECT_EQ(layout.pageSize().size(QPageSize::Point), QSizeF(612, 792));
    EXPECT_EQ(layout.orientation(), QPageLayout::Portrait);
    EXPECT_EQ(layout.margins(QPageLayout::Point), QMarginsF(10, 30, 20, 40));

    // A landscape sheet stored wider than tall is the same paper turned.
    info.setPaperName(QStringLiteral("A4"));
    info.setPaperSize(QSizeF(842, 595));
    info.setOrientation(PrintOrientation::Landscape);
    layout = info.pageLayout();
    EXPECT_EQ(layout.pageSize().id(), QPageSize::A4);
    EXPECT_EQ(layout.orientation(), QPageLayout::Landscape);
    EXPECT_EQ(layout.fullRect(QPageLayout::Point).size(), QSizeF(842, 595));
}

TEST(PrintInfo, PaperAndValueNames)
{
    EXPECT_EQ(paperSizeNamed(QStringLiteral("Letter")), QSizeF(612, 792));
    EXPECT_EQ(paperSizeNamed(QStringLiteral("a4")), QSizeF(595, 842));
    EXPECT_EQ(paperSizeNamed(QStringLiteral(" Legal ")), QSizeF(612, 1008));
    EXPECT_FALSE(paperSizeNamed(QStringLiteral("Napkin")));
    EXPECT_FALSE(paperSizeNamed(QString()));

    for (const PrintOrientation o : {PrintOrientation::Portrait, PrintOrientation::Landscape})
        EXPECT_EQ(printOrientationNamed(printOrientationName(o)), o);
    for (const PrintPagination p : {PrintPagination::Auto, PrintPagination::Clip, PrintPagination::Fit})
        EXPECT_EQ(printPaginationNamed(printPaginationName(p)), p);
    EXPECT_EQ(printPaginationName(PrintPagination::Fit), QStringLiteral("Fit"));
    EXPECT_FALSE(printOrientationNamed(QStringLiteral("landscape")));
    EXPECT_FALSE(printPaginationNamed(QStringLiteral("Sideways")));
}
