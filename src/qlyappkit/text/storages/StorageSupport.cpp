#include <qlyappkit/text/storages/StorageSupport_p.h>

#include <algorithm>

#include <qlyappkit/platform/text/ParagraphRanges.h>
#include <qlyappkit/text/comments/XQComment.h>

namespace qly::storage_detail {

Range paragraphRange(const MutableAttributedString& text, Range range) { return paragraphRangeIn(text, range); }

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
