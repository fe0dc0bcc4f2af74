#include <qlyappkit/formats/comparison/DiffOutput_p.h>

#include <QByteArrayView>
#include <cstring>

#include <qlyappkit/formats/comparison/DiffConstants.h>

namespace qly::diffoutput {

namespace {

// The output without its separators, worked on as bytes: the separator is ASCII and ends with the
// only line feed it holds, so every occurrence ends at a line feed and no two overlap.
QByteArray withoutSeparators(const QByteArray& output)
{
    static const QByteArray Separator = XQDiffChunkSeparatorString.toUtf8();
    const char* data = output.constData();
    const qsizetype n = output.size(), separatorSize = Separator.size();
    QByteArray out;
    out.resize(n);
    char* to = out.data();
    qsizetype copied = 0; // output consumed up to here
    for (qsizetype from = 0; from < n;) {
        const void* found = std::memchr(data + from, '\n', size_t(n - from));
        if (!found)
            break;
        const qsizetype lineFeed = static_cast<const char*>(found) - data;
        const qsizetype start = lineFeed + 1 - separatorSize;
        if (start >= copied && std::memcmp(data + start, Separator.constData(), size_t(separatorSize)) == 0) {
            std::memcpy(to, data + copied, size_t(start - copied));
            to += start - copied;
            copied = lineFeed + 1;
        }
        from = lineFeed + 1;
    }
    std::memcpy(to, data + copied, size_t(n - copied));
    to += n - copied;
    out.truncate(to - out.constData());
    return out;
}

struct TagPass {
    QString text;
    std::vector<Range> marked; ///< in the pass's output
    std::vector<Range> deleted; ///< tags deleted, in the pass's input
};

// One tag pass. Every search starts at or after the last deletion, so a tag can never be formed by
// text joined across a deleted tag: the input can be read once, front to back.
TagPass deleteTags(QStringView input, const QString& startTag, const QString& endTag)
{
    TagPass pass;
    pass.text.reserve(input.size());
    qsizetype at = 0;
    for (;;) {
        const qsizetype start = input.indexOf(startTag, at);
        if (start < 0)
            break;
        pass.text.append(input.sliced(at, start - at));
        pass.deleted.push_back(Range{start, startTag.size()});
        at = start + startTag.size();
        const qsizetype end = input.indexOf(endTag, at);
        if (end < 0)
            break;
        const qsizetype markedStart = pass.text.size();
        pass.text.append(input.sliced(at, end - at));
        pass.marked.push_back(Range{markedStart, pass.text.size() - markedStart});
        pass.deleted.push_back(Range{end, endTag.size()});
        at = end + endTag.size();
    }
    pass.text.append(input.sliced(at));
    return pass;
}

// Where a position of a pass's input lands in its output: less every deleted character before it.
class PositionMap {
public:
    explicit PositionMap(const std::vector<Range>& deleted) : m_deleted(deleted) { }
    /// Positions must come in ascending order.
    qsizetype map(qsizetype position)
    {
        while (m_next < m_deleted.size() && m_deleted[m_next].end() <= position)
            m_shift += m_deleted[m_next++].length;
        qsizetype partial = 0;
        if (m_next < m_deleted.size() && m_deleted[m_next].location < position)
            partial = position - m_deleted[m_next].location;
        return position - m_shift - partial;
    }

private:
    const std::vector<Range>& m_deleted;
    size_t m_next = 0;
    qsizetype m_shift = 0;
};

} // namespace

std::optional<MergedText> mergedTextFromDiffOutput(const QByteArray& output)
{
    if (!QByteArrayView(output).isValidUtf8())
        return std::nullopt;
    const QString joined = QString::fromUtf8(withoutSeparators(output));
    TagPass removed = deleteTags(joined, XQDiffOldTextStartTag, XQDiffOldTextEndTag);
    TagPass added = deleteTags(removed.text, XQDiffNewTextStartTag, XQDiffNewTextEndTag);
    MergedText merged;
    PositionMap positions(added.deleted);
    for (const Range& r : removed.marked) {
        const qsizetype start = positions.map(r.location);
        merged.removed.push_back(Range::fromBounds(start, positions.map(r.end())));
    }
    merged.text = std::move(added.text);
    merged.added = std::move(added.marked);
    return merged;
}

} // namespace qly::diffoutput
