#include <qlyappkit/corkboard/XQCardHitIndex_p.h>

#include <algorithm>
#include <cmath>

namespace qly {

void XQCardHitIndex::rebuild(const XQRectArray& rects)
{
    m_cells.clear();
    m_columns = m_rows = 0;
    if (rects.count() == 0)
        return;
    QRectF bounds;
    double widthSum = 0, heightSum = 0;
    for (const QRectF& r : rects.rects) {
        bounds = bounds.isNull() ? r : bounds.united(r);
        widthSum += r.width();
        heightSum += r.height();
    }
    const double n = double(rects.count());
    // Cells about the size of an average card, but never more cells than a few per card, however far
    // apart freeform cards lie.
    m_cellWidth = std::max(1.0, widthSum / n);
    m_cellHeight = std::max(1.0, heightSum / n);
    const double maxCells = 4.0 * n + 16.0;
    while ((std::ceil(bounds.width() / m_cellWidth) + 1) * (std::ceil(bounds.height() / m_cellHeight) + 1) > maxCells) {
        m_cellWidth *= 2;
        m_cellHeight *= 2;
    }
    m_originX = bounds.left();
    m_originY = bounds.top();
    m_columns = qsizetype(std::ceil(bounds.width() / m_cellWidth)) + 1;
    m_rows = qsizetype(std::ceil(bounds.height() / m_cellHeight)) + 1;
    m_cells.assign(size_t(m_columns * m_rows), {});
    for (qsizetype i = 0; i < rects.count(); ++i) {
        const QRectF& r = rects[i];
        const qsizetype c0 = std::clamp(qsizetype((r.left() - m_originX) / m_cellWidth), qsizetype(0), m_columns - 1);
        const qsizetype c1 = std::clamp(qsizetype((r.right() - m_originX) / m_cellWidth), qsizetype(0), m_columns - 1);
        const qsizetype r0 = std::clamp(qsizetype((r.top() - m_originY) / m_cellHeight), qsizetype(0), m_rows - 1);
        const qsizetype r1 = std::clamp(qsizetype((r.bottom() - m_originY) / m_cellHeight), qsizetype(0), m_rows - 1);
        for (qsizetype row = r0; row <= r1; ++row) {
            for (qsizetype column = c0; column <= c1; ++column)
                m_cells[size_t(row * m_columns + column)].push_back(i);
        }
    }
}

const std::vector<qsizetype>& XQCardHitIndex::candidatesAt(QPointF point) const
{
    if (m_cells.empty() || !std::isfinite(point.x()) || !std::isfinite(point.y()))
        return m_none;
    const double cx = (point.x() - m_originX) / m_cellWidth;
    const double cy = (point.y() - m_originY) / m_cellHeight;
    if (cx < 0 || cy < 0 || cx >= double(m_columns) || cy >= double(m_rows))
        return m_none;
    return m_cells[size_t(qsizetype(cy) * m_columns + qsizetype(cx))];
}

} // namespace qly
