#include <qlyappkit/platform/text/WordCounting.h>

#include <QTextBoundaryFinder>
#include <algorithm>

#include <qlyappkit/platform/strings/CharacterSets.h>

namespace qly {

namespace word_detail {

namespace {

constexpr char32_t Unknown = 0xFFFFFFFF;

/// Line breaks: after one (but not between CR and LF) and before one every word segment ends.
bool isLineBreak(char16_t c) { return (c >= 0x0A && c <= 0x0D) || c == 0x85 || c == 0x2028 || c == 0x2029; }

/// Characters of the word-break classes WSegSpace and Other that no rule joins to a neighbour (a space
/// only to another space, and the neighbour is never a space): ASCII spaces and punctuation, and, so
/// that text without spaces has such boundaries too, CJK ideographs and ideographic full stops and
/// commas (each of which stands alone as a segment).
bool isSeparating(char16_t c)
{
    if ((c >= 0x4E00 && c <= 0x9FFF) || (c >= 0x3400 && c <= 0x4DBF) || c == 0x3001 || c == 0x3002)
        return true;
    switch (c) {
    case u' ':
    case u'!':
    case u'#':
    case u'$':
    case u'%':
    case u'&':
    case u'(':
    case u')':
    case u'*':
    case u'+':
    case u'-':
    case u'/':
    case u'<':
    case u'=':
    case u'>':
    case u'?':
    case u'@':
    case u'[':
    case u'\\':
    case u']':
    case u'^':
    case u'`':
    case u'{':
    case u'|':
    case u'}':
    case u'~':
        return true;
    default:
        return false;
    }
}

/// A character that no rule attaches to the character before it (as combining marks, format
/// characters, emoji modifiers and halfwidth sound marks attach) and that no space joins.
bool isOrdinary(char32_t c)
{
    if (c == Unknown || (c >= 0xD800 && c <= 0xDFFF))
        return false;
    if (c == 0xFF9E || c == 0xFF9F || (c >= 0x1F3FB && c <= 0x1F3FF) || (c >= 0xE0000 && c <= 0xE0FFF))
        return false;
    switch (QChar::category(c)) {
    case QChar::Mark_NonSpacing:
    case QChar::Mark_SpacingCombining:
    case QChar::Mark_Enclosing:
    case QChar::Other_Format:
    case QChar::Separator_Space:
        return false;
    default:
        return true;
    }
}

/// The code point starting at p (Unknown where the piece cuts it).
char32_t codePointAt(QStringView s, qsizetype p, bool endIsText)
{
    const QChar c = s[p];
    if (!c.isHighSurrogate())
        return c.unicode();
    if (p + 1 < s.size())
        return s[p + 1].isLowSurrogate() ? QChar::surrogateToUcs4(c, s[p + 1]) : c.unicode();
    return endIsText ? c.unicode() : Unknown;
}

/// The code point ending at p (Unknown where the piece cuts it).
char32_t codePointBefore(QStringView s, qsizetype p, bool startIsText)
{
    const QChar c = s[p - 1];
    if (!c.isLowSurrogate())
        return c.unicode();
    if (p - 2 >= 0)
        return s[p - 2].isHighSurrogate() ? QChar::surrogateToUcs4(s[p - 2], c) : c.unicode();
    return startIsText ? c.unicode() : Unknown;
}

} // namespace

bool independentAt(QStringView s, qsizetype p, bool startIsText, bool endIsText)
{
    if (p <= 0)
        return p == 0 && startIsText;
    if (p >= s.size())
        return p == s.size() && endIsText;
    const char16_t before = s[p - 1].unicode(), after = s[p].unicode();
    if (isLineBreak(before) || isLineBreak(after))
        return !(before == u'\r' && after == u'\n');
    if (isSeparating(before) && isOrdinary(codePointAt(s, p, endIsText)))
        return true;
    return isSeparating(after) && isOrdinary(codePointBefore(s, p, startIsText));
}

} // namespace word_detail

namespace {

using word_detail::independentAt;

// Chunks end at an independent word boundary found after this many units.
constexpr qsizetype ChunkSize = 1 << 16;

qsizetype countSegments(QStringView chunk)
{
    if (chunk.isEmpty())
        return 0;
    qsizetype words = 0;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Word, chunk.data(), chunk.size());
    qsizetype prev = 0;
    for (qsizetype b = finder.toNextBoundary(); b > 0; b = finder.toNextBoundary()) {
        if (containsAlphanumeric(chunk.mid(prev, b - prev)))
            ++words;
        prev = b;
    }
    if (prev < chunk.size() && containsAlphanumeric(chunk.mid(prev)))
        ++words;
    return words;
}

qsizetype chunkEnd(QStringView text, qsizetype from)
{
    const qsizetype n = text.size();
    if (n - from <= ChunkSize)
        return n;
    for (qsizetype i = from + ChunkSize; i < n; ++i) {
        if (independentAt(text, i, true, true))
            return i;
    }
    return n;
}

} // namespace

