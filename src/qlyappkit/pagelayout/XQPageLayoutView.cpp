#include <qlyappkit/pagelayout/XQPageLayoutView.h>

#include <QPaintEvent>
#include <QPainter>
#include <QScrollArea>
#include <QScrollBar>
#include <QTimer>
#include <algorithm>
#include <cmath>

#include <qlyappkit/platform/layout/TextContainer.h>
#include <qlyappkit/platform/layout/TextView.h>
#include <qlyappkit/platform/services/Localization.h>
#include <qlyappkit/platform/text/TextStorage.h>

namespace qly {

const QString XQPageLayoutViewDidAddPageNotification = QStringLiteral("XQPageLayoutViewDidAddPageNotification");
const QString XQPageLayoutViewDidRemovePageNotification = QStringLiteral("XQPageLayoutViewDidRemovePageNotification");
const QString XQPageLayoutViewVisiblePagesDidChangeNotification =
    QStringLiteral("XQPageLayoutViewVisiblePagesDidChangeNotification");
const QString XQPageLayoutViewNewTextViewKey = QStringLiteral("NewTextView");

namespace {
// The desk the pages lie on, and the shadow they cast.
const QColor DeskColor(0x8c, 0x8f, 0x94);
const QColor ShadowColor(0, 0, 0, 60);
const QColor BorderColor(0x60, 0x60, 0x60);
const QColor MarginGuideColor(0x9d, 0xb8, 0xd9);
constexpr double ShadowOffset = 2.0;

// The last visible page range any page layout view reported.
Range& lastVisiblePageRange()
{
    static Range range{0, 0};
    return range;
}

// Rounding as the C library's roundf/ceilf do it on floats.
double roundf_(double value) { return double(std::round(float(value))); }
double ceilf_(double value) { return double(std::ceil(float(value))); }

// The smallest rectangle with whole-number edges that holds rect.
QRectF integralRect(const QRectF& rect)
{
    if (rect.width() <= 0 || rect.height() <= 0)
        return QRectF();
    const double left = std::floor(rect.left()), top = std::floor(rect.top());
    return QRectF(left, top, std::ceil(rect.right()) - left, std::ceil(rect.bottom()) - top);
}
} // namespace

std::optional<AttributedString>
XQPageLayoutViewPrintingDelegate::pageLayoutViewShouldPrintHeader(XQPageLayoutView&, const AttributedString&, int, int)
{
    return std::nullopt;
}

std::optional<AttributedString>
XQPageLayoutViewPrintingDelegate::pageLayoutViewShouldPrintFooter(XQPageLayoutView&, const AttributedString&, int, int)
{
    return std::nullopt;
}

XQPageLayoutView::XQPageLayoutView(const QRectF& frame, LayoutManager* layoutManager, QWidget* parent)
    : QWidget(parent), m_layoutManager(layoutManager)
{
    Q_ASSERT(layoutManager);
    setGeometry(frame.toAlignedRect());
    setAutoFillBackground(false);
    m_textViewFactory = [](const QRectF& viewFrame, TextContainer* container) {
        return std::make_unique<TextView>(viewFrame, container);
    };
    m_textContainerFactory = [](QSizeF size) { return std::make_unique<TextContainer>(size); };
    XQInitRectArray(&m_pageRects);
    // Pages left from an earlier view on this layout manager belong to nobody: start afresh.
    while (!m_layoutManager->textContainers().empty())
        m_layoutManager->removeTextContainerAtIndex(qsizetype(m_layoutManager->textContainers().size()) - 1);
    m_layoutManager->setDelegate(this);
    addPage();

    m_storageObserver =
        ScopedObserver(TextStorageDidProcessEditingNotification, nullptr, [this](const Notification& n) {
            if (n.object == static_cast<const void*>(textStorage()))
                scheduleLayout();
        });
    m_textObserver =
        ScopedObserver(TextDidChangeNotification, firstTextView(), [this](const Notification&) { textDidChange(); });
    m_selectionObserver = ScopedObserver(TextViewDidChangeSelectionNotification, firstTextView(),
                                         [this](const Notification&) { scrollToCaret(); });
    // The views share their typing attributes already; a change only needs drawing.
    m_typingObserver = ScopedObserver(TextViewDidChangeTypingAttributesNotification, firstTextView(),
                                      [this](const Notification&) { update(); });
}

XQPageLayoutView::~XQPageLayoutView()
{
    if (m_layoutManager && m_layoutManager->delegate() == this)
        m_layoutManager->setDelegate(nullptr);
    // The text views go with this widget; their containers go back to nobody.
    if (m_layoutManager) {
        while (!m_layoutManager->textContainers().empty())
            m_layoutManager->removeTextContainerAtIndex(qsizetype(m_layoutManager->textContainers().size()) - 1);
    }
}

TextStorage* XQPageLayoutView::textStorage() const { return m_layoutManager->textStorage(); }

// ---- margins and frames

double XQPageLayoutView::defaultTextPadding()
{
    static const double padding = TextContainer().lineFragmentPadding();
    return padding;
}

double XQPageLayoutView::leftMargin() const
{
    return roundf_((m_printInfo ? m_printInfo->leftMargin() : m_pageInset.width()) - defaultTextPadding());
}

double XQPageLayoutView::rightMargin() const
{
    return roundf_((m_printInfo ? m_printInfo->rightMargin() : m_pageInset.width()) - defaultTextPadding());
}

double XQPageLayoutView::topMargin() const
{
    return roundf_(m_printInfo ? m_printInfo->topMargin() : m_pageInset.height());
}

double XQPageLayoutView::bottomMargin() const
{
    return roundf_(m_printInfo ? m_printInfo->bottomMargin() : m_pageInset.height());
}

QSizeF XQPageLayoutView::pageInsetAccountingForPadding() const
{
    return QSizeF(m_pageInset.width() - defaultTextPadding(), m_pageInset.height());
}

void XQPageLayoutView::updatePageSizeWithPrintInfo()
{
    if (m_printInfo) {
        const QSizeF paper = m_printInfo->paperSize();
        m_pageSize = QSizeF(roundf_(paper.width()), paper.height());
    } else {
        m_pageSize = QSizeF(DefaultPageWidth, DefaultPageHeight);
    }
}

std::pair<double, double> XQPageLayoutView::horizontalMarginsForPage(int pageNumber) const
{
    // Mirrored on even pages, so that the inner margins face each other.
    if (m_usesAlternatingPages && pageNumber % 2 == 0)
        return {rightMargin(), leftMargin()};
    return {leftMargin(), rightMargin()};
}

QRectF XQPageLayoutView::pageFrameForTextView(const TextView* textView) const
{
    const auto it = std::find(m_textViews.begin(), m_textViews.end(), textView);
    const int index = it == m_textViews.end() ? 0 : int(it - m_textViews.begin());
    const auto [left, right] = horizontalMarginsForPage(index + 1);
    const double top = topMargin(), bottom = bottomMargin();
    const QRectF tv = textView ? textView->frame() : QRectF();
    return QRectF(tv.x() - left, tv.y() - (top - 1), tv.width() + left + right, tv.height() + top + bottom - 2);
}

QRectF XQPageLayoutView::textViewFrameForPageFrame(const QRectF& frame, int pageNumber) const
{
    const auto [left, right] = horizontalMarginsForPage(pageNumber);
    const double top = topMargin(), bottom = bottomMargin();
    return integralRect(QRectF(frame.x() + left, frame.y() + top - 1, frame.width() - (left + right),
                               frame.height() - (top + bottom - 2)));
}

QRectF XQPageLayoutView::pageFrameForPage(int page) const
{
    if (page < 1 || page > int(m_textViews.size()))
        return QRectF();
    return pageFrameForTextView(m_textViews[size_t(page - 1)]);
}

QRectF XQPageLayoutView::nextPageFrame(const QRectF* previous, int count) const
{
    const double width = m_pageSize.width();
    const bool rightToLeftSpreads = m_usesFacingPages && m_usesRightToLeftLayout;
    double x = rightToLeftSpreads ? width + 1 : 0;
    double y = 0;
    if (previous && count > 1) {
        if (!m_usesFacingPages || count % 2 == 1) {
            y = previous->bottom() + m_pageSeparationPadding;
        } else {
            // The second page of a spread, beside the first.
            y = previous->y();
            x = m_usesRightToLeftLayout ? 0 : width + 1;
        }
    }
    return QRectF(roundf_(x), roundf_(y), m_pageSize.width(), m_pageSize.height());
}

// ---- adding and removing pages

void XQPageLayoutView::addPage()
{
    QRectF previous;
    if (!m_textViews.empty())
        previous = pageFrameForTextView(m_textViews.back());
    ++m_pageCount;
    const QRectF pageFrame = nextPageFrame(m_textViews.empty() ? nullptr : &previous, m_pageCount);
    const QRectF viewFrame = textViewFrameForPageFrame(pageFrame, m_pageCount);
    std::unique_ptr<TextContainer> container = m_textContainerFactory(viewFrame.size());
    container->setWidthTracksTextView(true);
    container->setHeightTracksTextView(true);
    std::unique_ptr<TextView> owned = m_textViewFactory(viewFrame, container.get());
    TextView* textView = owned.release();
    textView->setFrame(viewFrame);
    textView->setTextContainerInset(QSizeF(0, 0));
    textView->setHorizontallyResizable(false);
    textView->setVerticallyResizable(false);
    textView->setParent(this);
    textView->show();
    m_textViews.push_back(textView);
    m_layoutManager->addTextContainer(std::move(container));
    recalculateFrame();
    rebuildPageRects();
    update();
    NotificationCenter::defaultCenter().post(
        XQPageLayoutViewDidAddPageNotification, this,
        {{XQPageLayoutViewNewTextViewKey, QVariant::fromValue(static_cast<QObject*>(textView))}});
}

void XQPageLayoutView::removePage()
{
    if (m_pageCount <= 1 || m_textViews.empty())
        return;
    --m_pageCount;
    TextView* last = m_textViews.back();
    const bool hadFocus = last->hasFocus();
    m_textViews.pop_back();
    m_layoutManager->removeTextContainerAtIndex(qsizetype(m_layoutManager->textContainers().size()) - 1);
    // Deleted later: removal can run inside the view's own event handling (typing on the last page).
    last->hide();
    last->setParent(nullptr);
    last->deleteLater();
    // The writer keeps typing: the focus stays in the pages (the caret's page takes it once the
    // selection is set).
    if (hadFocus)
        m_textViews.back()->setFocus(Qt::OtherFocusReason);
    recalculateFrame();
    rebuildPageRects();
    update();
    NotificationCenter::defaultCenter().post(XQPageLayoutViewDidRemovePageNotification, this);
}

void XQPageLayoutView::trimAllPages()
{
    while (m_pageCount > 1)
        removePage();
    m_pageCount = 1;
}

void XQPageLayoutView::setPageCount(int count)
{
    if (count < 1 || count == m_pageCount)
        return;
    while (m_pageCount < count)
        addPage();
    while (m_pageCount > count)
        removePage();
}

void XQPageLayoutView::layoutManagerDidCompleteLayoutForTextContainer(LayoutManager& layoutManager,
                                                                      TextContainer* container, bool atEnd)
{
    if (&layoutManager != m_layoutManager)
        return;
    const auto& containers = m_layoutManager->textContainers();
    if (!container) {
        const bool lastHoldsGlyphs =
            !containers.empty() && m_layoutManager->glyphRangeForTextContainer(containers.back()).length > 0;
        if (!atEnd || lastHoldsGlyphs)
            addPage();
        return;
    }
    const qsizetype index = m_layoutManager->indexOfTextContainer(container);
    if (atEnd) {
        while (index >= 0 && m_pageCount > index + 1)
            removePage();
    } else if (index + 1 == qsizetype(containers.size())) {
        addPage();
    }
}

// ---- geometry settings

void XQPageLayoutView::relayoutTextViews()
{
    QRectF previous;
    for (size_t i = 0; i < m_textViews.size(); ++i) {
        const QRectF pageFrame = nextPageFrame(i == 0 ? nullptr : &previous, int(i) + 1);
        m_textViews[i]->setFrame(textViewFrameForPageFrame(pageFrame, int(i) + 1));
        previous = pageFrame;
    }
    recalculateFrame();
    rebuildPageRects();
    update();
}

void XQPageLayoutView::setPrintInfo(const std::optional<PrintInfo>& printInfo)
{
    m_printInfo = printInfo;
    updatePageSizeWithPrintInfo();
    relayoutTextViews();
}

void XQPageLayoutView::setPageInset(QSizeF inset)
{
    if (m_printInfo)
        updatePageSizeWithPrintInfo();
    m_pageInset = QSizeF(roundf_(inset.width()), roundf_(inset.height()));
    relayoutTextViews();
}

void XQPageLayoutView::setPageSize(QSizeF size)
{
    if (!m_printInfo)
        m_pageSize = QSizeF(roundf_(size.width()), roundf_(size.height()));
    relayoutTextViews();
}

void XQPageLayoutView::setPageSeparationPadding(double padding)
{
    m_pageSeparationPadding = roundf_(padding);
    relayoutTextViews();
}

void XQPageLayoutView::setUsesFacingPages(bool uses)
{
    m_usesFacingPages = uses;
    relayoutTextViews();
}

void XQPageLayoutView::setUsesRightToLeftLayout(bool uses)
{
    m_usesRightToLeftLayout = uses;
    relayoutTextViews();
}

void XQPageLayoutView::setUsesAlternatingPagesForPrinting(bool uses)
{
    m_usesAlternatingPages = uses;
    relayoutTextViews();
}

// Replacing the class of the per-page objects replaces every page's objects, keeping the count.
void XQPageLayoutView::setTextViewClass(TextViewFactory factory)
{
    if (!factory)
        return;
    m_textViewFactory = std::move(factory);
    const int count = m_pageCount;
    trimAllPages();
    m_pageCount = 0;
    TextView* first = m_textViews.front();
    m_textViews.clear();
    m_layoutManager->removeTextContainerAtIndex(0);
    addPage();
    delete first;
    m_textObserver =
        ScopedObserver(TextDidChangeNotification, firstTextView(), [this](const Notification&) { textDidChange(); });
    m_selectionObserver = ScopedObserver(TextViewDidChangeSelectionNotification, firstTextView(),
                                         [this](const Notification&) { scrollToCaret(); });
    m_typingObserver = ScopedObserver(TextViewDidChangeTypingAttributesNotification, firstTextView(),
                                      [this](const Notification&) { update(); });
    setPageCount(count);
    relayoutTextViews();
}

void XQPageLayoutView::setTextContainerClass(TextContainerFactory factory)
{
    if (!factory)
        return;
    m_textContainerFactory = std::move(factory);
    // New containers are made by re-making the pages.
    setTextViewClass(m_textViewFactory);
}

void XQPageLayoutView::recalculateFrame()
{
    const double width = m_pageSize.width(), height = m_pageSize.height();
    double viewWidth = width;
    if (m_usesFacingPages)
        viewWidth += roundf_(width + 1);
    double viewHeight = height;
    for (int page = 2; page <= m_pageCount; ++page) {
        if (!m_usesFacingPages || page % 2 == 1)
            viewHeight += ceilf_(height + m_pageSeparationPadding);
    }
    m_viewSize = QSizeF(viewWidth, viewHeight);
    resize(int(std::ceil(viewWidth)), int(std::ceil(viewHeight)));
}

void XQPageLayoutView::rebuildPageRects()
{
    XQEmptyRectArray(&m_pageRects);
    if (m_textViews.empty())
        return;
    const double spread = roundf_(m_pageSize.width() + 1);
    const auto widened = [&](QRectF rect) {
        if (!m_usesFacingPages)
            return rect;
        rect.setWidth(rect.width() + spread);
        if (m_usesRightToLeftLayout)
            rect.moveLeft(rect.left() - spread);
        return rect;
    };
    if (m_pageSeparationPadding > 1) {
        for (size_t i = 0; i < m_textViews.size(); ++i) {
            if (m_usesFacingPages && i % 2 == 1)
                continue;
            XQAddRectToArray(&m_pageRects, widened(pageFrameForTextView(m_textViews[i])));
        }
        return;
    }
    const QRectF first = pageFrameForTextView(m_textViews.front());
    const QRectF last = pageFrameForTextView(m_textViews.back());
    XQAddRectToArray(&m_pageRects, widened(QRectF(first.x(), first.y(), first.width(), last.bottom() - first.y())));
}

// ---- appearance

void XQPageLayoutView::setShowsMarginGuides(bool shows)
{
    m_showsMarginGuides = shows;
    update();
}

void XQPageLayoutView::setDrawsPageBorders(bool draws)
{
    m_drawsPageBorders = draws;
    update();
}

void XQPageLayoutView::setPageBackgroundColor(const QColor& color)
{
    m_pageBackgroundColor = color;
    update();
}

void XQPageLayoutView::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    painter.fillRect(event->rect(), DeskColor);
    for (int page = 1; page <= m_pageCount; ++page) {
        if (pageFrameForPage(page).adjusted(0, 0, ShadowOffset, ShadowOffset).intersects(event->rect()))
            drawPage(&painter, page, false);
    }
}

