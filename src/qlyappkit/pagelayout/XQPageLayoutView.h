#pragma once
// XQPageLayoutView: a text shown as a stack of printed pages. One text view per page, all on one
// layout manager (so one text storage), each placed inside its page at the page margins. Pages are
// added and removed as the layout manager fills them, so the page count follows the text; pages stand
// singly or in facing spreads (left to right or right to left). Put it in a QScrollArea to scroll.
//
// Geometry is in points with y growing downwards; one point is one pixel on screen. Page frames and
// text view frames are exact inverses of each other. The printing part (XQPageLayoutViewPrinting.cpp)
// gives each page its header and footer, with page-number placeholders, and prints the pages to PDF.
//
// Invariants: pageCount() == textViews().size() == the layout manager's container count >= 1, and
// text view i shows container i.
#include <QColor>
#include <QImage>
#include <QRectF>
#include <QSizeF>
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include <qlyappkit/geometry/XQGeometryArrays.h>
#include <qlyappkit/platform/layout/LayoutManager.h>
#include <qlyappkit/platform/services/NotificationCenter.h>
#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/values/PrintInfo.h>

class QIODevice;
class QPainter;

namespace qly {

class TextContainer;
class TextStorage;
class TextView;
class XQPageLayoutView;

/// Posted (object: the view) after a page was added; user info XQPageLayoutViewNewTextViewKey holds
/// the new page's text view (a QObject*).
extern const QString XQPageLayoutViewDidAddPageNotification;
extern const QString XQPageLayoutViewDidRemovePageNotification;
/// Posted (object: the view) when the range of visible pages changed.
extern const QString XQPageLayoutViewVisiblePagesDidChangeNotification;
extern const QString XQPageLayoutViewNewTextViewKey;

/// Lets the application print another header or footer than the substituted one. Both are optional:
/// nothing (the default) keeps the substituted text.
class XQPageLayoutViewPrintingDelegate {
public:
    virtual ~XQPageLayoutViewPrintingDelegate() = default;
    virtual std::optional<AttributedString> pageLayoutViewShouldPrintHeader(XQPageLayoutView& view,
                                                                            const AttributedString& header, int page,
                                                                            int printedPageNumber);
    virtual std::optional<AttributedString> pageLayoutViewShouldPrintFooter(XQPageLayoutView& view,
                                                                            const AttributedString& footer, int page,
                                                                            int printedPageNumber);
};

class XQPageLayoutView : public QWidget, public LayoutManagerDelegate {
public:
    /// Makes the per-page text view (textViewClass); it is given its frame and container.
    using TextViewFactory = std::function<std::unique_ptr<TextView>(const QRectF& frame, TextContainer* container)>;
    /// Makes the per-page container (textContainerClass) of a size.
    using TextContainerFactory = std::function<std::unique_ptr<TextContainer>(QSizeF size)>;

    static constexpr double DefaultPageWidth = 612;
    static constexpr double DefaultPageHeight = 792;
    static constexpr double DefaultPageInset = 20;

    /// A view with the defaults and its first page, on a layout manager that it does not own (the
    /// layout manager owns the pages' containers; the view becomes its delegate).
    XQPageLayoutView(const QRectF& frame, LayoutManager* layoutManager, QWidget* parent = nullptr);
    ~XQPageLayoutView() override;

    // ---- the pages
    TextView* firstTextView() const { return m_textViews.front(); }
    const std::vector<TextView*>& textViews() const { return m_textViews; }
    TextStorage* textStorage() const;
    LayoutManager* layoutManager() const { return m_layoutManager; }
    const XQRectArray& pageRects() const { return m_pageRects; }
    int pageCount() const { return m_pageCount; }
    /// Adds or removes pages at the end until there are count; below 1 or unchanged does nothing.
    void setPageCount(int count);
    void addPage();
    void removePage();
    /// Removes every page but the first.
    void trimAllPages();

    // ---- page geometry (each setter re-lays out the text views)
    const std::optional<PrintInfo>& printInfo() const { return m_printInfo; }
    /// Page size and margins come from the print info while one is set.
    void setPrintInfo(const std::optional<PrintInfo>& printInfo);
    QSizeF pageInset() const { return m_pageInset; }
    void setPageInset(QSizeF inset);
    QSizeF pageSize() const { return m_pageSize; }
    /// Ignored (but still re-lays out) while print info is set.
    void setPageSize(QSizeF size);
    double pageSeparationPadding() const { return m_pageSeparationPadding; }
    void setPageSeparationPadding(double padding);
    bool usesFacingPages() const { return m_usesFacingPages; }
    void setUsesFacingPages(bool uses);
    bool usesRightToLeftLayout() const { return m_usesRightToLeftLayout; }
    void setUsesRightToLeftLayout(bool uses);
    void setTextViewClass(TextViewFactory factory);
    void setTextContainerClass(TextContainerFactory factory);

