#pragma once
// TextContainer: a rectangle of a given size that the layout manager fills with lines, top to bottom.
// A container belongs to at most one layout manager (which owns it) and may be shown by a text view.
#include <QSizeF>

namespace qly {

class LayoutManager;
class TextView;

class TextContainer {
public:
    /// The padding at both ends of every line fragment of a new container.
    static constexpr double DefaultLineFragmentPadding = 5.0;
    /// The size of a container made without one: practically unbounded.
    static constexpr double LargeDimension = 10000000.0;

    explicit TextContainer(QSizeF size = QSizeF(LargeDimension, LargeDimension));
    ~TextContainer();
    TextContainer(const TextContainer&) = delete;
    TextContainer& operator=(const TextContainer&) = delete;

    QSizeF size() const { return m_size; }
    /// Changing the size invalidates the layout from the first line in this container on.
    void setSize(QSizeF size);
    /// Empty space at both ends of each line, inside the container's width.
    double lineFragmentPadding() const { return m_lineFragmentPadding; }
    void setLineFragmentPadding(double padding);
    /// When set, the text view resizes the container with its own frame.
    bool widthTracksTextView() const { return m_widthTracksTextView; }
    void setWidthTracksTextView(bool tracks) { m_widthTracksTextView = tracks; }
    bool heightTracksTextView() const { return m_heightTracksTextView; }
    void setHeightTracksTextView(bool tracks) { m_heightTracksTextView = tracks; }

    LayoutManager* layoutManager() const { return m_layoutManager; }
    TextView* textView() const { return m_textView; }

private:
    friend class LayoutManager;
    friend class TextView;
    QSizeF m_size;
    double m_lineFragmentPadding = DefaultLineFragmentPadding;
    bool m_widthTracksTextView = false;
    bool m_heightTracksTextView = false;
    LayoutManager* m_layoutManager = nullptr;
    TextView* m_textView = nullptr;
};

} // namespace qly