// The paper of a page (with its shadow, border and margin guides on screen), and its header and footer.
void XQPageLayoutView::drawPage(QPainter* painter, int page, bool printing) const
{
    const QRectF frame = pageFrameForPage(page);
    if (!printing) {
        painter->fillRect(frame.translated(ShadowOffset, ShadowOffset), ShadowColor);
        painter->fillRect(frame, m_pageBackgroundColor);
        if (m_drawsPageBorders) {
            painter->setPen(QPen(BorderColor, 1));
            painter->drawRect(frame.adjusted(0.5, 0.5, -0.5, -0.5));
        }
        if (m_showsMarginGuides) {
            painter->setPen(QPen(MarginGuideColor, 1, Qt::DashLine));
            painter->drawRect(m_textViews[size_t(page - 1)]->frame().adjusted(0.5, 0.5, -0.5, -0.5));
        }
    }
    drawHeaderAndFooter(painter, page);
}

// ---- page lookup

int XQPageLayoutView::actualPageNumberForCharacterAtIndex(qsizetype index)
{
    if (!textStorage() || index >= textStorage()->length() || index < 0)
        return m_pageCount;
    TextContainer* container = m_layoutManager->textContainerForGlyphAtIndex(index);
    const qsizetype k = container ? m_layoutManager->indexOfTextContainer(container) : m_pageCount - 1;
    return int(k) + 1;
}

