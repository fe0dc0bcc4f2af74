#pragma once
// Typesetter: turns one paragraph at a time into line fragments for the layout manager. Subclasses
// change the layout through the hooks: what happens at the start and end of a paragraph, the spacing
// before a paragraph, and what a control character does.
//
// The layout manager sets up the current paragraph (its range, style and container) and calls
// layoutParagraphAtPoint(), which calls beginParagraph(), places the lines and calls endParagraph().
// A paragraph here ends at a paragraph terminator or at a control character whose action breaks the
// paragraph or the container.
#include <QPointF>
#include <QRectF>
#include <vector>

#include <qlyappkit/platform/text/Range.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>

namespace qly {

class LayoutManager;
class MutableAttributedString;
class TextContainer;

class Typesetter {
public:
    /// What a control character does; combinations are or-ed.
    enum ControlCharacterAction : int {
        ZeroAdvancementAction = 1,
        WhitespaceAction = 2,
        HorizontalTabAction = 4,
        LineBreakAction = 8,
        ParagraphBreakAction = 16,
        ContainerBreakAction = 32,
    };

    Typesetter();
    virtual ~Typesetter();
    Typesetter(const Typesetter&) = delete;
    Typesetter& operator=(const Typesetter&) = delete;

    // ---- hooks
    virtual void beginParagraph() { }
    virtual void endParagraph() { }
    /// Lays out the current paragraph with its top at origin (in the current container): begins the
    /// paragraph, places its lines, ends it. Returns the index of the first glyph after it; origin
    /// becomes the point below it.
    virtual qsizetype layoutParagraphAtPoint(QPointF& origin);
    /// Space above the line that starts a paragraph; the style's spacing before, none for the very
    /// first glyph of the text.
    virtual double paragraphSpacingBeforeGlyphAtIndex(qsizetype glyphIndex, const QRectF& proposedLineFragmentRect);
    /// Space below the last line of a paragraph: the style's spacing after.
    virtual double paragraphSpacingAfterGlyphAtIndex(qsizetype glyphIndex, const QRectF& proposedLineFragmentRect);
    /// The action for a control character: tab → horizontal tab; LF, CR, U+2029 → paragraph break;
    /// U+2028 and U+0085 → line break; form feed → container break; any other → zero advancement.
    virtual int actionForControlCharacterAtIndex(qsizetype characterIndex);

    // ---- the paragraph being laid out (valid inside the hooks)
    LayoutManager* layoutManager() const { return m_layoutManager; }
    TextContainer* currentTextContainer() const { return m_currentContainer; }
    /// The containers of the layout manager, in order.
    const std::vector<TextContainer*>& textContainers() const;
    const MutableAttributedString* attributedString() const;
    /// The current paragraph, its terminator (or breaking character) included.
    Range paragraphCharacterRange() const { return m_paragraphRange; }
    /// Glyphs and characters correspond one to one.
    Range paragraphGlyphRange() const { return m_paragraphRange; }
    /// The terminator or breaking character that ends the paragraph (empty at the end of the text).
    Range paragraphSeparatorCharacterRange() const { return m_separatorRange; }
    const ParagraphStyle& currentParagraphStyle() const { return m_style; }
    double lineFragmentPadding() const;

private:
    friend class LayoutManager;
    LayoutManager* m_layoutManager = nullptr;
    TextContainer* m_currentContainer = nullptr;
    Range m_paragraphRange{0, 0};
    Range m_separatorRange{0, 0};
    ParagraphStyle m_style;
};

} // namespace qly
