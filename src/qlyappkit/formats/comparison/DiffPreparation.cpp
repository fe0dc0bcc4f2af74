#include <qlyappkit/formats/comparison/DiffPreparation.h>

#include <QIODevice>
#include <QSet>
#include <QStringEncoder>
#include <cstring>

#include <qlyappkit/formats/comparison/DiffChunking_p.h>
#include <qlyappkit/formats/comparison/DiffPreparation_p.h>

namespace qly {

namespace {

// Where prepared text goes: chunks of the text (views, never copied one by one) and separators.
class StringSink {
public:
    explicit StringSink(qsizetype expected) { m_out.reserve(expected); }
    void piece(QStringView text) { m_out.append(text); }
    void separator() { m_out.append(XQDiffChunkSeparatorString); }
    QString take() { return std::move(m_out); }

private:
    QString m_out;
};

// UTF-8 into a buffer that is either kept whole or, with a device, written out whenever it holds a
// block, so that a long text passes through a small buffer that stays in the cache.
class Utf8Sink {
public:
    Utf8Sink(qsizetype expected, QIODevice* device) : m_device(device)
    {
        m_out.resize(device ? BlockSize * 2 : expected);
    }
    void piece(QStringView text)
    {
        if (text.isEmpty())
            return;
        reserve(m_encoder.requiredSpace(text.size()));
        m_used = m_encoder.appendToBuffer(m_out.data() + m_used, text) - m_out.data();
        written();
    }
    void separator()
    {
        static const QByteArray Separator = XQDiffChunkSeparatorString.toUtf8();
        reserve(Separator.size());
        std::memcpy(m_out.data() + m_used, Separator.constData(), size_t(Separator.size()));
        m_used += Separator.size();
        written();
    }
    /// True when anything was written and the last byte is not a line feed.
    bool endsInsideALine() const { return m_any && m_last != '\n'; }
    /// The device: writes what is left; false when any write failed.
    bool finish()
    {
        flush();
        return m_ok;
    }
    QByteArray take()
    {
        m_out.truncate(m_used);
        return std::move(m_out);
    }

private:
    static constexpr qsizetype BlockSize = 256 * 1024;

    void written()
    {
        m_any = true;
        m_last = m_out.at(m_used - 1);
        if (m_device && m_used >= BlockSize)
            flush();
    }
    void flush()
    {
        if (m_device && m_used > 0) {
            m_ok = m_ok && m_device->write(m_out.constData(), m_used) == m_used;
            m_used = 0;
        }
    }
    void reserve(qsizetype more)
    {
        if (m_used + more > m_out.size())
            m_out.resize(std::max(m_out.size() * 2, m_used + more));
    }
    QIODevice* m_device;
    QByteArray m_out;
    qsizetype m_used = 0;
    QStringEncoder m_encoder{QStringEncoder::Utf8};
    bool m_any = false;
    char m_last = 0;
    bool m_ok = true;
};

template <typename Sink> void appendWords(QStringView text, Sink& sink)
{
    diffchunks::forEachWord(text, [&](qsizetype start, qsizetype end) {
        sink.piece(text.sliced(start, end - start));
        sink.separator();
    });
}

template <typename Sink> void appendClauses(QStringView text, Sink& sink)
{
    diffchunks::forEachClause(text, [&](qsizetype start, qsizetype end) {
        sink.piece(text.sliced(start, end - start));
        sink.separator();
    });
}

template <typename Sink> void separate(QStringView text, QStringView other, XQDiffType type, Sink& sink)
{
    type &= XQDiffTypeParagraphs | XQDiffTypeClauses | XQDiffTypeWords;
    if (text.isEmpty() || other.isEmpty() || type == 0 || type == XQDiffTypeParagraphs) {
        sink.piece(text);
        return;
    }
    if (type == XQDiffTypeWords)
        return appendWords(text, sink);
    if (type == XQDiffTypeClauses)
        return appendClauses(text, sink);

    const bool paragraphs = type & XQDiffTypeParagraphs, clauses = type & XQDiffTypeClauses,
               words = type & XQDiffTypeWords;
    // Hash sets of views into the other text: each lookup costs the length of the unit, not the
    // number of units.
    QSet<QStringView> otherParagraphs, otherClauses;
    if (paragraphs) {
        diffchunks::forEachParagraph(
            other, [&](qsizetype start, qsizetype end) { otherParagraphs.insert(other.sliced(start, end - start)); });
    }
    if (clauses && words) {
        // Cut paragraph by paragraph, as this side is: cut as one text, the other's first clause of each
        // paragraph would start with the line break before it and never match.
        diffchunks::forEachParagraph(other, [&](qsizetype start, qsizetype end) {
            const QStringView paragraph = other.sliced(start, end - start);
            diffchunks::forEachClause(paragraph, [&](qsizetype clauseStart, qsizetype clauseEnd) {
                otherClauses.insert(paragraph.sliced(clauseStart, clauseEnd - clauseStart));
            });
        });
    }
    diffchunks::forEachParagraph(text, [&](qsizetype start, qsizetype end) {
        const QStringView paragraph = text.sliced(start, end - start);
        if (paragraphs && otherParagraphs.contains(paragraph)) {
            sink.piece(paragraph);
        } else if (!clauses) {
            appendWords(paragraph, sink); // the words bit is set: the other combinations returned above
        } else if (!words) {
            appendClauses(paragraph, sink);
        } else {
            diffchunks::forEachClause(paragraph, [&](qsizetype clauseStart, qsizetype clauseEnd) {
                const QStringView clause = paragraph.sliced(clauseStart, clauseEnd - clauseStart);
                if (otherClauses.contains(clause)) {
                    sink.piece(clause);
                    sink.separator();
                } else {
                    appendWords(clause, sink);
                }
            });
        }
    });
}

// Room for the UTF-8 of the text and, when it is cut into words, a separator every three or four
// characters, so that the buffer seldom grows; memory reserved and never written costs nothing.
qsizetype expectedSize(QStringView text, XQDiffType type)
{
    if (type & XQDiffTypeWords)
        return text.size() * 16 + 64;
    return type & XQDiffTypeClauses ? text.size() * 4 + 64 : text.size() * 3 + 64;
}

} // namespace

QString stringSeparatedForDiffByComparisonToString(const QString& text, const QString& other, XQDiffType type)
{
    StringSink sink(text.size()); // a text the caller keeps: grown as needed, not reserved ahead
    separate(text, other, type, sink);
    return sink.take();
}

namespace diffprep {

QByteArray utf8SeparatedForDiff(QStringView text, QStringView other, XQDiffType type)
{
    Utf8Sink sink(expectedSize(text, type), nullptr);
    separate(text, other, type, sink);
    return sink.take();
}

bool writeSeparatedForDiff(QIODevice& device, QStringView text, QStringView other, XQDiffType type)
{
    Utf8Sink sink(0, &device);
    separate(text, other, type, sink);
    if (sink.endsInsideALine())
        sink.separator();
    return sink.finish();
}

} // namespace diffprep

} // namespace qly
