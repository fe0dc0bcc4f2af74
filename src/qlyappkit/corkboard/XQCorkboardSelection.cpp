// Hit testing, the selection and its keyboard navigation, and marquee selection.
#include <qlyappkit/corkboard/XQCorkboardView.h>

#include <algorithm>
#include <cmath>

#include <qlyappkit/corkboard/XQCardHitIndex_p.h>
#include <qlyappkit/platform/services/NotificationCenter.h>
#include <qlyappkit/platform/text/Range.h>

namespace qly {

using DS = XQCorkboardViewDataSource;

namespace {

// Whether the point lies in the rectangle in flipped coordinates: the top and left edges inside,
// the bottom and right edges outside.
bool mouseInRect(QPointF p, const QRectF& r)
{
    return p.x() >= r.left() && p.x() < r.right() && p.y() >= r.top() && p.y() < r.bottom();
}

// Overlap of two rectangles only when both have an area, as the platform's intersection test has it.
bool rectsIntersect(const QRectF& a, const QRectF& b)
{
    if (a.width() <= 0 || a.height() <= 0 || b.width() <= 0 || b.height() <= 0)
        return false;
    return a.left() < b.right() && b.left() < a.right() && a.top() < b.bottom() && b.top() < a.bottom();
}

enum Side { LeftMost, RightMost, TopMost, BottomMost };

} // namespace

struct XQCorkboardView::RowScan {
    // The extreme card among indexes, as leftMostCardInRect and its siblings define it.
    template <typename Indexes>
    static qsizetype extreme(const XQRectArray& rects, const QRectF& rect, const Indexes& indexes, int side)
    {
        qsizetype best = -1;
        double bestValue = 0;
        for (qsizetype i : indexes) {
            if (i < 0 || i >= rects.count())
                continue;
            const QRectF& card = rects[i];
            const double overlapX = std::min(card.right(), rect.right()) - std::max(card.left(), rect.left());
            const double overlapY = std::min(card.bottom(), rect.bottom()) - std::max(card.top(), rect.top());
            if (overlapX < 0 || overlapY < 0)
                continue;
            const bool horizontal = side == LeftMost || side == RightMost;
            if (horizontal ? overlapY < card.height() / 3 : overlapX < card.width() / 3)
                continue;
            double value = 0;
            switch (side) {
            case LeftMost:
                value = -card.left();
                break;
            case RightMost:
                value = card.right();
                break;
            case TopMost:
                value = -card.top();
                break;
            case BottomMost:
                value = card.bottom();
                break;
            }
            if (best < 0 || value > bestValue) {
                best = i;
                bestValue = value;
            }
        }
        return best;
    }
};

// ---- hit testing

QList<qsizetype> XQCorkboardView::cardIndexesInDrawingOrder() const
{
    const qsizetype cards = numberOfCards();
    if (m_usesFreeformArrangement && m_dataSource
        && m_dataSource->respondsTo(DS::FreeformDrawingOrderForCorkboardView)) {
        QList<qsizetype> order = m_dataSource->freeformDrawingOrderForCorkboardView(const_cast<XQCorkboardView*>(this));
        if (order.size() == cards) {
            // Only an order that names every card once can be drawn by.
            std::vector<bool> seen(size_t(cards), false);
            bool valid = true;
            for (qsizetype i : order) {
                if (i < 0 || i >= cards || seen[size_t(i)]) {
                    valid = false;
                    break;
                }
                seen[size_t(i)] = true;
            }
            if (valid)
                return order;
        }
    }
    QList<qsizetype> order;
    order.reserve(cards);
    for (qsizetype i = 0; i < cards; ++i)
        order.append(i);
    return order;
}

qsizetype XQCorkboardView::indexOfCardAtPoint(QPointF point) const
{
    const std::vector<qsizetype>& candidates = m_hitIndex->candidatesAt(point);
    if (candidates.empty())
        return -1;
    if (m_usesFreeformArrangement) {
        // Front-most first: the latest card in drawing order among those under the point.
        const QList<qsizetype> order = cardIndexesInDrawingOrder();
        for (qsizetype k = order.size() - 1; k >= 0; --k) {
            const qsizetype i = order[k];
            if (i < m_cardRects.count() && mouseInRect(point, m_cardRects[i]))
                return i;
        }
    }
    for (qsizetype i : candidates) {
        if (mouseInRect(point, m_cardRects[i]))
            return i;
    }
    return -1;
}

qsizetype XQCorkboardView::indexOfSectionAtPoint(QPointF point) const
{
    for (qsizetype s = 0; s < m_sectionRects.count(); ++s) {
        if (mouseInRect(point, m_sectionRects[s]))
            return s;
    }
    return NotFound;
}

bool XQCorkboardView::rectIntersectsExistingCard(const QRectF& rect) const
{
    return std::any_of(m_cardRects.rects.begin(), m_cardRects.rects.end(),
                       [&](const QRectF& card) { return rectsIntersect(card, rect); });
}

XQIndexSet XQCorkboardView::indexesOfCardsIntersectingRect(const QRectF& rect) const
{
    std::vector<qsizetype> hits;
    for (qsizetype i = 0; i < m_cardRects.count(); ++i) {
        if (rectsIntersect(m_cardRects[i], rect))
            hits.push_back(i);
    }
    return XQIndexSet(std::move(hits));
}

qsizetype XQCorkboardView::sectionIndexForCardIndex(qsizetype index, qsizetype* cardOffset) const
{
    const auto answer = [&](qsizetype section, qsizetype offset) {
        if (cardOffset)
            *cardOffset = offset;
        return section;
    };
    const int sections = numberOfSections();
    if (sections == 1)
        return answer(0, 0);
    const qsizetype cards = numberOfCards();
    if (index < 0 || index > cards)
        return answer(NotFound, NotFound);
    if (usesSections()) {
        qsizetype start = 0;
        for (int s = 0; s < sections; ++s) {
            const qsizetype count = numberOfCardsInSection(s);
            if (start + count > index || (index == cards && s == sections - 1))
                return answer(s, start);
            start += count;
        }
        return answer(NotFound, NotFound);
    }
    if (m_dataSource && m_dataSource->respondsTo(DS::NumberOfCardsInCorkboardView))
        return answer(0, 0);
    return answer(NotFound, NotFound);
}

qsizetype XQCorkboardView::leftMostCardInRect(const QRectF& rect, const XQIndexSet& indexes) const
{
    return RowScan::extreme(m_cardRects, rect, indexes, LeftMost);
}

qsizetype XQCorkboardView::rightMostCardInRect(const QRectF& rect, const XQIndexSet& indexes) const
{
    return RowScan::extreme(m_cardRects, rect, indexes, RightMost);
}

qsizetype XQCorkboardView::topMostCardInRect(const QRectF& rect, const XQIndexSet& indexes) const
{
    return RowScan::extreme(m_cardRects, rect, indexes, TopMost);
}

qsizetype XQCorkboardView::bottomMostCardInRect(const QRectF& rect, const XQIndexSet& indexes) const
{
    return RowScan::extreme(m_cardRects, rect, indexes, BottomMost);
}

std::optional<QList<qsizetype>> XQCorkboardView::cardIndexesSortedInCoordinateOrder(int order) const
{
    const qsizetype cards = m_cardRects.count();
    if (cards == 0)
        return std::nullopt;
    const bool rows = order == 0 || order == 1 || order == 4 || order == 5;
    const bool fromEnd = order >= 4;
    const int seedSide = rows ? (fromEnd ? BottomMost : TopMost) : (fromEnd ? RightMost : LeftMost);
    const bool reversedInBand = order == 1 || order == 5 || order == 3 || order == 7;
    const int bandSide = rows ? (reversedInBand ? RightMost : LeftMost) : (reversedInBand ? BottomMost : TopMost);
    const QRectF bounds = rect();
    std::vector<qsizetype> remaining(static_cast<size_t>(cards));
    for (qsizetype i = 0; i < cards; ++i)
        remaining[size_t(i)] = i;
    QList<qsizetype> result;
    result.reserve(cards);
    const auto take = [&](qsizetype card) {
        remaining.erase(std::lower_bound(remaining.begin(), remaining.end(), card));
        result.append(card);
    };
    while (!remaining.empty()) {
        const qsizetype seed = RowScan::extreme(m_cardRects, bounds, remaining, seedSide);
        if (seed < 0) {
            // Cards that lie outside the board's bounds follow in index order.
            for (qsizetype card : remaining)
                result.append(card);
            break;
        }
        const QRectF& s = m_cardRects[seed];
        const QRectF band = rows ? QRectF(bounds.x(), s.y(), bounds.width(), s.height())
                                 : QRectF(s.x(), bounds.y(), s.width(), bounds.height());
        bool tookSeed = false;
        for (;;) {
            const qsizetype next = RowScan::extreme(m_cardRects, band, remaining, bandSide);
            if (next < 0)
                break;
            tookSeed = tookSeed || next == seed;
            take(next);
        }
        if (!tookSeed && std::binary_search(remaining.begin(), remaining.end(), seed))
            take(seed); // a card too flat to qualify for its own band still moves on
    }
    return result;
}

// ---- selection

void XQCorkboardView::selectCardIndexes(const std::optional<XQIndexSet>& indexes, bool byExtendingSelection,
                                        bool bringToFront)
{
    XQIndexSet selection;
    if (!indexes || indexes->contains(NotFound) || (!indexes->isEmpty() && indexes->firstIndex() < 0)) {
        m_startIndexForShiftClicks = -1;
    } else {
        selection = byExtendingSelection ? m_selectedCardIndexes.unitedWith(*indexes) : *indexes;
    }
    if (selection == m_selectedCardIndexes)
        return;
    const XQIndexSet old = m_selectedCardIndexes;
    m_selectedCardIndexes = selection;
    QVariantMap userInfo;
    userInfo.insert(XQCorkboardOldSelectionKey, QVariant::fromValue(old));
    if (bringToFront)
        userInfo.insert(XQCorkboardBringToFrontKey, true);
    NotificationCenter::defaultCenter().post(XQCorkboardViewSelectionDidChangeNotification, this, userInfo);
    if (m_delegate && m_delegate->respondsTo(XQCorkboardViewDelegate::CorkboardViewSelectionDidChange))
        m_delegate->corkboardViewSelectionDidChange(this, old);
    const double grow = m_interCardSpacing * 0.5;
    for (const XQIndexSet* set : {&old, static_cast<const XQIndexSet*>(&m_selectedCardIndexes)}) {
        for (qsizetype i : *set) {
            const QRectF card = rectOfCard(i);
            if (!card.isNull())
                redisplay(card.adjusted(-grow, -grow, grow, grow));
        }
    }
}

void XQCorkboardView::selectAll() { selectCardIndexes(XQIndexSet::range(0, m_cardRects.count() - 1), false); }

void XQCorkboardView::deselectAll() { selectCardIndexes(std::nullopt, false); }

// ---- keyboard navigation

qsizetype XQCorkboardView::probeForCard(QPointF start, double dx, double dy) const
{
    // Walk from an edge of a card in steps of the spacing until another card is under the probe or the
    // probe leaves the board.
    const double step = std::max(m_interCardSpacing, 1.0);
    QPointF probe = start;
    const double limitX = width(), limitY = height();
    for (;;) {
        probe += QPointF(dx * step, dy * step);
        const qsizetype hit = indexOfCardAtPoint(probe);
        if (hit >= 0)
            return hit;
        if ((dx < 0 && probe.x() <= 0) || (dx > 0 && probe.x() >= limitX) || (dy < 0 && probe.y() <= 0)
            || (dy > 0 && probe.y() >= limitY) || (dx == 0 && dy == 0))
            return -1;
    }
}

void XQCorkboardView::keyboardSelect(qsizetype target, bool extend, bool rangeFromFirst)
{
    if (!extend) {
        selectCardIndexes(XQIndexSet{target}, false);
    } else if (rangeFromFirst && !m_selectedCardIndexes.isEmpty()) {
        const qsizetype first = m_selectedCardIndexes.firstIndex();
        selectCardIndexes(XQIndexSet::range(std::min(first, target), std::max(first, target)), true);
    } else {
        selectCardIndexes(XQIndexSet{target}, true);
    }
    scrollCardAtIndexToVisible(target);
}

void XQCorkboardView::moveLeftModifyingSelection(bool extend) { moveHorizontally(true, extend); }

void XQCorkboardView::moveRightModifyingSelection(bool extend) { moveHorizontally(false, extend); }

void XQCorkboardView::moveHorizontally(bool left, bool extend)
{
    if (m_selectedCardIndexes.isEmpty()) {
        beep();
        return;
    }
    const bool rtl = m_cardsUseRightToLeftDirection;
    // Towards lower card numbers: left in a left-to-right board, right in a right-to-left one.
    const bool backwards = left != rtl;
    const qsizetype step = backwards ? -1 : 1;
    const qsizetype anchor = backwards ? m_selectedCardIndexes.firstIndex() : m_selectedCardIndexes.lastIndex();
    if (m_usesFreeformArrangement) {
        const std::optional<QList<qsizetype>> order = cardIndexesSortedInCoordinateOrder(rtl ? 1 : 0);
        if (!order)
            return;
        const qsizetype at = order->indexOf(anchor);
        const qsizetype to = at + step;
        if (at < 0 || to < 0 || to >= order->size())
            return;
        keyboardSelect(order->at(to), false, false);
        return;
    }
    const QRectF card = rectOfCard(anchor);
    if (usesSections() && m_multipleSectionsMode == 2 && numberOfSections() > 1) {
        qsizetype target = card.isNull()
            ? -1
            : probeForCard(QPointF(left ? card.left() : card.right(), card.center().y()), left ? -1 : 1, 0);
        if (target < 0)
            target = anchor;
        keyboardSelect(target, extend, true);
        return;
    }
    const qsizetype target = std::clamp(anchor + step, qsizetype(0), std::max<qsizetype>(0, numberOfCards() - 1));
    keyboardSelect(target, extend, false);
}

void XQCorkboardView::moveUpModifyingSelection(bool extend) { moveVertically(true, extend); }

void XQCorkboardView::moveDownModifyingSelection(bool extend) { moveVertically(false, extend); }

void XQCorkboardView::moveVertically(bool up, bool extend)
{
    const qsizetype cards = numberOfCards();
    const bool empty = m_selectedCardIndexes.isEmpty();
    const qsizetype anchor = up ? m_selectedCardIndexes.firstIndex() : m_selectedCardIndexes.lastIndex();
    if (m_usesFreeformArrangement) {
        if (empty) {
            beep();
            return;
        }
        const bool rtl = m_cardsUseRightToLeftDirection;
        const std::optional<QList<qsizetype>> order = cardIndexesSortedInCoordinateOrder(rtl ? 3 : 2);
        if (!order)
            return;
        const qsizetype at = order->indexOf(anchor);
        const qsizetype to = (up != rtl) ? at - 1 : at + 1;
        if (at < 0 || to < 0 || to >= order->size())
            return;
        keyboardSelect(order->at(to), false, false);
        return;
    }
    if (empty) {
        if (cards > 0)
            keyboardSelect(up ? cards - 1 : 0, false, false);
        return;
    }
    if (usesSections() && m_multipleSectionsMode == 2 && numberOfSections() > 1) {
        const qsizetype target = up ? anchor - 1 : anchor + 1;
        if (target < 0 || target >= cards)
            return;
        keyboardSelect(target, extend, false);
        return;
    }
    const QRectF card = rectOfCard(anchor);
    qsizetype target =
        card.isNull() ? -1 : probeForCard(QPointF(card.center().x(), up ? card.top() : card.bottom()), 0, up ? -1 : 1);
    if (target < 0)
        target = anchor;
    if (target >= cards)
        return;
    keyboardSelect(target, extend, true);
}

void XQCorkboardView::moveToBeginningOfDocument()
{
    const qsizetype cards = std::min(numberOfCards(), m_cardRects.count());
    if (cards == 0)
        return;
    const qsizetype target = m_usesFreeformArrangement ? topMostCardInRect(rect(), XQIndexSet::range(0, cards - 1)) : 0;
    if (target < 0)
        return;
    selectCardIndexes(XQIndexSet{target}, false);
    scrollCardAtIndexToVisible(target);
}

void XQCorkboardView::moveToEndOfDocument()
{
    const qsizetype cards = std::min(numberOfCards(), m_cardRects.count());
    if (cards == 0) {
        beep();
        return;
    }
    const qsizetype target =
        m_usesFreeformArrangement ? bottomMostCardInRect(rect(), XQIndexSet::range(0, cards - 1)) : cards - 1;
    if (target < 0)
        return;
    selectCardIndexes(XQIndexSet{target}, false);
    scrollCardAtIndexToVisible(target);
}

void XQCorkboardView::cancelOperation()
{
    if (m_editedCardIndex < 0) {
        if (m_selectedCardIndexes.isEmpty())
            beep();
        else
            editCardAtIndex(m_selectedCardIndexes.firstIndex(), true);
        return;
    }
    setFocus(Qt::OtherFocusReason);
    endEditing();
}

// ---- marquee

void XQCorkboardView::marqueeSelection(QPointF originalMouseLocation, QPointF mouseLocation,
                                       const XQIndexSet& originalSelection, MarqueeSelectionType selectionType)
{
    if (!m_usesFreeformArrangement)
        return;
    const QRectF marquee(QPointF(std::min(originalMouseLocation.x(), mouseLocation.x()),
                                 std::min(originalMouseLocation.y(), mouseLocation.y())),
                         QSizeF(std::abs(mouseLocation.x() - originalMouseLocation.x()),
                                std::abs(mouseLocation.y() - originalMouseLocation.y())));
    if (marquee == m_marqueeSelectionBounds)
        return;
    redisplay(m_marqueeSelectionBounds.adjusted(-2, -2, 2, 2));
    redisplay(marquee.adjusted(-2, -2, 2, 2));
    m_marqueeSelectionBounds = marquee;
    const XQIndexSet touched = indexesOfCardsIntersectingRect(marquee);
    switch (selectionType) {
    case MarqueeSelect:
        selectCardIndexes(touched, false);
        break;
    case MarqueeExtend:
        selectCardIndexes(originalSelection.unitedWith(touched), false);
        break;
    case MarqueeSubtract:
        selectCardIndexes(originalSelection.minus(touched), false);
        break;
    }
}

} // namespace qly
