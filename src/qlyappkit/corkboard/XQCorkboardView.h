#pragma once
// XQCorkboardView: a document's items as index cards pinned to a corkboard.
//
// The view owns no model: a data source says how many sections and cards there are and what each card
// shows; a delegate hears of key presses, selection changes and moves. Three layout passes turn the
// settings and the data source's answers into one rectangle per card (cardRects, global card order:
// sections concatenated), one per section (sectionRects) and the view's size:
//   - tile: one grid with a band per section, or (multipleSectionsMode 1) each section one row;
//   - tileColumns: (multipleSectionsMode 2, several sections) each section one column, the k-th cards
//     of all columns sharing one top edge;
//   - freeformTile: cards at the data source's coordinates, optionally grown to fit their text.
// Coordinates are flipped (y grows downwards) and in points, one point one pixel.
//
// Geometry is computed by plain methods that run headless; hit testing, selection, keyboard
// navigation, marquee selection and drop zones work on those rectangles. Painting (paintBoard) draws a
// cork board with shadowed, pinned, ruled cards.
//
// Invariants after every layout pass: cardRects has numberOfCards() entries (freeform without
// coordinates: none); in the grid and column passes no two card rectangles overlap, each lies inside
// its section's rectangle, and the view's size covers them all.
#include <QImage>
#include <QPointer>
#include <QWidget>

#include <functional>
#include <memory>

#include <qlyappkit/corkboard/XQCorkboardTheme.h>
#include <qlyappkit/corkboard/XQCorkboardViewDataSource.h>
#include <qlyappkit/corkboard/XQIndexSet.h>
#include <qlyappkit/geometry/XQGeometryArrays.h>

class QLineEdit;
class QPlainTextEdit;
class QScrollArea;

namespace qly {

class XQCardHitIndex;
class XQCorkboardArtwork;

/// How a dragged card is to be dropped at the drop index.
enum class XQCorkboardDropOperation { None = 0, Before = 1, On = 2 };

/// The settings a board passes on to its in-place card text editor.
struct XQCardTextChecking {
    bool continuousSpellChecking = false;
    bool grammarChecking = false;
    bool automaticQuoteSubstitution = false;
    bool automaticSpellingCorrection = false;
    bool automaticDataDetection = false;
    bool automaticTextReplacement = false;
    bool automaticDashSubstitution = false;
    friend bool operator==(const XQCardTextChecking&, const XQCardTextChecking&) = default;
};

class XQCorkboardView : public QWidget {
public:
    /// Orders for cardIndexesSortedInCoordinateOrder: row bands (0, 1, 4, 5) or column bands (2, 3, 6, 7).
    enum CoordinateOrder {
        TopRowsLeftToRight = 0,
        TopRowsRightToLeft = 1,
        LeftColumnsTopToBottom = 2,
        LeftColumnsBottomToTop = 3,
        BottomRowsLeftToRight = 4,
        BottomRowsRightToLeft = 5,
        RightColumnsTopToBottom = 6,
        RightColumnsBottomToTop = 7,
    };
    /// Marquee selection types: exactly the cards touched, the original selection plus them, or minus them.
    enum MarqueeSelectionType { MarqueeSelect = 0, MarqueeExtend = 1, MarqueeSubtract = 2 };

    explicit XQCorkboardView(QWidget* parent = nullptr);
    ~XQCorkboardView() override;

    // ---- data source and delegate (not owned; the view forgets them when told null)
    XQCorkboardViewDataSource* dataSource() const { return m_dataSource; }
    void setDataSource(XQCorkboardViewDataSource* dataSource);
    XQCorkboardViewDelegate* delegate() const { return m_delegate; }
    void setDelegate(XQCorkboardViewDelegate* delegate) { m_delegate = delegate; }

