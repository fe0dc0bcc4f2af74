#pragma once
// ParagraphStyle: a value describing a paragraph's alignment, indents, spacing, line heights, tab
// stops, text lists and text blocks (table cells).
#include <QMetaType>
#include <QString>
#include <QVector>
#include <memory>

#include <qlyappkit/platform/values/Color.h>

namespace qly {

/// Alignment values as the platform numbers them.
enum TextAlignment : int {
    LeftTextAlignment = 0,
    RightTextAlignment = 1,
    CenterTextAlignment = 2,
    JustifiedTextAlignment = 3,
    NaturalTextAlignment = 4,
};

struct TextTab {
    TextAlignment alignment = LeftTextAlignment;
    double location = 0;
    friend bool operator==(const TextTab&, const TextTab&) = default;
};

/// A list level: the marker format ("{disc}", "{decimal}.", "{lower-roman}" …), options and first number.
struct TextList {
    QString markerFormat;
    unsigned options = 0; ///< 1: prepend the enclosing list's marker
    int startingItemNumber = 1;
    friend bool operator==(const TextList&, const TextList&) = default;
};

/// The table a set of text blocks belongs to; shared by the blocks of one table (identity matters).
struct TextTable {
    int numberOfColumns = 0;
    friend bool operator==(const TextTable&, const TextTable&) = default;
};

/// A table cell (or a nested block) that a paragraph sits in.
struct TextBlock {
    std::shared_ptr<TextTable> table; ///< null for a block that is not a table cell
    int startingRow = 0;
    int rowSpan = 1;
    int startingColumn = 0;
    int columnSpan = 1;
    double contentWidth = 0; ///< 0 when automatic
    Color backgroundColor{1, 1, 1, 0};
    friend bool operator==(const TextBlock& a, const TextBlock& b)
    {
        return a.table == b.table && a.startingRow == b.startingRow && a.rowSpan == b.rowSpan
            && a.startingColumn == b.startingColumn && a.columnSpan == b.columnSpan && a.contentWidth == b.contentWidth
            && a.backgroundColor == b.backgroundColor;
    }
};

class ParagraphStyle {
public:
    /// The default style: natural alignment, all spacings, indents and line heights 0, twelve left tab
    /// stops every 28 pt.
    ParagraphStyle();
    static const ParagraphStyle& defaultParagraphStyle();

    TextAlignment alignment() const { return m_alignment; }
    double firstLineHeadIndent() const { return m_firstLineHeadIndent; }
    double headIndent() const { return m_headIndent; }
    /// Positive: from the leading margin; zero or negative: from the trailing margin.
    double tailIndent() const { return m_tailIndent; }
    double lineSpacing() const { return m_lineSpacing; }
    double paragraphSpacing() const { return m_paragraphSpacing; }
    double paragraphSpacingBefore() const { return m_paragraphSpacingBefore; }
    double minimumLineHeight() const { return m_minimumLineHeight; }
    double maximumLineHeight() const { return m_maximumLineHeight; }
    double lineHeightMultiple() const { return m_lineHeightMultiple; }
    double defaultTabInterval() const { return m_defaultTabInterval; }
    const QVector<TextTab>& tabStops() const { return m_tabStops; }
    /// Nested lists, outermost first.
    const QVector<TextList>& textLists() const { return m_textLists; }
    /// Nested blocks, outermost first.
    const QVector<TextBlock>& textBlocks() const { return m_textBlocks; }
    int headerLevel() const { return m_headerLevel; }

    void setAlignment(TextAlignment v) { m_alignment = v; }
    void setFirstLineHeadIndent(double v) { m_firstLineHeadIndent = v; }
    void setHeadIndent(double v) { m_headIndent = v; }
    void setTailIndent(double v) { m_tailIndent = v; }
    void setLineSpacing(double v) { m_lineSpacing = v; }
    void setParagraphSpacing(double v) { m_paragraphSpacing = v; }
    void setParagraphSpacingBefore(double v) { m_paragraphSpacingBefore = v; }
    void setMinimumLineHeight(double v) { m_minimumLineHeight = v; }
    void setMaximumLineHeight(double v) { m_maximumLineHeight = v; }
    void setLineHeightMultiple(double v) { m_lineHeightMultiple = v; }
    void setDefaultTabInterval(double v) { m_defaultTabInterval = v; }
    void setTabStops(const QVector<TextTab>& v) { m_tabStops = v; }
    void setTextLists(const QVector<TextList>& v) { m_textLists = v; }
    void setTextBlocks(const QVector<TextBlock>& v) { m_textBlocks = v; }
    void setHeaderLevel(int v) { m_headerLevel = v; }

    friend bool operator==(const ParagraphStyle&, const ParagraphStyle&) = default;

private:
    TextAlignment m_alignment = NaturalTextAlignment;
    double m_firstLineHeadIndent = 0, m_headIndent = 0, m_tailIndent = 0;
    double m_lineSpacing = 0, m_paragraphSpacing = 0, m_paragraphSpacingBefore = 0;
    double m_minimumLineHeight = 0, m_maximumLineHeight = 0, m_lineHeightMultiple = 0;
    double m_defaultTabInterval = 0;
    QVector<TextTab> m_tabStops;
    QVector<TextList> m_textLists;
    QVector<TextBlock> m_textBlocks;
    int m_headerLevel = 0;
};

} // namespace qly

Q_DECLARE_METATYPE(qly::ParagraphStyle)
