// The page layout view as a writer uses it: shown in a scroll area, typed into with key events and
// clicked with the mouse; pages come and go with the text, the visible pages are tracked, and a
// picture of the view shows the paper, the text and the header where the geometry puts them.
#include <gtest/gtest.h>

#include <QScrollBar>

#include "PageLayoutTestSupport.h"

namespace qly {
namespace {

using pagetest::Counter;
using pagetest::Pages;

// The view in a scroll area, shown off screen.
struct ShownPages : Pages {
    QScrollArea area;
    explicit ShownPages(const QString& text = QString()) : Pages(text)
    {
        area.resize(360, 260);
        area.setWidget(view.get());
        area.show();
        area.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&area));
    }
    ~ShownPages() { area.takeWidget(); }
    /// The centre of the caret place of a character, in the coordinates of the text view holding it.
    std::pair<TextView*, QPoint> pointAt(qsizetype index)
    {
        TextContainer* container = nullptr;
        const QRectF caret = manager.insertionPointRectForCharacterIndex(index, &container);
        EXPECT_NE(container, nullptr);
        return {container ? container->textView() : nullptr, caret.center().toPoint()};
    }
};

TEST(XQPageLayoutViewTyping, PagesAreAddedAsTheWriterTypesAndRemovedAsTheyDelete)
{
    ShownPages pages;
    XQPageLayoutView& view = *pages.view;
    Counter added(XQPageLayoutViewDidAddPageNotification, &view);
    Counter removed(XQPageLayoutViewDidRemovePageNotification, &view);
    TextView* first = view.firstTextView();
    first->setFocus();
    const int perPage = pages.linesPerPage();
    // Line after line at the end, each keystroke an edit of the storage.
    for (int line = 1; line <= 3 * perPage; ++line) {
        QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("Line %1").arg(line));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        // The page count is up to date after every keystroke: the extra line is on the last page.
        ASSERT_EQ(view.pageCount(), line / perPage + 1) << line;
    }
    EXPECT_EQ(added.count, 3);
    EXPECT_EQ(pages.storage.wordCount(), 2 * 3 * perPage);
    // The caret is on the last page, in its text view, which has the focus.
    TextView* last = view.textViews().back();
    EXPECT_TRUE(last->hasFocus());
    EXPECT_FALSE(last->insertionPointRect().isNull());
    EXPECT_EQ(last->selectedRange(), (Range{pages.storage.length(), 0}));
    // The scroll area followed the caret down to the last page.
    EXPECT_TRUE(view.visiblePageRange().end() - 1 == view.pageCount()) << view.visiblePageRange().location;

    // Deleting backwards takes the pages away again, one at a time.
    const qsizetype perLine = pages.storage.length() / (3 * perPage);
    int keys = 0;
    while (pages.storage.length() > 0 && keys < 2000) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backspace);
        ++keys;
        ASSERT_LE(view.pageCount(), pages.storage.length() / (perLine * perPage) + 2);
    }
    EXPECT_EQ(pages.storage.length(), 0);
    EXPECT_EQ(view.pageCount(), 1);
    EXPECT_EQ(removed.count, 3);
    EXPECT_EQ(pages.storage.wordCount(), 0);
}

TEST(XQPageLayoutViewTyping, TypingInTheMiddleReflowsTheFollowingPages)
{
    ShownPages pages(pagetest::paragraphs(30));
    XQPageLayoutView& view = *pages.view;
    const int before = view.pageCount();
    const Range second = view.characterRangeForPage(2);
    // Click into the first line of page 2, then type line breaks: text moves on, a page is added.
    auto [textView, point] = pages.pointAt(second.location + 3);
    ASSERT_EQ(textView, view.textViews()[1]);
    QTest::mouseClick(textView, Qt::LeftButton, {}, point);
    EXPECT_EQ(textView->selectedRange(), (Range{second.location + 3, 0}));
    EXPECT_TRUE(textView->hasFocus());
    for (int i = 0; i < pages.linesPerPage(); ++i)
        QTest::keyClick(textView, Qt::Key_Return);
    EXPECT_EQ(view.pageCount(), before + 1);
    EXPECT_EQ(view.characterRangeForPage(2).location, second.location);
    EXPECT_EQ(pages.storage.substring(Range{second.location, 3}), pages.storage.string().mid(second.location, 3));
    // The caret went with the text it was typed in front of, onto page 3.
    EXPECT_EQ(view.actualPageNumberForCharacterAtIndex(textView->insertionPointIndex()), 3);
    EXPECT_TRUE(view.textViews()[2]->hasFocus());
}

