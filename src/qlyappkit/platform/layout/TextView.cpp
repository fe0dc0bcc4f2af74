#include <qlyappkit/platform/layout/TextView.h>

#include <QPaintEvent>
#include <QPainter>
#include <QResizeEvent>
#include <algorithm>
#include <cmath>

#include <qlyappkit/platform/layout/LayoutManager.h>
#include <qlyappkit/platform/layout/TextContainer.h>
#include <qlyappkit/platform/services/NotificationCenter.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/text/TextStorage.h>

namespace qly {

const QString TextViewDidChangeSelectionNotification = QStringLiteral("NSTextViewDidChangeSelectionNotification");
const QString TextViewDidChangeTypingAttributesNotification =
    QStringLiteral("NSTextViewDidChangeTypingAttributesNotification");
const QString TextDidChangeNotification = QStringLiteral("NSTextDidChangeNotification");
const QString RTFPasteboardType = QStringLiteral("text/rtf");

namespace {
QRect wholePixels(const QRectF& frame)
{
    return QRect(int(std::lround(frame.x())), int(std::lround(frame.y())), int(std::lround(frame.width())),
                 int(std::lround(frame.height())));
}
} // namespace

TextView::TextView(const QRectF& frame, TextContainer* container, QWidget* parent) : QWidget(parent), m_frame(frame)
{
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::IBeamCursor);
    setAttribute(Qt::WA_InputMethodEnabled);
    m_settingFrame = true;
    setGeometry(wholePixels(frame));
    m_settingFrame = false;
    setTextContainer(container);
}

TextView::~TextView()
{
    if (m_textContainer)
        m_textContainer->m_textView = nullptr;
}

// ---- geometry

void TextView::setFrame(const QRectF& frame)
{
    m_frame = frame;
    m_settingFrame = true;
    setGeometry(wholePixels(frame));
    m_settingFrame = false;
    updateContainerSize();
}

void TextView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    // Resized from outside (a layout, the user): the frame follows the widget.
    if (!m_settingFrame && wholePixels(m_frame).size() != event->size()) {
        m_frame.setSize(QSizeF(event->size()));
        updateContainerSize();
    }
}

void TextView::setTextContainer(TextContainer* container)
{
    if (container == m_textContainer)
        return;
    if (m_textContainer)
        m_textContainer->m_textView = nullptr;
    m_textContainer = container;
    if (container) {
        if (container->m_textView)
            container->m_textView->m_textContainer = nullptr;
        container->m_textView = this;
        updateContainerSize();
    }
    update();
}

LayoutManager* TextView::layoutManager() const { return m_textContainer ? m_textContainer->layoutManager() : nullptr; }

TextStorage* TextView::textStorage() const
{
    LayoutManager* manager = layoutManager();
    return manager ? manager->textStorage() : nullptr;
}

void TextView::setTextContainerInset(QSizeF inset)
{
    m_inset = inset;
    updateContainerSize();
    update();
}

void TextView::updateContainerSize()
{
    if (!m_textContainer)
        return;
    QSizeF size = m_textContainer->size();
    if (m_textContainer->widthTracksTextView())
        size.setWidth(qMax(0.0, m_frame.width() - 2 * m_inset.width()));
    if (m_textContainer->heightTracksTextView())
        size.setHeight(qMax(0.0, m_frame.height() - 2 * m_inset.height()));
    m_textContainer->setSize(size);
}

void TextView::sizeToFit()
{
    LayoutManager* manager = layoutManager();
    if (!manager || !(m_verticallyResizable || m_horizontallyResizable))
        return;
    manager->ensureLayoutForTextContainer(m_textContainer);
    QRectF used = manager->usedRectForTextContainer(m_textContainer);
    if (manager->extraLineFragmentTextContainer() == m_textContainer)
        used = used.united(manager->extraLineFragmentRect());
    QSizeF size = m_frame.size();
    if (m_verticallyResizable)
        size.setHeight(std::clamp(std::ceil(used.bottom()) + 2 * m_inset.height(), m_minSize.height(),
                                  std::max(m_minSize.height(), m_maxSize.height())));
    if (m_horizontallyResizable)
        size.setWidth(std::clamp(std::ceil(used.right()) + 2 * m_inset.width(), m_minSize.width(),
                                 std::max(m_minSize.width(), m_maxSize.width())));
    if (size != m_frame.size())
        setFrameSize(size);
}

// ---- appearance

void TextView::setDrawsBackground(bool draws)
{
    m_drawsBackground = draws;
    update();
}

void TextView::setBackgroundColor(const QColor& color)
{
    m_backgroundColor = color;
    update();
}

void TextView::setSelectedTextBackgroundColor(const QColor& color)
{
    m_selectionColor = color;
    update();
}

// ---- shared state

TextView* TextView::firstTextView() const
{
    if (LayoutManager* manager = layoutManager()) {
        const auto& containers = manager->textContainers();
        if (!containers.empty() && containers.front()->textView())
            return containers.front()->textView();
    }
    return const_cast<TextView*>(this);
}