    /// Margins rounded to whole points. With print info its margins, less the default text padding on
    /// the left and right; without, the page inset (less the padding on the left and right).
    double leftMargin() const;
    double rightMargin() const;
    double topMargin() const;
    double bottomMargin() const;
    /// The line-fragment padding of a fresh text container (computed once).
    static double defaultTextPadding();
    QSizeF pageInsetAccountingForPadding() const;
    /// The page size from the print info (width rounded), or 612 × 792 without one.
    void updatePageSizeWithPrintInfo();
    /// The page around a text view: margins swapped on every second page when alternating.
    QRectF pageFrameForTextView(const TextView* textView) const;
    /// The text view inside a page frame; pageNumber counts from 1. The inverse of pageFrameForTextView.
    QRectF textViewFrameForPageFrame(const QRectF& frame, int pageNumber) const;
    /// The page frame of page (1-based); null outside the pages.
    QRectF pageFrameForPage(int page) const;
    /// Sizes the view to its pages (and rows of spreads).
    void recalculateFrame();
    QSizeF viewSize() const { return m_viewSize; }
    void rebuildPageRects();

    // ---- appearance
    bool showsMarginGuides() const { return m_showsMarginGuides; }
    void setShowsMarginGuides(bool shows);
    bool drawsPageBorders() const { return m_drawsPageBorders; }
    void setDrawsPageBorders(bool draws);
    QColor pageBackgroundColor() const { return m_pageBackgroundColor; }
    void setPageBackgroundColor(const QColor& color);

    // ---- page lookup and scrolling
    /// The page number printed on the page that holds the character: the container index + 1 when the
    /// first pages count, else index + 2 − firstPageForRegularHeaderAndFooter; pageCount at the end.
    int printedPageNumberForCharacterAtIndex(qsizetype index);
    /// The physical page (1-based) that holds the character; pageCount at or past the end.
    int actualPageNumberForCharacterAtIndex(qsizetype index);
    /// The characters laid out on page (1-based); not found outside the pages.
    Range characterRangeForPage(int page);
    /// The pages (location: the first, 1-based) whose frames the visible part of the view meets.
    Range visiblePageRange() const;
    /// The same as indexes into textViews().
    Range visibleTextViewsRange() const;
    /// "Page 3 of 12" for the first visible page.
    QString currentPageString() const;
    /// Scrolls the enclosing scroll area to the top of page (1-based).
    void scrollToPage(int page);
    void scrollToNextPage();
    void scrollToPreviousPage();
    /// Recomputes the visible pages and posts the notification when they changed (one range is
    /// remembered for the whole process).
    void updateCurrentPageInfo();

    // ---- printing: headers and footers
    const AttributedString& headerText() const { return m_headerText; }
    void setHeaderText(const AttributedString& text);
    const AttributedString& footerText() const { return m_footerText; }
    void setFooterText(const AttributedString& text);
    const AttributedString& firstPagesHeaderText() const { return m_firstPagesHeaderText; }
    void setFirstPagesHeaderText(const AttributedString& text);
    const AttributedString& firstPagesFooterText() const { return m_firstPagesFooterText; }
    void setFirstPagesFooterText(const AttributedString& text);
    const AttributedString& alternateHeaderText() const { return m_alternateHeaderText; }
    void setAlternateHeaderText(const AttributedString& text);
    const AttributedString& alternateFooterText() const { return m_alternateFooterText; }
    void setAlternateFooterText(const AttributedString& text);
    bool hasDifferentHeaderAndFooterForFirstPages() const { return m_hasDifferentFirstPages; }
    void setHasDifferentHeaderAndFooterForFirstPages(bool has);
    bool countsFirstPages() const { return m_countsFirstPages; }
    void setCountsFirstPages(bool counts);
    int firstPageForRegularHeaderAndFooter() const { return m_firstPageForRegular; }
    void setFirstPageForRegularHeaderAndFooter(int page);
    /// Mirrored margins and the alternate header and footer on even pages.
    bool usesAlternatingPagesForPrinting() const { return m_usesAlternatingPages; }
    void setUsesAlternatingPagesForPrinting(bool uses);
    XQPageLayoutViewPrintingDelegate* printingDelegate() const { return m_printingDelegate; }
    void setPrintingDelegate(XQPageLayoutViewPrintingDelegate* delegate) { m_printingDelegate = delegate; }