    // ---- settings; layout settings re-tile through reloadData, drawing settings only redisplay
    int cardsAcross() const { return m_cardsAcross; }
    /// 0 is ignored; a negative value turns on auto-calculation, a positive one turns it off.
    void setCardsAcross(int cardsAcross);
    bool autoCalculatesCardsAcross() const { return m_autoCalculatesCardsAcross; }
    bool usesFreeformArrangement() const { return m_usesFreeformArrangement; }
    void setUsesFreeformArrangement(bool on);
    /// 0 one grid with section bands, 1 each section one row, 2 each section one column.
    int multipleSectionsMode() const { return m_multipleSectionsMode; }
    void setMultipleSectionsMode(int mode);
    bool usesTwoLineTitles() const { return m_usesTwoLineTitles; }
    void setUsesTwoLineTitles(bool on);
    bool titlesShrinkToFit() const { return m_titlesShrinkToFit; }
    void setTitlesShrinkToFit(bool on);
    double minTitleFontSize() const { return m_minTitleFontSize; }
    void setMinTitleFontSize(double size);
    bool showsPlaceholderText() const { return m_showsPlaceholderText; }
    void setShowsPlaceholderText(bool on);
    double interCardSpacing() const { return m_interCardSpacing; }
    void setInterCardSpacing(double spacing);
    bool sizesCardsToFitWidth() const { return m_sizesCardsToFitWidth; }
    void setSizesCardsToFitWidth(bool on);
    double fixedSizeCardWidth() const { return m_fixedSizeCardWidth; }
    /// Rounded to a whole number.
    void setFixedSizeCardWidth(double width);
    double indexCardHeightRatio() const { return m_indexCardHeightRatio; }
    void setIndexCardHeightRatio(double ratio);
    bool allowsFreeformCardResizing() const { return m_allowsFreeformCardResizing; }
    void setAllowsFreeformCardResizing(bool on);
    bool hasDropShadows() const { return m_hasDropShadows; }
    void setHasDropShadows(bool on);
    double shadowIntensity() const { return m_shadowIntensity; }
    void setShadowIntensity(double intensity);
    bool showsPins() const { return m_showsPins; }
    void setShowsPins(bool on);
    bool drawsLines() const { return m_drawsLines; }
    void setDrawsLines(bool on);
    bool drawsPinsOnRight() const { return m_drawsPinsOnRight; }
    void setDrawsPinsOnRight(bool on);
    bool drawsTextOnLine() const { return m_drawsTextOnLine; }
    /// Recomputes the baseline offset.
    void setDrawsTextOnLine(bool on);
    bool usesRoundedStyle() const { return m_usesRoundedStyle; }
    void setUsesRoundedStyle(bool on);
    bool showsCardNumbers() const { return m_showsCardNumbers; }
    void setShowsCardNumbers(bool on);
    bool cardNumbersRestartAtSections() const { return m_cardNumbersRestartAtSections; }
    void setCardNumbersRestartAtSections(bool on);
    bool returnEndsEditing() const { return m_returnEndsEditing; }
    void setReturnEndsEditing(bool on) { m_returnEndsEditing = on; }
    bool cardsUseRightToLeftDirection() const { return m_cardsUseRightToLeftDirection; }
    void setCardsUseRightToLeftDirection(bool on);
    /// The board's colour; none means the cork pattern.
    std::optional<Color> backgroundColor() const { return m_backgroundColor; }
    void setBackgroundColor(std::optional<Color> color);
    Color cardColor() const { return m_cardColor; }
    void setCardColor(const Color& color);
    Color dividerColor() const { return m_dividerColor; }
    void setDividerColor(const Color& color);
    Color lineColor() const { return m_lineColor; }
    void setLineColor(const Color& color);
    const Attributes& textTitleAttributes() const { return m_textTitleAttributes; }
    void setTextTitleAttributes(const Attributes& attributes);
    const Attributes& imageTitleAttributes() const { return m_imageTitleAttributes; }
    void setImageTitleAttributes(const Attributes& attributes);
    const Attributes& textAttributes() const { return m_textAttributes; }
    void setTextAttributes(const Attributes& attributes);
    const Font& stampFont() const { return m_stampFont; }
    void setStampFont(const Font& font);
    Color stampColor() const { return m_stampColor; }
    void setStampColor(const Color& color);
    const XQCardTextChecking& textChecking() const { return m_textChecking; }
    void setTextChecking(const XQCardTextChecking& checking) { m_textChecking = checking; }
    void setRedAndBlueIndexCardTheme();
    void setBlueAndBlackIndexCardTheme();

    // ---- the data source's counts, with their fallbacks
    int numberOfSections() const;
    int numberOfCardsInSection(int section) const;
    qsizetype numberOfCards() const;
    bool isDisplayingMultipleSections() const { return numberOfSections() > 1; }
    /// Whether cards are stacked in columns: column mode with several sections, or one card across.
    bool hasColumns() const;
    bool isImageCard(qsizetype index) const;