int XQPageLayoutView::printedPageNumberForCharacterAtIndex(qsizetype index)
{
    if (!textStorage() || index >= textStorage()->length() || index < 0)
        return m_pageCount;
    const int k = actualPageNumberForCharacterAtIndex(index) - 1;
    return m_countsFirstPages ? k + 1 : k + 2 - m_firstPageForRegular;
}

Range XQPageLayoutView::characterRangeForPage(int page)
{
    if (page < 1 || page > m_pageCount)
        return Range{NotFound, 0};
    return m_layoutManager->glyphRangeForTextContainer(m_layoutManager->textContainers()[size_t(page - 1)]);
}

Range XQPageLayoutView::visibleTextViewsRange() const
{
    const QRect visible = visibleRegion().boundingRect();
    if (visible.isEmpty())
        return Range{0, 0};
    qsizetype first = -1, last = -1;
    for (size_t i = 0; i < m_textViews.size(); ++i) {
        if (pageFrameForTextView(m_textViews[i]).intersects(QRectF(visible))) {
            if (first < 0)
                first = qsizetype(i);
            last = qsizetype(i);
        }
    }
    return first < 0 ? Range{0, 0} : Range{first, last - first + 1};
}

Range XQPageLayoutView::visiblePageRange() const
{
    const Range views = visibleTextViewsRange();
    return views.length == 0 ? Range{0, 0} : Range{views.location + 1, views.length};
}

