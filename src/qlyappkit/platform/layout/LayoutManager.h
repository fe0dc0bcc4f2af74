#pragma once
// LayoutManager: lays the text of a TextStorage out into an ordered list of text containers, one
// line fragment after another, with Qt's QTextLayout (one per paragraph) in fonts of pixel size =
// point size, so one layout unit is one point. Glyphs and characters correspond one to one.
//
// Layout is contiguous and lazy: queries lay out as far as they need. An edit in the storage
// invalidates only the paragraphs it touched (and the one before, whose placement may depend on its
// neighbour); the paragraphs after it keep their line breaks and are only moved, and layout stops as
// soon as a paragraph starts where it started before. Resizing, adding or removing a container
// invalidates from that container on.
#include <QPointF>
#include <QRectF>
#include <functional>
#include <memory>
#include <vector>

#include <qlyappkit/platform/text/Range.h>
#include <qlyappkit/platform/text/TextStorage.h>

class QPainter;
class QTextLine;

namespace qly {

class Font;
class TextContainer;
class Typesetter;
struct LaidParagraph;

/// How attachment pictures are scaled to the room a line offers (the platform's image scaling values).
enum class ImageScaling : int {
    ProportionallyDown = 0,
    AxesIndependently = 1,
    None = 2,
    ProportionallyUpOrDown = 3,
};

/// One laid-out line.
struct LineFragment {
    QRectF rect; ///< the whole fragment: container width, spacing before and after included
    QRectF usedRect; ///< the part the glyphs use
    Range glyphRange;
    int containerIndex = 0;
    double baseline = 0; ///< y of the baseline in the container
};

class LayoutManager;

/// Told of layout progress. Every call is optional.
class LayoutManagerDelegate {
public:
    virtual ~LayoutManagerDelegate() = default;
    /// Layout has filled a container (atEnd false) or placed the last glyph in it (atEnd true). The
    /// container is null when the manager has no container at all. Containers may be added or removed
    /// from here; layout goes on in an added one.
    virtual void layoutManagerDidCompleteLayoutForTextContainer(LayoutManager& layoutManager, TextContainer* container,
                                                                bool atEnd);
    /// Called by layout managers that report each line fragment as it is set.
    virtual void layoutManagerDidSetLineFragmentRect(LayoutManager& layoutManager, const QRectF& lineFragmentRect,
                                                     Range glyphRange);
};

class LayoutManager : public TextStorageObserver {
public:
    LayoutManager();
    ~LayoutManager() override;
    LayoutManager(const LayoutManager&) = delete;
    LayoutManager& operator=(const LayoutManager&) = delete;

    // ---- the text
    TextStorage* textStorage() const { return m_storage; }
    /// Attaches to a storage (detaching from the previous one); the whole layout is invalidated.
    void setTextStorage(TextStorage* storage);

    // ---- containers (owned)
    const std::vector<TextContainer*>& textContainers() const { return m_containerList; }
    TextContainer* addTextContainer(std::unique_ptr<TextContainer> container);
    TextContainer* insertTextContainer(std::unique_ptr<TextContainer> container, qsizetype index);
    /// Removes and deletes the container at index.
    void removeTextContainerAtIndex(qsizetype index);
    qsizetype indexOfTextContainer(const TextContainer* container) const;
    /// Called by a container whose size or padding changed.
    void textContainerChangedGeometry(TextContainer* container);

    // ---- settings
    Typesetter* typesetter() const { return m_typesetter.get(); }
    void setTypesetter(std::unique_ptr<Typesetter> typesetter);
    LayoutManagerDelegate* delegate() const { return m_delegate; }
    void setDelegate(LayoutManagerDelegate* delegate) { m_delegate = delegate; }
    /// How attachment pictures fit the line; ImageScaling::None (their own size) by default.
    ImageScaling defaultAttachmentScaling() const { return m_attachmentScaling; }
    void setDefaultAttachmentScaling(ImageScaling scaling);
    /// Layout is always contiguous; the setting is kept for callers that switch it off explicitly.
    bool allowsNonContiguousLayout() const { return m_allowsNonContiguousLayout; }
    void setAllowsNonContiguousLayout(bool allows) { m_allowsNonContiguousLayout = allows; }

    // ---- layout
    void ensureLayoutForTextContainer(TextContainer* container);
    void ensureLayoutForGlyphRange(Range glyphRange);
    void ensureLayoutForCharacterRange(Range characterRange) { ensureLayoutForGlyphRange(characterRange); }
    /// Lays out everything that fits in the containers.
    void ensureLayoutForAllText();
    void invalidateLayoutForCharacterRange(Range characterRange);
    /// True when every glyph has been placed in a container.
    bool layoutReachedEnd();
    /// The first character not yet placed (the text's length when all are).
    qsizetype firstUnlaidCharacterIndex() const;

