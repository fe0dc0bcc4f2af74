// Keys, mouse clicks and drags, and the in-place editors of a card's title and text.
#include <qlyappkit/corkboard/XQCorkboardView.h>

#include <QApplication>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPlainTextEdit>

#include <cmath>

#include <qlyappkit/platform/text/Range.h>

namespace qly {

using DS = XQCorkboardViewDataSource;
using Delegate = XQCorkboardViewDelegate;

// ---- keys

void XQCorkboardView::keyPressEvent(QKeyEvent* event)
{
    const int key = event->key();
    const Qt::KeyboardModifiers modifiers = event->modifiers();
    if (key == Qt::Key_Return && m_delegate
        && m_delegate->respondsTo(Delegate::CorkboardViewDidReceiveReturnKeyEvent)) {
        m_delegate->corkboardViewDidReceiveReturnKeyEvent(this, modifiers);
        return;
    }
    if (key == Qt::Key_Enter && !m_selectedCardIndexes.isEmpty()) {
        editCardTitleAtIndex(m_selectedCardIndexes.firstIndex(), true);
        return;
    }
    if (key == Qt::Key_Delete || key == Qt::Key_Backspace) {
        if (m_delegate && m_delegate->respondsTo(Delegate::CorkboardViewDidReceiveDeleteKeyEvent))
            m_delegate->corkboardViewDidReceiveDeleteKeyEvent(this, modifiers);
        return;
    }
    if (key == Qt::Key_Space) {
        if (m_delegate && m_delegate->respondsTo(Delegate::CorkboardViewDidReceiveSpaceKeyEvent))
            m_delegate->corkboardViewDidReceiveSpaceKeyEvent(this, modifiers);
        return;
    }
    // The key bindings.
    const bool shift = modifiers & Qt::ShiftModifier;
    const bool command = modifiers & Qt::ControlModifier;
    switch (key) {
    case Qt::Key_Left:
        shift ? moveLeftAndModifySelection() : moveLeft();
        return;
    case Qt::Key_Right:
        shift ? moveRightAndModifySelection() : moveRight();
        return;
    case Qt::Key_Up:
        if (command)
            moveToBeginningOfDocument();
        else
            shift ? moveUpAndModifySelection() : moveUp();
        return;
    case Qt::Key_Down:
        if (command)
            moveToEndOfDocument();
        else
            shift ? moveDownAndModifySelection() : moveDown();
        return;
    case Qt::Key_Home:
        command ? moveToBeginningOfDocument() : scrollToBeginningOfDocument();
        return;
    case Qt::Key_End:
        command ? moveToEndOfDocument() : scrollToEndOfDocument();
        return;
    case Qt::Key_PageUp:
        scrollPageUp();
        return;
    case Qt::Key_PageDown:
        scrollPageDown();
        return;
    case Qt::Key_Escape:
        cancelOperation();
        return;
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        focusNextPrevChild(key == Qt::Key_Tab && !shift);
        return;
    case Qt::Key_A:
        if (command) {
            selectAll();
            return;
        }
        break;
    default:
        break;
    }
    QWidget::keyPressEvent(event);
}

bool XQCorkboardView::focusNextPrevChild(bool next)
{
    // Tab leaves the board for the window's next key view rather than cycling through the editors.
    if (QWidget* window = this->window(); window && window != this) {
        QWidget* target = next ? nextInFocusChain() : previousInFocusChain();
        while (target && target != this && (isAncestorOf(target) || !(target->focusPolicy() & Qt::TabFocus)))
            target = next ? target->nextInFocusChain() : target->previousInFocusChain();
        if (target && target != this) {
            target->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
            return true;
        }
    }
    return false;
}

// ---- mouse

void XQCorkboardView::mousePressEvent(QMouseEvent* event)
{
    setFocus(Qt::MouseFocusReason);
    if (m_editedCardIndex >= 0)
        endEditing();
    const QPointF point = event->position();
    const qsizetype card = indexOfCardAtPoint(point);
    m_mouseDownPoint = point;
    m_mouseDownCard = card;
    m_mouseDownSelection = m_selectedCardIndexes;
    m_dragging = false;
    m_marqueeActive = false;
    m_deselectOthersOnRelease = false;
    m_clickedSection = indexOfSectionAtPoint(point);
    if (event->button() == Qt::RightButton)
        m_contextualMenuPosition = point;
    handleMouseSelection(event, card);
}

void XQCorkboardView::handleMouseSelection(QMouseEvent* event, qsizetype clickedCardIndex)
{
    const Qt::KeyboardModifiers modifiers = event->modifiers();
    const bool shift = modifiers & Qt::ShiftModifier;
    const bool command = modifiers & Qt::ControlModifier;
    if (clickedCardIndex < 0) {
        if (m_usesFreeformArrangement && event->button() == Qt::LeftButton) {
            m_marqueeActive = true;
            m_marqueeType = command ? MarqueeSubtract : shift ? MarqueeExtend : MarqueeSelect;
            if (m_marqueeType == MarqueeSelect)
                deselectAll();
        } else if (!shift && !command) {
            deselectAll();
        }
        return;
    }
    const bool front = m_usesFreeformArrangement;
    if (command) {
        if (m_selectedCardIndexes.contains(clickedCardIndex))
            selectCardIndexes(m_selectedCardIndexes.minus(XQIndexSet{clickedCardIndex}), false);
        else
            selectCardIndexes(XQIndexSet{clickedCardIndex}, true, front);
        m_startIndexForShiftClicks = clickedCardIndex;
        return;
    }
    if (shift && m_startIndexForShiftClicks >= 0) {
        const qsizetype start = m_startIndexForShiftClicks;
        selectCardIndexes(XQIndexSet::range(std::min(start, clickedCardIndex), std::max(start, clickedCardIndex)),
                          false, front);
        return;
    }
    if (m_selectedCardIndexes.contains(clickedCardIndex) && event->button() == Qt::LeftButton) {
        // A click on a selected card may start dragging the whole selection; a plain click (no drag)
        // selects that card alone when the button comes up.
        m_deselectOthersOnRelease = m_selectedCardIndexes.count() > 1;
    } else {
        selectCardIndexes(XQIndexSet{clickedCardIndex}, false, front);
    }
    m_startIndexForShiftClicks = clickedCardIndex;
}

void XQCorkboardView::mouseMoveEvent(QMouseEvent* event)
{
    if (!(event->buttons() & Qt::LeftButton))
        return;
    const QPointF point = event->position();
    if (m_marqueeActive) {
        marqueeSelection(m_mouseDownPoint, point, m_mouseDownSelection, m_marqueeType);
        return;
    }
    if (m_mouseDownCard < 0)
        return;
    if (!m_dragging && (point - m_mouseDownPoint).manhattanLength() < QApplication::startDragDistance())
        return;
    if (!m_dragging) {
        m_dragging = true;
        setDraggedCardIndex(m_mouseDownCard);
    }
    if (!m_usesFreeformArrangement) {
        const qsizetype drop = nextCardForBackgroundClickAtPoint(point);
        const QRectF before = drop >= 0 ? dropZoneForCardAtIndex(std::min(drop, m_cardRects.count() - 1)) : QRectF();
        setDropCardIndex(drop, drop >= 0 ? XQCorkboardDropOperation::Before : XQCorkboardDropOperation::None);
        redisplay(before);
    }
    update();
}

void XQCorkboardView::mouseReleaseEvent(QMouseEvent* event)
{
    const QPointF point = event->position();
    if (m_marqueeActive) {
        m_marqueeActive = false;
        redisplay(m_marqueeSelectionBounds.adjusted(-2, -2, 2, 2));
        m_marqueeSelectionBounds = QRectF();
        return;
    }
    if (m_dragging) {
        m_dragging = false;
        const XQIndexSet dragged = m_selectedCardIndexes;
        if (m_usesFreeformArrangement) {
            const QPointF delta = point - m_mouseDownPoint;
            if (m_dataSource && m_dataSource->respondsTo(DS::SetCoordinateOfCardAtIndex) && m_fixedSizeCardWidth > 0) {
                for (qsizetype i : dragged) {
                    const QRectF card = rectOfCard(i);
                    if (card.isNull())
                        continue;
                    const QPointF moved(std::max(0.0, card.x() + delta.x()), std::max(0.0, card.y() + delta.y()));
                    m_dataSource->setCoordinateOfCardAtIndex(this, moved / m_fixedSizeCardWidth, i);
                }
                reloadData();
            }
        } else if (dropCardIndex() >= 0 && m_delegate && m_delegate->respondsTo(Delegate::MoveCardsAtIndexes)) {
            m_delegate->moveCardsAtIndexes(this, dragged, dropCardIndex());
        }
        setDropCardIndex(-1, XQCorkboardDropOperation::None);
        setDraggedCardIndex(-1);
        update();
        return;
    }
    if (m_deselectOthersOnRelease && m_mouseDownCard >= 0)
        selectCardIndexes(XQIndexSet{m_mouseDownCard}, false, m_usesFreeformArrangement);
    m_deselectOthersOnRelease = false;
}

void XQCorkboardView::mouseDoubleClickEvent(QMouseEvent* event)
{
    const QPointF point = event->position();
    const qsizetype card = indexOfCardAtPoint(point);
    if (card < 0)
        return;
    if (m_delegate && m_delegate->respondsTo(Delegate::DoubleClickedCardAtIndex)) {
        m_delegate->doubleClickedCardAtIndex(this, card);
        return;
    }
    if (titleRectForCardAtIndex(card).contains(point))
        editCardTitleAtIndex(card, true);
    else
        editCardAtIndex(card, true);
}

void XQCorkboardView::contextMenuEvent(QContextMenuEvent* event)
{
    m_contextualMenuPosition = event->pos();
    m_clickedSection = indexOfSectionAtPoint(event->pos());
    event->ignore();
}

// ---- in-place editing

void XQCorkboardView::editCardTitleAtIndex(qsizetype index, bool select)
{
    editCardAtIndex(index, select);
    if (m_titleEditor && m_editedCardIndex == index)
        m_titleEditor->setFocus(Qt::OtherFocusReason);
}

void XQCorkboardView::editCardAtIndex(qsizetype index, bool select)
{
    if (index < 0 || index >= m_cardRects.count())
        return;
    if (m_editedCardIndex >= 0)
        endEditing();
    if (!m_titleEditor) {
        m_titleEditor = new QLineEdit(this);
        m_titleEditor->setFrame(false);
        m_textEditor = new QPlainTextEdit(this);
        m_textEditor->setFrameShape(QFrame::NoFrame);
        m_textEditor->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        m_textEditor->installEventFilter(this);
        m_titleEditor->installEventFilter(this);
    }
    if (std::optional<Font> font =
            XQCorkboardFontOfAttributes(isImageCard(index) ? m_imageTitleAttributes : m_textTitleAttributes))
        m_titleEditor->setFont(font->toQFont());
    if (std::optional<Font> font = XQCorkboardFontOfAttributes(m_textAttributes))
        m_textEditor->setFont(font->toQFont());
    m_editedCardIndex = index;
    const bool hasTitle = m_dataSource && m_dataSource->respondsTo(DS::TitleForCardAtIndex);
    const bool hasText = m_dataSource && m_dataSource->respondsTo(DS::TextForCardAtIndex);
    m_titleEditor->setText(hasTitle ? m_dataSource->titleForCardAtIndex(this, index) : QString());
    m_textEditor->setPlainText(hasText ? m_dataSource->textForCardAtIndex(this, index) : QString());
    m_textEditor->setVisible(!isImageCard(index));
    m_titleEditor->show();
    positionEditors();
    if (select) {
        m_titleEditor->selectAll();
        m_textEditor->selectAll();
    }
    QWidget* focus = m_textEditor->isVisible() ? static_cast<QWidget*>(m_textEditor) : m_titleEditor;
    focus->setFocus(Qt::OtherFocusReason);
}

void XQCorkboardView::endEditing()
{
    const qsizetype index = m_editedCardIndex;
    if (index < 0 || !m_titleEditor)
        return;
    m_editedCardIndex = -1;
    const QString title = m_titleEditor->text();
    const QString text = m_textEditor->toPlainText();
    const bool wasText = m_textEditor->isVisible();
    m_titleEditor->hide();
    m_textEditor->hide();
    if (m_dataSource && index < numberOfCards()) {
        if (m_dataSource->respondsTo(DS::SetTitleForCardAtIndex))
            m_dataSource->setTitleForCardAtIndex(this, title, index);
        if (wasText && m_dataSource->respondsTo(DS::SetTextForCardAtIndex))
            m_dataSource->setTextForCardAtIndex(this, text, index);
    }
    if (!hasFocus())
        setFocus(Qt::OtherFocusReason);
    reloadData();
}

void XQCorkboardView::positionEditors()
{
    if (m_editedCardIndex < 0 || !m_titleEditor)
        return;
    const QRectF title = titleRectForCardAtIndex(m_editedCardIndex);
    const QRectF text = textRectForCardAtIndex(m_editedCardIndex);
    m_titleEditor->setGeometry(title.adjusted(2, 1, -XQCorkboardLabelChipWidth, -2).toAlignedRect());
    m_textEditor->setGeometry(text.adjusted(1, 1, -1, -1).toAlignedRect());
}

void XQCorkboardView::dropEditors()
{
    m_editedCardIndex = -1;
    if (m_titleEditor) {
        m_titleEditor->hide();
        m_textEditor->hide();
    }
}

} // namespace qly
