#pragma once
// A span of UTF-16 code units, and the "not found" convention every search and query uses.
#include <QDebug>
#include <QtGlobal>

namespace qly {

/// Location of a range that was not found: the largest positive signed 32-bit value.
inline constexpr qsizetype NotFound = 0x7FFFFFFF;

/// A location and a length in UTF-16 code units (signed, so "not found" and deltas fit).
struct Range {
    qsizetype location = 0;
    qsizetype length = 0;

    constexpr qsizetype end() const { return location + length; }
    constexpr bool isNotFound() const { return location == NotFound; }
    constexpr bool isEmpty() const { return length == 0; }
    /// True when i lies inside [location, end).
    constexpr bool contains(qsizetype i) const { return i >= location && i < end(); }
    static constexpr Range notFound() { return {NotFound, 0}; }
    static constexpr Range fromBounds(qsizetype start, qsizetype end) { return {start, end - start}; }
    friend constexpr bool operator==(const Range&, const Range&) = default;
};

/// The overlap of two ranges; an empty range at the later start when they do not overlap.
constexpr Range intersectionRange(Range a, Range b)
{
    const qsizetype start = a.location > b.location ? a.location : b.location;
    const qsizetype end = a.end() < b.end() ? a.end() : b.end();
    return end > start ? Range{start, end - start} : Range{start, 0};
}

/// The part of range that lies in [0, size): a negative length counts as 0. Any range is accepted, and
/// no sum is formed that could overflow (a careless or hostile range may hold any values).
constexpr Range clippedRange(Range range, qsizetype size)
{
    const qsizetype start = range.location < 0 ? 0 : range.location > size ? size : range.location;
    qsizetype end = start;
    if (range.length > 0) {
        if (range.location < 0)
            end = range.location + range.length; // the signs differ: no overflow
        else
            end = range.length > size - range.location ? size : range.location + range.length;
    }
    return {start, end < start ? 0 : (end > size ? size : end) - start};
}

/// The smallest range holding both.
constexpr Range unionRange(Range a, Range b)
{
    const qsizetype start = a.location < b.location ? a.location : b.location;
    const qsizetype end = a.end() > b.end() ? a.end() : b.end();
    return {start, end - start};
}

inline QDebug operator<<(QDebug d, Range r)
{
    QDebugStateSaver s(d);
    d.nospace() << "{" << r.location << ", " << r.length << "}";
    return d;
}

} // namespace qly