qsizetype wordCount(QStringView text)
{
    qsizetype words = 0;
    for (qsizetype from = 0; from < text.size();) {
        const qsizetype end = chunkEnd(text, from);
        words += countSegments(text.mid(from, end - from));
        from = end;
    }
    return words;
}

qsizetype wordCount(const AttributedString& text, Range range)
{
    if (range.length <= 0 || range.location < 0 || range.end() > text.length())
        return 0;
    qsizetype words = 0;
    // Read the text a few chunks at a time so a huge range never needs one huge copy. A block ends at
    // its last independent boundary (the range's ends count as the text's), so no segment is cut.
    constexpr qsizetype Block = 8 * ChunkSize;
    for (qsizetype from = range.location; from < range.end();) {
        qsizetype size = Block;
        for (;;) {
            const qsizetype to = std::min(range.end(), from + size);
            if (to == range.end()) {
                words += wordCount(QStringView(text.substring(Range{from, to - from})));
                return words;
            }
            // Two units past the block's end decide whether a position near it is independent.
            const qsizetype readTo = std::min(range.end(), to + 2);
            const QString block = text.substring(Range{from, readTo - from});
            qsizetype cut = to - from;
            while (cut > 0 && !independentAt(block, cut, true, readTo == range.end()))
                --cut;
            if (cut > 0) {
                words += wordCount(QStringView(block).first(cut));
                from += cut;
                break;
            }
            size *= 2; // no independent boundary in the whole block: read a longer one
        }
    }
    return words;
}

bool isIndependentWordBoundary(QStringView text, qsizetype position)
{
    return independentAt(text, position, true, true);
}

qsizetype independentWordBoundaryAtOrBefore(const AttributedString& text, qsizetype position)
{
    const qsizetype n = text.length();
    qsizetype hi = std::clamp<qsizetype>(position, 0, n);
    for (qsizetype block = 32; hi > 0; block *= 2) {
        const qsizetype lo = std::max<qsizetype>(hi - block, 0);
        const qsizetype from = std::max<qsizetype>(lo - 2, 0), to = std::min(n, hi + 2);
        const QString piece = text.substring(Range{from, to - from});
        for (qsizetype p = hi; p > lo; --p) {
            if (independentAt(piece, p - from, from == 0, to == n))
                return p;
        }
        hi = lo;
    }
    return 0;
}

qsizetype independentWordBoundaryAtOrAfter(const AttributedString& text, qsizetype position)
{
    const qsizetype n = text.length();
    qsizetype lo = std::clamp<qsizetype>(position, 0, n);
    for (qsizetype block = 32; lo < n; block *= 2) {
        const qsizetype hi = std::min(lo + block, n);
        const qsizetype from = std::max<qsizetype>(lo - 2, 0), to = std::min(n, hi + 2);
        const QString piece = text.substring(Range{from, to - from});
        for (qsizetype p = lo; p < hi; ++p) {
            if (independentAt(piece, p - from, from == 0, to == n))
                return p;
        }
        lo = hi;
    }
    return n;
}

Range wordCountingRangeForEdit(const AttributedString& text, Range range)
{
    // Whether a position is independent depends on the two units before it and the one after it, so
    // boundaries two units clear of the edit stay independent after it.
    const qsizetype start = independentWordBoundaryAtOrBefore(text, range.location - 2);
    const qsizetype end = independentWordBoundaryAtOrAfter(text, range.end() + 2);
    return Range::fromBounds(start, end);
}

} // namespace qly