    // ---- queries (each lays out as far as it needs)
    qsizetype numberOfGlyphs() const;
    Range glyphRangeForCharacterRange(Range characterRange, Range* actualCharacterRange = nullptr) const;
    Range characterRangeForGlyphRange(Range glyphRange, Range* actualGlyphRange = nullptr) const;
    /// The glyphs laid out in a container (location at the next glyph and length 0 when none).
    Range glyphRangeForTextContainer(TextContainer* container);
    /// The container holding a glyph (null when it was not placed); effectiveGlyphRange gets the
    /// container's whole glyph range.
    TextContainer* textContainerForGlyphAtIndex(qsizetype glyphIndex, Range* effectiveGlyphRange = nullptr);
    /// The fragment rectangle of the line holding a glyph (empty when not placed).
    QRectF lineFragmentRectForGlyphAtIndex(qsizetype glyphIndex, Range* effectiveGlyphRange = nullptr);
    QRectF lineFragmentUsedRectForGlyphAtIndex(qsizetype glyphIndex, Range* effectiveGlyphRange = nullptr);
    /// The lines of a container, top to bottom.
    std::vector<LineFragment> lineFragmentsForTextContainer(TextContainer* container);
    /// Calls fn for each line that holds glyphs of the range, in order; fn returns false to stop.
    void enumerateLineFragmentsForGlyphRange(Range glyphRange, const std::function<bool(const LineFragment&)>& fn);
    /// The bounding rectangle of the used rects of a container's lines (empty when it holds none).
    QRectF usedRectForTextContainer(TextContainer* container);
    /// The line height the engine gives a line of this font alone: ascent + descent + leading.
    static double defaultLineHeightForFont(const Font& font);

    /// Draws the lines of a container (text and attachment pictures) with the container's origin at origin.
    void drawTextContainer(TextContainer* container, QPainter* painter, const QPointF& origin);

    // ---- the insertion point (each lays out as far as it needs)
    /// The empty line after a final paragraph terminator, or the only line of an empty text: where the
    /// caret stands at the end. Null when the text ends otherwise. Its height is the line height of the
    /// last character's font (the user font for an empty text).
    QRectF extraLineFragmentRect();
    QRectF extraLineFragmentUsedRect();
    TextContainer* extraLineFragmentTextContainer();
    /// The insertion point nearest a point of a container: the character boundary closest to it on the
    /// line at that height (the first line above it, the last below it). A line's terminator is never
    /// passed: a click right of a paragraph puts the caret before its line break.
    qsizetype characterIndexForPoint(const QPointF& point, TextContainer* container);
    /// The caret before the character at index (at the end for the text's length), in its container's
    /// coordinates: a rectangle one point wide, as high as the line's glyphs. Null when that place is
    /// not laid out in any container; the container comes back through container.
    QRectF insertionPointRectForCharacterIndex(qsizetype index, TextContainer** container = nullptr);
    /// The rectangles that highlight a character range inside one container, a line at a time; a line
    /// the range runs past is highlighted to the container's right edge.
    std::vector<QRectF> selectionRectsForCharacterRange(Range range, TextContainer* container);

    // ---- called by the typesetter
    /// Records a laid-out line. Subclasses that watch lines override it and call the base.
    virtual void setLineFragmentRect(const QRectF& fragmentRect, Range glyphRange, const QRectF& usedRect);

    void textStorageEdited(TextStorage& storage, int editedMask, Range newCharRange, qsizetype delta) override;

    /// Work done since the last reset: paragraphs shaped and broken into lines, and paragraphs placed
    /// (shaped or moved). Lets callers and tests see that an edit stays local.
    struct Statistics {
        qsizetype paragraphsShaped = 0;
        qsizetype paragraphsPlaced = 0;
    };
    Statistics statistics() const { return m_statistics; }
    void resetStatistics() { m_statistics = {}; }

private:
    friend class Typesetter;
    struct Position {
        int container = 0;
        double y = 0;
    };
    qsizetype typesetCurrentParagraph(QPointF& origin);
    void rebuildAllParagraphs();
    void resegment(qsizetype firstUnit, qsizetype endUnit, qsizetype from, qsizetype to);
    void shapeParagraph(LaidParagraph& paragraph, double containerWidth, double padding);
    void invalidateFromUnit(qsizetype unit);
    void invalidateFromContainer(qsizetype containerIndex);
    /// Lays out until stop() says enough or the text or the containers run out.
    void layoutUntil(const std::function<bool()>& stop);
    bool layoutNextParagraph();
    Position startOfUnit(qsizetype unit) const;
    qsizetype unitAtCharacter(qsizetype index) const;
    qsizetype firstUnitInContainer(qsizetype containerIndex) const;
    void reportCompletion(qsizetype containerIndex, bool atEnd);
    const LineFragment* lineAtGlyph(qsizetype glyphIndex);
    void placeExtraLineFragment();
    void drawLineAroundAttachments(QPainter* painter, const LaidParagraph& unit, const QTextLine& line,
                                   const QPointF& position);
    /// x of a character boundary on a placed line, from the container's left edge.
    double xForOffset(const LaidParagraph& unit, size_t line, qsizetype offset) const;

    TextStorage* m_storage = nullptr;
    std::vector<std::unique_ptr<TextContainer>> m_containers;
    std::vector<TextContainer*> m_containerList;
    std::unique_ptr<Typesetter> m_typesetter;
    LayoutManagerDelegate* m_delegate = nullptr;
    ImageScaling m_attachmentScaling = ImageScaling::None;
    bool m_allowsNonContiguousLayout = false;

    std::vector<std::unique_ptr<LaidParagraph>> m_units;
    qsizetype m_validEnd = 0; ///< units [0, m_validEnd) are placed and valid
    bool m_endReported = false;
    bool m_inLayout = false;
    LaidParagraph* m_current = nullptr; ///< the unit the typesetter is laying out
    Position m_cursor; ///< where the current unit's next line goes
    double m_pendingBaseline = 0; ///< baseline of the line being recorded
    bool m_outOfContainers = false;
    struct ExtraLine {
        int container = -1; ///< -1: the text does not end with an empty line
        QRectF rect;
        QRectF usedRect;
    } m_extraLine;
    Statistics m_statistics;
};

} // namespace qly
