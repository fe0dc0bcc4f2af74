#include <qlyappkit/text/fitting/XQKeepWithNextTypesetter.h>

#include <qlyappkit/platform/layout/LayoutManager.h>
#include <qlyappkit/platform/layout/TextContainer.h>
#include <qlyappkit/platform/layout/TextView.h>
#include <qlyappkit/platform/text/MutableAttributedString.h>
#include <qlyappkit/platform/text/ParagraphRanges.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/fitting/XQParagraphFittingCalculator.h>

namespace qly {

namespace {

Range withoutTerminator(const MutableAttributedString& text, Range range)
{
    qsizetype end = range.end();
    if (end > range.location && isParagraphTerminator(text.characterAt(end - 1))) {
        --end;
        if (end > range.location && text.characterAt(end) == u'\n' && text.characterAt(end - 1) == u'\r')
            --end;
    }
    return Range{range.location, end - range.location};
}

} // namespace

void XQKeepWithNextTypesetter::beginParagraph()
{
    Typesetter::beginParagraph();
    const MutableAttributedString* text = attributedString();
    TextContainer* container = currentTextContainer();
    if (!m_allowsKeepWithNext || !text || !container)
        return;
    const std::optional<Attributes> attributes = currentAttributes();
    if (!attributes)
        return;
    const QVariant keep = attributes->value(XQKeepWithNextAttributeName);
    if (keep.typeId() != QMetaType::Bool || !keep.toBool())
        return;

    XQParagraphFittingCalculator& calculator = XQParagraphFittingCalculator::sharedInstance();
    calculator.setContainerWidth(container->size().width());
    calculator.setDefaultAttachmentScaling(layoutManager()->defaultAttachmentScaling());
    calculator.setParagraphText(text->attributedSubstring(trueParagraphCharacterRangeWithoutTerminatingNewline()));
    const double height = calculator.paragraphHeight();
    const double room = container->size().height() - m_paragraphOrigin.y();
    if (height > room)
        return;
    const Range paragraph = trueParagraphCharacterRange();
    if (paragraph.end() >= text->length())
        return;

    const Range next = withoutTerminator(*text, paragraphRangeIn(*text, Range{paragraph.end(), 0}));
    calculator.setParagraphText(text->attributedSubstring(next));
    const double nextHeight = calculator.paragraphHeight();
    const double nextFirstLine = calculator.firstLineHeight();
    const double roomBelow = container->size().height() - (m_paragraphOrigin.y() + height);
    if (nextHeight <= roomBelow)
        return;
    if (nextTextContainerSize().height() < height + nextFirstLine)
        return;
    if (calculator.numberOfLinesOfParagraphThatFitInHeight(roomBelow) == 0)
        m_breakingParagraphGlyphIndex = paragraph.location;
}

void XQKeepWithNextTypesetter::endParagraph()
{
    m_breakingParagraphGlyphIndex = 0;
    Typesetter::endParagraph();
}

qsizetype XQKeepWithNextTypesetter::layoutParagraphAtPoint(QPointF& origin)
{
    m_paragraphOrigin = origin;
    return Typesetter::layoutParagraphAtPoint(origin);
}

double XQKeepWithNextTypesetter::paragraphSpacingBeforeGlyphAtIndex(qsizetype glyphIndex,
                                                                    const QRectF& proposedLineFragmentRect)
{
    if (glyphIndex != 0 && glyphIndex == m_breakingParagraphGlyphIndex) {
        m_breakingParagraphGlyphIndex = 0;
        TextContainer* container = currentTextContainer();
        return container ? container->size().height() - 1.0 : 0.0;
    }
    return Typesetter::paragraphSpacingBeforeGlyphAtIndex(glyphIndex, proposedLineFragmentRect);
}

int XQKeepWithNextTypesetter::actionForControlCharacterAtIndex(qsizetype characterIndex)
{
    const MutableAttributedString* text = attributedString();
    if (text && characterIndex >= 0 && characterIndex < text->length() && text->characterAt(characterIndex) == u'\f')
        return FormFeedAction;
    return Typesetter::actionForControlCharacterAtIndex(characterIndex);
}

Attributes XQKeepWithNextTypesetter::attributesAtIndex(qsizetype index) const
{
    const MutableAttributedString* text = attributedString();
    if (!text || index < 0 || index >= text->length())
        return {};
    return text->attributes(index);
}

std::optional<Attributes> XQKeepWithNextTypesetter::currentAttributes() const
{
    const MutableAttributedString* text = attributedString();
    const qsizetype start = trueParagraphCharacterRange().location;
    if (!text || start >= text->length())
        return std::nullopt;
    return text->attributes(start);
}

Range XQKeepWithNextTypesetter::trueParagraphCharacterRange() const
{
    const MutableAttributedString* text = attributedString();
    if (!text)
        return paragraphCharacterRange();
    return paragraphRangeIn(*text, paragraphCharacterRange());
}

Range XQKeepWithNextTypesetter::trueParagraphCharacterRangeWithoutTerminatingNewline() const
{
    const MutableAttributedString* text = attributedString();
    const Range range = trueParagraphCharacterRange();
    return text ? withoutTerminator(*text, range) : range;
}

QSizeF XQKeepWithNextTypesetter::nextTextContainerSize() const
{
    const std::vector<TextContainer*>& containers = textContainers();
    TextContainer* current = currentTextContainer();
    if (!current)
        return QSizeF();
    const auto it = std::find(containers.begin(), containers.end(), current);
    TextContainer* next = it != containers.end() && it + 1 != containers.end() ? *(it + 1) : current;
    QSizeF size = next->size();
    if (next->textView() && next->textView()->isVerticallyResizable())
        size.setHeight(next->textView()->maxSize().height());
    return size;
}

} // namespace qly