    /// The page being printed (1-based); the header and footer are those of this page.
    int currentPrintingPage() const { return m_currentPrintingPage; }
    void setCurrentPrintingPage(int page) { m_currentPrintingPage = page; }
    AttributedString pageHeader() const { return pageHeaderForPage(m_currentPrintingPage); }
    AttributedString pageFooter() const { return pageFooterForPage(m_currentPrintingPage); }
    /// The header or footer of a physical page: chosen, substituted, then offered to the delegate.
    AttributedString pageHeaderForPage(int page) const;
    AttributedString pageFooterForPage(int page) const;
    /// Pages 1 to pageCount.
    bool knowsPageRange(Range* range) const;
    /// The part of the view printed as page (1-based): its page frame.
    QRectF rectForPage(int page) const { return pageFrameForPage(page); }
    /// Where a page's rectangle goes on the paper: its top left corner.
    QPointF locationOfPrintRect(const QRectF& rect) const;
    /// Draws the current printing page's header and footer in its margins, on a painter whose origin
    /// is the page's top left corner.
    void drawPageBorderWithSize(QPainter* painter, QSizeF borderSize) const;
    /// Where the header and footer of a page go, in view coordinates.
    QRectF headerRectForPage(int page) const;
    QRectF footerRectForPage(int page) const;
    /// Shows text (replacing the storage's) and lays it all out, ready to print.
    void setUpForPrintingWithText(const AttributedString& text);

    // ---- output
    /// Prints every page to PDF, one PDF page per page at the page size. False when the device cannot
    /// be written.
    bool writePDF(QIODevice* device);
    /// A picture of the view around page (1-based): the page, or its spread with facing pages, on the
    /// desk, at scale pixels per point.
    QImage imageOfPage(int page, double scale = 1.0);

    void layoutManagerDidCompleteLayoutForTextContainer(LayoutManager& layoutManager, TextContainer* container,
                                                        bool atEnd) override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    /// The frame of the page that follows previous (null for the first page), for a page count of count.
    QRectF nextPageFrame(const QRectF* previous, int count) const;
    /// Re-places every text view after a geometry setting changed.
    void relayoutTextViews();
    std::pair<double, double> horizontalMarginsForPage(int pageNumber) const;
    AttributedString chosenHeaderOrFooter(int page, bool header) const;
    void drawPage(QPainter* painter, int page, bool printing) const;
    void drawHeaderAndFooter(QPainter* painter, int page) const;
    void textDidChange();
    void scheduleLayout();
    void scrollToCaret();

    LayoutManager* m_layoutManager = nullptr;
    std::vector<TextView*> m_textViews;
    int m_pageCount = 0;
    std::optional<PrintInfo> m_printInfo;
    QSizeF m_pageInset{DefaultPageInset, DefaultPageInset};
    QSizeF m_pageSize{DefaultPageWidth, DefaultPageHeight};
    double m_pageSeparationPadding = 1.0;
    bool m_usesFacingPages = false;
    bool m_usesRightToLeftLayout = false;
    bool m_showsMarginGuides = false;
    bool m_drawsPageBorders = false;
    QColor m_pageBackgroundColor = Qt::white;
    TextViewFactory m_textViewFactory;
    TextContainerFactory m_textContainerFactory;
    XQRectArray m_pageRects;
    QSizeF m_viewSize;

    AttributedString m_headerText, m_footerText, m_firstPagesHeaderText, m_firstPagesFooterText, m_alternateHeaderText,
        m_alternateFooterText;
    bool m_hasDifferentFirstPages = false;
    bool m_countsFirstPages = true;
    int m_firstPageForRegular = 2;
    bool m_usesAlternatingPages = false;
    XQPageLayoutViewPrintingDelegate* m_printingDelegate = nullptr;
    int m_currentPrintingPage = 1;

    bool m_layoutScheduled = false;
    bool m_relayingOut = false;
    ScopedObserver m_storageObserver;
    ScopedObserver m_textObserver;
    ScopedObserver m_selectionObserver;
    ScopedObserver m_typingObserver;
};

} // namespace qly
