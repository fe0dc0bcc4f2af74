#include <qlyappkit/platform/layout/TextContainer.h>

#include <qlyappkit/platform/layout/LayoutManager.h>
#include <qlyappkit/platform/layout/TextView.h>

namespace qly {

TextContainer::TextContainer(QSizeF size) : m_size(size.expandedTo(QSizeF(0, 0))) { }

TextContainer::~TextContainer()
{
    if (m_textView)
        m_textView->m_textContainer = nullptr;
}

void TextContainer::setSize(QSizeF size)
{
    size = size.expandedTo(QSizeF(0, 0));
    if (size == m_size)
        return;
    m_size = size;
    if (m_layoutManager)
        m_layoutManager->textContainerChangedGeometry(this);
}

void TextContainer::setLineFragmentPadding(double padding)
{
    if (padding == m_lineFragmentPadding)
        return;
    m_lineFragmentPadding = padding;
    if (m_layoutManager)
        m_layoutManager->textContainerChangedGeometry(this);
}

} // namespace qly
