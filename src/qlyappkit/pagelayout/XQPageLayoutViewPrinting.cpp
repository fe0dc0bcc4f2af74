// XQPageLayoutView's printing: which header and footer a page gets, their placeholders, and the
// pages printed to PDF or pictured as an image.
#include <QPainter>
#include <QPdfWriter>
#include <algorithm>
#include <cmath>

#include <qlyappkit/pagelayout/XQPageLayoutView.h>
#include <qlyappkit/pagelayout/XQPagePlaceholders.h>
#include <qlyappkit/platform/layout/TextContainer.h>
#include <qlyappkit/platform/layout/TextView.h>
#include <qlyappkit/platform/text/TextStorage.h>

namespace qly {

namespace {
const QColor DeskColor(0x8c, 0x8f, 0x94);
// Desk shown around a pictured page or spread, in points.
constexpr double PictureMargin = 16;

// A short text laid out on its own at a width: its height, and drawing it.
struct LaidText {
    TextStorage storage;
    LayoutManager manager;
    TextContainer* container = nullptr;

    LaidText(const AttributedString& text, double width) : storage(text)
    {
        manager.setTextStorage(&storage);
        container = manager.addTextContainer(
            std::make_unique<TextContainer>(QSizeF(std::max(width, 1.0), TextContainer::LargeDimension)));
    }
    double height() { return std::ceil(manager.usedRectForTextContainer(container).bottom()); }
    void draw(QPainter* painter, const QPointF& origin) { manager.drawTextContainer(container, painter, origin); }
};
} // namespace

void XQPageLayoutView::setHeaderText(const AttributedString& text)
{
    m_headerText = text;
    update();
}

void XQPageLayoutView::setFooterText(const AttributedString& text)
{
    m_footerText = text;
    update();
}

void XQPageLayoutView::setFirstPagesHeaderText(const AttributedString& text)
{
    m_firstPagesHeaderText = text;
    update();
}

void XQPageLayoutView::setFirstPagesFooterText(const AttributedString& text)
{
    m_firstPagesFooterText = text;
    update();
}

void XQPageLayoutView::setAlternateHeaderText(const AttributedString& text)
{
    m_alternateHeaderText = text;
    update();
}

void XQPageLayoutView::setAlternateFooterText(const AttributedString& text)
{
    m_alternateFooterText = text;
    update();
}

void XQPageLayoutView::setHasDifferentHeaderAndFooterForFirstPages(bool has)
{
    m_hasDifferentFirstPages = has;
    update();
}

void XQPageLayoutView::setCountsFirstPages(bool counts)
{
    m_countsFirstPages = counts;
    update();
}

void XQPageLayoutView::setFirstPageForRegularHeaderAndFooter(int page)
{
    m_firstPageForRegular = page;
    update();
}

AttributedString XQPageLayoutView::chosenHeaderOrFooter(int page, bool header) const
{
    if (m_hasDifferentFirstPages && page < m_firstPageForRegular)
        return header ? m_firstPagesHeaderText : m_firstPagesFooterText;
    if (m_usesAlternatingPages && page % 2 == 0)
        return header ? m_alternateHeaderText : m_alternateFooterText;
    return header ? m_headerText : m_footerText;
}

AttributedString XQPageLayoutView::pageHeaderForPage(int page) const
{
    const AttributedString chosen = chosenHeaderOrFooter(page, true);
    if (chosen.length() == 0)
        return AttributedString();
    const AttributedString header = XQAttributedStringBySubstitutingPagePlaceholders(
        chosen, page, m_pageCount, m_countsFirstPages, m_firstPageForRegular);
    if (m_printingDelegate) {
        const int printed = XQPrintedPageNumber(page, m_countsFirstPages, m_firstPageForRegular);
        auto* self = const_cast<XQPageLayoutView*>(this);
        if (std::optional<AttributedString> other =
                m_printingDelegate->pageLayoutViewShouldPrintHeader(*self, header, page, printed))
            return *other;
    }
    return header;
}

AttributedString XQPageLayoutView::pageFooterForPage(int page) const
{
    const AttributedString chosen = chosenHeaderOrFooter(page, false);
    if (chosen.length() == 0)
        return AttributedString();
    const AttributedString footer = XQAttributedStringBySubstitutingPagePlaceholders(
        chosen, page, m_pageCount, m_countsFirstPages, m_firstPageForRegular);
    if (m_printingDelegate) {
        const int printed = XQPrintedPageNumber(page, m_countsFirstPages, m_firstPageForRegular);
        auto* self = const_cast<XQPageLayoutView*>(this);
        if (std::optional<AttributedString> other =
                m_printingDelegate->pageLayoutViewShouldPrintFooter(*self, footer, page, printed))
            return *other;
    }
    return footer;
}

bool XQPageLayoutView::knowsPageRange(Range* range) const
{
    if (range)
        *range = Range{1, m_pageCount};
    return true;
}

QPointF XQPageLayoutView::locationOfPrintRect(const QRectF&) const { return QPointF(0, 0); }

// A header sits in the middle of the top margin and a footer in the middle of the bottom one, as wide
// as the text of the page and lined up with it.
QRectF XQPageLayoutView::headerRectForPage(int page) const
{
    const QRectF frame = pageFrameForPage(page);
    if (frame.isNull())
        return QRectF();
    const QRectF text = m_textViews[size_t(page - 1)]->frame();
    LaidText laid(pageHeaderForPage(page), text.width());
    const double height = laid.height();
    return QRectF(text.x(), frame.y() + std::max(0.0, (topMargin() - height) / 2), text.width(), height);
}

QRectF XQPageLayoutView::footerRectForPage(int page) const
{
    const QRectF frame = pageFrameForPage(page);
    if (frame.isNull())
        return QRectF();
    const QRectF text = m_textViews[size_t(page - 1)]->frame();
    LaidText laid(pageFooterForPage(page), text.width());
    const double height = laid.height();
    const double bottom = bottomMargin();
    return QRectF(text.x(), frame.bottom() - bottom + std::max(0.0, (bottom - height) / 2), text.width(), height);
}

void XQPageLayoutView::drawHeaderAndFooter(QPainter* painter, int page) const
{
    const QRectF text = m_textViews[size_t(page - 1)]->frame();
    const AttributedString header = pageHeaderForPage(page);
    if (header.length() > 0) {
        LaidText laid(header, text.width());
        laid.draw(painter, headerRectForPage(page).topLeft());
    }
    const AttributedString footer = pageFooterForPage(page);
    if (footer.length() > 0) {
        LaidText laid(footer, text.width());
        laid.draw(painter, footerRectForPage(page).topLeft());
    }
}

void XQPageLayoutView::drawPageBorderWithSize(QPainter* painter, QSizeF) const
{
    const QRectF frame = pageFrameForPage(m_currentPrintingPage);
    if (frame.isNull() || !painter)
        return;
    painter->save();
    painter->translate(-frame.topLeft());
    drawHeaderAndFooter(painter, m_currentPrintingPage);
    painter->restore();
}

void XQPageLayoutView::setUpForPrintingWithText(const AttributedString& text)
{
    if (TextStorage* storage = textStorage()) {
        storage->beginEditing();
        storage->setAttributedString(text);
        storage->endEditing();
    }
    m_layoutManager->ensureLayoutForAllText();
}

bool XQPageLayoutView::writePDF(QIODevice* device)
{
    if (!device)
        return false;
    m_layoutManager->ensureLayoutForAllText();
    QPdfWriter writer(device);
    writer.setResolution(72);
    writer.setPageSize(QPageSize(m_pageSize, QPageSize::Point, QString(), QPageSize::ExactMatch));
    writer.setPageMargins(QMarginsF(0, 0, 0, 0));
    writer.setCreator(QStringLiteral("QlyAppKit"));
    QPainter painter;
    if (!painter.begin(&writer))
        return false;
    const int saved = m_currentPrintingPage;
    for (int page = 1; page <= m_pageCount; ++page) {
        if (page > 1 && !writer.newPage())
            break;
        m_currentPrintingPage = page;
        const QRectF rect = rectForPage(page);
        painter.save();
        painter.translate(locationOfPrintRect(rect) - rect.topLeft());
        TextView* textView = m_textViews[size_t(page - 1)];
        m_layoutManager->drawTextContainer(textView->textContainer(), &painter,
                                           textView->frame().topLeft() + textView->textContainerOrigin());
        painter.restore();
        drawPageBorderWithSize(&painter, m_pageSize);
    }
    m_currentPrintingPage = saved;
    return painter.end();
}

QImage XQPageLayoutView::imageOfPage(int page, double scale)
{
    m_layoutManager->ensureLayoutForAllText();
    page = std::clamp(page, 1, m_pageCount);
    QRectF area = pageFrameForPage(page);
    if (m_usesFacingPages) {
        // The whole spread, both places, even when its second page is not there yet.
        area = QRectF(0, area.y(), m_viewSize.width(), area.height());
    }
    scale = std::clamp(scale, 0.05, 8.0);
    const QSizeF size = (area.size() + QSizeF(2 * PictureMargin, 2 * PictureMargin)) * scale;
    QImage image(size.toSize(), QImage::Format_ARGB32_Premultiplied);
    image.fill(DeskColor);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.scale(scale, scale);
    render(&painter, QPoint(int(PictureMargin), int(PictureMargin)), QRegion(area.toAlignedRect()),
           QWidget::DrawWindowBackground | QWidget::DrawChildren);
    painter.end();
    return image;
}

} // namespace qly
