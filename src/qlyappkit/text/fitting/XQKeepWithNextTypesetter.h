#pragma once
// XQKeepWithNextTypesetter: a typesetter that keeps a paragraph marked with XQKeepWithNextAttributeName
// on the page of the paragraph after it. When the next paragraph's first line would not fit below the
// marked one, the marked paragraph is pushed into the next container — unless it is the last
// paragraph, it does not fit the room left anyway, or the next container could not hold it and that
// first line either. A form feed breaks the line, the paragraph and the container.
#include <QPointF>
#include <QSizeF>
#include <optional>

#include <qlyappkit/platform/layout/Typesetter.h>
#include <qlyappkit/platform/text/Attributes.h>

namespace qly {

class XQKeepWithNextTypesetter : public Typesetter {
public:
    /// Line break + paragraph break + container break.
    static constexpr int FormFeedAction = LineBreakAction | ParagraphBreakAction | ContainerBreakAction;

    bool allowsKeepWithNext() const { return m_allowsKeepWithNext; }
    /// Off by default.
    void setAllowsKeepWithNext(bool allows) { m_allowsKeepWithNext = allows; }
    /// First glyph of the paragraph to push into the next container; 0 for none.
    qsizetype breakingParagraphGlyphIndex() const { return m_breakingParagraphGlyphIndex; }
    /// Where layout of the current paragraph began, in its container.
    QPointF paragraphOrigin() const { return m_paragraphOrigin; }

    void beginParagraph() override;
    void endParagraph() override;
    qsizetype layoutParagraphAtPoint(QPointF& origin) override;
    /// The container's height less one for the paragraph to push (once), else the usual spacing.
    double paragraphSpacingBeforeGlyphAtIndex(qsizetype glyphIndex, const QRectF& proposedLineFragmentRect) override;
    int actionForControlCharacterAtIndex(qsizetype characterIndex) override;

    Attributes attributesAtIndex(qsizetype index) const;
    /// Attributes at the start of the current paragraph; nothing when that is at or past the end.
    std::optional<Attributes> currentAttributes() const;
    /// The whole paragraph around the current one, terminator included.
    Range trueParagraphCharacterRange() const;
    Range trueParagraphCharacterRangeWithoutTerminatingNewline() const;
    /// Size of the container after the current one (the current one's when it is the last); the
    /// height is its text view's maximum height when that view grows vertically.
    QSizeF nextTextContainerSize() const;

private:
    bool m_allowsKeepWithNext = false;
    qsizetype m_breakingParagraphGlyphIndex = 0;
    QPointF m_paragraphOrigin;
};

} // namespace qly
