#pragma once
// Escape-aware searching in plain strings. A backslash in front of a marker makes it literal text
// (that is how users write markers such as "<$--ENDNOTES-->" without triggering them); two
// backslashes escape each other and leave the marker live.
//
// Options are the SearchOption bits of StringSearch.h; ranges are clipped to the receiver, and a
// miss is Range::notFound().
#include <QString>

#include <qlyappkit/platform/strings/CharacterSets.h>
#include <qlyappkit/platform/strings/StringSearch.h>
#include <qlyappkit/platform/text/Range.h>

namespace qly {

/// The first (or with BackwardsSearch the last) match of target in range that is not escaped by an
/// odd run of backslashes. With a terminating set, a match must also be followed by a character of
/// the set or by the end of the string; rejected matches are skipped and the search goes on.
Range rangeOfUnescapedString(const QString& self, const QString& target, unsigned options, Range range,
                             CharacterSet terminatingSet);
Range rangeOfUnescapedString(const QString& self, const QString& target, unsigned options, Range range);
/// Over the whole string. (Pass a literal 0 as options through the two-argument form: 0 is also a
/// null CharacterSet.)
Range rangeOfUnescapedString(const QString& self, const QString& target, unsigned options);
Range rangeOfUnescapedString(const QString& self, const QString& target);
/// Over the whole string, no options, with a terminating set.
Range rangeOfUnescapedString(const QString& self, const QString& target, CharacterSet terminatingSet);

/// Number of non-overlapping unescaped matches in range, always counted forwards.
qsizetype occurrencesOfUnescapedString(const QString& self, const QString& target, unsigned options, Range range);

/// Widens range to the braced construct around it: from the last unescaped "{" before the range to
/// the unescaped "}" that balances it. Not found when no "{" precedes the range; when the closing
/// braces run out, the result ends after the last one seen (or at the range's end when none).
Range expandedRangeToIncludeCurlyBracketsAroundRange(const QString& self, Range range);

/// The decimal number written right after the unescaped target, e.g. 12 for "<$n>12 " and "<$n>".
/// 0 when the target is missing, no digit follows, or the digits reach the range's end (a number
/// counts only when some other character follows it inside the range).
qint64 integerAtEndOfUnescapedString(const QString& self, const QString& target, unsigned options, Range range);

} // namespace qly
