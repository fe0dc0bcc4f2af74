// Paragraph, line and word boundaries of an AttributedString. Word boundaries follow Unicode's
// word-boundary rules (QTextBoundaryFinder) inside a window around the index. A window runs between two
// independent word boundaries (WordCounting.h), where the rules look across nothing, so its segments
// are exactly the whole text's: the answer never depends on where the window starts (a run of
// regional indicators, a combining sequence or a ZWJ emoji sequence is never entered mid-way), and
// no call reads more than the stretch between the nearest such boundaries.
#include <qlyappkit/platform/text/AttributedString.h>

#include <QTextBoundaryFinder>
#include <algorithm>

#include <qlyappkit/platform/strings/CharacterSets.h>
#include <qlyappkit/platform/text/ParagraphRanges.h>
#include <qlyappkit/platform/text/WordCounting.h>

namespace qly {

namespace {

/// Word-boundary segments of the text between two independent word boundaries.
struct WordWindow {
    qsizetype start = 0; ///< window start in the text
    QString text;
    std::vector<qsizetype> boundaries; ///< local offsets, ascending, including 0 and text.size()

    WordWindow(const AttributedString& s, qsizetype from, qsizetype to)
        : start(from), text(s.substring(Range{from, to - from}))
    {
        boundaries.push_back(0);
        if (text.isEmpty())
            return;
        QTextBoundaryFinder finder(QTextBoundaryFinder::Word, text);
        for (qsizetype b = finder.toNextBoundary(); b > 0; b = finder.toNextBoundary())
            boundaries.push_back(b);
        if (boundaries.back() != text.size())
            boundaries.push_back(text.size());
    }
    /// Index in boundaries of the segment holding local offset i (i < text.size()).
    size_t segmentIndex(qsizetype i) const
    {
        auto it = std::upper_bound(boundaries.begin(), boundaries.end(), i);
        return size_t(it - boundaries.begin()) - 1;
    }
    bool segmentIsWord(size_t seg) const
    {
        return containsAlphanumeric(QStringView(text).mid(boundaries[seg], boundaries[seg + 1] - boundaries[seg]));
    }
};

/// How far past the index the first window of a word search reaches (doubled while no word is found).
constexpr qsizetype InitialReach = 64;

} // namespace

Range AttributedString::paragraphRange(Range range) const { return paragraphRangeIn(*this, range); }

Range AttributedString::lineRange(Range range) const { return lineRangeIn(*this, range); }

Range AttributedString::doubleClickAtIndex(qsizetype index) const
{
    const qsizetype n = length();
    if (n == 0)
        return Range{0, 0};
    index = std::clamp<qsizetype>(index, 0, n - 1);
    const WordWindow w(*this, independentWordBoundaryAtOrBefore(*this, index),
                       independentWordBoundaryAtOrAfter(*this, index + 1));
    const size_t seg = w.segmentIndex(index - w.start);
    const qsizetype s = w.boundaries[seg], e = w.boundaries[seg + 1];
    return Range{w.start + s, e - s};
}

qsizetype AttributedString::nextWordFromIndex(qsizetype index, bool forward) const
{
    const qsizetype n = length();
    if (forward) {
        if (index >= n)
            return n;
        index = std::max<qsizetype>(index, 0);
        qsizetype from = independentWordBoundaryAtOrBefore(*this, index);
        for (qsizetype reach = InitialReach;; reach *= 2) {
            const qsizetype to = independentWordBoundaryAtOrAfter(*this, std::min(n, index + reach));
            const WordWindow w(*this, from, to);
            for (size_t seg = w.segmentIndex(index - from); seg + 1 < w.boundaries.size(); ++seg) {
                if (w.segmentIsWord(seg))
                    return from + w.boundaries[seg + 1];
            }
            if (to == n)
                return n;
            // No word before the window's end: go on from there (a window may start at it).
            from = index = to;
        }
    }
    if (index <= 0)
        return 0;
    index = std::min(index, n);
    qsizetype to = independentWordBoundaryAtOrAfter(*this, index);
    for (qsizetype reach = InitialReach;; reach *= 2) {
        const qsizetype from = independentWordBoundaryAtOrBefore(*this, std::max<qsizetype>(index - reach, 0));
        const WordWindow w(*this, from, to);
        for (size_t seg = w.segmentIndex(index - 1 - from) + 1; seg-- > 0;) {
            if (w.segmentIsWord(seg))
                return from + w.boundaries[seg];
        }
        if (from == 0)
            return 0;
        to = index = from;
    }
}

} // namespace qly
