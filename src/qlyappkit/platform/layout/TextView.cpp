#include <qlyappkit/platform/layout/TextView.h>

#include <qlyappkit/platform/layout/TextContainer.h>

namespace qly {

TextView::TextView(const QRectF& frame, TextContainer* container) : m_frame(frame) { setTextContainer(container); }

TextView::~TextView()
{
    if (m_textContainer)
        m_textContainer->m_textView = nullptr;
}

void TextView::setFrame(const QRectF& frame)
{
    m_frame = frame;
    updateContainerSize();
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
}

LayoutManager* TextView::layoutManager() const { return m_textContainer ? m_textContainer->layoutManager() : nullptr; }

void TextView::setTextContainerInset(QSizeF inset)
{
    m_inset = inset;
    updateContainerSize();
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

} // namespace qly
