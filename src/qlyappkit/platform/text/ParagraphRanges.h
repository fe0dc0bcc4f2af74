#pragma once
// Paragraph and line ranges over any text that offers length(), characterAt() and substring()
// (AttributedString, MutableAttributedString and its storages). The text is read in blocks, so a long
// paragraph costs a few copies rather than one lookup per character.
#include <QString>
#include <algorithm>

#include <qlyappkit/platform/text/Range.h>

namespace qly {

/// LF, CR and U+2029 end a paragraph.
inline bool isParagraphTerminator(QChar c)
{
    const char16_t u = c.unicode();
    return u == u'\n' || u == u'\r' || u == 0x2029;
}

/// Paragraph terminators, U+2028 and U+0085 end a line.
inline bool isLineTerminator(QChar c)
{
    const char16_t u = c.unicode();
    return isParagraphTerminator(c) || u == 0x2028 || u == 0x85;
}

/// The blocks (paragraphs or lines, by isTerminator) touching range, terminators included; a CR LF
/// pair is one terminator.
template <typename Text, typename IsTerminator>
Range blockRangeIn(const Text& text, Range range, IsTerminator isTerminator)
{
    constexpr qsizetype Block = 256;
    const qsizetype n = text.length();
    qsizetype s = std::clamp<qsizetype>(range.location, 0, n);
    // The LF of a CR LF belongs to the paragraph the CR ends.
    if (s < n && s > 0 && text.characterAt(s) == u'\n' && text.characterAt(s - 1) == u'\r')
        --s;
    qsizetype start = s;
    while (start > 0) {
        const qsizetype from = std::max<qsizetype>(0, start - Block);
        const QString chunk = text.substring(Range{from, start - from});
        qsizetype i = chunk.size();
        while (i > 0 && !isTerminator(chunk.at(i - 1)))
            --i;
        if (i > 0) {
            start = from + i;
            break;
        }
        start = from;
    }
    qsizetype end = std::max(range.length > 0 ? std::min(range.end() - 1, n) : s, start);
    while (end < n) {
        const qsizetype to = std::min(n, end + Block);
        const QString chunk = text.substring(Range{end, to - end});
        qsizetype i = 0;
        while (i < chunk.size() && !isTerminator(chunk.at(i)))
            ++i;
        end += i;
        if (i < chunk.size())
            break;
    }
    if (end < n) {
        if (text.characterAt(end) == u'\r' && end + 1 < n && text.characterAt(end + 1) == u'\n')
            end += 2;
        else
            end += 1;
    }
    return Range{start, end - start};
}

template <typename Text> Range paragraphRangeIn(const Text& text, Range range)
{
    return blockRangeIn(text, range, isParagraphTerminator);
}

template <typename Text> Range lineRangeIn(const Text& text, Range range)
{
    return blockRangeIn(text, range, isLineTerminator);
}

} // namespace qly