Range TextView::selectedRange() const
{
    const SharedState& s = state();
    return Range{std::min(s.anchor, s.caret), std::abs(s.caret - s.anchor)};
}

qsizetype TextView::insertionPointIndex() const { return state().caret; }

void TextView::setSelectedRange(Range range)
{
    const qsizetype length = textStorage() ? textStorage()->length() : 0;
    const qsizetype start = std::clamp<qsizetype>(range.location, 0, length);
    setSelection(start, std::clamp<qsizetype>(start + std::max<qsizetype>(range.length, 0), start, length));
}

void TextView::setSelection(qsizetype anchor, qsizetype caret)
{
    const qsizetype length = textStorage() ? textStorage()->length() : 0;
    SharedState& s = state();
    s.anchor = std::clamp<qsizetype>(anchor, 0, length);
    s.caret = std::clamp<qsizetype>(caret, 0, length);
    selectionDidChange();
}

void TextView::selectionDidChange(bool keepVerticalX)
{
    if (!keepVerticalX)
        state().verticalX = -1;
    updateTypingAttributes();
    // Focus follows the caret from page to page while the user works in the views.
    TextView* holder = textViewForCharacterIndex(state().caret);
    bool focused = false;
    if (LayoutManager* manager = layoutManager()) {
        for (TextContainer* container : manager->textContainers())
            focused = focused || (container->textView() && container->textView()->hasFocus());
    }
    if (focused && holder && !holder->hasFocus())
        holder->setFocus(Qt::OtherFocusReason);
    setNeedsDisplayInAllViews();
    NotificationCenter::defaultCenter().post(TextViewDidChangeSelectionNotification, firstTextView());
}

void TextView::updateTypingAttributes()
{
    TextStorage* storage = textStorage();
    if (!storage || storage->length() == 0)
        return;
    const Range selection = selectedRange();
    const qsizetype from = selection.location > 0 ? selection.location - 1 : 0;
    Attributes attributes = storage->attributes(std::min(from, storage->length() - 1));
    // Typing after a picture types text, not another picture.
    attributes.remove(AttachmentAttributeName);
    if (attributes != state().typingAttributes)
        setTypingAttributes(attributes);
}

Attributes TextView::typingAttributes() const { return state().typingAttributes; }

void TextView::setTypingAttributes(const Attributes& attributes)
{
    state().typingAttributes = attributes;
    NotificationCenter::defaultCenter().post(TextViewDidChangeTypingAttributesNotification, firstTextView());
}

bool TextView::isEditable() const { return state().editable; }
void TextView::setEditable(bool editable) { state().editable = editable; }
bool TextView::isSelectable() const { return state().selectable; }
void TextView::setSelectable(bool selectable) { state().selectable = selectable; }

TextView* TextView::textViewForCharacterIndex(qsizetype index) const
{
    LayoutManager* manager = layoutManager();
    if (!manager)
        return const_cast<TextView*>(this);
    TextContainer* container = nullptr;
    manager->insertionPointRectForCharacterIndex(index, &container);
    return container ? container->textView() : nullptr;
}

QRectF TextView::insertionPointRect() const
{
    LayoutManager* manager = layoutManager();
    if (!manager || selectedRange().length > 0)
        return QRectF();
    TextContainer* container = nullptr;
    const QRectF caret = manager->insertionPointRectForCharacterIndex(state().caret, &container);
    if (container != m_textContainer)
        return QRectF();
    return caret.translated(textContainerOrigin());
}

qsizetype TextView::characterIndexForPoint(const QPointF& point) const
{
    LayoutManager* manager = layoutManager();
    if (!manager)
        return 0;
    return manager->characterIndexForPoint(point - textContainerOrigin(), m_textContainer);
}

void TextView::setNeedsDisplayInAllViews()
{
    LayoutManager* manager = layoutManager();
    if (!manager) {
        update();
        return;
    }
    for (TextContainer* container : manager->textContainers()) {
        if (container->textView() && container->textView()->isVisible())
            container->textView()->update();
    }
}

// ---- drawing

void TextView::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    if (m_drawsBackground)
        painter.fillRect(event->rect(), m_backgroundColor);
    LayoutManager* manager = layoutManager();
    if (!manager || !m_textContainer)
        return;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    const QPointF origin = textContainerOrigin();
    const Range selection = selectedRange();
    if (selection.length > 0) {
        for (const QRectF& rect : manager->selectionRectsForCharacterRange(selection, m_textContainer))
            painter.fillRect(rect.translated(origin), m_selectionColor);
    }
    manager->drawTextContainer(m_textContainer, &painter, origin);
    if (hasFocus() && isEditable()) {
        const QRectF caret = insertionPointRect();
        // On whole pixels, so that the thin caret stays crisp.
        if (!caret.isNull())
            painter.fillRect(QRectF(std::floor(caret.x()), caret.y(), 1, caret.height()), palette().color(QPalette::Text));
    }
}

void TextView::focusInEvent(QFocusEvent* event)
{
    QWidget::focusInEvent(event);
    update();
}

void TextView::focusOutEvent(QFocusEvent* event)
{
    QWidget::focusOutEvent(event);
    update();
}

} // namespace qly
