#include "RTFImportRepairs.h"

#include <algorithm>
#include <map>
#include <set>

#include <QSet>
#include <vector>

#include <qlyappkit/platform/text/ReplacedPositions.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/comments/XQComment.h>
#include <qlyappkit/text/editing/AttributedStringEditing.h>
#include <qlyappkit/text/notes/MarginNotes.h>

#include "RTFImportTags.h"

namespace qly {

namespace {

struct Marker {
    qsizetype at;
    bool start;
};

std::vector<Marker> importMarkers(const QString& s)
{
    std::vector<Marker> markers;
    const QString& startTag = XQRTFImportCommentStartTag;
    const QString& endTag = XQRTFImportCommentEndTag;
    // Both markers begin with "<<<<", which nothing else the import makes does.
    const QString common = startTag.left(4);
    for (qsizetype at = s.indexOf(common); at >= 0;) {
        if (QStringView(s).mid(at).startsWith(startTag)) {
            markers.push_back({at, true});
            at = s.indexOf(common, at + startTag.size());
        } else if (QStringView(s).mid(at).startsWith(endTag)) {
            markers.push_back({at, false});
            at = s.indexOf(common, at + endTag.size());
        } else {
            at = s.indexOf(common, at + 1);
        }
    }
    return markers;
}

qsizetype markerLength(const Marker& m)
{
    return m.start ? XQRTFImportCommentStartTag.size() : XQRTFImportCommentEndTag.size();
}

// One comment to make: the range between two markers and the annotation that holds its text.
struct RangedComment {
    qsizetype from, to; ///< after the start marker, at the end marker
    Range annotation;
};

// The commented range holds text once the markers inside it are gone.
bool holdsText(const std::vector<Marker>& markers, qsizetype from, qsizetype to)
{
    qsizetype markerCharacters = 0;
    auto it =
        std::lower_bound(markers.begin(), markers.end(), from, [](const Marker& m, qsizetype at) { return m.at < at; });
    for (; it != markers.end() && it->at < to; ++it)
        markerCharacters += markerLength(*it);
    return to - from > markerCharacters;
}

std::vector<RangedComment> pairedByPosition(const std::vector<Marker>& markers, const std::vector<Range>& annotations)
{
    std::set<qsizetype> ends;
    for (const Marker& m : markers) {
        if (!m.start)
            ends.insert(m.at);
    }
    std::map<qsizetype, Range> annotationAt;
    for (const Range& r : annotations)
        annotationAt.emplace(r.location, r);
    std::vector<RangedComment> comments;
    for (const Marker& m : markers) {
        if (!m.start)
            continue;
        const auto end = ends.lower_bound(m.at);
        if (end == ends.end())
            continue;
        const qsizetype endAt = *end;
        ends.erase(end);
        const auto annotation = annotationAt.find(endAt + XQRTFImportCommentEndTag.size());
        if (annotation != annotationAt.end() && holdsText(markers, m.at + markerLength(m), endAt))
            comments.push_back({m.at + markerLength(m), endAt, annotation->second});
    }
    return comments;
}

std::optional<std::vector<RangedComment>> pairedByIds(const std::vector<Marker>& markers,
                                                      const std::vector<Range>& annotations, const CommentRangeIds& ids)
{
    std::vector<qsizetype> starts, ends;
    for (const Marker& m : markers)
        (m.start ? starts : ends).push_back(m.at);
    // Ids that are missing or repeated name no range.
    const auto usable = [](const QStringList& list) {
        return !list.contains(QString()) && QSet<QString>(list.begin(), list.end()).size() == list.size();
    };
    if (!usable(ids.rangeStarts) || !usable(ids.rangeEnds) || ids.annotationRefs.contains(QString()))
        return std::nullopt;
    if (qsizetype(starts.size()) != ids.rangeStarts.size() || qsizetype(ends.size()) != ids.rangeEnds.size()
        || qsizetype(annotations.size()) != ids.annotationRefs.size())
        return std::nullopt;
    std::map<QString, qsizetype> startById, endById;
    for (size_t i = 0; i < starts.size(); ++i)
        startById.emplace(ids.rangeStarts.at(qsizetype(i)), starts[i]);
    for (size_t i = 0; i < ends.size(); ++i)
        endById.emplace(ids.rangeEnds.at(qsizetype(i)), ends[i]);
    std::vector<RangedComment> comments;
    for (size_t i = 0; i < annotations.size(); ++i) {
        const QString& ref = ids.annotationRefs.at(qsizetype(i));
        const auto start = startById.find(ref);
        const auto end = endById.find(ref);
        if (start == startById.end() || end == endById.end() || end->second < start->second)
            continue;
        const qsizetype from = start->second + XQRTFImportCommentStartTag.size();
        if (holdsText(markers, from, end->second))
            comments.push_back({from, end->second, annotations[i]});
    }
    return comments;
}

// The separators the reader put between annotations that follow each other (an annotation that read
// as empty leaves its separator beside one run only).
std::vector<Range> annotationSeparators(const QString& s)
{
    std::vector<Range> separators;
    for (qsizetype at = s.indexOf(QChar(XQRTFImportAnnotationSeparator)); at >= 0;
         at = s.indexOf(QChar(XQRTFImportAnnotationSeparator), at + 1))
        separators.push_back(Range{at, 1});
    return separators;
}

void applyRangedComments(MutableAttributedString& text, const std::vector<Marker>& markers,
                         const std::vector<RangedComment>& comments, const std::vector<Range>& separators)
{
    // A character holds one comment: a range inside another goes on last, so that both keep text.
    std::vector<RangedComment> outerFirst = comments;
    std::stable_sort(outerFirst.begin(), outerFirst.end(),
                     [](const RangedComment& a, const RangedComment& b) { return a.to - a.from > b.to - b.from; });
    std::vector<std::pair<Range, QVariant>> commented;
    std::vector<Range> deletions;
    for (const Marker& m : markers)
        deletions.push_back(Range{m.at, markerLength(m)});
    deletions.insert(deletions.end(), separators.begin(), separators.end());
    const qsizetype length = text.length();
    for (const RangedComment& c : outerFirst) {
        AttributedString note = attributedStringByTrimmingWhitespace(text.attributedSubstring(c.annotation));
        note.removeAttribute(XQAnnotationAttributeName, Range{0, note.length()});
        commented.emplace_back(Range::fromBounds(c.from, c.to), variantFromComment(XQComment::create(note, false)));
        deletions.push_back(c.annotation);
    }
    // Overlaps cannot happen between markers and annotations; a deletion starting inside the one
    // before is clipped anyway.
    std::sort(deletions.begin(), deletions.end(), [](Range a, Range b) { return a.location < b.location; });
    // The deletions go first, in one batch; the comments then go where their ranges landed.
    std::vector<AttributedString::Replacement> removals;
    removals.reserve(deletions.size());
    for (const Range& r : deletions)
        removals.push_back({r, AttributedString()});
    text.replaceRanges(removals);
    const ReplacedPositions landed(removals, length);
    for (const auto& [range, comment] : commented)
        text.addAttribute(XQCommentAttributeName, comment, landed.map(range));
}

void applyRanges(MutableAttributedString& text, const CommentRangeIds* ids)
{
    bool annotationsLeft = true;
    {
        EditingBatch batch(text);
        std::vector<Marker> markers;
        std::vector<Range> separators;
        {
            // Let go before the edits, so that a text that shares nothing is edited where it lies.
            const QString s = text.string();
            markers = importMarkers(s);
            separators = annotationSeparators(s);
        }
        std::vector<Range> annotations;
        text.attributedString().enumerateAttribute(XQAnnotationAttributeName, Range{0, text.length()},
                                                   [&](const QVariant& value, Range run) {
                                                       if (value.isValid())
                                                           annotations.push_back(run);
                                                       return true;
                                                   });
        std::optional<std::vector<RangedComment>> comments;
        if (ids && !markers.empty())
            comments = pairedByIds(markers, annotations, *ids);
        if (!comments && !markers.empty())
            comments = pairedByPosition(markers, annotations);
        if (!markers.empty() || !separators.empty())
            applyRangedComments(text, markers, comments.value_or(std::vector<RangedComment>()), separators);
        // Each ranged comment used an annotation of its own.
        annotationsLeft = !comments || comments->size() < annotations.size();
    }
    if (annotationsLeft)
        convertInlineAnnotationsToMarginComments(text);
}

} // namespace

void convertInlineAnnotationsToMarginCommentsApplyingRangesUsingImportTags(MutableAttributedString& text)
{
    applyRanges(text, nullptr);
}

void convertInlineAnnotationsToMarginCommentsApplyingRangesUsingImportTags(MutableAttributedString& text,
                                                                           const CommentRangeIds& ids)
{
    applyRanges(text, &ids);
}

void deletePeriodsFromStartOfImportedNisusFootnotes(MutableAttributedString& text)
{
    std::vector<Range> periods;
    const AttributedString snapshot = text.attributedString();
    snapshot.enumerateAttribute(XQFootnoteAttributeName, Range{0, snapshot.length()},
                                [&](const QVariant& value, Range run) {
                                    if (value.isValid() && run.length >= 4
                                        && snapshot.substring(Range{run.location, 3}) == XQImportedFootnotePeriodPrefix)
                                        periods.push_back(Range{run.location + 1, 2});
                                    return true;
                                });
    EditingBatch batch(text);
    for (auto it = periods.rbegin(); it != periods.rend(); ++it)
        text.deleteCharacters(*it);
}

} // namespace qly
