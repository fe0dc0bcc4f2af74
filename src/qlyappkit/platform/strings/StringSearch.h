#pragma once
// The platform's string-comparison options and a literal, UTF-16-unit search over a range.
#include <QString>
#include <qlyappkit/platform/text/Range.h>

namespace qly {

/// Comparison options as the platform numbers them; combine with |.
enum SearchOption : unsigned {
    CaseInsensitiveSearch = 1,
    LiteralSearch = 2,
    BackwardsSearch = 4,
    AnchoredSearch = 8,
    NumericSearch = 64,
};

/// Finds `needle` in `haystack` within `range` (clipped to the text). Comparison is by UTF-16 units;
/// an empty needle is never found. Returns Range::notFound() when absent.
Range rangeOfString(const QString& haystack, const QString& needle, unsigned options, Range range);
inline Range rangeOfString(const QString& haystack, const QString& needle, unsigned options = 0)
{
    return rangeOfString(haystack, needle, options, Range{0, haystack.size()});
}

/// Compares two strings under the options (case-insensitive when bit 1 is set).
bool stringsEqual(const QString& a, const QString& b, unsigned options);

} // namespace qly
