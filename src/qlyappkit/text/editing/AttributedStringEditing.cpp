#include <qlyappkit/text/editing/AttributedStringEditing.h>

#include <QUrl>
#include <algorithm>
#include <functional>

#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/text/WordCounting.h>

namespace qly {

namespace {

constexpr char16_t Backslash = u'\\';
const QString UrlSchemeSeparator = QStringLiteral("://");

// Characters of context on each side of a match when asking for the word around it. Word boundaries
// usually depend only on nearby characters, and a window keeps each check independent of the text's
// size; when the window holds no independent word boundary on a side (a long run of regional
// indicators, say), the whole edited text decides instead.
constexpr qsizetype WordContext = 64;

// ---- code points read through an AttributedString, for the trimming sets

char32_t codePointAt(const AttributedString& s, qsizetype i, int* width)
{
    const QChar c = s.characterAt(i);
    if (c.isHighSurrogate() && i + 1 < s.length()) {
        const QChar low = s.characterAt(i + 1);
        if (low.isLowSurrogate()) {
            *width = 2;
            return QChar::surrogateToUcs4(c, low);
        }
    }
    *width = 1;
    return c.unicode();
}

char32_t codePointBefore(const AttributedString& s, qsizetype end, int* width)
{
    const QChar c = s.characterAt(end - 1);
    if (c.isLowSurrogate() && end >= 2) {
        const QChar high = s.characterAt(end - 2);
        if (high.isHighSurrogate()) {
            *width = 2;
            return QChar::surrogateToUcs4(high, c);
        }
    }
    *width = 1;
    return c.unicode();
}

AttributedString trimmed(const AttributedString& self, CharacterSet set, bool leading)
{
    qsizetype start = 0;
    qsizetype end = self.length();
    if (!set)
        return self;
    int width = 1;
    while (leading && start < end && set(codePointAt(self, start, &width)))
        start += width;
    while (end > start && set(codePointBefore(self, end, &width)))
        end -= width;
    if (start == end)
        return AttributedString();
    if (start == 0 && end == self.length())
        return self;
    return self.attributedSubstring(Range::fromBounds(start, end));
}

// ---- the replace-all loop shared by every in-place replacement

enum class MatchAction { Replace, Skip, SkipAndRemoveEscape };

/// A match with up to WordContext characters of the text around it, as the text stands after the
/// edits made so far.
struct MatchContext {
    QString before;
    QStringView match;
    QString after;
    const MutableAttributedString* edited = nullptr; ///< the receiver as edited so far
    Range current; ///< the match's range in edited
};
using MatchDecision = std::function<MatchAction(const MatchContext&)>;

// Searches `text`, the receiver's string fetched once before any edit, rather than the edited
// receiver (whose string() would be assembled again after every edit). Forwards, everything after a
// match is still unchanged, so positions only need the accumulated shift; backwards, everything
// before it is. The edited side of a match's neighbourhood is tracked here (`tail`: the end of the
// edited text before `tailEnd`; `head`: the start of the edited text from `headStart`, both in
// original positions), so deciding never asks the receiver for characters either.
qsizetype replaceMatches(MutableAttributedString& self, const QString& text, const QString& target,
                         const QString& replacement, unsigned options, Range range, const MatchDecision& decide)
{
    const bool backwards = options & BackwardsSearch;
    const Range whole = clippedRange(range, text.size());
    const qsizetype k = WordContext;

    qsizetype tailEnd = whole.location;
    QString tail = text.mid(std::max<qsizetype>(0, tailEnd - k), std::min(k, tailEnd));
    qsizetype headStart = whole.end();
    QString head = text.mid(headStart, k);

    Range remaining = whole;
    qsizetype shift = 0;
    qsizetype count = 0;
    while (remaining.length > 0) {
        const Range match = rangeOfString(text, target, options, remaining);
        if (match.isNotFound())
            break;

        MatchAction action = MatchAction::Replace;
        MatchContext context;
        const Range current{match.location + shift, match.length};
        if (decide) {
            context.edited = &self;
            context.current = current;
            context.match = QStringView(text).mid(match.location, match.length);
            if (backwards) {
                context.before = text.mid(std::max<qsizetype>(0, match.location - k), std::min(k, match.location));
                context.after = headStart - match.end() >= k
                    ? text.mid(match.end(), k)
                    : (text.mid(match.end(), headStart - match.end()) + head).left(k);
            } else {
                context.before = match.location - tailEnd >= k
                    ? text.mid(match.location - k, k)
                    : (tail + text.mid(tailEnd, match.location - tailEnd)).right(k);
                context.after = text.mid(match.end(), k);
            }
            action = decide(context);
        }

        qsizetype resumeBefore = match.location;
        switch (action) {
        case MatchAction::Replace:
            self.replaceCharacters(current, replacement);
            shift += replacement.size() - match.length;
            ++count;
            break;
        case MatchAction::SkipAndRemoveEscape:
            self.replaceCharacters(Range{current.location - 1, 1}, QString());
            shift -= 1;
            --resumeBefore;
            context.before.chop(1);
            break;
        case MatchAction::Skip:
            break;
        }
        const QString kept = action == MatchAction::Replace ? replacement : context.match.toString();

        if (backwards) {
            shift = 0; // the edits lie after everything still to be searched
            if (decide) {
                head = (kept + context.after).left(k);
                headStart = resumeBefore;
            }
            remaining = Range::fromBounds(whole.location, std::max(whole.location, resumeBefore));
        } else {
            if (decide) {
                tail = (context.before + kept).right(k);
                tailEnd = match.end();
            }
            remaining = Range::fromBounds(match.end(), whole.end());
        }
    }
    return count;
}

bool isWholeWord(const MatchContext& context)
{
    QString text = context.before;
    text.append(context.match).append(context.after);
    const Range word{context.before.size(), context.match.size()};
    // A side shorter than the window reaches the text's edge.
    const bool startIsText = context.before.size() < WordContext;
    const bool endIsText = context.after.size() < WordContext;
    qsizetype from = word.location;
    while (from >= 0 && !word_detail::independentAt(text, from, startIsText, endIsText))
        --from;
    qsizetype to = word.end();
    while (to <= text.size() && !word_detail::independentAt(text, to, startIsText, endIsText))
        ++to;
    if (from < 0 || to > text.size()) {
        const AttributedString edited = context.edited->attributedString();
        return edited.doubleClickAtIndex(context.current.location) == context.current;
    }
    // Between two independent boundaries the segments are those of the whole text.
    const AttributedString neighbourhood(text.mid(from, to - from));
    return neighbourhood.doubleClickAtIndex(word.location - from) == Range{word.location - from, word.length};
}

qsizetype replaceWholeWords(MutableAttributedString& self, const QString& target, const QString& replacement,
                            unsigned options, Range range)
{
    return replaceMatches(self, self.string(), target, replacement, options, range, [](const MatchContext& context) {
        return isWholeWord(context) ? MatchAction::Replace : MatchAction::Skip;
    });
}

bool canNameLink(const QString& s)
{
    if (s.contains(UrlSchemeSeparator))
        return false;
    return std::none_of(s.cbegin(), s.cend(), [](QChar c) { return isWhitespaceOrNewline(c.unicode()); });
}

// Points links that name `target` at `replacement`.
void retargetLinks(MutableAttributedString& self, const QString& target, const QString& replacement, unsigned options)
{
    QList<Range> naming;
    {
        // Scoped so that the snapshot is gone before the edits (it would make the backing copy itself).
        const AttributedString snapshot = self.attributedString();
        snapshot.enumerateAttribute(LinkAttributeName, Range{0, snapshot.length()},
                                    [&](const QVariant& value, Range run) {
                                        QString name;
                                        if (value.typeId() == QMetaType::QUrl)
                                            name = value.toUrl().toString();
                                        else if (value.typeId() == QMetaType::QString)
                                            name = value.toString();
                                        else
                                            return true;
                                        if (stringsEqual(name, target, options))
                                            naming.append(run);
                                        return true;
                                    });
    }
    const QUrl url(replacement);
    for (const Range& run : naming)
        self.addAttribute(LinkAttributeName, url, run);
}

} // namespace

// ---- trimming

AttributedString attributedStringByTrimmingCharactersInSet(const AttributedString& self, CharacterSet set)
{
    return trimmed(self, set, true);
}

AttributedString attributedStringByTrimmingWhitespace(const AttributedString& self)
{
    return trimmed(self, isWhitespaceOrNewline, true);
}

AttributedString attributedStringByTrimmingTrailingWhitespace(const AttributedString& self)
{
    return trimmed(self, isWhitespaceOrNewline, false);
}

// ---- splitting

QList<Range> rangesSeparatedByString(const AttributedString& self, const QString& separator)
{
    QList<Range> pieces;
    const QString text = self.string();
    qsizetype position = 0;
    while (position < text.size()) {
        const Range match = rangeOfString(text, separator, 0, Range::fromBounds(position, text.size()));
        if (match.isNotFound()) {
            pieces.append(Range::fromBounds(position, text.size()));
            break;
        }
        pieces.append(Range::fromBounds(position, match.location));
        position = match.end();
    }
    return pieces;
}

QList<AttributedString> componentsSeparatedByString(const AttributedString& self, const QString& separator)
{
    QList<AttributedString> pieces;
    const QList<Range> ranges = rangesSeparatedByString(self, separator);
    pieces.reserve(ranges.size());
    for (const Range& range : ranges)
        pieces.append(self.attributedSubstring(range));
    return pieces;
}

// ---- replacing

AttributedString attributedStringByReplacingOccurrencesOfString(const AttributedString& self, const QString& target,
                                                                const QString& replacement, unsigned options,
                                                                Range range)
{
    MutableAttributedString copy(self);
    replaceOccurrencesOfString(copy, target, replacement, options, range);
    return copy.attributedString();
}

AttributedString attributedStringByReplacingOccurrencesOfString(const AttributedString& self, const QString& target,
                                                                const QString& replacement)
{
    return attributedStringByReplacingOccurrencesOfString(self, target, replacement, 0, Range{0, self.length()});
}

qsizetype replaceOccurrencesOfString(MutableAttributedString& self, const QString& target, const QString& replacement,
                                     unsigned options, Range range)
{
    if (target.isEmpty())
        return 0;
    EditingBatch batch(self);
    return replaceMatches(self, self.string(), target, replacement, options, range, nullptr);
}

qsizetype replaceUnescapedOccurrencesOfString(MutableAttributedString& self, const QString& target,
                                              const QString& replacement, unsigned options, Range range,
                                              bool removeEscapes)
{
    if (target.isEmpty())
        return 0;
    EditingBatch batch(self);
    const QString text = self.string();
    if (rangeOfString(text, QChar(Backslash) + target, options, range).isNotFound())
        return replaceMatches(self, text, target, replacement, options, range, nullptr);
    // Only the one character before the match decides, in the text as edited so far.
    return replaceMatches(self, text, target, replacement, options, range,
                          [removeEscapes](const MatchContext& context) {
                              if (context.before.endsWith(QChar(Backslash)))
                                  return removeEscapes ? MatchAction::SkipAndRemoveEscape : MatchAction::Skip;
                              return MatchAction::Replace;
                          });
}

qsizetype replaceUnescapedOccurrencesOfString(MutableAttributedString& self, const QString& target,
                                              const QString& replacement, unsigned options, Range range)
{
    return replaceUnescapedOccurrencesOfString(self, target, replacement, options, range, false);
}

qsizetype removeEscapesForString(MutableAttributedString& self, const QString& target, bool caseSensitive)
{
    if (target.isEmpty())
        return 0;
    EditingBatch batch(self);
    const QString text = self.string();
    const QString escaped = QChar(Backslash) + target;
    const unsigned options = caseSensitive ? 0u : unsigned(CaseInsensitiveSearch);
    qsizetype removed = 0;
    Range remaining{0, text.size()};
    while (remaining.length > 0) {
        const Range match = rangeOfString(text, escaped, options, remaining);
        if (match.isNotFound())
            break;
        self.replaceCharacters(Range{match.location - removed, 1}, QString());
        ++removed;
        remaining = Range::fromBounds(match.end(), text.size());
    }
    return removed;
}

qsizetype replaceWholeWordOccurrencesOfString(MutableAttributedString& self, const QString& target,
                                              const QString& replacement, unsigned options, Range range)
{
    if (target.isEmpty())
        return 0;
    EditingBatch batch(self);
    const qsizetype count = replaceWholeWords(self, target, replacement, options, range);
    if (canNameLink(target) && canNameLink(replacement))
        retargetLinks(self, target, replacement, options);
    return count;
}

qsizetype replaceWholeWordOccurrencesOfString(QString& self, const QString& target, const QString& replacement,
                                              unsigned options, Range range)
{
    if (target.isEmpty())
        return 0;
    // A plain string has no links, so only the replacing part applies.
    MutableAttributedString text(self);
    const qsizetype count = replaceWholeWords(text, target, replacement, options, range);
    if (count > 0)
        self = text.string();
    return count;
}

} // namespace qly