QString XQPageLayoutView::currentPageString() const
{
    const Range visible = visiblePageRange();
    const qsizetype page = visible.length == 0 ? 1 : visible.location;
    return localized("Page %1 of %2").arg(page).arg(m_pageCount);
}

void XQPageLayoutView::updateCurrentPageInfo()
{
    const Range visible = visiblePageRange();
    Range& last = lastVisiblePageRange();
    if (visible == last)
        return;
    last = visible;
    NotificationCenter::defaultCenter().post(XQPageLayoutViewVisiblePagesDidChangeNotification, this);
}

void XQPageLayoutView::moveEvent(QMoveEvent* event)
{
    QWidget::moveEvent(event);
    updateCurrentPageInfo();
}

void XQPageLayoutView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    updateCurrentPageInfo();
}

void XQPageLayoutView::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    updateCurrentPageInfo();
}

// ---- scrolling

namespace {
QScrollArea* enclosingScrollArea(QWidget* widget)
{
    for (QWidget* w = widget->parentWidget(); w; w = w->parentWidget()) {
        if (auto* area = qobject_cast<QScrollArea*>(w))
            return area;
    }
    return nullptr;
}
} // namespace

void XQPageLayoutView::scrollToPage(int page)
{
    const QRectF frame = pageFrameForPage(std::clamp(page, 1, m_pageCount));
    if (QScrollArea* area = enclosingScrollArea(this)) {
        const QPoint top = mapTo(area->widget(), frame.topLeft().toPoint());
        area->verticalScrollBar()->setValue(top.y());
        area->ensureVisible(top.x(), top.y(), 0, 0);
        area->verticalScrollBar()->setValue(top.y());
    }
    updateCurrentPageInfo();
}

