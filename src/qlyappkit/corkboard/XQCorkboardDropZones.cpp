// Drop zones: where between the cards a drop or a background click lands, and the drag in progress
// that every board of the program shares.
#include <qlyappkit/corkboard/XQCorkboardView.h>

#include <algorithm>

#include <qlyappkit/platform/text/Range.h>

namespace qly {

namespace {

// One drag at a time in the whole program.
struct SharedDrag {
    qsizetype draggedCardIndex = -1;
    qsizetype dropCardIndex = -1;
    XQCorkboardDropOperation dropOperation = XQCorkboardDropOperation::None;
};

SharedDrag& sharedDrag()
{
    static SharedDrag drag;
    return drag;
}

bool mouseInRect(QPointF p, const QRectF& r)
{
    return p.x() >= r.left() && p.x() < r.right() && p.y() >= r.top() && p.y() < r.bottom();
}

} // namespace

void XQCorkboardView::setDropCardIndex(qsizetype index, XQCorkboardDropOperation operation)
{
    sharedDrag().dropCardIndex = index;
    sharedDrag().dropOperation = operation;
}

qsizetype XQCorkboardView::dropCardIndex() { return sharedDrag().dropCardIndex; }

XQCorkboardDropOperation XQCorkboardView::dropOperation() { return sharedDrag().dropOperation; }

qsizetype XQCorkboardView::draggedCardIndex() { return sharedDrag().draggedCardIndex; }

void XQCorkboardView::setDraggedCardIndex(qsizetype index) { sharedDrag().draggedCardIndex = index; }

int XQCorkboardView::relativeIndexOfDraggedCard() const
{
    if (!m_dataSource || !m_dataSource->respondsTo(XQCorkboardViewDataSource::RelativeDragIndexForCardAtIndex))
        return -1;
    return m_dataSource->relativeDragIndexForCardAtIndex(const_cast<XQCorkboardView*>(this), draggedCardIndex());
}

QRectF XQCorkboardView::dropZoneForCardAtIndex(qsizetype index, double* halfwayAcrossMarkOffset) const
{
    if (halfwayAcrossMarkOffset)
        *halfwayAcrossMarkOffset = 0;
    const QRectF card = rectOfCard(index);
    if (card.isNull())
        return {};
    qsizetype offset = 0;
    const qsizetype section = sectionIndexForCardIndex(index, &offset);
    if (section == NotFound)
        return {};
    const double hs = m_interCardSpacing * 0.5;
    const qsizetype k = index - offset;
    const qsizetype n = numberOfCardsInSection(int(section));
    const double H = maximumCardHeightInRowOfCardAtIndex(index);
    const int across = std::max(1, m_cardsAcross);
    const bool columns = hasColumns();
    const bool rowsMode = usesSections() && numberOfSections() > 1 && m_multipleSectionsMode == 1;
    const bool rtl = m_cardsUseRightToLeftDirection;
    const QRectF bounds = rect();
    // Growth beyond the symmetric margin, by side: the halfway mark is taken from these.
    double leftGrowth = 0, rightGrowth = 0, topGrowth = 0, bottomGrowth = 0;

    QRectF zone;
    if (!columns) {
        zone = card;
        if (isImageCard(index)) {
            zone.setX(card.center().x() - m_currentCardWidth / 2);
            zone.setWidth(m_currentCardWidth);
        }
        zone.setHeight(H);
        zone.adjust(-hs, -hs, hs, hs);
    } else {
        const QRectF column =
            section < m_sectionRects.count() ? m_sectionRects[section] : QRectF(card.x(), 0, card.width(), 0);
        zone = QRectF(column.x(), card.y(), column.width(), H).adjusted(0, -hs, 0, hs);
    }
    if (k < across || rowsMode || (columns && k == 0)) {
        zone.setTop(zone.top() - hs);
        topGrowth += hs;
    }
    if (!columns) {
        const qsizetype remainder = n % across == 0 ? across : n % across;
        if (k > n - 1 - remainder || rowsMode)
            zone.setBottom(zone.bottom() + hs);
        // Only the section's first card (its second with one card across) grows towards the leading
        // edge: the test is kept exactly as boards have always drawn it.
        if (k + (1 % across) == 1 || (rowsMode && k == 0)) {
            if (rtl) {
                zone.setWidth(zone.width() + hs);
                rightGrowth += hs;
            } else {
                zone.setLeft(zone.left() - hs);
                leftGrowth += hs;
            }
        }
        const bool lastOfBoard = index == m_cardRects.count() - 1;
        const bool nextBelow = !lastOfBoard && m_cardRects[index + 1].top() > card.bottom();
        if (nextBelow || (rowsMode && k == n - 1)) {
            if (rtl) {
                leftGrowth += zone.left();
                zone.setLeft(0);
            } else {
                rightGrowth += bounds.x() + bounds.width() - zone.right();
                zone.setRight(bounds.x() + bounds.width());
            }
        }
        if (halfwayAcrossMarkOffset)
            *halfwayAcrossMarkOffset = rightGrowth - leftGrowth;
    } else {
        if (k == n - 1) {
            const double bottom = bounds.y() + bounds.height();
            bottomGrowth += bottom - zone.bottom();
            zone.setBottom(bottom);
        }
        if (section == 0) {
            if (rtl)
                zone.setWidth(zone.width() + hs);
            else
                zone.setLeft(zone.left() - hs);
        } else if (section == qsizetype(m_sectionRects.count()) - 1 && !rtl) {
            zone.setWidth(zone.width() + hs);
        }
        if (halfwayAcrossMarkOffset)
            *halfwayAcrossMarkOffset = bottomGrowth - topGrowth;
    }
    return zone;
}

qsizetype XQCorkboardView::nextCardForBackgroundClickAtPoint(QPointF point) const
{
    if (m_usesFreeformArrangement)
        return -1;
    const bool columns = hasColumns();
    const bool rtl = m_cardsUseRightToLeftDirection;
    for (qsizetype i = 0; i < m_cardRects.count(); ++i) {
        double offset = 0;
        const QRectF zone = dropZoneForCardAtIndex(i, &offset);
        if (!mouseInRect(point, zone))
            continue;
        QRectF leading;
        if (columns) {
            leading = QRectF(zone.x(), zone.y(), zone.width(), (zone.height() - offset) * 0.5);
        } else {
            const double mark = zone.x() + (zone.width() - offset) * 0.5;
            leading = rtl ? QRectF(mark, zone.y(), zone.right() - mark, zone.height())
                          : QRectF(zone.x(), zone.y(), mark - zone.x(), zone.height());
        }
        return mouseInRect(point, leading) ? i : i + 1;
    }
    return -1;
}

} // namespace qly
