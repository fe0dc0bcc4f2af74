#include <qlyappkit/text/storages/XQTextStorage.h>

#include <algorithm>
#include <initializer_list>
#include <unordered_set>
#include <utility>

#include <qlyappkit/platform/services/NotificationCenter.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/comments/XQComment.h>
#include <qlyappkit/text/storages/StorageSupport_p.h>

namespace qly {

namespace {

XQCommentPtr commentIn(const Attributes& attributes)
{
    return commentFromVariant(attributes.value(XQCommentAttributeName));
}

/// Attribute changes collected during a walk and applied after it, so the walk never reads text it
/// has just changed.
struct PendingChange {
    Range range;
    Attributes attributes;
};

void applyChanges(MutableAttributedString& text, const std::vector<PendingChange>& changes)
{
    for (const PendingChange& change : changes)
        text.setAttributes(change.attributes, change.range);
}

/// A paragraph-wide attribute: the value at each paragraph's first character decides, by `spreads`,
/// whether it is spread over the paragraph or removed from it.
struct ParagraphRule {
    const QString& name;
    bool (*spreads)(const QVariant& first);
};

bool keepWithNextSpreads(const QVariant& first) { return first.isValid() && first.toBool(); }
bool styleIDSpreads(const QVariant& first) { return !first.toString().isEmpty(); }

bool isParagraphTerminator(QChar c) { return c == u'\n' || c == u'\r' || c == QChar(0x2029); }

/// The starts of the paragraphs that range touches, and the end of the last one.
std::vector<qsizetype> paragraphBounds(const MutableAttributedString& text, Range range)
{
    const Range all = storage_detail::paragraphRange(text, range);
    std::vector<qsizetype> bounds{all.location};
    // Breaks inside the paragraphs found can only come from terminators inside range itself, so
    // only range is read, not the paragraphs.
    if (range.length > 1) {
        const QString inside = text.substring(Range{range.location, range.length});
        for (qsizetype j = 0; j + 1 < inside.size(); ++j) {
            if (!isParagraphTerminator(inside.at(j)) || (inside.at(j) == u'\r' && inside.at(j + 1) == u'\n'))
                continue;
            const qsizetype b = range.location + j + 1;
            if (b > bounds.back() && b < all.end())
                bounds.push_back(b);
        }
    }
    bounds.push_back(all.end());
    return bounds;
}

void spreadParagraphAttributes(MutableAttributedString& text, Range range, std::initializer_list<ParagraphRule> rules)
{
    if (text.isEmpty())
        return;
    const std::vector<qsizetype> bounds = paragraphBounds(text, range);
    std::vector<PendingChange> changes;
    std::vector<std::pair<QVariant, bool>> decisions(rules.size());
    for (size_t k = 0; k + 1 < bounds.size(); ++k) {
        const Range paragraph = Range::fromBounds(bounds[k], bounds[k + 1]);
        if (paragraph.length <= 0)
            continue;
        const Attributes firstAttributes = text.attributes(paragraph.location);
        size_t r = 0;
        for (const ParagraphRule& rule : rules) {
            const QVariant first = firstAttributes.value(rule.name);
            decisions[r++] = {first, rule.spreads(first)};
        }
        changes.clear();
        for (qsizetype p = paragraph.location; p < paragraph.end();) {
            Range run;
            Attributes attrs = text.attributes(p, &run);
            const Range piece = Range::fromBounds(p, std::clamp(run.end(), p + 1, paragraph.end()));
            bool changed = false;
            r = 0;
            for (const ParagraphRule& rule : rules) {
                const auto& [first, spread] = decisions[r++];
                const QVariant value = attrs.value(rule.name);
                if (spread && !storage_detail::sameValue(value, first)) {
                    attrs.insert(rule.name, first);
                    changed = true;
                } else if (!spread && value.isValid()) {
                    attrs.remove(rule.name);
                    changed = true;
                }
            }
            if (changed)
                changes.push_back({piece, attrs});
            p = piece.end();
        }
        applyChanges(text, changes);
    }
}

} // namespace

// ---------------------------------------------------------------- creation

XQTextStorage::XQTextStorage() = default;

XQTextStorage::XQTextStorage(const QString& text, const Attributes& attributes)
    : XQWordCountingTextStorage(text, attributes)
{
    if (!text.isEmpty() && commentIn(attributes))
        rebuildCommentsFromRange(0);
}

XQTextStorage::XQTextStorage(const AttributedString& text) : XQWordCountingTextStorage(text)
{
    if (!text.isEmpty())
        rebuildCommentsFromRange(0);
}

XQTextStorage::XQTextStorage(const AttributedString& text, qsizetype wordCount)
    : XQWordCountingTextStorage(text, wordCount)
{
    if (!text.isEmpty())
        rebuildCommentsFromRange(0);
}

// ---------------------------------------------------------------- primitives

void XQTextStorage::replaceCharacters(Range range, const QString& text)
{
    if (rangeContainsUniqueCommentAttributes(range))
        m_commentsNeedRebuilding = true;
    XQWordCountingTextStorage::replaceCharacters(range, text);
}

void XQTextStorage::setAttributes(const Attributes& attributes, Range range)
{
    Attributes attrs = attributes;
    if (const XQCommentPtr comment = commentIn(attrs)) {
        attrs.insert(LinkAttributeName, variantFromComment(comment));
        attrs.insert(ToolTipAttributeName, comment->tooltipString());
        if (!m_fixing)
            m_commentsNeedRebuilding = true;
    } else if (!m_fixing && rangeContainsUniqueCommentAttributes(range)) {
        m_commentsNeedRebuilding = true;
    }
    XQWordCountingTextStorage::setAttributes(attrs, range);
}

void XQTextStorage::removeAttribute(const QString& name, Range range)
{
    if (name != XQCommentAttributeName) {
        XQWordCountingTextStorage::removeAttribute(name, range);
        return;
    }
    const qsizetype end = std::min(range.end(), length());
    EditingBatch batch(*this);
    for (qsizetype pos = std::max<qsizetype>(range.location, 0); pos < end;) {
        Range run;
        Attributes attrs = attributes(pos, &run);
        const qsizetype runEnd = std::clamp(run.end(), pos + 1, end);
        if (attrs.remove(XQCommentAttributeName) > 0) {
            if (commentFromVariant(attrs.value(LinkAttributeName))) {
                attrs.remove(LinkAttributeName);
                attrs.remove(ToolTipAttributeName);
            }
            setAttributes(attrs, Range{pos, runEnd - pos});
        }
        pos = runEnd;
    }
}

// ---------------------------------------------------------------- fixing

void XQTextStorage::fixAttributesInRange(Range range)
{
    XQWordCountingTextStorage::fixAttributesInRange(range);
    const bool wasFixing = std::exchange(m_fixing, true);
    fixCommentAttributeInRange(range);
    // Keep-with-next and style identifiers in one pass over the paragraphs.
    {
        EditingBatch batch(*this);
        spreadParagraphAttributes(
            *this, range,
            {{XQKeepWithNextAttributeName, keepWithNextSpreads}, {XQParagraphStyleIDAttributeName, styleIDSpreads}});
    }
    m_fixing = wasFixing;
}

void XQTextStorage::fixCommentAttributeInRange(Range range)
{
    const bool wasFixing = std::exchange(m_fixing, true);
    fixUpCommentAttributesInText(*this, range);
    if (m_commentsNeedRebuilding)
        rebuildCommentsFromRange(range.location);
    m_fixing = wasFixing;
}

void XQTextStorage::fixKeepWithNextAttributeInRange(Range range)
{
    const bool wasFixing = std::exchange(m_fixing, true);
    fixUpKeepWithNextAttributesInText(*this, range);
    m_fixing = wasFixing;
}

void XQTextStorage::fixStyleIDAttributesInRange(Range range)
{
    const bool wasFixing = std::exchange(m_fixing, true);
    fixUpStyleIDAttributesInText(*this, range);
    m_fixing = wasFixing;
}

void XQTextStorage::fixUpCommentAttributesInText(MutableAttributedString& text, Range range)
{
    const qsizetype end = std::min(range.end(), text.length());
    std::vector<PendingChange> changes;
    XQCommentPtr lastComment;
    QString lastTip;
    for (qsizetype pos = std::max<qsizetype>(range.location, 0); pos < end;) {
        Range run;
        Attributes attrs = text.attributes(pos, &run);
        const Range piece = Range::fromBounds(pos, std::clamp(run.end(), pos + 1, end));
        const XQCommentPtr comment = commentIn(attrs);
        const XQCommentPtr linked = commentFromVariant(attrs.value(LinkAttributeName));
        if (comment) {
            if (comment != lastComment) {
                lastComment = comment;
                lastTip = comment->tooltipString();
            }
            if (linked != comment || attrs.value(ToolTipAttributeName).toString() != lastTip) {
                attrs.insert(LinkAttributeName, variantFromComment(comment));
                attrs.insert(ToolTipAttributeName, lastTip);
                changes.push_back({piece, attrs});
            }
        } else if (linked) {
            attrs.remove(LinkAttributeName);
            attrs.remove(ToolTipAttributeName);
            changes.push_back({piece, attrs});
        }
        pos = piece.end();
    }
    if (!changes.empty()) {
        EditingBatch batch(text);
        applyChanges(text, changes);
    }
}

void XQTextStorage::fixUpKeepWithNextAttributesInText(MutableAttributedString& text, Range range)
{
    EditingBatch batch(text);
    spreadParagraphAttributes(text, range, {{XQKeepWithNextAttributeName, keepWithNextSpreads}});
}

void XQTextStorage::fixUpStyleIDAttributesInText(MutableAttributedString& text, Range range)
{
    EditingBatch batch(text);
    spreadParagraphAttributes(text, range, {{XQParagraphStyleIDAttributeName, styleIDSpreads}});
}

// ---------------------------------------------------------------- comments list

Range XQTextStorage::commentRunAt(qsizetype index) const
{
    if (index < 0 || index >= length())
        return Range::notFound();
    Range run;
    const XQCommentPtr comment = commentIn(attributes(index, &run));
    if (!comment)
        return Range::notFound();
    qsizetype start = run.location, end = run.end();
    while (start > 0) {
        Range before;
        if (commentIn(attributes(start - 1, &before)) != comment)
            break;
        start = before.location;
    }
    while (end < length()) {
        Range after;
        if (commentIn(attributes(end, &after)) != comment)
            break;
        end = after.end();
    }
    return Range::fromBounds(start, end);
}

bool XQTextStorage::rangeContainsUniqueCommentAttributes(Range range) const
{
    const qsizetype n = length();
    range = intersectionRange(range, Range{0, n});
    if (range.length <= 0)
        return false;
    auto commentAt = [this](qsizetype i) { return commentIn(attributes(i)); };
    bool found = false;
    storage_detail::enumerateAttribute(*this, XQCommentAttributeName, range, [&](const QVariant& value, Range run) {
        const XQCommentPtr comment = commentFromVariant(value);
        if (!comment)
            return true;
        const bool atStart = run.location == range.location;
        const bool atEnd = run.end() == range.end();
        const bool before = range.location > 0 && commentAt(range.location - 1) == comment;
        const bool after = range.end() < n && commentAt(range.end()) == comment;
        if (!atStart && !atEnd)
            found = true;
        else if (atEnd && !atStart)
            found = !after;
        else if (atStart && !atEnd)
            found = !before;
        else
            found = !before && !after;
        return !found;
    });
    return found;
}

void XQTextStorage::rebuildCommentsFromRange(qsizetype start)
{
    m_commentsNeedRebuilding = false;
    const bool wasFixing = std::exchange(m_fixing, true);
    EditingBatch batch(*this);
    const qsizetype n = length();
    start = std::clamp<qsizetype>(start, 0, n);
    const Range atStart = commentRunAt(start);
    if (!atStart.isNotFound())
        start = atStart.location;

    // The nearest comment run before start: the list up to its comment is still right.
    qsizetype scanFrom = start;
    XQCommentPtr earlier;
    while (scanFrom > 0) {
        Range run;
        earlier = commentIn(attributes(scanFrom - 1, &run));
        if (earlier)
            break;
        scanFrom = run.location;
    }
    auto kept = earlier ? std::find(m_comments.begin(), m_comments.end(), earlier) : m_comments.end();
    if (kept != m_comments.end()) {
        m_comments.erase(kept + 1, m_comments.end());
    } else {
        m_comments.clear();
        scanFrom = 0;
    }

    std::unordered_set<const XQComment*> seen;
    for (const XQCommentPtr& comment : m_comments)
        seen.insert(comment.get());
    storage_detail::enumerateAttribute(*this, XQCommentAttributeName, Range{scanFrom, n - scanFrom},
                                       [&](const QVariant& value, Range run) {
                                           XQCommentPtr comment = commentFromVariant(value);
                                           if (!comment)
                                               return true;
                                           if (seen.count(comment.get())) {
                                               // A second occurrence, as after pasting a copy of the anchor: it becomes its own comment.
                                               comment = comment->copy();
                                               addAttribute(XQCommentAttributeName, variantFromComment(comment), run);
                                           }
                                           seen.insert(comment.get());
                                           m_comments.push_back(comment);
                                           return true;
                                       });
    m_fixing = wasFixing;
    NotificationCenter::defaultCenter().post(XQTextStorageCommentsDidChangeNotification,
                                             static_cast<const TextStorage*>(this));
}

// ---------------------------------------------------------------- comment operations

XQCommentPtr XQTextStorage::addCommentObject(const XQCommentPtr& comment, Range range)
{
    range = intersectionRange(range, Range{0, length()});
    if (range.length > 0)
        addAttribute(XQCommentAttributeName, variantFromComment(comment), range);
    return comment;
}

XQCommentPtr XQTextStorage::addComment(const AttributedString& text, Range range)
{
    return addCommentObject(XQComment::create(text, false), range);
}

XQCommentPtr XQTextStorage::addFootnoteComment(const AttributedString& text, Range range)
{
    return addCommentObject(XQComment::create(text, true), range);
}

void XQTextStorage::setCommentText(const AttributedString& text, Range range)
{
    if (range.length <= 0 || range.location < 0 || range.location >= length())
        return;
    const XQCommentPtr comment = commentIn(attributes(range.location));
    if (!comment)
        return;
    XQCommentPtr replacement = comment->copy();
    replacement->setText(text);
    addCommentObject(replacement, range);
}

void XQTextStorage::removeCommentsAtRange(Range range)
{
    const qsizetype n = length();
    if (range.location < 0 || range.location >= n)
        return;
    const qsizetype end = std::min(std::max(range.end(), range.location + 1), n);
    std::vector<Range> runs;
    qsizetype pos = range.location;
    const Range first = commentRunAt(pos);
    if (!first.isNotFound()) {
        runs.push_back(first);
        pos = first.end();
    }
    storage_detail::enumerateAttribute(*this, XQCommentAttributeName, Range::fromBounds(pos, std::max(pos, end)),
                                       [&](const QVariant& value, Range run) {
                                           if (commentFromVariant(value))
                                               runs.push_back(commentRunAt(run.location));
                                           return true;
                                       });
    if (runs.empty())
        return;
    EditingBatch batch(*this);
    for (const Range& run : runs)
        removeAttribute(XQCommentAttributeName, run);
}

Range XQTextStorage::rangeOfComment(const XQCommentPtr& comment) const
{
    if (!comment || std::find(m_comments.begin(), m_comments.end(), comment) == m_comments.end())
        return Range::notFound();
    Range found = Range::notFound();
    storage_detail::enumerateAttribute(*this, XQCommentAttributeName, Range{0, length()},
                                       [&](const QVariant& value, Range run) {
                                           if (commentFromVariant(value) != comment)
                                               return true;
                                           found = run;
                                           return false;
                                       });
    return found;
}

} // namespace qly
