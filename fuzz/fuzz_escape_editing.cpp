// Fuzz target for the escape-aware search and the attributed-string editing utilities. The input gives
// a text (with attributes that change every few characters), a target, a replacement, search options
// and a range, which may lie partly or wholly outside the text, run backwards (negative length) or
// hold any 64-bit values: every operation clips it. Each operation is checked against a plain model:
//  - searches: a match lies in the clipped range, equals the target, is unescaped (an even run of
//    backslashes before it) and, when asked, is followed by a terminating character; for targets that
//    cannot overlap themselves (so that every candidate is looked at) it is the first (or last)
//    such candidate, and the count is the number of them;
//  - braces: the widened range holds the clipped one and starts at a "{";
//  - trimming and splitting: the model's characters, attributes taken over unchanged;
//  - replacing (plain, unescaped, escape removal, whole words): the model's text and count, each
//    decision made on the whole text as edited so far (the whole-word test included, rather than
//    on the window around the match the operations look at).
#include "FuzzSupport.h"

#include <limits>

#include <qlyappkit/platform/strings/EscapeParsing.h>
#include <qlyappkit/text/editing/AttributedStringEditing.h>

using namespace qly;

namespace {

constexpr char16_t Backslash = u'\\';
// Texts up to this long are also checked against the quadratic models.
constexpr qsizetype ModelLimit = 512;
const QString RunAttributeName = QStringLiteral("FuzzRun");

Range clippedModel(Range range, qsizetype size)
{
    const qsizetype start = std::clamp<qsizetype>(range.location, 0, size);
    qsizetype end = 0;
    if (range.length <= 0 || __builtin_add_overflow(range.location, range.length, &end))
        end = range.length <= 0 ? start : size;
    return Range::fromBounds(start, std::clamp<qsizetype>(end, start, size));
}

Range randomRange(fuzz::InputReader& in, qsizetype size)
{
    const auto small = [&] { return qsizetype(in.below(unsigned(size) + 9)) - 4; };
    switch (in.below(5)) {
    case 0:
        return Range{0, size};
    case 1:
        return Range{small(), small()}; // out of range or backwards at either end
    case 2:
        return Range{qsizetype(in.uint64()), qsizetype(in.uint64())};
    case 3: {
        const qsizetype limits[] = {
            std::numeric_limits<qsizetype>::max(), std::numeric_limits<qsizetype>::min(), NotFound, -1, size, size + 1};
        return Range{in.flag() ? small() : limits[in.below(6)], limits[in.below(6)]};
    }
    default: {
        const qsizetype start = in.below(unsigned(size) + 1);
        return Range::fromBounds(start, start + in.below(unsigned(size - start) + 1));
    }
    }
}

unsigned randomOptions(fuzz::InputReader& in)
{
    const std::uint8_t bits = in.byte();
    return (bits & (CaseInsensitiveSearch | LiteralSearch | BackwardsSearch | AnchoredSearch))
        | (bits & 0x10 ? unsigned(NumericSearch) : 0u);
}

Qt::CaseSensitivity sensitivity(unsigned options)
{
    return options & CaseInsensitiveSearch ? Qt::CaseInsensitive : Qt::CaseSensitive;
}

bool matchesAt(const QString& s, qsizetype at, const QString& target, unsigned options)
{
    return at >= 0 && at + target.size() <= s.size()
        && QStringView(s).mid(at, target.size()).compare(target, sensitivity(options)) == 0;
}

bool isEscaped(const QString& s, qsizetype at)
{
    qsizetype backslashes = 0;
    for (qsizetype i = at - 1; i >= 0 && s.at(i) == Backslash; --i)
        ++backslashes;
    return backslashes % 2 == 1;
}

char32_t codePointAt(const QString& s, qsizetype i)
{
    if (s.at(i).isHighSurrogate() && i + 1 < s.size() && s.at(i + 1).isLowSurrogate())
        return QChar::surrogateToUcs4(s.at(i), s.at(i + 1));
    return s.at(i).unicode();
}

// No proper prefix of the target is also its suffix: its matches never overlap, so scanning from one
// match's end misses no candidate.
bool cannotOverlapItself(const QString& target, unsigned options)
{
    for (qsizetype k = 1; k < target.size(); ++k) {
        if (QStringView(target).left(k).compare(QStringView(target).right(k), sensitivity(options)) == 0)
            return false;
    }
    return true;
}

void checkSearches(const QString& s, const QString& target, unsigned options, Range range, CharacterSet set)
{
    const Range clip = clippedModel(range, s.size());
    const Range found = rangeOfUnescapedString(s, target, options, range, set);
    const auto acceptable = [&](qsizetype at) {
        return matchesAt(s, at, target, options) && !isEscaped(s, at)
            && (!set || at + target.size() == s.size() || set(codePointAt(s, at + target.size())));
    };
    if (!found.isNotFound()) {
        QLY_FUZZ_CHECK(found.length == target.size());
        QLY_FUZZ_CHECK(found.location >= clip.location && found.end() <= clip.end());
        QLY_FUZZ_CHECK(acceptable(found.location));
    }
    const qsizetype count = occurrencesOfUnescapedString(s, target, options, range);
    QLY_FUZZ_CHECK(count >= 0 && (count == 0 || target.size() * count <= clip.length));
    if (s.size() > ModelLimit || target.isEmpty() || (options & AnchoredSearch)
        || !cannotOverlapItself(target, options))
        return;
    qsizetype first = -1, last = -1, unescaped = 0;
    for (qsizetype at = clip.location; at + target.size() <= clip.end(); ++at) {
        if (acceptable(at)) {
            if (first < 0)
                first = at;
            last = at;
        }
        if (matchesAt(s, at, target, options) && !isEscaped(s, at))
            ++unescaped;
    }
    const qsizetype expected = options & BackwardsSearch ? last : first;
    QLY_FUZZ_CHECK(expected < 0 ? found.isNotFound() : found.location == expected);
    QLY_FUZZ_CHECK(count == unescaped);
}

void checkBraces(const QString& s, Range range)
{
    const Range clip = clippedModel(range, s.size());
    const Range widened = expandedRangeToIncludeCurlyBracketsAroundRange(s, range);
    if (widened.isNotFound()) {
        if (s.size() <= ModelLimit) {
            for (qsizetype at = 0; at < clip.location; ++at)
                QLY_FUZZ_CHECK(s.at(at) != u'{' || isEscaped(s, at));
        }
        return;
    }
    QLY_FUZZ_CHECK(widened.location >= 0 && widened.location <= clip.location);
    QLY_FUZZ_CHECK(widened.end() >= clip.end() && widened.end() <= s.size());
    QLY_FUZZ_CHECK(s.at(widened.location) == u'{');
}

// ---- attributed editing

AttributedString attributedText(const QString& s)
{
    // A run per stretch of characters with the same value of (code unit % 3).
    AttributedString text;
    for (qsizetype i = 0; i < s.size();) {
        qsizetype j = i + 1;
        while (j < s.size() && s.at(j).unicode() % 3 == s.at(i).unicode() % 3)
            ++j;
        text.append(s.mid(i, j - i), {{RunAttributeName, int(s.at(i).unicode() % 3)}});
        i = j;
    }
    return text;
}

Range trimmedModel(const QString& s, bool leading)
{
    qsizetype start = 0, end = s.size();
    while (leading && start < end) {
        const char32_t c = codePointAt(s, start);
        if (!isWhitespaceOrNewline(c))
            break;
        start += QChar::requiresSurrogates(c) ? 2 : 1;
    }
    while (end > start) {
        const bool pair = end >= 2 && s.at(end - 1).isLowSurrogate() && s.at(end - 2).isHighSurrogate();
        const char32_t c = pair ? QChar::surrogateToUcs4(s.at(end - 2), s.at(end - 1)) : s.at(end - 1).unicode();
        if (!isWhitespaceOrNewline(c))
            break;
        end -= pair ? 2 : 1;
    }
    return Range::fromBounds(start, end);
}

void checkTrimmingAndSplitting(const AttributedString& text, const QString& separator)
{
    const QString s = text.string();
    for (bool leading : {true, false}) {
        const Range kept = trimmedModel(s, leading);
        const AttributedString trimmed =
            leading ? attributedStringByTrimmingWhitespace(text) : attributedStringByTrimmingTrailingWhitespace(text);
        QLY_FUZZ_CHECK(trimmed.checkInvariants());
        QLY_FUZZ_CHECK(trimmed == text.attributedSubstring(kept));
    }
    QLY_FUZZ_CHECK(attributedStringByTrimmingCharactersInSet(text, isWhitespaceOrNewline)
                   == attributedStringByTrimmingWhitespace(text));

    const QList<Range> ranges = rangesSeparatedByString(text, separator);
    const QList<AttributedString> pieces = componentsSeparatedByString(text, separator);
    QLY_FUZZ_CHECK(ranges.size() == pieces.size());
    QLY_FUZZ_CHECK(s.isEmpty() == ranges.isEmpty());
    qsizetype position = 0;
    for (qsizetype i = 0; i < ranges.size(); ++i) {
        QLY_FUZZ_CHECK(ranges[i].location == position && ranges[i].end() <= s.size());
        QLY_FUZZ_CHECK(pieces[i] == text.attributedSubstring(ranges[i]));
        QLY_FUZZ_CHECK(!QStringView(s).mid(position, ranges[i].length).contains(separator) || separator.isEmpty());
        position = ranges[i].end();
        if (position < s.size()) {
            QLY_FUZZ_CHECK(!separator.isEmpty() && QStringView(s).mid(position).startsWith(separator));
            position += separator.size();
        }
    }
    QLY_FUZZ_CHECK(position == s.size());
}

enum class Rule { All, Unescaped, UnescapedRemovingEscapes, WholeWords };

bool isWholeWordIn(const QString& edited, Range match)
{
    return AttributedString(edited).doubleClickAtIndex(match.location) == match;
}

// The text with the matches replaced under the rule, the search going as the operations document:
// forwards it resumes after each match, backwards before it; each decision is made on the whole
// text as edited so far. Returns the count.
qsizetype replaceModel(QString& s, const QString& target, const QString& replacement, unsigned options, Range range,
                       Rule rule)
{
    const QString original = s;
    const bool backwards = options & BackwardsSearch;
    const Range whole = clippedModel(range, s.size());
    Range remaining = whole;
    qsizetype shift = 0; // forwards, edits lie before the search and move it; backwards, after it
    qsizetype count = 0;
    while (remaining.length > 0) {
        const Range match = rangeOfString(original, target, options, remaining);
        if (match.isNotFound())
            break;
        const Range current{match.location + shift, match.length};
        bool replace = true, removeEscape = false;
        if (rule == Rule::WholeWords) {
            replace = isWholeWordIn(s, current);
        } else if (rule != Rule::All && current.location > 0 && s.at(current.location - 1) == Backslash) {
            replace = false;
            removeEscape = rule == Rule::UnescapedRemovingEscapes;
        }
        qsizetype resume = match.location;
        if (replace) {
            s.replace(current.location, current.length, replacement);
            ++count;
            if (!backwards)
                shift += replacement.size() - match.length;
        } else if (removeEscape) {
            s.remove(current.location - 1, 1);
            if (!backwards)
                --shift;
            --resume;
        }
        remaining = backwards ? Range::fromBounds(whole.location, std::max(whole.location, resume))
                              : Range::fromBounds(match.end(), whole.end());
    }
    return count;
}

void checkReplacing(const AttributedString& text, const QString& target, const QString& replacement, unsigned options,
                    Range range, bool removeEscapes)
{
    const QString s = text.string();
    {
        QString expected = s;
        const qsizetype count =
            target.isEmpty() ? 0 : replaceModel(expected, target, replacement, options, range, Rule::All);
        const AttributedString copy =
            attributedStringByReplacingOccurrencesOfString(text, target, replacement, options, range);
        QLY_FUZZ_CHECK(copy.checkInvariants());
        QLY_FUZZ_CHECK(target.isEmpty() ? copy == text : copy.string() == expected);
        MutableAttributedString inPlace(text);
        QLY_FUZZ_CHECK(replaceOccurrencesOfString(inPlace, target, replacement, options, range) == count);
        QLY_FUZZ_CHECK(inPlace.attributedString() == copy);
    }
    {
        // Without the escaped form in the range, every match is replaced (as documented, even one
        // whose backslash lies just before the range, or comes with an earlier replacement).
        QString expected = s;
        const bool escapedFormInRange = !rangeOfString(s, QChar(Backslash) + target, options, range).isNotFound();
        const Rule rule = !escapedFormInRange ? Rule::All
            : removeEscapes                   ? Rule::UnescapedRemovingEscapes
                                              : Rule::Unescaped;
        const qsizetype count =
            target.isEmpty() ? 0 : replaceModel(expected, target, replacement, options, range, rule);
        MutableAttributedString edited(text);
        QLY_FUZZ_CHECK(replaceUnescapedOccurrencesOfString(edited, target, replacement, options, range, removeEscapes)
                       == count);
        QLY_FUZZ_CHECK(edited.attributedString().checkInvariants());
        QLY_FUZZ_CHECK(edited.string() == expected);
    }
    {
        QString expected = s;
        qsizetype count = 0;
        const QString escaped = QChar(Backslash) + target;
        if (!target.isEmpty()) {
            qsizetype shift = 0;
            const unsigned caseOption = options & CaseInsensitiveSearch;
            for (Range remaining{0, s.size()}; remaining.length > 0;) {
                const Range match = rangeOfString(s, escaped, caseOption, remaining);
                if (match.isNotFound())
                    break;
                expected.remove(match.location - shift++, 1);
                ++count;
                remaining = Range::fromBounds(match.end(), s.size());
            }
        }
        MutableAttributedString edited(text);
        QLY_FUZZ_CHECK(removeEscapesForString(edited, target, !(options & CaseInsensitiveSearch)) == count);
        QLY_FUZZ_CHECK(edited.string() == expected);
    }
    {
        MutableAttributedString edited(text);
        const qsizetype count = replaceWholeWordOccurrencesOfString(edited, target, replacement, options, range);
        QLY_FUZZ_CHECK(edited.attributedString().checkInvariants());
        QString plain = s;
        QLY_FUZZ_CHECK(replaceWholeWordOccurrencesOfString(plain, target, replacement, options, range) == count);
        QLY_FUZZ_CHECK(plain == edited.string());
        if (s.size() <= ModelLimit && !target.isEmpty()) {
            QString expected = s;
            QLY_FUZZ_CHECK(replaceModel(expected, target, replacement, options, range, Rule::WholeWords) == count);
            QLY_FUZZ_CHECK(expected == plain);
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::prepareEnvironment();
    fuzz::InputReader in(data, size);
    const unsigned options = randomOptions(in);
    const QString target = in.text(8);
    const QString replacement = in.text(8);
    const bool flag = in.flag();
    // The range's bytes come before the text, and are made a range once its length is known.
    const QByteArray rangeBytes = in.bytes(20);
    const QString s = QString::fromUtf8(in.rest());
    fuzz::InputReader rangeInput(reinterpret_cast<const std::uint8_t*>(rangeBytes.constData()),
                                 std::size_t(rangeBytes.size()));
    const Range range = randomRange(rangeInput, s.size());

    checkSearches(s, target, options, range, nullptr);
    checkSearches(s, target, options, range, flag ? isWhitespaceOrNewline : isPunctuation);
    checkBraces(s, range);
    QLY_FUZZ_CHECK(integerAtEndOfUnescapedString(s, target, options, range) >= 0);

    const AttributedString text = attributedText(s);
    checkTrimmingAndSplitting(text, target);
    checkReplacing(text, target, replacement, options, range, flag);
    return 0;
}