    // ---- layout
    static double imageCardWidthForIndexCardWidth(double width);
    static double indexCardWidthForImageCardWidth(double width);
    /// Re-tiles (one of the three passes), redisplays and posts XQCorkboardViewDidReloadNotification.
    /// Clears the selection first when it names a card that no longer exists.
    void reloadData();
    void tile();
    void tileColumns();
    void freeformTile();

    const XQRectArray& cardRects() const { return m_cardRects; }
    const XQRectArray& sectionRects() const { return m_sectionRects; }
    const XQFloatArray& columnModeRowOrigins() const { return m_columnModeRowOrigins; }
    double currentCardWidth() const { return m_currentCardWidth; }
    double currentTextCardHeight() const { return m_currentTextCardHeight; }
    QSizeF currentIndexCardSize() const { return m_currentIndexCardSize; }
    QSizeF currentPhotoSize() const { return m_currentPhotoSize; }
    /// The card's rectangle; a null rectangle for an index with none.
    QRectF rectOfCard(qsizetype index) const;

    // ---- cached metrics (0 until first asked)
    /// The title area's height: twice the stored line when titles take two lines.
    double titleHeight() const;
    double lineHeight() const;
    double baselineOffset() const;
    double minimumTextHeight() const;
    void recalculateTitleHeight();
    void recalculateLineHeight();
    void recalculateBaselineOffset();

    // ---- per-card rectangles (the forms without a rectangle use the card's own)
    QRectF titleRectForCardAtIndex(qsizetype index, const QRectF& cardRect, double* iconOffset = nullptr) const;
    QRectF titleRectForCardAtIndex(qsizetype index) const;
    QRectF textRectForCardAtIndex(qsizetype index, const QRectF& cardRect) const;
    QRectF textRectForCardAtIndex(qsizetype index) const;
    /// The pin, centred (or flush right) with its head above the card's top edge.
    QRectF pinRectForCardAtIndex(qsizetype index) const;
    QRectF labelChipRectForCardAtIndex(qsizetype index, const QRectF& cardRect) const;
    QRectF labelChipRectForCardAtIndex(qsizetype index) const;
    /// The stamp's band across the middle of the card.
    QRectF stampRectForCardAtIndex(qsizetype index) const;
    /// The card number's box in the card's bottom corner.
    QRectF numberRectForCardAtIndex(qsizetype index) const;
    double maximumCardHeightInRowOfCardAtIndex(qsizetype index) const;
    /// Shrinks a title that does not fit (when titlesShrinkToFit): adjusts rect and attributes in place.
    void adjustedTitleRectAndAttributes(QRectF* rect, Attributes* attributes, const QString& title,
                                        const QRectF& originalRect) const;
    /// The number printed on the card (1-based; restarting per section when so set).
    qsizetype cardNumberForCardAtIndex(qsizetype index) const;

    // ---- hit testing
    /// The front-most card under the point; -1 when none.
    qsizetype indexOfCardAtPoint(QPointF point) const;
    /// The section whose rectangle holds the point; NotFound when none.
    qsizetype indexOfSectionAtPoint(QPointF point) const;
    QList<qsizetype> cardIndexesInDrawingOrder() const;
    bool rectIntersectsExistingCard(const QRectF& rect) const;
    XQIndexSet indexesOfCardsIntersectingRect(const QRectF& rect) const;
    /// The section of a card (an index equal to numberOfCards counts into the last section), with the
    /// global index of the section's first card; NotFound for both when there is none.
    qsizetype sectionIndexForCardIndex(qsizetype index, qsizetype* cardOffset = nullptr) const;
    qsizetype leftMostCardInRect(const QRectF& rect, const XQIndexSet& indexes) const;
    qsizetype rightMostCardInRect(const QRectF& rect, const XQIndexSet& indexes) const;
    qsizetype topMostCardInRect(const QRectF& rect, const XQIndexSet& indexes) const;
    qsizetype bottomMostCardInRect(const QRectF& rect, const XQIndexSet& indexes) const;
    /// Every card in reading order by bands (see CoordinateOrder); nothing when there are no cards.
    std::optional<QList<qsizetype>> cardIndexesSortedInCoordinateOrder(int order) const;

