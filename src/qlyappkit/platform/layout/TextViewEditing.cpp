// TextView's editing: typing, deleting, caret movement, the clipboard, and the keyboard and mouse
// events that drive them.
#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QStyleHints>
#include <algorithm>

#include <qlyappkit/platform/layout/LayoutManager.h>
#include <qlyappkit/platform/layout/TextContainer.h>
#include <qlyappkit/platform/layout/TextView.h>
#include <qlyappkit/platform/rtf/RTFReader.h>
#include <qlyappkit/platform/rtf/RTFWriter.h>
#include <qlyappkit/platform/services/NotificationCenter.h>
#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/text/ParagraphRanges.h>
#include <qlyappkit/platform/text/TextStorage.h>

namespace qly {

namespace {
// How far around a point a word is looked for: a paragraph, but never more than this either side.
constexpr qsizetype WordWindow = 2048;
const QString LegacyRTFType = QStringLiteral("application/rtf");
} // namespace

// ---- editing

void TextView::replaceSelection(const AttributedString& text)
{
    TextStorage* storage = textStorage();
    if (!storage || !isEditable())
        return;
    const Range selection = selectedRange();
    storage->beginEditing();
    storage->replaceCharacters(selection, text);
    storage->endEditing();
    const qsizetype caret = selection.location + text.length();
    state().anchor = state().caret = std::min(caret, storage->length());
    if (m_verticallyResizable || m_horizontallyResizable)
        sizeToFit();
    NotificationCenter::defaultCenter().post(TextDidChangeNotification, firstTextView());
    selectionDidChange();
}

void TextView::insertText(const QString& text)
{
    if (text.isEmpty() && selectedRange().length == 0)
        return;
    replaceSelection(AttributedString(text, typingAttributes()));
}

void TextView::insertAttributedText(const AttributedString& text) { replaceSelection(text); }

qsizetype TextView::previousCharacterBoundary(qsizetype index) const
{
    TextStorage* storage = textStorage();
    if (!storage || index <= 0)
        return 0;
    --index;
    // Never between the halves of a surrogate pair or of a CR LF.
    if (index > 0) {
        const QChar c = storage->characterAt(index);
        const QChar before = storage->characterAt(index - 1);
        if ((c.isLowSurrogate() && before.isHighSurrogate()) || (c == u'\n' && before == u'\r'))
            --index;
    }
    return index;
}

qsizetype TextView::nextCharacterBoundary(qsizetype index) const
{
    TextStorage* storage = textStorage();
    if (!storage)
        return 0;
    const qsizetype length = storage->length();
    if (index >= length)
        return length;
    const QChar c = storage->characterAt(index);
    ++index;
    if (index < length) {
        const QChar after = storage->characterAt(index);
        if ((c.isHighSurrogate() && after.isLowSurrogate()) || (c == u'\r' && after == u'\n'))
            ++index;
    }
    return index;
}

void TextView::deleteBackward()
{
    if (!isEditable())
        return;
    Range selection = selectedRange();
    if (selection.length == 0) {
        if (selection.location == 0)
            return;
        const qsizetype from = previousCharacterBoundary(selection.location);
        selection = Range{from, selection.location - from};
        state().anchor = selection.location;
        state().caret = selection.end();
    }
    replaceSelection(AttributedString());
}

void TextView::deleteForward()
{
    if (!isEditable())
        return;
    Range selection = selectedRange();
    if (selection.length == 0) {
        const qsizetype to = nextCharacterBoundary(selection.location);
        if (to == selection.location)
            return;
        selection = Range{selection.location, to - selection.location};
        state().anchor = selection.location;
        state().caret = selection.end();
    }
    replaceSelection(AttributedString());
}

void TextView::selectAll()
{
    if (TextStorage* storage = textStorage())
        setSelection(0, storage->length());
}

// ---- moving

void TextView::moveCaretTo(qsizetype index, bool extend, bool keepVerticalX)
{
    SharedState& s = state();
    s.caret = index;
    if (!extend)
        s.anchor = index;
    selectionDidChange(keepVerticalX);
}

void TextView::moveLeft(bool extend)
{
    const Range selection = selectedRange();
    if (!extend && selection.length > 0)
        moveCaretTo(selection.location, false);
    else
        moveCaretTo(previousCharacterBoundary(state().caret), extend);
}

void TextView::moveRight(bool extend)
{
    const Range selection = selectedRange();
    if (!extend && selection.length > 0)
        moveCaretTo(selection.end(), false);
    else
        moveCaretTo(nextCharacterBoundary(state().caret), extend);
}

// The character index one line above (-1) or below (+1) the caret, at the x the vertical moves
// started from; it crosses into the previous or next container, and stops at the text's ends.
qsizetype TextView::indexVertically(int direction)
{
    LayoutManager* manager = layoutManager();
    TextStorage* storage = textStorage();
    if (!manager || !storage)
        return state().caret;
    TextContainer* container = nullptr;
    const QRectF caret = manager->insertionPointRectForCharacterIndex(state().caret, &container);
    if (!container)
        return state().caret;
    if (state().verticalX < 0)
        state().verticalX = caret.x();
    const double x = state().verticalX;
    const auto& containers = manager->textContainers();
    qsizetype index = manager->indexOfTextContainer(container);
    QRectF line = caret;
    const std::vector<LineFragment> lines = manager->lineFragmentsForTextContainer(container);
    for (const LineFragment& fragment : lines) {
        if (fragment.rect.contains(QPointF(fragment.rect.x(), caret.center().y())))
            line = fragment.rect;
    }
    if (direction < 0) {
        if (line.top() > 0)
            return manager->characterIndexForPoint(QPointF(x, line.top() - 0.5), container);
        if (index == 0)
            return 0;
        TextContainer* previous = containers[size_t(index - 1)];
        return manager->characterIndexForPoint(QPointF(x, previous->size().height()), previous);
    }
    const bool lastLineHere = lines.empty() || line.bottom() >= lines.back().rect.bottom();
    const bool extraBelow = manager->extraLineFragmentTextContainer() == container
        && manager->extraLineFragmentRect().top() >= line.bottom();
    if (!lastLineHere || extraBelow)
        return manager->characterIndexForPoint(QPointF(x, line.bottom() + 0.5), container);
    if (index + 1 >= qsizetype(containers.size()))
        return storage->length();
    TextContainer* next = containers[size_t(index + 1)];
    if (manager->glyphRangeForTextContainer(next).length == 0 && manager->extraLineFragmentTextContainer() != next)
        return storage->length();
    return manager->characterIndexForPoint(QPointF(x, 0.5), next);
}

void TextView::moveUp(bool extend)
{
    if (!extend && selectedRange().length > 0) {
        moveCaretTo(selectedRange().location, false);
        return;
    }
    moveCaretTo(indexVertically(-1), extend, true);
}

void TextView::moveDown(bool extend)
{
    if (!extend && selectedRange().length > 0) {
        moveCaretTo(selectedRange().end(), false);
        return;
    }
    moveCaretTo(indexVertically(1), extend, true);
}

void TextView::moveToBeginningOfLine(bool extend)
{
    LayoutManager* manager = layoutManager();
    TextStorage* storage = textStorage();
    if (!manager || !storage)
        return;
    const qsizetype caret = state().caret;
    if (caret >= storage->length() && manager->extraLineFragmentTextContainer()) {
        moveCaretTo(caret, extend);
        return;
    }
    Range line;
    manager->lineFragmentRectForGlyphAtIndex(std::min(caret, storage->length() - 1), &line);
    moveCaretTo(line.location == NotFound ? caret : line.location, extend);
}

void TextView::moveToEndOfLine(bool extend)
{
    LayoutManager* manager = layoutManager();
    TextStorage* storage = textStorage();
    if (!manager || !storage || state().caret >= storage->length())
        return;
    Range line;
    manager->lineFragmentRectForGlyphAtIndex(state().caret, &line);
    if (line.location == NotFound)
        return;
    qsizetype end = line.end();
    // Before the line's break, or before the space a wrapped line ends with.
    const QChar last = storage->characterAt(end - 1);
    const bool lineBreak = last == u'\n' || last == u'\r' || last == QChar(0x2029) || last == QChar(0x2028);
    if (end > line.location && (lineBreak || (end < storage->length() && last.isSpace())))
        end = previousCharacterBoundary(end);
    moveCaretTo(end, extend);
}

// ---- clipboard

void TextView::copy()
{
    TextStorage* storage = textStorage();
    const Range selection = selectedRange();
    if (!storage || selection.length == 0)
        return;
    const AttributedString text = storage->attributedSubstring(selection);
    auto* data = new QMimeData;
    data->setText(text.string());
    data->setData(RTFPasteboardType, RTFFromRange(text, Range{0, text.length()}));
    QGuiApplication::clipboard()->setMimeData(data);
}

void TextView::cut()
{
    if (!isEditable() || selectedRange().length == 0)
        return;
    copy();
    replaceSelection(AttributedString());
}

void TextView::paste()
{
    if (!isEditable())
        return;
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    if (!data)
        return;
    for (const QString& type : {RTFPasteboardType, LegacyRTFType}) {
        if (!data->hasFormat(type))
            continue;
        if (const std::optional<AttributedString> rich = attributedStringFromRTF(data->data(type))) {
            replaceSelection(*rich);
            return;
        }
    }
    if (data->hasText())
        insertText(data->text());
}

// ---- keyboard

bool TextView::focusNextPrevChild(bool) { return false; }

void TextView::keyPressEvent(QKeyEvent* event)
{
    const bool extend = event->modifiers() & Qt::ShiftModifier;
    if (event->matches(QKeySequence::Copy))
        copy();
    else if (event->matches(QKeySequence::Cut))
        cut();
    else if (event->matches(QKeySequence::Paste))
        paste();
    else if (event->matches(QKeySequence::SelectAll))
        selectAll();
    else {
        switch (event->key()) {
        case Qt::Key_Left:
            moveLeft(extend);
            break;
        case Qt::Key_Right:
            moveRight(extend);
            break;
        case Qt::Key_Up:
            moveUp(extend);
            break;
        case Qt::Key_Down:
            moveDown(extend);
            break;
        case Qt::Key_Home:
            moveToBeginningOfLine(extend);
            break;
        case Qt::Key_End:
            moveToEndOfLine(extend);
            break;
        case Qt::Key_Backspace:
            deleteBackward();
            break;
        case Qt::Key_Delete:
            deleteForward();
            break;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            insertText(QStringLiteral("\n"));
            break;
        case Qt::Key_Tab:
            insertText(QStringLiteral("\t"));
            break;
        default: {
            const QString text = event->text();
            const bool printable = !text.isEmpty()
                && std::all_of(text.begin(), text.end(), [](QChar c) { return c.isPrint() || c.isSurrogate(); });
            if (!printable || (event->modifiers() & (Qt::ControlModifier | Qt::MetaModifier))) {
                QWidget::keyPressEvent(event);
                return;
            }
            insertText(text);
        }
        }
    }
    event->accept();
}

// ---- mouse

Range TextView::rangeForGranularity(qsizetype index, Granularity granularity) const
{
    TextStorage* storage = textStorage();
    if (!storage || granularity == Granularity::Character)
        return Range{index, 0};
    const qsizetype length = storage->length();
    const Range paragraph = paragraphRangeIn(*storage, Range{std::min(index, length), 0});
    if (granularity == Granularity::Paragraph)
        return paragraph;
    // A word is looked for in its paragraph only (bounded, so a huge paragraph costs no more).
    const qsizetype from = std::max(paragraph.location, index - WordWindow);
    const qsizetype to = std::min(paragraph.end(), index + WordWindow);
    const AttributedString window(storage->substring(Range{from, to - from}));
    if (window.length() == 0)
        return Range{index, 0};
    const Range word = window.doubleClickAtIndex(std::min(index - from, window.length() - 1));
    return Range{word.location + from, word.length};
}

void TextView::extendDragTo(qsizetype index)
{
    const Range here = rangeForGranularity(index, m_granularity);
    if (here.location < m_dragOrigin.location)
        setSelection(m_dragOrigin.end(), here.location);
    else
        setSelection(m_dragOrigin.location, std::max(here.end(), m_dragOrigin.end()));
}

void TextView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !isSelectable()) {
        QWidget::mousePressEvent(event);
        return;
    }
    setFocus(Qt::MouseFocusReason);
    const qsizetype index = characterIndexForPoint(event->position());
    // A press soon after a double click is the third click: it selects the paragraph.
    const bool third = m_sinceDoubleClick.isValid()
        && m_sinceDoubleClick.elapsed() <= QGuiApplication::styleHints()->mouseDoubleClickInterval();
    m_sinceDoubleClick.invalidate();
    m_dragging = true;
    if (third) {
        m_granularity = Granularity::Paragraph;
        m_dragOrigin = rangeForGranularity(index, m_granularity);
        setSelectedRange(m_dragOrigin);
    } else if (event->modifiers() & Qt::ShiftModifier) {
        m_granularity = Granularity::Character;
        m_dragOrigin = Range{state().anchor, 0};
        extendDragTo(index);
    } else {
        m_granularity = Granularity::Character;
        m_dragOrigin = Range{index, 0};
        setSelectedRange(m_dragOrigin);
    }
    event->accept();
}

void TextView::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !isSelectable()) {
        QWidget::mouseDoubleClickEvent(event);
        return;
    }
    const qsizetype index = characterIndexForPoint(event->position());
    m_granularity = Granularity::Word;
    m_dragOrigin = rangeForGranularity(index, m_granularity);
    m_dragging = true;
    setSelectedRange(m_dragOrigin);
    m_sinceDoubleClick.start();
    event->accept();
}

void TextView::mouseMoveEvent(QMouseEvent* event)
{
    if (!m_dragging || !(event->buttons() & Qt::LeftButton)) {
        QWidget::mouseMoveEvent(event);
        return;
    }
    // Dragged beyond this view: the view of the page under the pointer decides, when there is one.
    TextView* target = this;
    if (QWidget* parent = parentWidget()) {
        QWidget* under = parent->childAt(mapToParent(event->position().toPoint()));
        if (auto* view = dynamic_cast<TextView*>(under); view && view->layoutManager() == layoutManager())
            target = view;
    }
    const QPointF point = target->mapFrom(this, event->position());
    extendDragTo(target->characterIndexForPoint(point));
    event->accept();
}

void TextView::mouseReleaseEvent(QMouseEvent* event)
{
    m_dragging = false;
    event->accept();
}

} // namespace qly