void XQPageLayoutView::scrollToNextPage()
{
    const Range visible = visiblePageRange();
    const int step = m_usesFacingPages ? 2 : 1;
    scrollToPage(int(visible.length == 0 ? 1 : visible.location) + step);
}

void XQPageLayoutView::scrollToPreviousPage()
{
    const Range visible = visiblePageRange();
    const int step = m_usesFacingPages ? 2 : 1;
    scrollToPage(int(visible.length == 0 ? 1 : visible.location) - step);
}

void XQPageLayoutView::scrollToCaret()
{
    TextView* first = firstTextView();
    const qsizetype caret = first->insertionPointIndex();
    TextView* holder = first->textViewForCharacterIndex(caret);
    if (!holder || !holder->hasFocus())
        return;
    QScrollArea* area = enclosingScrollArea(this);
    const QRectF rect = holder->insertionPointRect();
    if (!area || rect.isNull())
        return;
    const QPoint at = holder->mapTo(area->widget(), rect.center().toPoint());
    area->ensureVisible(at.x(), at.y(), 20, int(rect.height()));
}

// ---- following the text

// The user typed: lay out to the end now, so that pages are added and removed with the keystroke.
void XQPageLayoutView::textDidChange()
{
    m_layoutManager->ensureLayoutForAllText();
    for (qsizetype i = visibleTextViewsRange().location, n = visibleTextViewsRange().end();
         i < n && i < qsizetype(m_textViews.size()); ++i)
        m_textViews[size_t(i)]->update();
}

// The storage changed from elsewhere: the layout manager hears of it after this notification, so the
// pages follow once control is back in the event loop.
void XQPageLayoutView::scheduleLayout()
{
    if (m_layoutScheduled)
        return;
    m_layoutScheduled = true;
    QTimer::singleShot(0, this, [this] {
        m_layoutScheduled = false;
        textDidChange();
        update();
    });
}

} // namespace qly
