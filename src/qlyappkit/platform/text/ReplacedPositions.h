#pragma once
// ReplacedPositions: where the positions of a string land after AttributedString::replacingRanges, so
// that work found on the old text (a run to mark, say) can be done on the new one.
#include <algorithm>
#include <vector>

#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

class ReplacedPositions {
public:
    /// For the replacements given to replacingRanges on a string of the given length (clipped as
    /// replacingRanges clips them).
    ReplacedPositions(const std::vector<AttributedString::Replacement>& replacements, qsizetype length);

    /// Where the character at p lands: shifted by every replacement before it, text inserted at p
    /// included. A character inside a replaced range lands at the end of its replacement.
    qsizetype map(qsizetype p) const;
    /// Where a boundary at p lands: as map(p), but before any text inserted at p.
    qsizetype mapBoundary(qsizetype p) const;
    /// A range's characters, without text inserted at either end of it.
    Range map(Range range) const
    {
        const qsizetype end = mapBoundary(range.end());
        return range.length > 0 ? Range::fromBounds(std::min(map(range.location), end), end) : Range{end, 0};
    }

private:
    std::vector<qsizetype> m_starts, m_ends;
    std::vector<qsizetype> m_shiftAfter; ///< the length change of replacements 0..i
};

} // namespace qly
