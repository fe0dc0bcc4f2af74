#pragma once
// A uniform grid over the card rectangles, so that finding the cards at a point costs the same on a
// board of ten cards and of ten thousand. Each cell lists, in ascending order, every card whose
// rectangle touches it; rebuilt after every layout pass.
#include <QPointF>
#include <QRectF>

#include <vector>

#include <qlyappkit/geometry/XQGeometryArrays.h>

namespace qly {

class XQCardHitIndex {
public:
    void rebuild(const XQRectArray& rects);
    /// The cards whose rectangles may contain the point, ascending; a superset of the true hits.
    const std::vector<qsizetype>& candidatesAt(QPointF point) const;

private:
    double m_originX = 0, m_originY = 0, m_cellWidth = 1, m_cellHeight = 1;
    qsizetype m_columns = 0, m_rows = 0;
    std::vector<std::vector<qsizetype>> m_cells;
    std::vector<qsizetype> m_none;
};

} // namespace qly