    // ---- selection
    const XQIndexSet& selectedCardIndexes() const { return m_selectedCardIndexes; }
    /// Replaces the selection; nothing (or an index of NotFound or -1) clears it. Posts
    /// XQCorkboardViewSelectionDidChangeNotification and tells the delegate only when it changed.
    void selectCardIndexes(const std::optional<XQIndexSet>& indexes, bool byExtendingSelection,
                           bool bringToFront = false);
    void selectAll();
    void deselectAll();
    qsizetype startIndexForShiftClicks() const { return m_startIndexForShiftClicks; }
    qsizetype editedCardIndex() const { return m_editedCardIndex; }
    qsizetype clickedSection() const { return m_clickedSection; }
    QPointF contextualMenuPosition() const { return m_contextualMenuPosition; }
    QRectF marqueeSelectionBounds() const { return m_marqueeSelectionBounds; }

    // ---- keyboard commands (what the key bindings call)
    void moveLeft() { moveLeftModifyingSelection(false); }
    void moveRight() { moveRightModifyingSelection(false); }
    void moveUp() { moveUpModifyingSelection(false); }
    void moveDown() { moveDownModifyingSelection(false); }
    /// Shift-arrows: extend, except in freeform arrangement.
    void moveLeftAndModifySelection() { moveLeftModifyingSelection(!m_usesFreeformArrangement); }
    void moveRightAndModifySelection() { moveRightModifyingSelection(!m_usesFreeformArrangement); }
    void moveUpAndModifySelection() { moveUpModifyingSelection(!m_usesFreeformArrangement); }
    void moveDownAndModifySelection() { moveDownModifyingSelection(!m_usesFreeformArrangement); }
    void moveLeftModifyingSelection(bool extend);
    void moveRightModifyingSelection(bool extend);
    void moveUpModifyingSelection(bool extend);
    void moveDownModifyingSelection(bool extend);
    void moveToBeginningOfDocument();
    void moveToEndOfDocument();
    void scrollToBeginningOfDocument();
    void scrollToEndOfDocument();
    void scrollPageUp();
    void scrollPageDown();
    /// Escape: opens the first selected card for editing, or ends the edit in progress.
    void cancelOperation();
    void scrollCardAtIndexToVisible(qsizetype index);
    /// The rectangle the last scrollCardAtIndexToVisible asked to show.
    QRectF lastScrolledToRect() const { return m_lastScrolledToRect; }

    /// Called instead of the system beep (which off screen makes no sound); the system beep by default.
    void setBeepHandler(std::function<void()> handler) { m_beepHandler = std::move(handler); }

    // ---- marquee (freeform arrangement only)
    void marqueeSelection(QPointF originalMouseLocation, QPointF mouseLocation, const XQIndexSet& originalSelection,
                          MarqueeSelectionType selectionType);

    // ---- drop zones and background clicks
    /// The area in which a drop lands next to card index, and the halfway-across mark's offset.
    QRectF dropZoneForCardAtIndex(qsizetype index, double* halfwayAcrossMarkOffset = nullptr) const;
    /// The insertion index between cards for a click or drop at the point; -1 when none.
    qsizetype nextCardForBackgroundClickAtPoint(QPointF point) const;
    /// The drag in progress, shared by every corkboard of the program.
    static void setDropCardIndex(qsizetype index, XQCorkboardDropOperation operation);
    static qsizetype dropCardIndex();
    static XQCorkboardDropOperation dropOperation();
    static qsizetype draggedCardIndex();
    static void setDraggedCardIndex(qsizetype index);
    /// The dragged card's index within its drag group, as the data source tells; -1 when it cannot.
    int relativeIndexOfDraggedCard() const;

    // ---- in-place editing
    void editCardTitleAtIndex(qsizetype index, bool select);
    void editCardAtIndex(qsizetype index, bool select);
    /// Ends the edit in progress, handing the edited title and text to the data source.
    void endEditing();
    QLineEdit* titleEditor() const { return m_titleEditor; }
    QPlainTextEdit* textEditor() const { return m_textEditor; }

    // ---- drawing
    /// Draws the part of the board inside exposed (view coordinates).
    void paintBoard(QPainter& painter, const QRectF& exposed) const;
    /// The whole board as a picture of the view's size, scaled by scale.
    QImage renderBoard(double scale = 1.0) const;
    /// The rectangle the card draws into, shadow and pin included.
    QRectF drawingRectForCardAtIndex(qsizetype index) const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    struct RowScan;
    QScrollArea* enclosingScrollArea() const;
    QRectF visibleArea() const;
    void beep();
    void redisplay(const QRectF& rect);
    void redisplayVisible();
    void layoutChanged();
    void finishTile(double width, double height);
    void watchViewport();
    bool usesSections() const;
    double measuredFreeformTextHeight(qsizetype index, const QString& text, double width) const;
    qsizetype probeForCard(QPointF start, double dx, double dy) const;
    void moveVertically(bool up, bool extend);
    void moveHorizontally(bool left, bool extend);
    void keyboardSelect(qsizetype target, bool extend, bool rangeFromFirst);
    void handleMouseSelection(QMouseEvent* event, qsizetype clickedCardIndex);
    void positionEditors();
    void dropEditors();
    void paintCard(QPainter& painter, qsizetype index) const;
    void paintCardText(QPainter& painter, qsizetype index, const QRectF& textRect) const;

