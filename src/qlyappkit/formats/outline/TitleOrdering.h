#pragma once
// Ordering titles the way people number things: runs of digits compare by their value, so "Item 2"
// comes before "Item 10".
#include <QStringView>

namespace qly {

/// The result of a comparison, numbered as the platform numbers it.
enum ComparisonResult { OrderedAscending = -1, OrderedSame = 0, OrderedDescending = 1 };

/// Compares by UTF-16 code unit, except that where both texts have a run of ASCII digits the runs
/// compare by numeric value (leading zeros do not count; runs of any length). With caseInsensitive
/// set, each character is lower-cased first.
ComparisonResult compareTitlesNumerically(QStringView a, QStringView b, bool caseInsensitive = false);

} // namespace qly
