#include <qlyappkit/text/fitting/XQParagraphFittingCalculator.h>

#include <qlyappkit/platform/layout/TextContainer.h>

namespace qly {

namespace {
const QString LeadingSentinel = QStringLiteral("a\n");
const QString TrailingSentinel = QStringLiteral("\na");
} // namespace

void XQParagraphCalculatingLayoutManager::setLineFragmentRect(const QRectF& fragmentRect, Range glyphRange,
                                                              const QRectF& usedRect)
{
    if (delegate())
        delegate()->layoutManagerDidSetLineFragmentRect(*this, fragmentRect, glyphRange);
    LayoutManager::setLineFragmentRect(fragmentRect, glyphRange, usedRect);
}

XQParagraphFittingCalculator& XQParagraphFittingCalculator::sharedInstance()
{
    static XQParagraphFittingCalculator instance;
    return instance;
}

XQParagraphFittingCalculator::XQParagraphFittingCalculator()
{
    m_layoutManager.setAllowsNonContiguousLayout(false);
    m_layoutManager.setTextStorage(&m_storage);
    m_container = m_layoutManager.addTextContainer(
        std::make_unique<TextContainer>(QSizeF(ContainerDimension, ContainerDimension)));
    m_layoutManager.setDelegate(this);
}

XQParagraphFittingCalculator::~XQParagraphFittingCalculator() { m_layoutManager.setDelegate(nullptr); }

void XQParagraphFittingCalculator::setParagraphText(const AttributedString& text)
{
    m_paragraphText = text;
    relayoutParagraph();
}

void XQParagraphFittingCalculator::setContainerWidth(double width)
{
    m_container->setSize(QSizeF(width, ContainerDimension));
    relayoutParagraph();
}

double XQParagraphFittingCalculator::containerWidth() const { return m_container->size().width(); }

void XQParagraphFittingCalculator::setDefaultAttachmentScaling(ImageScaling scaling)
{
    m_layoutManager.setDefaultAttachmentScaling(scaling);
    relayoutParagraph();
}

void XQParagraphFittingCalculator::relayoutParagraph()
{
    if (!m_paragraphText)
        return;
    AttributedString built(LeadingSentinel);
    built.append(*m_paragraphText);
    built.append(AttributedString(TrailingSentinel));
    m_lineFragmentRects.clear();
    m_storage.setAttributedString(built);
    m_layoutManager.ensureLayoutForTextContainer(m_container);
    if (m_lineFragmentRects.size() >= 2) {
        m_lineFragmentRects.erase(m_lineFragmentRects.begin());
        m_lineFragmentRects.pop_back();
    }
}

void XQParagraphFittingCalculator::layoutManagerDidSetLineFragmentRect(LayoutManager&, const QRectF& lineFragmentRect,
                                                                       Range)
{
    QRectF rect = lineFragmentRect;
    // From the second fragment on, y is measured from the bottom of the leading sentinel line.
    if (!m_lineFragmentRects.empty())
        rect.moveTop(rect.y() - m_lineFragmentRects.front().bottom());
    m_lineFragmentRects.push_back(rect);
}

double XQParagraphFittingCalculator::paragraphHeight() const
{
    if (m_lineFragmentRects.empty())
        return 0;
    return m_lineFragmentRects.back().bottom() - m_lineFragmentRects.front().top();
}

double XQParagraphFittingCalculator::firstLineHeight() const
{
    return m_lineFragmentRects.empty() ? 0 : m_lineFragmentRects.front().height();
}

int XQParagraphFittingCalculator::numberOfLinesOfParagraphThatFitInHeight(double height) const
{
    int count = 0;
    for (const QRectF& rect : m_lineFragmentRects) {
        if (rect.bottom() > height)
            break;
        ++count;
    }
    return count;
}

} // namespace qly
