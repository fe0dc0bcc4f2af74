#pragma once
// PrintInfo: the paper and its margins, in points, that a printed text is laid out on. Only the part
// the page layout view reads; the full print settings (paper name, orientation, pagination, scale…)
// come with their stored form.
#include <QSizeF>

namespace qly {

class PrintInfo {
public:
    /// US letter, one-inch margins.
    PrintInfo() = default;

    QSizeF paperSize() const { return m_paperSize; }
    void setPaperSize(QSizeF size) { m_paperSize = size; }
    double leftMargin() const { return m_leftMargin; }
    void setLeftMargin(double margin) { m_leftMargin = margin; }
    double rightMargin() const { return m_rightMargin; }
    void setRightMargin(double margin) { m_rightMargin = margin; }
    double topMargin() const { return m_topMargin; }
    void setTopMargin(double margin) { m_topMargin = margin; }
    double bottomMargin() const { return m_bottomMargin; }
    void setBottomMargin(double margin) { m_bottomMargin = margin; }

private:
    QSizeF m_paperSize{612, 792};
    double m_leftMargin = 72;
    double m_rightMargin = 72;
    double m_topMargin = 72;
    double m_bottomMargin = 72;
};

} // namespace qly
