#include <qlyappkit/text/StorageSupport_p.h>

#include <algorithm>

#include <qlyappkit/text/XQComment.h>

namespace qly::storage_detail {

namespace {

constexpr qsizetype Block = 256;

bool isParagraphTerminator(QChar c)
{
    const char16_t u = c.unicode();
    return u == u'\n' || u == u'\r' || u == 0x2029;
}

} // namespace

Range paragraphRange(const MutableAttributedString& text, Range range)
{
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
        while (i > 0 && !isParagraphTerminator(chunk.at(i - 1)))
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
        while (i < chunk.size() && !isParagraphTerminator(chunk.at(i)))
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

bool sameValue(const QVariant& a, const QVariant& b)
{
    const XQCommentPtr ca = commentFromVariant(a), cb = commentFromVariant(b);
    if (ca || cb)
        return ca == cb;
    if (a.isValid() != b.isValid())
        return false;
    return !a.isValid() || a == b;
}

void enumerateAttribute(const MutableAttributedString& text, const QString& name, Range range,
                        const std::function<bool(const QVariant&, Range)>& fn)
{
    const qsizetype n = text.length();
    const qsizetype start = std::clamp<qsizetype>(range.location, 0, n);
    const qsizetype end = std::clamp<qsizetype>(range.end(), start, n);
    for (qsizetype pos = start; pos < end;) {
        Range effective;
        const QVariant value = text.attributes(pos, &effective).value(name);
        qsizetype runEnd = std::clamp(effective.end(), pos + 1, end);
        while (runEnd < end) {
            Range next;
            const QVariant v = text.attributes(runEnd, &next).value(name);
            if (!sameValue(v, value))
                break;
            runEnd = std::clamp(next.end(), runEnd + 1, end);
        }
        if (!fn(value, Range{pos, runEnd - pos}))
            return;
        pos = runEnd;
    }
}

void forEachDifferingRun(const MutableAttributedString& source, Range range, const AttributedString& target,
                         qsizetype targetOffset, const std::function<void(const Attributes&, Range)>& set)
{
    const qsizetype n = source.length();
    const qsizetype start = std::clamp<qsizetype>(range.location, 0, n);
    const qsizetype end = std::clamp<qsizetype>(range.end(), start, n);
    for (qsizetype pos = start; pos < end;) {
        Range effective;
        const Attributes attrs = source.attributes(pos, &effective);
        const qsizetype runEnd = std::clamp(effective.end(), pos + 1, end);
        // Within one source run, step through the target's runs.
        for (qsizetype p = pos; p < runEnd;) {
            Range targetRun;
            const Attributes existing = target.attributes(p + targetOffset, &targetRun);
            const qsizetype pieceEnd = std::clamp(targetRun.end() - targetOffset, p + 1, runEnd);
            if (!sameAttributes(existing, attrs))
                set(attrs, Range{p + targetOffset, pieceEnd - p});
            p = pieceEnd;
        }
        pos = runEnd;
    }
}

} // namespace qly::storage_detail
