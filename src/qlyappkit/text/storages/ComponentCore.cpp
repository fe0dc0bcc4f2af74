#include <qlyappkit/text/storages/ComponentCore_p.h>

#include <algorithm>

#include <qlyappkit/text/storages/XQWordCountingTextStorage.h>

namespace qly::storage_detail {

namespace {

QString describe(Range r) { return QStringLiteral("{%1,%2}").arg(r.location).arg(r.length); }

bool fail(QString* failure, const QString& why)
{
    if (failure)
        *failure = why;
    return false;
}

} // namespace

ComponentCoreBase::ComponentCoreBase(TextStorage& owner, AttributedString& backing)
    : m_owner(owner), m_backing(backing), m_observer(std::make_unique<EditForwardingObserver>(
                                              [this](TextStorage& component, int mask, Range range, qsizetype delta) {
                                                  componentEdited(component, mask, range, delta);
                                              }))
{
}

ComponentCoreBase::~ComponentCoreBase() = default;

qsizetype ComponentCoreBase::indexOfStorage(const TextStorage* storage) const
{
    for (qsizetype i = 0; i < count(); ++i) {
        if (&this->storage(i) == storage)
            return i;
    }
    return NotFound;
}

// ---------------------------------------------------------------- components

void ComponentCoreBase::componentInserted(qsizetype index)
{
    const auto* counter = dynamic_cast<const XQWordCountingTextStorage*>(&storage(index));
    m_counters.insert(m_counters.begin() + index, counter);
    m_componentWords.insert(m_componentWords.begin() + index, 0);
    takeWordCount(index);
    m_allCount = std::all_of(m_counters.begin(), m_counters.end(), [](auto* c) { return c != nullptr; });
}

void ComponentCoreBase::componentErased(qsizetype index)
{
    m_words -= m_componentWords[size_t(index)];
    m_counters.erase(m_counters.begin() + index);
    m_componentWords.erase(m_componentWords.begin() + index);
    m_allCount = std::all_of(m_counters.begin(), m_counters.end(), [](auto* c) { return c != nullptr; });
}

void ComponentCoreBase::componentsReplaced()
{
    m_counters.clear();
    m_componentWords.clear();
    m_words = 0;
    m_allCount = true;
    for (qsizetype i = 0; i < count(); ++i)
        componentInserted(i);
    m_pendingSyncs.clear();
}

void ComponentCoreBase::observe(TextStorage& storage) { storage.addObserver(m_observer.get()); }

void ComponentCoreBase::stopObservingUnlessShown(TextStorage& storage)
{
    // The same storage may be shown twice; it is heard as long as one of them remains.
    if (indexOfStorage(&storage) == NotFound)
        storage.removeObserver(m_observer.get());
}

// ---------------------------------------------------------------- ranges and words

void ComponentCoreBase::takeWordCount(qsizetype index)
{
    const XQWordCountingTextStorage* counter = m_counters[size_t(index)];
    const qsizetype words = counter ? counter->wordCount() : 0;
    m_words += words - m_componentWords[size_t(index)];
    m_componentWords[size_t(index)] = words;
}

void ComponentCoreBase::relayout(const PartsFunction& parts, bool keepHeads)
{
    const qsizetype n = count();
    m_keepsHeads = keepHeads;
    m_componentRanges.resize(size_t(n));
    m_textRanges.resize(size_t(n));
    m_headRanges.resize(keepHeads ? size_t(n) : 0);
    qsizetype pos = 0;
    for (qsizetype i = 0; i < n; ++i) {
        const ComponentParts p = parts(i);
        const qsizetype start = pos;
        if (keepHeads)
            m_headRanges[size_t(i)] = Range{pos, p.head};
        pos += p.head + p.headGap;
        m_textRanges[size_t(i)] = Range{pos, storage(i).length()};
        pos += m_textRanges[size_t(i)].length + p.tail;
        m_componentRanges[size_t(i)] = Range::fromBounds(start, pos);
        takeWordCount(i);
    }
}

void ComponentCoreBase::shift(qsizetype index, Part part, qsizetype delta)
{
    const size_t k = size_t(index);
    m_componentRanges[k].length += delta;
    if (part == Part::Head) {
        if (m_keepsHeads)
            m_headRanges[k].length += delta;
        m_textRanges[k].location += delta;
    } else {
        m_textRanges[k].length += delta;
    }
    for (size_t j = k + 1; j < m_componentRanges.size(); ++j) {
        m_componentRanges[j].location += delta;
        m_textRanges[j].location += delta;
        if (m_keepsHeads)
            m_headRanges[j].location += delta;
    }
    if (part == Part::Text)
        takeWordCount(index);
}

qsizetype ComponentCoreBase::firstRangeEndingAfter(const std::vector<Range>& ranges, qsizetype location)
{
    auto it = std::upper_bound(ranges.begin(), ranges.end(), location,
                               [](qsizetype loc, const Range& r) { return loc < r.end(); });
    return qsizetype(it - ranges.begin());
}

// ---------------------------------------------------------------- routing

void ComponentCoreBase::forward(qsizetype index, Range range, const std::function<void(TextStorage&, Range)>& edit)
{
    const Holding forwarding(m_forwarding);
    const ScopedValue<qsizetype> forwarded(m_forwardedIndex, index);
    edit(storage(index), Range{range.location - m_textRanges[size_t(index)].location, range.length});
}

void ComponentCoreBase::componentEdited(TextStorage& component, int mask, Range editedRange, qsizetype delta)
{
    if (isForwarding()) {
        // The component may have fixed attributes beyond what was passed on; copied back afterwards.
        m_pendingSyncs.push_back(PendingSync{&component, m_forwardedIndex, mask, editedRange, delta});
        return;
    }
    // Into every place that shows the component (mirroring one moves the places after it).
    for (qsizetype i = 0; i < count(); ++i) {
        if (&storage(i) == &component)
            mirror(i, mask, editedRange, delta);
    }
}

void ComponentCoreBase::mirror(qsizetype index, int mask, Range editedRange, qsizetype delta)
{
    TextStorage& component = storage(index);
    const qsizetype start = m_textRanges[size_t(index)].location;
    const Holding mirroring(m_mirroring);
    const ScopedValue<qsizetype> mirrored(m_mirroredIndex, index);
    EditingBatch batch(m_owner);
    if (mask & TextStorage::EditedCharacters) {
        // The owner's own primitives take it in; they see the mirroring guard and only move the ranges.
        m_owner.replaceCharacters(Range{start + editedRange.location, editedRange.length - delta},
                                  component.attributedSubstring(editedRange));
    } else {
        forEachDifferingRun(component, editedRange, m_backing, start,
                            [this](const Attributes& attrs, Range r) { m_owner.setAttributes(attrs, r); });
    }
}

void ComponentCoreBase::applyPendingSyncs()
{
    const std::vector<PendingSync> pending = std::exchange(m_pendingSyncs, {});
    for (const PendingSync& sync : pending) {
        for (qsizetype i = 0; i < count(); ++i) {
            if (&storage(i) != sync.component)
                continue;
            if (i != sync.forwardedIndex) {
                // Another place showing the same storage: it has not seen the edit at all.
                mirror(i, sync.mask, sync.range, sync.delta);
                continue;
            }
            const Range range = intersectionRange(sync.range, Range{0, sync.component->length()});
            forEachDifferingRun(*sync.component, range, m_backing, m_textRanges[size_t(i)].location,
                                [this](const Attributes& attrs, Range r) {
                                    m_backing.setAttributes(attrs, r);
                                    m_owner.edited(TextStorage::EditedAttributes, r, 0);
                                });
        }
    }
}

// ---------------------------------------------------------------- invariants

bool ComponentCoreBase::checkInvariants(QString* failure) const
{
    const qsizetype n = count();
    if (qsizetype(m_componentRanges.size()) != n || qsizetype(m_textRanges.size()) != n
        || qsizetype(m_headRanges.size()) != (m_keepsHeads ? n : 0))
        return fail(failure,
                    QStringLiteral("%1 components but %2 component, %3 text and %4 head ranges")
                        .arg(n)
                        .arg(m_componentRanges.size())
                        .arg(m_textRanges.size())
                        .arg(m_headRanges.size()));
    if (qsizetype(m_counters.size()) != n || qsizetype(m_componentWords.size()) != n)
        return fail(failure, QStringLiteral("word counters out of step with the components"));
    if (isForwarding() || isMirroring() || m_mirroredIndex != NotFound || m_forwardedIndex != NotFound)
        return fail(failure, QStringLiteral("a re-entrancy guard is still held"));
    if (!m_pendingSyncs.empty())
        return fail(failure, QStringLiteral("%1 mirrored edits still pending").arg(m_pendingSyncs.size()));
    qsizetype pos = 0, words = 0;
    bool allCount = true;
    for (qsizetype i = 0; i < n; ++i) {
        const Range component = m_componentRanges[size_t(i)];
        const Range text = m_textRanges[size_t(i)];
        const TextStorage& own = storage(i);
        if (component.location != pos || component.length < 0)
            return fail(failure,
                        QStringLiteral("component %1 is at %2, not at %3").arg(i).arg(describe(component)).arg(pos));
        if (text.location < component.location || text.end() > component.end())
            return fail(
                failure,
                QStringLiteral("text %1 %2 outside its component %3").arg(i).arg(describe(text), describe(component)));
        if (m_keepsHeads) {
            const Range head = m_headRanges[size_t(i)];
            if (head.location != component.location || head.end() > text.location)
                return fail(failure,
                            QStringLiteral("head %1 %2 not at the start of its component %3 before its text")
                                .arg(i)
                                .arg(describe(head), describe(component)));
        }
        if (text.length != own.length())
            return fail(failure,
                        QStringLiteral("text %1 is %2 long, its storage %3").arg(i).arg(text.length).arg(own.length()));
        if (!own.hasObserver(m_observer.get()))
            return fail(failure, QStringLiteral("component %1 is not observed").arg(i));
        if (m_counters[size_t(i)] != dynamic_cast<const XQWordCountingTextStorage*>(&own))
            return fail(failure, QStringLiteral("word counter of component %1 is stale").arg(i));
        if (m_counters[size_t(i)]) {
            if (m_componentWords[size_t(i)] != m_counters[size_t(i)]->wordCount())
                return fail(failure,
                            QStringLiteral("word count of component %1 is %2, it has %3")
                                .arg(i)
                                .arg(m_componentWords[size_t(i)])
                                .arg(m_counters[size_t(i)]->wordCount()));
            words += m_componentWords[size_t(i)];
        } else {
            allCount = false;
        }
        pos = component.end();
    }
    if (n > 0 && pos != m_backing.length())
        return fail(failure,
                    QStringLiteral("the components end at %1, the text at %2").arg(pos).arg(m_backing.length()));
    if (allCount != m_allCount || words != m_words)
        return fail(failure,
                    QStringLiteral("word total %1 (all counting: %2), the counters add up to %3 (%4)")
                        .arg(m_words)
                        .arg(m_allCount)
                        .arg(words)
                        .arg(allCount));
    // The slices last: the most expensive check.
    for (qsizetype i = 0; i < n; ++i) {
        const Range text = m_textRanges[size_t(i)];
        if (m_backing.attributedSubstring(text) != storage(i).attributedString())
            return fail(failure,
                        QStringLiteral("slice %1 \"%2\" differs from component %3 \"%4\" (or its attributes do)")
                            .arg(describe(text), m_backing.substring(text))
                            .arg(i)
                            .arg(storage(i).string()));
    }
    return true;
}

} // namespace qly::storage_detail
