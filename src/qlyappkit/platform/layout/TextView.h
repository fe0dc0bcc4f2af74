#pragma once
// TextView: a widget that shows one text container of a LayoutManager and edits the manager's
// TextStorage through it. Its frame (in points, kept exactly beside the widget's whole-pixel geometry)
// less the inset gives the container's size when the container tracks it.
//
// Every text view of one layout manager shares one selection and one set of typing attributes (kept by
// the view of the first container), so the caret can run from one view into the next: the view whose
// container holds the caret draws it. Every edit is an edit of the storage inside one editing batch, so
// storages that count or mirror their text see typing as any other edit.
#include <QColor>
#include <QElapsedTimer>
#include <QRectF>
#include <QSizeF>
#include <QWidget>

#include <qlyappkit/platform/text/Attributes.h>
#include <qlyappkit/platform/text/Range.h>

namespace qly {

class AttributedString;
class LayoutManager;
class TextContainer;
class TextStorage;

/// Posted (object: the first text view of the layout manager) after the selection changed.
extern const QString TextViewDidChangeSelectionNotification;
/// Posted (object: the first text view) after the typing attributes changed.
extern const QString TextViewDidChangeTypingAttributesNotification;
/// Posted (object: the first text view) after the user changed the text through a view.
extern const QString TextDidChangeNotification;
/// The clipboard type of rich text: our RTF.
extern const QString RTFPasteboardType;

class TextView : public QWidget {
public:
    explicit TextView(const QRectF& frame = QRectF(), TextContainer* container = nullptr, QWidget* parent = nullptr);
    ~TextView() override;

    // ---- geometry
    QRectF frame() const { return m_frame; }
    /// Moves and resizes the view; a container that tracks the view's width or height follows it.
    void setFrame(const QRectF& frame);
    void setFrameSize(QSizeF size) { setFrame(QRectF(m_frame.topLeft(), size)); }

    TextContainer* textContainer() const { return m_textContainer; }
    /// Shows another container (not owned); the container's size follows the frame if it tracks it.
    void setTextContainer(TextContainer* container);
    LayoutManager* layoutManager() const;
    TextStorage* textStorage() const;

    /// Space between the frame and the container, on each side.
    QSizeF textContainerInset() const { return m_inset; }
    void setTextContainerInset(QSizeF inset);
    /// Where the container's top left lies in the view.
    QPointF textContainerOrigin() const { return QPointF(m_inset.width(), m_inset.height()); }

    /// A resizable view grows and shrinks with its text (sizeToFit) between minSize and maxSize.
    bool isVerticallyResizable() const { return m_verticallyResizable; }
    void setVerticallyResizable(bool resizable) { m_verticallyResizable = resizable; }
    bool isHorizontallyResizable() const { return m_horizontallyResizable; }
    void setHorizontallyResizable(bool resizable) { m_horizontallyResizable = resizable; }
    QSizeF maxSize() const { return m_maxSize; }
    void setMaxSize(QSizeF size) { m_maxSize = size; }
    QSizeF minSize() const { return m_minSize; }
    void setMinSize(QSizeF size) { m_minSize = size; }
    /// Fits a resizable view's height (and width) to the text it holds, within minSize and maxSize.
    void sizeToFit();

    // ---- appearance
    bool drawsBackground() const { return m_drawsBackground; }
    void setDrawsBackground(bool draws);
    QColor backgroundColor() const { return m_backgroundColor; }
    void setBackgroundColor(const QColor& color);
    QColor selectedTextBackgroundColor() const { return m_selectionColor; }
    void setSelectedTextBackgroundColor(const QColor& color);

    // ---- selection and typing (shared by the views of one layout manager)
    /// The view of the layout manager's first container (this view when it has none).
    TextView* firstTextView() const;
    Range selectedRange() const;
    /// Selects a range (clipped to the text); the caret is its end, the anchor its start. The typing
    /// attributes become those of the character before the range (the first one at the start).
    void setSelectedRange(Range range);
    /// Selects from anchor to caret, in either order; shift-extension moves the caret end.
    void setSelection(qsizetype anchor, qsizetype caret);
    qsizetype insertionPointIndex() const;
    Attributes typingAttributes() const;
    void setTypingAttributes(const Attributes& attributes);
    bool isEditable() const;
    void setEditable(bool editable);
    bool isSelectable() const;
    void setSelectable(bool selectable);

    /// The caret in this view's coordinates; null when the caret is not in this view's container or a
    /// range is selected.
    QRectF insertionPointRect() const;
    /// The view (of the same layout manager) whose container holds the character index.
    TextView* textViewForCharacterIndex(qsizetype index) const;
    /// The character boundary nearest a point of this view.
    qsizetype characterIndexForPoint(const QPointF& point) const;

    // ---- editing: each is one batch of storage edits, ignored when the view is not editable
    /// Replaces the selection with the text in the typing attributes and puts the caret after it.
    void insertText(const QString& text);
    /// Replaces the selection with rich text, as it stands.
    void insertAttributedText(const AttributedString& text);
    void deleteBackward();
    void deleteForward();
    void selectAll();
    void moveLeft(bool extend = false);
    void moveRight(bool extend = false);
    void moveUp(bool extend = false);
    void moveDown(bool extend = false);
    void moveToBeginningOfLine(bool extend = false);
    void moveToEndOfLine(bool extend = false);
    /// The clipboard: plain text and our RTF.
    void copy();
    void cut();
    /// Pastes our RTF when the clipboard has it, else its plain text in the typing attributes.
    void paste();

    /// Repaints every view of the layout manager (after an edit that may move text between them).
    void setNeedsDisplayInAllViews();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    friend class TextContainer;
    struct SharedState {
        qsizetype anchor = 0;
        qsizetype caret = 0;
        Attributes typingAttributes;
        bool editable = true;
        bool selectable = true;
        double verticalX = -1; ///< x kept across up and down moves (in container coordinates)
    };
    enum class Granularity { Character, Word, Paragraph };

    SharedState& state() const { return firstTextView()->m_state; }
    void updateContainerSize();
    void replaceSelection(const AttributedString& text);
    void selectionDidChange(bool keepVerticalX = false);
    void updateTypingAttributes();
    qsizetype previousCharacterBoundary(qsizetype index) const;
    qsizetype nextCharacterBoundary(qsizetype index) const;
    qsizetype indexVertically(int direction);
    void moveCaretTo(qsizetype index, bool extend, bool keepVerticalX = false);
    Range rangeForGranularity(qsizetype index, Granularity granularity) const;
    void extendDragTo(qsizetype index);

    QRectF m_frame;
    TextContainer* m_textContainer = nullptr;
    QSizeF m_inset{0, 0};
    bool m_verticallyResizable = false;
    bool m_horizontallyResizable = false;
    QSizeF m_maxSize{10000000.0, 10000000.0};
    QSizeF m_minSize{0, 0};
    bool m_settingFrame = false;
    bool m_drawsBackground = false;
    QColor m_backgroundColor = Qt::white;
    QColor m_selectionColor = QColor(179, 215, 255);
    mutable SharedState m_state;

    // A drag in progress: its anchor range and how it grows.
    bool m_dragging = false;
    Range m_dragOrigin{0, 0};
    Granularity m_granularity = Granularity::Character;
    QElapsedTimer m_sinceDoubleClick;
};

} // namespace qly
