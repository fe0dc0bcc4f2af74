#include <qlyappkit/platform/strings/StringSearch.h>

#include <QStringView>

namespace qly {

namespace {
Qt::CaseSensitivity sensitivity(unsigned options)
{
    return (options & CaseInsensitiveSearch) ? Qt::CaseInsensitive : Qt::CaseSensitive;
}
} // namespace

// Every search is literal: the literal and numeric options are accepted and have no effect.
Range rangeOfString(const QString& haystack, const QString& needle, unsigned options, Range range)
{
    if (needle.isEmpty())
        return Range::notFound();
    // Clipped to the text without forming location + length, which may overflow for a careless range.
    qsizetype location = range.location;
    qsizetype length = range.length;
    if (location < 0) {
        length = length > 0 ? length + location : 0; // both operands' signs differ: no overflow
        location = 0;
    }
    const qsizetype start = qMin(location, haystack.size());
    const qsizetype end = start + qBound<qsizetype>(0, length, haystack.size() - start);
    if (end - start < needle.size())
        return Range::notFound();

    const QStringView within = QStringView(haystack).sliced(start, end - start);
    const Qt::CaseSensitivity cs = sensitivity(options);
    const bool backwards = options & BackwardsSearch;
    qsizetype found = -1;
    if (options & AnchoredSearch) {
        if (backwards) {
            if (within.endsWith(needle, cs))
                found = within.size() - needle.size();
        } else if (within.startsWith(needle, cs)) {
            found = 0;
        }
    } else {
        // Qt 6.4's lastIndexOf with the default start may report a match that runs past a sliced view's
        // end, so start at the last position where the needle fits.
        found = backwards ? within.lastIndexOf(QStringView(needle), within.size() - needle.size(), cs)
                          : within.indexOf(needle, 0, cs);
    }
    return found < 0 ? Range::notFound() : Range{start + found, needle.size()};
}

bool stringsEqual(const QString& a, const QString& b, unsigned options)
{
    return QString::compare(a, b, sensitivity(options)) == 0;
}

} // namespace qly
