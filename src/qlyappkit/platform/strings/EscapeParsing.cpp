#include <qlyappkit/platform/strings/EscapeParsing.h>

#include <algorithm>
#include <limits>

namespace qly {

namespace {

const QString OpeningBrace = QStringLiteral("{");
const QString ClosingBrace = QStringLiteral("}");
constexpr char16_t Backslash = u'\\';

char32_t codePointAt(const QString& s, qsizetype i)
{
    const QChar c = s.at(i);
    if (c.isHighSurrogate() && i + 1 < s.size() && s.at(i + 1).isLowSurrogate())
        return QChar::surrogateToUcs4(c, s.at(i + 1));
    return c.unicode();
}

bool isUnescapedMatch(const QString& self, Range match, CharacterSet terminatingSet)
{
    if (terminatingSet && match.end() < self.size() && !terminatingSet(codePointAt(self, match.end())))
        return false;
    // Backslashes escape each other, so only an odd run before the match makes it literal.
    qsizetype backslashes = 0;
    for (qsizetype i = match.location - 1; i >= 0 && self.at(i) == Backslash; --i)
        ++backslashes;
    return backslashes % 2 == 0;
}

} // namespace

Range rangeOfUnescapedString(const QString& self, const QString& target, unsigned options, Range range,
                             CharacterSet terminatingSet)
{
    const bool backwards = options & BackwardsSearch;
    Range remaining = clippedRange(range, self.size());
    while (remaining.length > 0) {
        const Range match = rangeOfString(self, target, options, remaining);
        if (match.isNotFound())
            break;
        if (isUnescapedMatch(self, match, terminatingSet))
            return match;
        remaining = backwards ? Range::fromBounds(remaining.location, match.location)
                              : Range::fromBounds(match.end(), remaining.end());
    }
    return Range::notFound();
}

Range rangeOfUnescapedString(const QString& self, const QString& target, unsigned options, Range range)
{
    return rangeOfUnescapedString(self, target, options, range, nullptr);
}

Range rangeOfUnescapedString(const QString& self, const QString& target, unsigned options)
{
    return rangeOfUnescapedString(self, target, options, Range{0, self.size()}, nullptr);
}

Range rangeOfUnescapedString(const QString& self, const QString& target)
{
    return rangeOfUnescapedString(self, target, 0u, Range{0, self.size()}, nullptr);
}

Range rangeOfUnescapedString(const QString& self, const QString& target, CharacterSet terminatingSet)
{
    return rangeOfUnescapedString(self, target, 0u, Range{0, self.size()}, terminatingSet);
}

qsizetype occurrencesOfUnescapedString(const QString& self, const QString& target, unsigned options, Range range)
{
    options &= ~unsigned(BackwardsSearch);
    const Range whole = clippedRange(range, self.size());
    Range remaining = whole;
    qsizetype count = 0;
    while (remaining.length > 0) {
        const Range match = rangeOfUnescapedString(self, target, options, remaining, nullptr);
        if (match.isNotFound())
            break;
        ++count;
        remaining = Range::fromBounds(match.end(), whole.end());
    }
    return count;
}

Range expandedRangeToIncludeCurlyBracketsAroundRange(const QString& self, Range range)
{
    const qsizetype size = self.size();
    range = clippedRange(range, size);
    const Range opening = rangeOfUnescapedString(self, OpeningBrace, BackwardsSearch, Range{0, range.location});
    if (opening.isNotFound())
        return Range::notFound();

    qsizetype opens = 1 + occurrencesOfUnescapedString(self, OpeningBrace, 0, range);
    qsizetype closes = occurrencesOfUnescapedString(self, ClosingBrace, 0, range);
    if (opens == closes)
        return Range::fromBounds(opening.location, range.end());

    qsizetype position = range.end();
    for (;;) {
        const Range closing = rangeOfUnescapedString(self, ClosingBrace, 0, Range::fromBounds(position, size));
        if (closing.isNotFound())
            break;
        opens += occurrencesOfUnescapedString(self, OpeningBrace, 0, Range::fromBounds(position, closing.location));
        ++closes;
        position = closing.end();
        if (closes == opens)
            break;
    }
    return Range::fromBounds(opening.location, position);
}

qint64 integerAtEndOfUnescapedString(const QString& self, const QString& target, unsigned options, Range range)
{
    range = clippedRange(range, self.size());
    const Range match = rangeOfUnescapedString(self, target, options, range, nullptr);
    if (match.isNotFound())
        return 0;
    qsizetype end = match.end();
    while (end < range.end() && self.at(end).isDigit())
        ++end;
    if (end == match.end() || end == range.end())
        return 0;

    constexpr qint64 maximum = std::numeric_limits<qint64>::max();
    qint64 value = 0;
    for (qsizetype i = match.end(); i < end; ++i) {
        const int digit = self.at(i).digitValue();
        if (value > (maximum - digit) / 10)
            return maximum; // saturate rather than wrap on absurdly long numbers
        value = value * 10 + digit;
    }
    return value;
}

} // namespace qly