    XQCorkboardViewDataSource* m_dataSource = nullptr;
    XQCorkboardViewDelegate* m_delegate = nullptr;

    int m_cardsAcross = 3;
    bool m_autoCalculatesCardsAcross = false;
    bool m_usesFreeformArrangement = false;
    int m_multipleSectionsMode = 0;
    bool m_usesTwoLineTitles = false;
    bool m_titlesShrinkToFit = false;
    double m_minTitleFontSize = 10.0;
    bool m_showsPlaceholderText = false;
    double m_interCardSpacing = 30.0;
    bool m_sizesCardsToFitWidth = true;
    double m_fixedSizeCardWidth = 300.0;
    double m_indexCardHeightRatio = 0.6;
    bool m_allowsFreeformCardResizing = false;
    bool m_hasDropShadows = true;
    double m_shadowIntensity = 0.7;
    bool m_showsPins = true;
    bool m_drawsLines = false;
    bool m_drawsPinsOnRight = false;
    bool m_drawsTextOnLine = false;
    bool m_usesRoundedStyle = false;
    bool m_showsCardNumbers = false;
    bool m_cardNumbersRestartAtSections = true;
    bool m_returnEndsEditing = false;
    bool m_cardsUseRightToLeftDirection = false;
    std::optional<Color> m_backgroundColor;
    Color m_cardColor = Color::whiteColor();
    Color m_dividerColor;
    Color m_lineColor;
    Attributes m_textTitleAttributes;
    Attributes m_imageTitleAttributes;
    Attributes m_textAttributes;
    Font m_stampFont;
    Color m_stampColor = XQCorkboardDefaultStampColor;
    XQCardTextChecking m_textChecking;

    XQRectArray m_cardRects;
    XQRectArray m_sectionRects;
    XQFloatArray m_columnModeRowOrigins;
    std::vector<qsizetype> m_sectionStarts; // global index of each section's first card, then the total
    double m_currentCardWidth = 0;
    double m_currentTextCardHeight = 0;
    QSizeF m_currentIndexCardSize;
    QSizeF m_currentPhotoSize;
    mutable double m_titleHeight = 0;
    mutable double m_lineHeight = 0;
    mutable double m_baselineOffset = 0;
    mutable bool m_baselineOffsetComputed = false;
    // Freeform text heights by text, valid while the text width and attributes stay the same.
    mutable QHash<QString, double> m_textHeightCache;
    mutable double m_textHeightCacheWidth = -1;
    std::unique_ptr<XQCardHitIndex> m_hitIndex;
    std::unique_ptr<XQCorkboardArtwork> m_artwork;

    XQIndexSet m_selectedCardIndexes;
    qsizetype m_startIndexForShiftClicks = -1;
    qsizetype m_editedCardIndex = -1;
    qsizetype m_clickedSection = 0x7FFFFFFF;
    QPointF m_contextualMenuPosition;
    QRectF m_marqueeSelectionBounds;
    QRectF m_lastScrolledToRect;
    std::function<void()> m_beepHandler;

    // Mouse tracking between press and release.
    QPointF m_mouseDownPoint;
    XQIndexSet m_mouseDownSelection;
    qsizetype m_mouseDownCard = -1;
    bool m_dragging = false;
    bool m_marqueeActive = false;
    MarqueeSelectionType m_marqueeType = MarqueeSelect;
    bool m_deselectOthersOnRelease = false;

    QLineEdit* m_titleEditor = nullptr;
    QPlainTextEdit* m_textEditor = nullptr;
    bool m_settingFrame = false;
    QSize m_ownerSize; // the frame the owner gave a board that is not in a scroll area
    QSize m_tiledSize; // the size the last layout pass gave it (invalid before one)
    QPointer<QObject> m_watchedViewport;
};

} // namespace qly
