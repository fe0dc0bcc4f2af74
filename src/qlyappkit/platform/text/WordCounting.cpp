#include <qlyappkit/platform/text/WordCounting.h>

#include <QTextBoundaryFinder>
#include <algorithm>

#include <qlyappkit/platform/strings/CharacterSets.h>

namespace qly {

namespace {

// Chunks end at a line break (word segments never cross one), searched for after this many units.
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
        const char16_t c = text[i].unicode();
        if (c == u'\n' || c == u'\r' || c == 0x2029 || c == 0x2028)
            return i + 1;
        // A paragraph longer than a chunk many times over is cut at a space instead.
        if (i - from > 4 * ChunkSize && c == u' ')
            return i + 1;
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
    // Read the text a few chunks at a time so a huge range never needs one huge copy.
    constexpr qsizetype Block = 8 * ChunkSize;
    for (qsizetype from = range.location; from < range.end();) {
        qsizetype to = std::min(range.end(), from + Block);
        QString block = text.substring(Range{from, to - from});
        if (to < range.end()) {
            // End the block after its last line break so no segment is cut in two.
            qsizetype cut = block.size();
            while (cut > 0) {
                const char16_t c = block[cut - 1].unicode();
                if (c == u'\n' || c == u'\r' || c == 0x2029 || c == 0x2028)
                    break;
                --cut;
            }
            if (cut == 0) {
                cut = block.lastIndexOf(u' ') + 1;
                if (cut == 0)
                    cut = block.size();
            }
            block.truncate(cut);
            to = from + cut;
        }
        words += wordCount(QStringView(block));
        from = to;
    }
    return words;
}

} // namespace qly
