// The page layout view's model and geometry: defaults, margins with and without print info, page and
// text view frames as inverses, spreads, the view's size, page rectangles, and pages that follow the
// text as it grows and shrinks.
#include <gtest/gtest.h>

#include <cmath>

#include "PageLayoutTestSupport.h"

namespace qly {
namespace {

using pagetest::Counter;
using pagetest::Pages;

PrintInfo printInfo(QSizeF paper, double left, double right, double top, double bottom)
{
    PrintInfo info;
    info.setPaperSize(paper);
    info.setLeftMargin(left);
    info.setRightMargin(right);
    info.setTopMargin(top);
    info.setBottomMargin(bottom);
    return info;
}

TEST(XQPageLayoutView, DefaultsAndMarginsWithoutPrintInfo)
{
    TextStorage storage;
    LayoutManager manager;
    manager.setTextStorage(&storage);
    XQPageLayoutView view(QRectF(0, 0, 100, 100), &manager);
    EXPECT_EQ(view.pageCount(), 1);
    EXPECT_EQ(view.textViews().size(), 1u);
    EXPECT_EQ(manager.textContainers().size(), 1u);
    EXPECT_EQ(view.firstTextView()->textContainer(), manager.textContainers().front());
    EXPECT_EQ(view.pageSize(), QSizeF(612, 792));
    EXPECT_EQ(view.pageInset(), QSizeF(20, 20));
    EXPECT_DOUBLE_EQ(view.pageSeparationPadding(), 1.0);
    EXPECT_FALSE(view.printInfo().has_value());
    EXPECT_FALSE(view.usesFacingPages() || view.usesRightToLeftLayout() || view.showsMarginGuides()
                 || view.drawsPageBorders() || view.hasDifferentHeaderAndFooterForFirstPages()
                 || view.usesAlternatingPagesForPrinting());
    EXPECT_TRUE(view.countsFirstPages());
    EXPECT_EQ(view.firstPageForRegularHeaderAndFooter(), 2);
    EXPECT_EQ(view.pageBackgroundColor(), QColor(Qt::white));
    EXPECT_EQ(view.textStorage(), &storage);
    EXPECT_DOUBLE_EQ(XQPageLayoutView::defaultTextPadding(), TextContainer::DefaultLineFragmentPadding);
    // Margins: the inset, less the text padding left and right.
    EXPECT_DOUBLE_EQ(view.leftMargin(), 15);
    EXPECT_DOUBLE_EQ(view.rightMargin(), 15);
    EXPECT_DOUBLE_EQ(view.topMargin(), 20);
    EXPECT_DOUBLE_EQ(view.bottomMargin(), 20);
    EXPECT_EQ(view.pageInsetAccountingForPadding(), QSizeF(15, 20));
    view.setPageInset(QSizeF(30.4, 40.6));
    EXPECT_EQ(view.pageInset(), QSizeF(30, 41));
    EXPECT_DOUBLE_EQ(view.leftMargin(), 25);
    EXPECT_DOUBLE_EQ(view.bottomMargin(), 41);
    // The first page's text view: one point further into the top and bottom margins.
    EXPECT_EQ(view.firstTextView()->frame(), QRectF(25, 40, 612 - 50, 792 - 80));
    EXPECT_EQ(view.firstTextView()->textContainer()->size(), QSizeF(612 - 50, 792 - 80));
}

TEST(XQPageLayoutView, PrintInfoGivesThePageSizeAndMargins)
{
    Pages pages;
    XQPageLayoutView& view = *pages.view;
    view.setPrintInfo(printInfo(QSizeF(595.3, 841.9), 72.4, 54, 36.6, 90));
    EXPECT_EQ(view.pageSize(), QSizeF(595, 841.9)); // the width rounded, the height as it stands
    EXPECT_DOUBLE_EQ(view.leftMargin(), 67); // 72.4 − 5, rounded
    EXPECT_DOUBLE_EQ(view.rightMargin(), 49);
    EXPECT_DOUBLE_EQ(view.topMargin(), 37);
    EXPECT_DOUBLE_EQ(view.bottomMargin(), 90);
    // The page size cannot be set while print info is: the view only re-lays out.
    const QRectF frame = view.firstTextView()->frame();
    view.firstTextView()->setFrame(QRectF(1, 2, 3, 4));
    view.setPageSize(QSizeF(300, 300));
    EXPECT_EQ(view.pageSize(), QSizeF(595, 841.9));
    EXPECT_EQ(view.firstTextView()->frame(), frame);
    // Without print info again: the default page; then the size can be set, rounded.
    view.setPrintInfo(std::nullopt);
    EXPECT_EQ(view.pageSize(), QSizeF(612, 792));
    view.setPageSize(QSizeF(400.6, 500.2));
    EXPECT_EQ(view.pageSize(), QSizeF(401, 500));
}

TEST(XQPageLayoutView, PageFramesAndTextViewFramesAreInverses)
{
    for (bool alternating : {false, true}) {
        for (bool withPrintInfo : {false, true}) {
            SCOPED_TRACE(testing::Message() << "alternating " << alternating << " print info " << withPrintInfo);
            Pages pages(pagetest::paragraphs(40));
            XQPageLayoutView& view = *pages.view;
            if (withPrintInfo)
                view.setPrintInfo(printInfo(QSizeF(300, 200), 40, 20, 30, 25));
            view.setUsesAlternatingPagesForPrinting(alternating);
            pages.manager.ensureLayoutForAllText();
            ASSERT_GE(view.pageCount(), 4);
            for (int page = 1; page <= view.pageCount(); ++page) {
                const TextView* textView = view.textViews()[size_t(page - 1)];
                const QRectF pageFrame = view.pageFrameForTextView(textView);
                EXPECT_EQ(view.textViewFrameForPageFrame(pageFrame, page), textView->frame()) << page;
                EXPECT_EQ(pageFrame.size(), view.pageSize()) << page;
                EXPECT_EQ(view.pageFrameForPage(page), pageFrame);
                // Margins are mirrored on even pages when alternating.
                const bool mirrored = alternating && page % 2 == 0;
                EXPECT_DOUBLE_EQ(textView->frame().left() - pageFrame.left(),
                                 mirrored ? view.rightMargin() : view.leftMargin());
                EXPECT_DOUBLE_EQ(textView->frame().top() - pageFrame.top(), view.topMargin() - 1);
            }
        }
    }
}

TEST(XQPageLayoutView, PagesStackOrPairInSpreads)
{
    struct Case {
        bool facing, rightToLeft;
        std::vector<QPointF> origins; ///< of pages 1, 2, 3
        double width;
    };
    const double w = 300, h = 200, pad = 1;
    const double row = h + pad;
    const Case cases[] = {
        {false, false, {{0, 0}, {0, row}, {0, 2 * row}}, w},
        {false, true, {{0, 0}, {0, row}, {0, 2 * row}}, w},
        {true, false, {{0, 0}, {w + 1, 0}, {0, row}}, w + std::round(w + 1)},
        {true, true, {{w + 1, 0}, {0, 0}, {w + 1, row}}, w + std::round(w + 1)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "facing " << c.facing << " rtl " << c.rightToLeft);
        Pages pages;
        XQPageLayoutView& view = *pages.view;
        view.setUsesFacingPages(c.facing);
        view.setUsesRightToLeftLayout(c.rightToLeft);
        view.setPageCount(3);
        for (int page = 1; page <= 3; ++page)
            EXPECT_EQ(view.pageFrameForPage(page).topLeft(), c.origins[size_t(page - 1)]) << page;
        // Two rows with facing pages, three without.
        const double rows = c.facing ? 2 : 3;
        EXPECT_DOUBLE_EQ(view.viewSize().width(), c.width);
        EXPECT_DOUBLE_EQ(view.viewSize().height(), h + (rows - 1) * std::ceil(h + pad));
        EXPECT_EQ(view.size(), QSize(int(c.width), int(h + (rows - 1) * std::ceil(h + pad))));
    }
}

TEST(XQPageLayoutView, PageRectanglesCoverPagesOrSpreads)
{
    const double w = 300, h = 200;
    const double spread = std::round(w + 1);
    Pages pages;
    XQPageLayoutView& view = *pages.view;
    view.setPageCount(3);
    // Touching pages: one rectangle from the first page to the last.
    ASSERT_EQ(view.pageRects().count(), 1);
    EXPECT_EQ(view.pageRects()[0], QRectF(0, 0, w, 3 * h + 2));
    view.setUsesFacingPages(true);
    ASSERT_EQ(view.pageRects().count(), 1);
    EXPECT_EQ(view.pageRects()[0], QRectF(0, 0, w + spread, 2 * h + 1));
    // Apart: one per page, or one per spread, widened (and moved left when right to left).
    view.setPageSeparationPadding(10.4);
    EXPECT_DOUBLE_EQ(view.pageSeparationPadding(), 10);
    ASSERT_EQ(view.pageRects().count(), 2);
    EXPECT_EQ(view.pageRects()[0], QRectF(0, 0, w + spread, h));
    EXPECT_EQ(view.pageRects()[1], QRectF(0, h + 10, w + spread, h));
    view.setUsesRightToLeftLayout(true);
    EXPECT_EQ(view.pageRects()[1], QRectF(w + 1 - spread, h + 10, w + spread, h));
    view.setUsesFacingPages(false);
    ASSERT_EQ(view.pageRects().count(), 3);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(view.pageRects()[i], view.pageFrameForPage(i + 1));
}

TEST(XQPageLayoutView, SettingThePageCountAddsAndRemovesPagesWithNotifications)
{
    Pages pages;
    XQPageLayoutView& view = *pages.view;
    Counter added(XQPageLayoutViewDidAddPageNotification, &view);
    Counter removed(XQPageLayoutViewDidRemovePageNotification, &view);
    view.setPageCount(0);
    view.setPageCount(1);
    EXPECT_EQ(added.count + removed.count, 0);
    view.setPageCount(3);
    EXPECT_EQ(added.count, 2);
    EXPECT_EQ(view.pageCount(), 3);
    EXPECT_EQ(pages.manager.textContainers().size(), 3u);
    auto* newest = qvariant_cast<QObject*>(added.last.userInfo.value(XQPageLayoutViewNewTextViewKey));
    EXPECT_EQ(newest, static_cast<QObject*>(view.textViews().back()));
    for (size_t i = 0; i < 3; ++i)
        EXPECT_EQ(view.textViews()[i]->textContainer(), pages.manager.textContainers()[i]);
    view.trimAllPages();
    EXPECT_EQ(view.pageCount(), 1);
    EXPECT_EQ(removed.count, 2);
    EXPECT_EQ(pages.manager.textContainers().size(), 1u);
}

TEST(XQPageLayoutView, ThePageCountFollowsTheTextAsItGrowsAndShrinks)
{
    Pages pages;
    XQPageLayoutView& view = *pages.view;
    Counter added(XQPageLayoutViewDidAddPageNotification, &view);
    Counter removed(XQPageLayoutViewDidRemovePageNotification, &view);
    const int perPage = pages.linesPerPage();
    ASSERT_GE(perPage, 5);
    // Lines that fill exactly k pages (no final break) need k pages; one more line needs k + 1.
    const auto textOfLines = [](int n) {
        QString text = pagetest::paragraphs(n);
        text.chop(1);
        return text;
    };
    for (int lines : {perPage, 3 * perPage, 3 * perPage + 1, 2 * perPage - 1, 1, 7 * perPage + 3}) {
        SCOPED_TRACE(lines);
        pages.storage.setAttributedString(AttributedString(textOfLines(lines), pagetest::sans12()));
        pages.manager.ensureLayoutForAllText();
        const int expected = (lines + perPage - 1) / perPage;
        EXPECT_EQ(view.pageCount(), expected);
        EXPECT_EQ(pages.manager.textContainers().size(), size_t(expected));
        // Every page but the last is full; the pages hold the whole text in order.
        qsizetype next = 0;
        for (int page = 1; page <= view.pageCount(); ++page) {
            const Range range = view.characterRangeForPage(page);
            EXPECT_EQ(range.location, next) << page;
            next = range.end();
        }
        EXPECT_EQ(next, pages.storage.length());
    }
    EXPECT_EQ(added.count - removed.count, view.pageCount() - 1);
    EXPECT_GT(removed.count, 0);
    // An empty text keeps one page.
    pages.storage.setAttributedString(AttributedString());
    pages.manager.ensureLayoutForAllText();
    EXPECT_EQ(view.pageCount(), 1);
    // A final line break on a full page takes another page, for the caret.
    pages.storage.setAttributedString(AttributedString(pagetest::paragraphs(perPage), pagetest::sans12()));
    pages.manager.ensureLayoutForAllText();
    EXPECT_EQ(view.pageCount(), 2);
    EXPECT_EQ(pages.manager.extraLineFragmentTextContainer(), pages.manager.textContainers()[1]);
    // A form feed starts a new page.
    pages.storage.setAttributedString(AttributedString(QStringLiteral("one\ftwo\fthree"), pagetest::sans12()));
    pages.manager.ensureLayoutForAllText();
    EXPECT_EQ(view.pageCount(), 3);
    EXPECT_EQ(view.characterRangeForPage(2), (Range{4, 4}));
}

TEST(XQPageLayoutView, PageNumbersOfCharacters)
{
    Pages pages(pagetest::paragraphs(30));
    XQPageLayoutView& view = *pages.view;
    ASSERT_GE(view.pageCount(), 3);
    const Range third = view.characterRangeForPage(3);
    ASSERT_GT(third.length, 0);
    EXPECT_EQ(view.actualPageNumberForCharacterAtIndex(0), 1);
    EXPECT_EQ(view.actualPageNumberForCharacterAtIndex(third.location), 3);
    EXPECT_EQ(view.actualPageNumberForCharacterAtIndex(third.location - 1), 2);
    EXPECT_EQ(view.printedPageNumberForCharacterAtIndex(third.location), 3);
    view.setCountsFirstPages(false);
    EXPECT_EQ(view.printedPageNumberForCharacterAtIndex(third.location), 2);
    view.setFirstPageForRegularHeaderAndFooter(3);
    EXPECT_EQ(view.printedPageNumberForCharacterAtIndex(third.location), 1);
    EXPECT_EQ(view.printedPageNumberForCharacterAtIndex(0), -1);
    // At or past the end: the page count.
    EXPECT_EQ(view.printedPageNumberForCharacterAtIndex(pages.storage.length()), view.pageCount());
    EXPECT_EQ(view.actualPageNumberForCharacterAtIndex(pages.storage.length() + 5), view.pageCount());
    EXPECT_EQ(view.characterRangeForPage(0).location, NotFound);
    EXPECT_EQ(view.characterRangeForPage(view.pageCount() + 1).location, NotFound);
}

TEST(XQPageLayoutView, ReplacingTheViewAndContainerClassesKeepsThePages)
{
    struct WideTextView : TextView {
        using TextView::TextView;
    };
    struct PaddedContainer : TextContainer {
        explicit PaddedContainer(QSizeF size) : TextContainer(size) { setLineFragmentPadding(9); }
    };
    Pages pages(pagetest::paragraphs(30));
    XQPageLayoutView& view = *pages.view;
    const int count = view.pageCount();
    int made = 0;
    view.setTextViewClass([&made](const QRectF& frame, TextContainer* container) {
        ++made;
        return std::make_unique<WideTextView>(frame, container);
    });
    view.setTextContainerClass([](QSizeF size) { return std::make_unique<PaddedContainer>(size); });
    pages.manager.ensureLayoutForAllText();
    EXPECT_EQ(view.pageCount(), count);
    EXPECT_GE(made, count);
    for (TextView* textView : view.textViews()) {
        EXPECT_NE(dynamic_cast<WideTextView*>(textView), nullptr);
        EXPECT_DOUBLE_EQ(textView->textContainer()->lineFragmentPadding(), 9);
    }
}

} // namespace
} // namespace qly
