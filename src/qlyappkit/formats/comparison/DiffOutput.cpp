#include <qlyappkit/formats/comparison/DiffOutput_p.h>

#include <QByteArrayView>
#include <cstring>

#include <qlyappkit/formats/comparison/DiffConstants.h>

namespace qly::diffoutput {

namespace {

const QByteArray& separatorBytes()
{
    static const QByteArray Separator = XQDiffChunkSeparatorString.toUtf8();
    return Separator;
}

bool isContinuationByte(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

} // namespace

void SeparatorStripper::feed(const char* data, qsizetype size)
{
    const QByteArray& separator = separatorBytes();
    const qsizetype separatorSize = separator.size();
    m_buffer.append(data, size);
    char* b = m_buffer.data();
    const qsizetype n = m_buffer.size();
    qsizetype read = m_stripped, write = m_stripped;
    if (m_checkNextByte && read < n) {
        m_splitCharacter = m_splitCharacter || isContinuationByte(b[read]);
        m_checkNextByte = false;
    }
    for (;;) {
        const void* found = std::memchr(b + read, '\n', size_t(n - read));
        if (!found)
            break;
        const qsizetype lineEnd = static_cast<const char*>(found) - b + 1;
        qsizetype keep = lineEnd;
        if (lineEnd - read >= separatorSize
            && std::memcmp(b + lineEnd - separatorSize, separator.constData(), size_t(separatorSize)) == 0) {
            keep = lineEnd - separatorSize;
            // ASCII cannot stand inside a character: a continuation byte after the separator means the
            // output was not UTF-8, even though the stripped bytes may be.
            if (lineEnd < n)
                m_splitCharacter = m_splitCharacter || isContinuationByte(b[lineEnd]);
            else
                m_checkNextByte = true;
        }
        std::memmove(b + write, b + read, size_t(keep - read));
        write += keep - read;
        read = lineEnd;
    }
    std::memmove(b + write, b + read, size_t(n - read));
    m_buffer.truncate(write + (n - read));
    m_stripped = write;
}

std::optional<QByteArray> SeparatorStripper::finish()
{
    if (m_splitCharacter || !QByteArrayView(m_buffer).isValidUtf8())
        return std::nullopt;
    return std::move(m_buffer);
}

namespace {

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

MergedText mergedTextFromStrippedOutput(const QByteArray& stripped)
{
    const QString joined = QString::fromUtf8(stripped);
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

std::optional<MergedText> mergedTextFromDiffOutput(const QByteArray& output)
{
    SeparatorStripper stripper;
    stripper.feed(output);
    const std::optional<QByteArray> stripped = stripper.finish();
    if (!stripped)
        return std::nullopt;
    return mergedTextFromStrippedOutput(*stripped);
}

} // namespace qly::diffoutput
