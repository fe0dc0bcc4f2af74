#include <qlyappkit/platform/text/ReplacedPositions.h>

#include <algorithm>

namespace qly {

ReplacedPositions::ReplacedPositions(const std::vector<AttributedString::Replacement>& replacements,
                                     qsizetype length)
{
    m_starts.reserve(replacements.size());
    m_ends.reserve(replacements.size());
    m_shiftAfter.reserve(replacements.size());
    qsizetype pos = 0, shift = 0;
    for (const AttributedString::Replacement& r : replacements) {
        const qsizetype start = std::clamp<qsizetype>(r.range.location, pos, length);
        const qsizetype end = std::clamp<qsizetype>(r.range.end(), start, length);
        shift += r.text.length() - (end - start);
        m_starts.push_back(start);
        m_ends.push_back(end);
        m_shiftAfter.push_back(shift);
        pos = end;
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
