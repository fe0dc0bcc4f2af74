#include <qlyappkit/platform/text/AttributedString.h>

#include <QDebug>
#include <algorithm>
#include <array>

#include "AttributedString_p.h"

namespace qly {

namespace {
constexpr int DefaultLeafCapacity = 4096;
int g_leafCapacity = DefaultLeafCapacity;

bool sameValue(const QVariant& a, const QVariant& b)
{
    if (!a.isValid() || !b.isValid())
        return a.isValid() == b.isValid();
    return a == b;
}
} // namespace

// ---------------------------------------------------------------- runs and pieces

qsizetype TextLeaf::runIndex(qsizetype offset) const
{
    auto it =
        std::upper_bound(runs.begin(), runs.end(), offset, [](qsizetype o, const TextRun& r) { return o < r.start; });
    return qsizetype(it - runs.begin()) - 1;
}

void TextPiece::append(QStringView more, const Attributes& attributes)
{
    if (more.isEmpty())
        return;
    if (runs.empty() || !sameAttributes(runs.back().attributes, attributes))
        runs.push_back(TextRun{text.size(), attributes});
    text.append(more);
}

void normalizeRuns(std::vector<TextRun>& runs, qsizetype textLength, qsizetype from, qsizetype to)
{
    if (runs.empty())
        return;
    from = std::max<qsizetype>(from, 0);
    to = std::min<qsizetype>(to, qsizetype(runs.size()) - 1);
    runs.front().start = 0;
    if (from > to)
        return;
    // One pass over the window, however many runs it holds: a run is empty when the next one starts
    // where it does (the last one of all stays); a run equal to the one kept before it joins that one.
    size_t kept = size_t(from);
    for (size_t i = size_t(from); qsizetype(i) <= to; ++i) {
        const qsizetype end = i + 1 < runs.size() ? runs[i + 1].start : textLength;
        const bool empty = end <= runs[i].start && !(kept == 0 && i + 1 == runs.size());
        if (empty || (kept > 0 && sameAttributes(runs[kept - 1].attributes, runs[i].attributes)))
            continue;
        if (kept != i)
            runs[kept] = std::move(runs[i]);
        ++kept;
    }
    runs.erase(runs.begin() + qsizetype(kept), runs.begin() + to + 1);
    runs.front().start = 0;
}

// ---------------------------------------------------------------- the Fenwick tree

AttributedStringData::AttributedStringData() : capacity(g_leafCapacity) { }

void AttributedStringData::rebuildTree()
{
    const size_t n = leaves.size();
    tree.assign(n + 1, 0);
    total = 0;
    for (size_t i = 1; i <= n; ++i) {
        tree[i] += leaves[i - 1]->length();
        total += leaves[i - 1]->length();
        const size_t parent = i + (i & (~i + 1));
        if (parent <= n)
            tree[parent] += tree[i];
    }
    invalidate();
}

void AttributedStringData::rebuildTreeFrom(qsizetype first)
{
    const size_t n = leaves.size();
    if (first <= 0 || size_t(first) > n || tree.size() < size_t(first) + 1) {
        rebuildTree();
        return;
    }
    // Node i covers leaves [i - lowbit(i), i) (0-based), so nodes up to `first` still hold their sums.
    const size_t k0 = size_t(first);
    const qsizetype base = leafStart(first);
    tree.resize(n + 1);
    std::vector<qsizetype> prefix(n - k0 + 1); // prefix[m]: length of the leaves before leaf k0 + m
    prefix[0] = base;
    for (size_t m = 0; m < n - k0; ++m)
        prefix[m + 1] = prefix[m] + leaves[k0 + m]->length();
    const auto before = [&](size_t i) { return i >= k0 ? prefix[i - k0] : leafStart(qsizetype(i)); };
    for (size_t i = k0 + 1; i <= n; ++i)
        tree[i] = before(i) - before(i - (i & (~i + 1)));
    total = prefix[n - k0];
    invalidate();
}

void AttributedStringData::treeAdd(qsizetype leafIndex, qsizetype delta)
{
    const size_t n = leaves.size();
    for (size_t i = size_t(leafIndex) + 1; i <= n; i += i & (~i + 1))
        tree[i] += delta;
    total += delta;
    invalidate();
}

qsizetype AttributedStringData::leafStart(qsizetype leafIndex) const
{
    qsizetype sum = 0;
    for (size_t i = size_t(leafIndex); i > 0; i -= i & (~i + 1))
        sum += tree[i];
    return sum;
}

std::pair<qsizetype, qsizetype> AttributedStringData::locate(qsizetype pos) const
{
    const size_t n = leaves.size();
    size_t idx = 0;
    qsizetype rem = pos;
    size_t step = 1;
    while (step * 2 <= n)
        step *= 2;
    for (; step; step >>= 1) {
        if (idx + step <= n && tree[idx + step] <= rem) {
            idx += step;
            rem -= tree[idx];
        }
    }
    return {qsizetype(idx), rem};
}

// ---------------------------------------------------------------- editing

std::vector<LeafPtr> AttributedStringData::makeLeaves(TextPiece&& piece) const
{
    std::vector<LeafPtr> out;
    const qsizetype n = piece.text.size();
    if (n == 0)
        return out;
    const qsizetype fill = std::max(1, fillSize());
    const qsizetype chunks = (n + fill - 1) / fill;
    // Even chunks, so that a large insertion does not leave a tiny last leaf.
    const qsizetype size = (n + chunks - 1) / chunks;
    size_t run = 0;
    for (qsizetype start = 0; start < n; start += size) {
        const qsizetype len = std::min(size, n - start);
        LeafPtr leaf(new TextLeaf);
        // Room to grow only for leaves of a large text; small strings stay small.
        if (len >= fill / 2)
            leaf->text.reserve(capacity);
        leaf->text.append(QStringView(piece.text).mid(start, len));
        while (run + 1 < piece.runs.size() && piece.runs[run + 1].start <= start)
            ++run;
        for (size_t r = run; r < piece.runs.size() && piece.runs[r].start < start + len; ++r) {
            const qsizetype runStart = std::max<qsizetype>(piece.runs[r].start - start, 0);
            // A run that goes on into the next leaf is copied; otherwise its dictionary moves, which
            // spares a reference count update on memory the next pass may not have cached.
            const bool goesOn = (r + 1 < piece.runs.size() ? piece.runs[r + 1].start : n) > start + len;
            leaf->runs.push_back(
                TextRun{runStart, goesOn ? piece.runs[r].attributes : std::move(piece.runs[r].attributes)});
        }
        out.push_back(leaf);
    }
    return out;
}

void copyFromLeaf(const TextLeaf& l, qsizetype from, qsizetype to, TextPiece& piece)
{
    for (qsizetype r = l.runIndex(from), off = from; off < to; ++r) {
        const qsizetype end = std::min(l.runEnd(r), to);
        if (off == from) {
            piece.append(QStringView(l.text).mid(off, end - off), l.runs[size_t(r)].attributes);
        } else {
            // Neighbouring runs of a leaf never hold equal dictionaries: no need to compare them,
            // which for dictionaries that are not shared means walking both.
            piece.runs.push_back(TextRun{piece.text.size(), l.runs[size_t(r)].attributes});
            piece.text.append(QStringView(l.text).mid(off, end - off));
        }
        off = end;
    }
}

void AttributedStringData::copyToPiece(Range range, TextPiece& piece) const
{
    if (range.length <= 0)
        return;
    auto [k, off] = locate(range.location);
    for (qsizetype remaining = range.length; remaining > 0 && k < leafCount(); ++k, off = 0) {
        const qsizetype end = std::min(leaf(k).length(), off + remaining);
        copyFromLeaf(leaf(k), off, end, piece);
        remaining -= end - off;
    }
}

namespace {

// Deletes the ranges (in order, disjoint) from the string where it lies.
void squeezeOut(QString& s, const std::vector<Range>& ranges)
{
    QChar* chars = s.data();
    qsizetype to = 0, from = 0;
    for (const Range& r : ranges) {
        std::copy(chars + from, chars + r.location, chars + to);
        to += r.location - from;
        from = r.end();
    }
    const qsizetype length = s.size();
    std::copy(chars + from, chars + length, chars + to);
    s.truncate(to + (length - from));
}

// Deletes from the leaf, in place, what the replacements from `next` on (those starting before
// `edge`) and a deletion running on from the leaves before (up to `done`) take out of it, when all of
// them are deletions and the leaf keeps at least `least` units. Returns false, touching nothing,
// otherwise. `cut` is room for the cuts in the leaf's offsets, kept from one leaf to the next.
bool deleteInLeaf(TextLeaf& l, qsizetype leafStart, qsizetype done, const std::vector<Range>& ranges,
                  const std::vector<AttributedString::Replacement>& replacements, size_t next, qsizetype edge,
                  qsizetype least, std::vector<Range>& cut)
{
    const qsizetype length = l.length();
    cut.clear();
    if (done > leafStart)
        cut.push_back(Range::fromBounds(0, std::min(done - leafStart, length)));
    qsizetype removed = cut.empty() ? 0 : cut.front().length;
    for (size_t i = next; i < ranges.size() && ranges[i].location < edge; ++i) {
        if (!replacements[i].text.isEmpty())
            return false;
        const Range r =
            Range::fromBounds(ranges[i].location - leafStart, std::min(ranges[i].end() - leafStart, length));
        if (r.length > 0) {
            cut.push_back(r);
            removed += r.length;
        }
    }
    if (length - removed < least || length == removed)
        return false;
    // Run starts land where the cuts leave them (one inside a cut at the cut's start); starts and
    // cuts are both in order, so one walk does it.
    size_t c = 0;
    qsizetype before = 0;
    for (TextRun& run : l.runs) {
        for (; c < cut.size() && run.start >= cut[c].end(); ++c)
            before += cut[c].length;
        run.start = c < cut.size() && run.start >= cut[c].location ? cut[c].location - before : run.start - before;
    }
    squeezeOut(l.text, cut);
    // A run that lost all its text starts where the next one does: it goes.
    normalizeRuns(l.runs, l.length(), 0, qsizetype(l.runs.size()) - 1);
    return true;
}

} // namespace

void AttributedStringData::replaceRanges(const std::vector<AttributedString::Replacement>& replacements)
{
    const qsizetype n = total;
    const std::vector<Range> ranges = clippedReplacementRanges(replacements, n);
    qsizetype resultLength = n;
    bool inserts = false;
    for (size_t i = 0; i < ranges.size(); ++i) {
        resultLength += replacements[i].text.length() - ranges[i].length;
        inserts = inserts || !replacements[i].text.isEmpty();
    }
    // The assembled string, which the next pass over the text will ask for, follows the edits: squeezed
    // where it lies when only deletions are made and nothing else holds it, else made anew on the way.
    const bool squeeze = cacheValid && !inserts && cache.isDetached();
    QString assembled = squeeze ? std::move(cache) : QString();
    if (!squeeze)
        assembled.reserve(resultLength);

    std::vector<LeafPtr> old;
    old.swap(leaves);
    leaves.reserve(old.size() + 1);
    TextPiece piece; // the leaf being made
    const auto emit = [&] {
        if (!squeeze)
            assembled.append(piece.text);
        if (piece.text.size() <= capacity) {
            LeafPtr made(new TextLeaf);
            made->text = std::move(piece.text);
            made->runs = std::move(piece.runs);
            leaves.push_back(std::move(made));
        } else {
            for (LeafPtr& made : makeLeaves(std::move(piece)))
                leaves.push_back(std::move(made));
        }
        piece = TextPiece();
    };
    const auto insert = [&](size_t i) {
        const AttributedString& text = replacements[i].text;
        if (!text.isEmpty())
            text.d->copyToPiece(Range{0, text.length()}, piece);
    };
    std::vector<Range> cut;
    size_t next = 0;
    qsizetype done = 0; // the text before this position is in the leaves made (or in piece)
    qsizetype leafStart = 0;
    for (size_t k = 0; k < old.size(); ++k) {
        const qsizetype leafEnd = leafStart + old[k]->length();
        // A replacement on a leaf boundary goes with the leaf after it; at the text's end, with the last.
        const qsizetype edge = k + 1 == old.size() ? leafEnd + 1 : leafEnd;
        if (piece.text.isEmpty() && done <= leafStart && (next == ranges.size() || ranges[next].location >= edge)) {
            // Untouched: the leaf itself carries over, neither copied nor walked.
            if (!squeeze)
                assembled.append(old[k]->text);
            leaves.push_back(std::move(old[k]));
            leafStart = done = leafEnd;
            continue;
        }
        if (piece.text.isEmpty() && old[k]->ref.loadRelaxed() == 1
            && deleteInLeaf(*old[k], leafStart, done, ranges, replacements, next, edge, capacity / 8, cut)) {
            // Only deletions here, on a leaf nothing else holds: squeezed where it lies.
            done = std::max(done, leafEnd);
            for (; next < ranges.size() && ranges[next].location < edge; ++next)
                done = std::max(done, ranges[next].end());
            if (!squeeze)
                assembled.append(old[k]->text);
            leaves.push_back(std::move(old[k]));
            leafStart = leafEnd;
            continue;
        }
        const TextLeaf& l = *old[k];
        if (piece.text.isEmpty()) {
            piece.text.reserve(std::min<qsizetype>(capacity, resultLength)); // small strings stay small
            piece.runs.reserve(l.runs.size() + 1);
        }
        qsizetype pos = std::max(done, leafStart);
        for (; next < ranges.size() && ranges[next].location < edge; ++next) {
            copyFromLeaf(l, pos - leafStart, ranges[next].location - leafStart, piece);
            insert(next);
            pos = ranges[next].end();
        }
        if (pos < leafEnd)
            copyFromLeaf(l, pos - leafStart, leafEnd - leafStart, piece);
        done = std::max(pos, leafEnd);
        // Freed now (unless shared), so that the next leaf made takes memory still in the cache.
        old[k].reset();
        // A leaf left small goes on with the next one.
        if (piece.text.size() >= capacity / 8)
            emit();
        leafStart = leafEnd;
    }
    for (; next < ranges.size(); ++next) // into an empty text
        insert(next);
    if (!piece.text.isEmpty()) {
        if (!leaves.empty() && leaves.back()->length() + piece.text.size() <= capacity) {
            if (!squeeze)
                assembled.append(piece.text);
            leaves.back().detach();
            TextLeaf& joined = *leaves.back();
            const qsizetype at = joined.text.size();
            joined.text.append(piece.text);
            for (size_t r = 0; r < piece.runs.size(); ++r) {
                if (r == 0 && sameAttributes(joined.runs.back().attributes, piece.runs[r].attributes))
                    continue;
                joined.runs.push_back(TextRun{at + piece.runs[r].start, std::move(piece.runs[r].attributes)});
            }
        } else {
            emit();
        }
    }
    rebuildTree();
    if (squeeze)
        squeezeOut(assembled, ranges);
    cache = std::move(assembled);
    cacheValid = true;
}

Attributes AttributedStringData::attributesForReplacing(Range range) const
{
    if (total == 0)
        return {};
    qsizetype at = range.location;
    if (range.length == 0)
        at = at > 0 ? at - 1 : 0;
    at = std::clamp<qsizetype>(at, 0, total - 1);
    auto [k, off] = locate(at);
    const TextLeaf& l = leaf(k);
    return l.runs[size_t(l.runIndex(off))].attributes;
}

void AttributedStringData::replace(Range range, const TextPiece& piece)
{
    if (leaves.empty()) {
        leaves = makeLeaves(TextPiece(piece));
        rebuildTree();
        return;
    }
    // The leaf to edit: the one holding range.location, or for an insertion on a leaf boundary (and at
    // the very end) the leaf before it, so that appending keeps filling the same leaf.
    qsizetype k0, off0;
    if (range.location >= total) {
        k0 = leafCount() - 1;
        off0 = leaf(k0).length();
    } else {
        std::tie(k0, off0) = locate(range.location);
        if (off0 == 0 && k0 > 0 && range.length == 0) {
            --k0;
            off0 = leaf(k0).length();
        }
    }
    const qsizetype leafLen = leaf(k0).length();
    if (off0 + range.length <= leafLen) {
        const qsizetype newLen = leafLen - range.length + piece.text.size();
        const bool fits = newLen <= capacity;
        const bool tooSmall = newLen < capacity / 8 && leafCount() > 1;
        if (fits && !tooSmall && newLen > 0) {
            replaceInLeaf(k0, off0, range.length, piece);
            return;
        }
        // Rebuild this leaf (split it, or merge it with a neighbour when it has become small).
        qsizetype k1 = k0;
        if (tooSmall || newLen == 0) {
            if (k1 + 1 < leafCount())
                ++k1;
            else if (k0 > 0)
                --k0;
        }
        replaceAcrossLeaves(k0, k1, range, piece);
        return;
    }
    // The range spans leaves.
    const qsizetype k1 = locate(range.end() - 1).first;
    replaceAcrossLeaves(k0, k1, range, piece);
}

void AttributedStringData::replaceInLeaf(qsizetype k, qsizetype offset, qsizetype removeLength, const TextPiece& piece)
{
    TextLeaf& l = mutableLeaf(k);
    const qsizetype oldLen = l.length();
    const qsizetype insertLength = piece.text.size();
    const qsizetype delta = insertLength - removeLength;
    const qsizetype removeEnd = offset + removeLength;

    // Runs: [0, first) keep; the run holding `offset` is cut there; runs overlapping the removed part
    // go; the run holding removeEnd resumes after the inserted text; later runs shift by delta.
    std::vector<TextRun>& runs = l.runs;
    const qsizetype first = offset < oldLen ? l.runIndex(offset) : qsizetype(runs.size()) - 1;
    const bool firstStartsBefore = runs[size_t(first)].start < offset || offset == oldLen;
    qsizetype tailRun = removeEnd < oldLen ? l.runIndex(removeEnd) : qsizetype(runs.size());
    Attributes tailAttributes;
    if (tailRun < qsizetype(runs.size()))
        tailAttributes = runs[size_t(tailRun)].attributes;

    l.text.replace(offset, removeLength, piece.text);

    // Erase runs [eraseFrom, tailRun] and put back: the piece's runs, then the tail run at its new start.
    const qsizetype eraseFrom = firstStartsBefore ? first + 1 : first;
    const qsizetype eraseTo = std::min<qsizetype>(tailRun + 1, qsizetype(runs.size()));
    for (qsizetype i = eraseTo; i < qsizetype(runs.size()); ++i)
        runs[size_t(i)].start += delta;
    std::vector<TextRun> middle;
    middle.reserve(piece.runs.size() + 1);
    for (const TextRun& r : piece.runs)
        middle.push_back(TextRun{r.start + offset, r.attributes});
    if (tailRun < qsizetype(runs.size()))
        middle.push_back(TextRun{offset + insertLength, std::move(tailAttributes)});
    runs.erase(runs.begin() + eraseFrom, runs.begin() + std::max(eraseFrom, eraseTo));
    runs.insert(runs.begin() + eraseFrom, std::make_move_iterator(middle.begin()),
                std::make_move_iterator(middle.end()));
    normalizeRuns(runs, l.length(), eraseFrom - 1, eraseFrom + qsizetype(middle.size()));
    treeAdd(k, delta);
}

void AttributedStringData::replaceAcrossLeaves(qsizetype k0, qsizetype k1, Range range, const TextPiece& piece)
{
    // Gather the untouched head of leaf k0, the piece and the untouched tail of leaf k1 into one flat
    // piece, then cut it into fresh leaves.
    const qsizetype base = leafStart(k0);
    const qsizetype limit = leafStart(k1) + leaf(k1).length();
    TextPiece combined;
    combined.text.reserve((range.location - base) + piece.text.size() + (limit - range.end()));
    copyToPiece(Range{base, range.location - base}, combined);
    for (size_t r = 0; r < piece.runs.size(); ++r) {
        const qsizetype end = r + 1 < piece.runs.size() ? piece.runs[r + 1].start : piece.text.size();
        combined.append(QStringView(piece.text).mid(piece.runs[r].start, end - piece.runs[r].start),
                        piece.runs[r].attributes);
    }
    copyToPiece(Range{range.end(), limit - range.end()}, combined);
    std::vector<LeafPtr> fresh = makeLeaves(std::move(combined));
    leaves.erase(leaves.begin() + k0, leaves.begin() + k1 + 1);
    leaves.insert(leaves.begin() + k0, fresh.begin(), fresh.end());
    rebuildTreeFrom(k0);
}

template <typename Fn> void AttributedStringData::modifyAttributes(Range range, Fn fn)
{
    if (range.length <= 0)
        return;
    auto [k, off] = locate(range.location);
    qsizetype remaining = range.length;
    for (; remaining > 0 && k < leafCount(); ++k, off = 0) {
        TextLeaf& l = mutableLeaf(k);
        const qsizetype end = std::min(l.length(), off + remaining);
        remaining -= end - off;
        // Make runs start at off and at end.
        qsizetype r0 = l.runIndex(off);
        if (l.runs[size_t(r0)].start != off) {
            l.runs.insert(l.runs.begin() + r0 + 1, TextRun{off, l.runs[size_t(r0)].attributes});
            ++r0;
        }
        if (end < l.length()) {
            const qsizetype re = l.runIndex(end);
            if (l.runs[size_t(re)].start != end)
                l.runs.insert(l.runs.begin() + re + 1, TextRun{end, l.runs[size_t(re)].attributes});
        }
        qsizetype r = r0;
        for (; r < qsizetype(l.runs.size()) && l.runs[size_t(r)].start < end; ++r)
            l.runs[size_t(r)].attributes = fn(l.runs[size_t(r)].attributes);
        normalizeRuns(l.runs, l.length(), r0 - 1, r);
    }
    // The characters are unchanged: an assembled string stays valid.
}

// ---------------------------------------------------------------- AttributedString

AttributedString::AttributedString() : d(new AttributedStringData) { }

AttributedString::AttributedString(const QString& text, const Attributes& attributes) : d(new AttributedStringData)
{
    TextPiece piece;
    piece.append(text, attributes);
    d->leaves = d->makeLeaves(std::move(piece));
    d->rebuildTree();
}

AttributedString::AttributedString(const AttributedString&) = default;
AttributedString::AttributedString(AttributedString&&) noexcept = default;
AttributedString& AttributedString::operator=(const AttributedString&) = default;
AttributedString& AttributedString::operator=(AttributedString&&) noexcept = default;
AttributedString::~AttributedString() = default;

void AttributedString::detach()
{
    if (!d)
        d = new AttributedStringData;
    else
        d.detach();
}

void AttributedString::setLeafCapacityForTesting(int units)
{
    g_leafCapacity = units > 0 ? std::max(units, 4) : DefaultLeafCapacity;
}

qsizetype AttributedString::length() const { return d ? d->total : 0; }

QString AttributedString::string() const
{
    if (!d || d->total == 0)
        return QString();
    if (!d->cacheValid) {
        QString s;
        s.reserve(d->total);
        for (const LeafPtr& l : d->leaves)
            s.append(l->text);
        d->cache = s;
        d->cacheValid = true;
    }
    return d->cache;
}

QChar AttributedString::characterAt(qsizetype index) const
{
    if (index < 0 || index >= length())
        return QChar();
    if (d->cacheValid)
        return d->cache.at(index);
    auto [k, off] = d->locate(index);
    return d->leaf(k).text.at(off);
}

QString AttributedString::substring(Range range) const
{
    const qsizetype start = std::clamp<qsizetype>(range.location, 0, length());
    const qsizetype end = std::clamp<qsizetype>(range.end(), start, length());
    if (end <= start)
        return QString();
    if (d->cacheValid)
        return d->cache.mid(start, end - start);
    QString out;
    out.reserve(end - start);
    auto [k, off] = d->locate(start);
    qsizetype remaining = end - start;
    for (; remaining > 0; ++k, off = 0) {
        const QString& t = d->leaf(k).text;
        const qsizetype n = std::min(remaining, t.size() - off);
        out.append(QStringView(t).mid(off, n));
        remaining -= n;
    }
    return out;
}

Attributes AttributedString::attributes(qsizetype index, Range* effectiveRange) const
{
    if (index < 0 || index >= length()) {
        qWarning("AttributedString::attributes: index %lld out of bounds (length %lld)", (long long)index,
                 (long long)length());
        if (effectiveRange)
            *effectiveRange = Range{index, 0};
        return {};
    }
    auto [k, off] = d->locate(index);
    const TextLeaf& l = d->leaf(k);
    const qsizetype r = l.runIndex(off);
    const Attributes& attrs = l.runs[size_t(r)].attributes;
    if (effectiveRange) {
        const qsizetype leafBase = index - off;
        qsizetype start = leafBase + l.runs[size_t(r)].start;
        qsizetype end = leafBase + l.runEnd(r);
        // A run continues into neighbouring leaves while their edge runs hold equal attributes.
        if (r == 0) {
            for (qsizetype j = k - 1; j >= 0; --j) {
                const TextLeaf& p = d->leaf(j);
                if (!sameAttributes(p.runs.back().attributes, attrs))
                    break;
                start -= p.length() - p.runs.back().start;
                if (p.runs.size() > 1)
                    break;
            }
        }
        if (r + 1 == qsizetype(l.runs.size())) {
            for (qsizetype j = k + 1; j < d->leafCount(); ++j) {
                const TextLeaf& nx = d->leaf(j);
                if (!sameAttributes(nx.runs.front().attributes, attrs))
                    break;
                end += nx.runEnd(0);
                if (nx.runs.size() > 1)
                    break;
            }
        }
        *effectiveRange = Range{start, end - start};
    }
    return attrs;
}

Attributes AttributedString::attributes(qsizetype index, Range* longestRange, Range inRange) const
{
    Range effective;
    Attributes attrs = attributes(index, &effective);
    if (longestRange)
        *longestRange = intersectionRange(effective, inRange);
    return attrs;
}

QVariant AttributedString::attribute(const QString& name, qsizetype index, Range* effectiveRange) const
{
    return attributes(index, effectiveRange).value(name);
}

QVariant AttributedString::attribute(const QString& name, qsizetype index, Range* longestRange, Range inRange) const
{
    Range effective;
    const QVariant value = attributes(index, &effective).value(name);
    if (!longestRange)
        return value;
    // Widen over neighbouring runs whose value of this attribute is equal, within inRange.
    qsizetype start = effective.location;
    while (start > inRange.location && start > 0) {
        Range prev;
        const QVariant v = attributes(start - 1, &prev).value(name);
        if (!sameValue(v, value))
            break;
        start = prev.location;
    }
    qsizetype end = effective.end();
    while (end < inRange.end() && end < length()) {
        Range next;
        const QVariant v = attributes(end, &next).value(name);
        if (!sameValue(v, value))
            break;
        end = next.end();
    }
    *longestRange = intersectionRange(Range{start, end - start}, inRange);
    return value;
}

AttributedString AttributedString::attributedSubstring(Range range) const
{
    AttributedString out;
    const qsizetype start = std::clamp<qsizetype>(range.location, 0, length());
    const qsizetype end = std::clamp<qsizetype>(range.end(), start, length());
    if (end <= start)
        return out;
    // Whole leaves inside the range are shared with the copy; only the partial ends are copied.
    auto [k, off] = d->locate(start);
    qsizetype pos = start;
    TextPiece pending;
    auto flush = [&]() {
        if (!pending.text.isEmpty()) {
            std::vector<LeafPtr> fresh = out.d->makeLeaves(std::move(pending));
            out.d->leaves.insert(out.d->leaves.end(), fresh.begin(), fresh.end());
            pending = TextPiece();
        }
    };
    while (pos < end) {
        const TextLeaf& l = d->leaf(k);
        const qsizetype leafEnd = pos - off + l.length();
        if (off == 0 && leafEnd <= end && l.length() <= out.d->capacity) {
            flush();
            out.d->leaves.push_back(d->leaves[size_t(k)]);
        } else {
            d->copyToPiece(Range{pos, std::min(leafEnd, end) - pos}, pending);
        }
        pos = std::min(leafEnd, end);
        ++k;
        off = 0;
    }
    flush();
    out.d->rebuildTree();
    return out;
}

// Both enumerations walk the leaves' runs in order instead of locating each run anew, and read the
// run dictionaries in place. They walk a snapshot: fn may edit this string, which then detaches.
template <typename Visit> void AttributedStringData::forEachRun(Range range, Visit visit) const
{
    if (range.length <= 0)
        return;
    auto [k, off] = locate(range.location);
    qsizetype pos = range.location;
    const qsizetype end = range.end();
    for (; pos < end && k < leafCount(); ++k, off = 0) {
        const TextLeaf& l = leaf(k);
        for (qsizetype r = l.runIndex(off); r < qsizetype(l.runs.size()) && pos < end; ++r) {
            const qsizetype runEnd = std::min(pos + l.runEnd(r) - off, end);
            if (!visit(l.runs[size_t(r)].attributes, pos, runEnd))
                return;
            off = l.runEnd(r);
            pos = runEnd;
        }
    }
}

namespace {

// Calls fn(value, range) for each longest stretch of runs inside range whose values (valueOf of a
// run's dictionary, a pointer into it) are the same; fn returns false to stop. It walks the data it is
// given, which the caller holds as a snapshot.
template <typename ValueOf, typename Same, typename Fn>
void forEachStretch(const AttributedStringData& data, Range range, ValueOf valueOf, Same same, Fn fn)
{
    decltype(valueOf(std::declval<const Attributes&>())) current = nullptr;
    qsizetype currentStart = range.location;
    bool stopped = false;
    data.forEachRun(range, [&](const Attributes& attrs, qsizetype from, qsizetype) {
        const auto value = valueOf(attrs);
        if (current && same(*current, *value))
            return true;
        if (current && !fn(*current, Range::fromBounds(currentStart, from))) {
            stopped = true;
            return false;
        }
        current = value;
        currentStart = from;
        return true;
    });
    if (!stopped && current)
        fn(*current, Range::fromBounds(currentStart, range.end()));
}

} // namespace

void AttributedString::enumerateAttributes(Range range, const std::function<bool(const Attributes&, Range)>& fn) const
{
    const qsizetype start = std::clamp<qsizetype>(range.location, 0, length());
    const qsizetype end = std::clamp<qsizetype>(range.end(), start, length());
    if (end <= start)
        return;
    const QExplicitlySharedDataPointer<AttributedStringData> snapshot = d;
    // Equal dictionaries on either side of a leaf boundary are one run.
    forEachStretch(
        *snapshot, Range::fromBounds(start, end), [](const Attributes& attrs) { return &attrs; }, sameAttributes, fn);
}

void AttributedString::enumerateAttribute(const QString& name, Range range,
                                          const std::function<bool(const QVariant&, Range)>& fn) const
{
    const qsizetype start = std::clamp<qsizetype>(range.location, 0, length());
    const qsizetype end = std::clamp<qsizetype>(range.end(), start, length());
    if (end <= start)
        return;
    const QExplicitlySharedDataPointer<AttributedStringData> snapshot = d;
    static const QVariant absent;
    forEachStretch(
        *snapshot, Range::fromBounds(start, end),
        [&](const Attributes& attrs) {
            const auto found = attrs.constFind(name);
            return found == attrs.cend() ? &absent : &*found;
        },
        sameValue, fn);
}

qsizetype AttributedString::runCount() const
{
    if (!d)
        return 0;
    qsizetype n = 0;
    for (qsizetype k = 0; k < d->leafCount(); ++k) {
        n += qsizetype(d->leaf(k).runs.size());
        if (k > 0 && sameAttributes(d->leaf(k - 1).runs.back().attributes, d->leaf(k).runs.front().attributes))
            --n;
    }
    return n;
}

void AttributedString::replaceCharacters(Range range, const QString& text)
{
    const qsizetype start = std::clamp<qsizetype>(range.location, 0, length());
    const qsizetype end = std::clamp<qsizetype>(range.end(), start, length());
    if (end == start && text.isEmpty())
        return;
    detach();
    TextPiece piece;
    piece.append(text, d->attributesForReplacing(Range{start, end - start}));
    d->replace(Range{start, end - start}, piece);
}

void AttributedString::replaceCharacters(Range range, const AttributedString& text)
{
    const qsizetype start = std::clamp<qsizetype>(range.location, 0, length());
    const qsizetype end = std::clamp<qsizetype>(range.end(), start, length());
    if (end == start && text.isEmpty())
        return;
    TextPiece piece;
    if (text.length() > 0)
        text.d->copyToPiece(Range{0, text.length()}, piece);
    detach();
    d->replace(Range{start, end - start}, piece);
}

std::vector<Range> clippedReplacementRanges(const std::vector<AttributedString::Replacement>& replacements,
                                            qsizetype length)
{
    std::vector<Range> ranges;
    ranges.reserve(replacements.size());
    qsizetype pos = 0;
    for (const AttributedString::Replacement& r : replacements) {
        const qsizetype start = std::clamp<qsizetype>(r.range.location, pos, length);
        const qsizetype end = std::clamp<qsizetype>(r.range.end(), start, length);
        ranges.push_back(Range::fromBounds(start, end));
        pos = end;
    }
    return ranges;
}

AttributedString AttributedString::replacingRanges(const std::vector<Replacement>& replacements) const
{
    AttributedString out = *this;
    out.replaceRanges(replacements);
    return out;
}

void AttributedString::replaceRanges(const std::vector<Replacement>& replacements)
{
    if (replacements.empty())
        return;
    detach();
    d->replaceRanges(replacements);
}

void AttributedString::append(const QString& text, const Attributes& attributes)
{
    if (text.isEmpty())
        return;
    detach();
    TextPiece piece;
    piece.append(text, attributes);
    d->replace(Range{length(), 0}, piece);
}

void AttributedString::setAttributes(const Attributes& attributes, Range range)
{
    range = intersectionRange(range, Range{0, length()});
    if (range.length <= 0)
        return;
    detach();
    d->modifyAttributes(range, [&](const Attributes&) { return attributes; });
}

void AttributedString::addAttribute(const QString& name, const QVariant& value, Range range)
{
    range = intersectionRange(range, Range{0, length()});
    if (range.length <= 0)
        return;
    detach();
    d->modifyAttributes(range, [&](const Attributes& a) {
        Attributes changed = a;
        changed.insert(name, value);
        return changed;
    });
}

void AttributedString::addAttributeInRanges(const QString& name, const std::vector<Mark>& marks)
{
    if (marks.empty())
        return;
    detach();
    // The dictionaries made lately, by the one they were made from and the value added: the runs of
    // one kind (the body's, a note's) mostly share their dictionary and take one value.
    struct Made {
        Attributes from;
        QVariant value;
        Attributes made;
    };
    std::array<Made, 4> made;
    size_t next = 0;
    for (const Mark& mark : marks) {
        const Range range = intersectionRange(mark.range, Range{0, length()});
        if (range.length <= 0)
            continue;
        d->modifyAttributes(range, [&](const Attributes& a) {
            for (const Made& m : made) {
                if (m.from.isSharedWith(a) && !m.made.isEmpty() && sameValue(m.value, mark.value))
                    return m.made;
            }
            Attributes changed = a;
            changed.insert(name, mark.value);
            made[next] = Made{a, mark.value, changed};
            next = (next + 1) % made.size();
            return changed;
        });
    }
}

void AttributedString::addAttributes(const Attributes& attributes, Range range)
{
    range = intersectionRange(range, Range{0, length()});
    if (range.length <= 0 || attributes.isEmpty())
        return;
    detach();
    d->modifyAttributes(range, [&](const Attributes& a) {
        Attributes changed = a;
        for (auto it = attributes.begin(); it != attributes.end(); ++it)
            changed.insert(it.key(), it.value());
        return changed;
    });
}

void AttributedString::removeAttribute(const QString& name, Range range)
{
    range = intersectionRange(range, Range{0, length()});
    if (range.length <= 0)
        return;
    detach();
    d->modifyAttributes(range, [&](const Attributes& a) {
        if (!a.contains(name))
            return a;
        Attributes changed = a;
        changed.remove(name);
        return changed;
    });
}

bool operator==(const AttributedString& a, const AttributedString& b)
{
    if (a.d == b.d)
        return true;
    if (a.length() != b.length() || a.string() != b.string())
        return false;
    qsizetype pos = 0;
    while (pos < a.length()) {
        Range ra, rb;
        const Attributes aa = a.attributes(pos, &ra);
        const Attributes ab = b.attributes(pos, &rb);
        if (ra != rb || !sameAttributes(aa, ab))
            return false;
        pos = ra.end();
    }
    return true;
}

bool AttributedString::checkInvariants() const
{
    if (!d)
        return true;
    auto fail = [](const char* why, qsizetype k) {
        qWarning("AttributedString invariant broken in leaf %lld: %s", (long long)k, why);
        return false;
    };
    qsizetype sum = 0;
    for (qsizetype k = 0; k < d->leafCount(); ++k) {
        const TextLeaf& l = d->leaf(k);
        if (l.length() == 0)
            return fail("empty leaf", k);
        if (l.length() > d->capacity)
            return fail("leaf over capacity", k);
        if (l.runs.empty() || l.runs.front().start != 0)
            return fail("runs do not start at 0", k);
        for (size_t r = 1; r < l.runs.size(); ++r) {
            if (l.runs[r].start <= l.runs[r - 1].start)
                return fail("runs not increasing", k);
            if (sameAttributes(l.runs[r].attributes, l.runs[r - 1].attributes))
                return fail("equal neighbouring runs", k);
        }
        if (l.runs.back().start >= l.length())
            return fail("run past the leaf's end", k);
        if (d->leafStart(k) != sum)
            return fail("tree total differs from leaf lengths", k);
        sum += l.length();
    }
    if (sum != d->total)
        return fail("total length differs", d->leafCount());
    return true;
}

} // namespace qly
