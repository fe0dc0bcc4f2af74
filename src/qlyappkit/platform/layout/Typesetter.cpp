#include <qlyappkit/platform/layout/Typesetter.h>

#include <qlyappkit/platform/layout/LayoutManager.h>
#include <qlyappkit/platform/layout/TextContainer.h>

namespace qly {

Typesetter::Typesetter() = default;
Typesetter::~Typesetter() = default;

qsizetype Typesetter::layoutParagraphAtPoint(QPointF& origin)
{
    beginParagraph();
    const qsizetype next = m_layoutManager ? m_layoutManager->typesetCurrentParagraph(origin) : m_paragraphRange.end();
    endParagraph();
    return next;
}

double Typesetter::paragraphSpacingBeforeGlyphAtIndex(qsizetype glyphIndex, const QRectF&)
{
    return glyphIndex == 0 ? 0.0 : m_style.paragraphSpacingBefore();
}

double Typesetter::paragraphSpacingAfterGlyphAtIndex(qsizetype, const QRectF&) { return m_style.paragraphSpacing(); }

int Typesetter::actionForControlCharacterAtIndex(qsizetype characterIndex)
{
    const MutableAttributedString* text = attributedString();
    if (!text || characterIndex < 0 || characterIndex >= text->length())
        return ZeroAdvancementAction;
    switch (text->characterAt(characterIndex).unicode()) {
    case u'\t':
        return HorizontalTabAction;
    case u'\n':
    case u'\r':
    case 0x2029:
        return ParagraphBreakAction;
    case 0x2028:
    case 0x85:
        return LineBreakAction;
    case 0x0C:
        return ContainerBreakAction;
    default:
        return ZeroAdvancementAction;
    }
}

const std::vector<TextContainer*>& Typesetter::textContainers() const
{
    static const std::vector<TextContainer*> none;
    return m_layoutManager ? m_layoutManager->textContainers() : none;
}

const MutableAttributedString* Typesetter::attributedString() const
{
    return m_layoutManager ? m_layoutManager->textStorage() : nullptr;
}

double Typesetter::lineFragmentPadding() const
{
    return m_currentContainer ? m_currentContainer->lineFragmentPadding() : TextContainer::DefaultLineFragmentPadding;
}

} // namespace qly
