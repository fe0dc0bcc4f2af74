#pragma once
// TextView: the geometry of a view that shows one text container — its frame, the inset around the
// container, whether it grows with its text and how far. It draws nothing itself (the widget layers
// paint with the layout manager); it keeps a tracking container's size in step with its frame.
#include <QRectF>
#include <QSizeF>

namespace qly {

class LayoutManager;
class TextContainer;

class TextView {
public:
    explicit TextView(const QRectF& frame = QRectF(), TextContainer* container = nullptr);
    ~TextView();
    TextView(const TextView&) = delete;
    TextView& operator=(const TextView&) = delete;

    QRectF frame() const { return m_frame; }
    /// Moves and resizes the view; a container that tracks the view's width or height follows it.
    void setFrame(const QRectF& frame);
    void setFrameSize(QSizeF size) { setFrame(QRectF(m_frame.topLeft(), size)); }

    TextContainer* textContainer() const { return m_textContainer; }
    /// Shows another container (not owned); the container's size follows the frame if it tracks it.
    void setTextContainer(TextContainer* container);
    LayoutManager* layoutManager() const;

    /// Space between the frame and the container, on each side.
    QSizeF textContainerInset() const { return m_inset; }
    void setTextContainerInset(QSizeF inset);

    bool isVerticallyResizable() const { return m_verticallyResizable; }
    void setVerticallyResizable(bool resizable) { m_verticallyResizable = resizable; }
    bool isHorizontallyResizable() const { return m_horizontallyResizable; }
    void setHorizontallyResizable(bool resizable) { m_horizontallyResizable = resizable; }
    QSizeF maxSize() const { return m_maxSize; }
    void setMaxSize(QSizeF size) { m_maxSize = size; }
    QSizeF minSize() const { return m_minSize; }
    void setMinSize(QSizeF size) { m_minSize = size; }

private:
    friend class TextContainer;
    void updateContainerSize();

    QRectF m_frame;
    TextContainer* m_textContainer = nullptr;
    QSizeF m_inset{0, 0};
    bool m_verticallyResizable = false;
    bool m_horizontallyResizable = false;
    QSizeF m_maxSize{10000000.0, 10000000.0};
    QSizeF m_minSize{0, 0};
};

} // namespace qly
