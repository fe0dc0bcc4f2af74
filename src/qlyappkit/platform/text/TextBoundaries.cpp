// Paragraph, line and word boundaries of an AttributedString. Word boundaries follow Unicode's
// word-boundary rules (QTextBoundaryFinder) inside a small window around the index, widened until
// the answer does not depend on where the window was cut, so no call reads the whole text.
#include <qlyappkit/platform/text/AttributedString.h>

#include <QTextBoundaryFinder>
#include <algorithm>

#include <qlyappkit/platform/strings/CharacterSets.h>
#include <qlyappkit/platform/text/ParagraphRanges.h>

namespace qly {

namespace {

/// Word-boundary segments of a window of the text. A window edge that is not the text's edge or a
/// line break is artificial: segments touching it may be cut wrongly, so callers widen the window.
struct WordWindow {
    qsizetype start = 0; ///< window start in the text
    QString text;
    std::vector<qsizetype> boundaries; ///< local offsets, ascending, including 0 and text.size()
    bool startIsReal = true;
    bool endIsReal = true;

    WordWindow(const AttributedString& s, qsizetype from, qsizetype to)
    {
        const qsizetype n = s.length();
        from = std::max<qsizetype>(from, 0);
        to = std::min(to, n);
        start = from;
        text = s.substring(Range{from, to - from});
        startIsReal = from == 0 || isLineTerminator(s.characterAt(from - 1));
        endIsReal = to == n || isLineTerminator(s.characterAt(to));
        QTextBoundaryFinder finder(QTextBoundaryFinder::Word, text);
        boundaries.push_back(0);
        for (qsizetype b = finder.toNextBoundary(); b > 0; b = finder.toNextBoundary())
            boundaries.push_back(b);
        if (boundaries.back() != text.size())
            boundaries.push_back(text.size());
    }
    /// A boundary at local offset b can be trusted (it is far enough from an artificial edge).
    bool trusted(qsizetype b) const
    {
        constexpr qsizetype Margin = 4;
        if (!startIsReal && b < Margin)
            return false;
        if (!endIsReal && b > text.size() - Margin)
            return false;
        return true;
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

constexpr qsizetype InitialRadius = 64;

} // namespace

Range AttributedString::paragraphRange(Range range) const { return paragraphRangeIn(*this, range); }

Range AttributedString::lineRange(Range range) const { return lineRangeIn(*this, range); }

Range AttributedString::doubleClickAtIndex(qsizetype index) const
{
    const qsizetype n = length();
    if (n == 0)
        return Range{0, 0};
    index = std::clamp<qsizetype>(index, 0, n - 1);
    for (qsizetype radius = InitialRadius;; radius *= 2) {
        WordWindow w(*this, index - radius, index + radius + 1);
        const size_t seg = w.segmentIndex(index - w.start);
        const qsizetype s = w.boundaries[seg], e = w.boundaries[seg + 1];
        const bool wholeText = w.startIsReal && w.endIsReal;
        if (wholeText || (w.trusted(s) && w.trusted(e)) || radius > n)
            return Range{w.start + s, e - s};
    }
}

qsizetype AttributedString::nextWordFromIndex(qsizetype index, bool forward) const
{
    const qsizetype n = length();
    if (forward) {
        if (index >= n)
            return n;
        index = std::max<qsizetype>(index, 0);
        for (qsizetype radius = InitialRadius;; radius *= 2) {
            WordWindow w(*this, index - InitialRadius, index + radius);
            bool widen = false;
            for (size_t seg = w.segmentIndex(index - w.start); seg + 1 < w.boundaries.size(); ++seg) {
                const qsizetype e = w.boundaries[seg + 1];
                // Only the end matters going forward: the segment may begin before the window.
                if (!w.trusted(e)) {
                    if (radius <= n) {
                        widen = true;
                        break;
                    }
                }
                if (w.segmentIsWord(seg))
                    return w.start + e;
            }
            if (!widen && (w.endIsReal || radius > n))
                return w.start + w.text.size();
        }
    }
    if (index <= 0)
        return 0;
    index = std::min(index, n);
    for (qsizetype radius = InitialRadius;; radius *= 2) {
        WordWindow w(*this, index - radius, index + InitialRadius);
        bool widen = false;
        for (size_t seg = w.segmentIndex(index - 1 - w.start) + 1; seg-- > 0;) {
            const qsizetype s = w.boundaries[seg];
            if (!w.trusted(s)) {
                if (radius <= n) {
                    widen = true;
                    break;
                }
            }
            if (w.segmentIsWord(seg))
                return w.start + s;
        }
        if (!widen && (w.startIsReal || radius > n))
            return w.start;
    }
}

} // namespace qly