TEST(XQPageLayoutViewTyping, VisiblePagesAreTrackedWhileScrolling)
{
    ShownPages pages(pagetest::paragraphs(80));
    XQPageLayoutView& view = *pages.view;
    ASSERT_GE(view.pageCount(), 6);
    Counter changed(XQPageLayoutViewVisiblePagesDidChangeNotification, &view);
    view.scrollToPage(1);
    EXPECT_EQ(view.visiblePageRange().location, 1);
    const int seen = changed.count;
    view.scrollToPage(4);
    const Range visible = view.visiblePageRange();
    EXPECT_EQ(visible.location, 4);
    EXPECT_EQ(view.visibleTextViewsRange(), (Range{3, visible.length}));
    EXPECT_EQ(view.currentPageString(), QStringLiteral("Page 4 of %1").arg(view.pageCount()));
    EXPECT_GT(changed.count, seen);
    view.scrollToNextPage();
    EXPECT_EQ(view.visiblePageRange().location, 5);
    view.scrollToPreviousPage();
    view.scrollToPreviousPage();
    EXPECT_EQ(view.visiblePageRange().location, 3);
    // Scrolling by the scroll bar is seen too.
    const int count = changed.count;
    pages.area.verticalScrollBar()->setValue(0);
    EXPECT_EQ(view.visiblePageRange().location, 1);
    EXPECT_GT(changed.count, count);
}

TEST(XQPageLayoutViewTyping, APictureOfTheViewShowsPaperTextAndHeaderWhereTheGeometrySays)
{
    ShownPages pages(QStringLiteral("Opening words of the chapter\n") + pagetest::paragraphs(20));
    XQPageLayoutView& view = *pages.view;
    view.setPageSeparationPadding(12);
    view.setHeaderText(AttributedString(QStringLiteral("HEADER <$p>"), pagetest::sans12()));
    view.setShowsMarginGuides(true);
    const QImage image = view.grab(QRect(QPoint(0, 0), view.size())).toImage();
    ASSERT_EQ(image.size(), view.size());
    const auto darkIn = [&](const QRectF& rect) {
        int n = 0;
        const QRect r = rect.toAlignedRect().intersected(image.rect());
        for (int y = r.top(); y <= r.bottom(); ++y)
            for (int x = r.left(); x <= r.right(); ++x)
                n += image.pixelColor(x, y).lightness() < 110 ? 1 : 0;
        return n;
    };
    const QRectF page1 = view.pageFrameForPage(1), page2 = view.pageFrameForPage(2);
    // Paper is white inside a page, away from text; the desk between pages is grey.
    EXPECT_EQ(image.pixelColor(page1.topLeft().toPoint() + QPoint(3, 3)), QColor(Qt::white));
    const QColor gap = image.pixelColor(int(page1.center().x()), int(page1.bottom() + 6));
    EXPECT_NE(gap, QColor(Qt::white));
    EXPECT_LT(std::abs(gap.red() - gap.blue()), 30);
    // The header's glyphs inside its rectangle on each page, and the first line's glyphs on its line.
    const QRectF header1 = view.headerRectForPage(1);
    ASSERT_FALSE(header1.isEmpty());
    EXPECT_LT(header1.bottom(), view.firstTextView()->frame().top());
    EXPECT_GT(darkIn(header1), 30);
    EXPECT_GT(darkIn(view.headerRectForPage(2)), 30);
    const QRectF firstLine =
        pages.manager.lineFragmentRectForGlyphAtIndex(0).translated(view.firstTextView()->frame().topLeft());
    EXPECT_GT(darkIn(firstLine), 60);
    // Between the header and the text, and in the right margin, the paper is blank.
    EXPECT_EQ(darkIn(QRectF(page1.left() + 2, header1.bottom() + 1, page1.width() - 4,
                            view.firstTextView()->frame().top() - header1.bottom() - 3)),
              0);
    EXPECT_EQ(darkIn(QRectF(page2.right() - view.rightMargin() + 3, page2.top() + 2, view.rightMargin() - 6,
                            page2.height() - 4)),
              0);
}

} // namespace
} // namespace qly
