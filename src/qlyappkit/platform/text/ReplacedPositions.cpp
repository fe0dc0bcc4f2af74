#include <qlyappkit/platform/text/ReplacedPositions.h>

#include <algorithm>

#include "AttributedString_p.h"

namespace qly {

ReplacedPositions::ReplacedPositions(const std::vector<AttributedString::Replacement>& replacements,
                                     qsizetype length)
{
    const std::vector<Range> ranges = clippedReplacementRanges(replacements, length);
    m_starts.reserve(ranges.size());
    m_ends.reserve(ranges.size());
    m_shiftAfter.reserve(ranges.size());
    qsizetype shift = 0;
    for (size_t i = 0; i < ranges.size(); ++i) {
        shift += replacements[i].text.length() - ranges[i].length;
        m_starts.push_back(ranges[i].location);
        m_ends.push_back(ranges[i].end());
        m_shiftAfter.push_back(shift);
    }
}

namespace {

// Where p lands given the number of replacements that come before it.
qsizetype landing(qsizetype p, size_t before, const std::vector<qsizetype>& ends, const std::vector<qsizetype>& shift)
{
    if (before == 0)
        return p;
    const size_t last = before - 1;
    if (p < ends[last])
        return ends[last] + shift[last];
    return p + shift[last];
}

} // namespace

qsizetype ReplacedPositions::map(qsizetype p) const
{
    // The replacements that start at or before p (an insertion at p comes before its character).
    const auto before = std::upper_bound(m_starts.begin(), m_starts.end(), p) - m_starts.begin();
    return landing(p, size_t(before), m_ends, m_shiftAfter);
}

qsizetype ReplacedPositions::mapBoundary(qsizetype p) const
{
    const auto before = std::lower_bound(m_starts.begin(), m_starts.end(), p) - m_starts.begin();
    return landing(p, size_t(before), m_ends, m_shiftAfter);
}

} // namespace qly
