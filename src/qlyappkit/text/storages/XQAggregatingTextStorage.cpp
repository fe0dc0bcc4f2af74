#include <qlyappkit/text/storages/XQAggregatingTextStorage.h>

#include <algorithm>
#include <utility>

#include <qlyappkit/platform/services/NotificationCenter.h>
#include <qlyappkit/platform/text/WordCounting.h>
#include <qlyappkit/text/storages/StorageSupport_p.h>
#include <qlyappkit/text/storages/XQTextStorage.h>
#include <qlyappkit/text/storages/XQWordCountingTextStorage.h>

namespace qly {

namespace {

const char* const InvalidComponentMessage = "*** XQAggregatingTextStorage Error: Invalid index or text component";
const char* const IndexOutOfBoundsMessage = "*** XQAggregatingTextStorage Error: index out of bounds";
const char* const InvalidSeparatorMessage =
    "*** XQAggregatingTextStorage Error: invalid component separator. Component separator must be of type "
    "NSString or NSAttributedString.";

bool isAttributedSeparator(const QVariant& separator)
{
    return separator.metaType() == QMetaType::fromType<AttributedString>();
}

qsizetype lengthOfSeparator(const QVariant& separator)
{
    return isAttributedSeparator(separator) ? separator.value<AttributedString>().length()
                                            : separator.toString().size();
}

} // namespace

XQAggregatingTextStorage::XQAggregatingTextStorage()
    : m_separator(QStringLiteral("\n")), m_observer(std::make_unique<storage_detail::EditForwardingObserver>(
                                             [this](TextStorage& component, int mask, Range range, qsizetype delta) {
                                                 componentEdited(component, mask, range, delta);
                                             }))
{
}

XQAggregatingTextStorage::XQAggregatingTextStorage(const AttributedString& text) : XQAggregatingTextStorage()
{
    m_backing = text;
}

XQAggregatingTextStorage::~XQAggregatingTextStorage()
{
    for (const Component& component : m_components)
        component->removeObserver(m_observer.get());
}

// ---------------------------------------------------------------- components

void XQAggregatingTextStorage::observe(const Component& component) { component->addObserver(m_observer.get()); }

void XQAggregatingTextStorage::stopObserving(const Component& component)
{
    // The same storage may be shown twice; it is heard as long as one of them remains.
    if (std::find(m_components.begin(), m_components.end(), component) == m_components.end())
        component->removeObserver(m_observer.get());
}

void XQAggregatingTextStorage::setTextStorageComponents(const std::vector<Component>& components)
{
    const std::vector<Component> old = std::exchange(m_components, {});
    for (const Component& component : old)
        stopObserving(component);

    std::vector<Component> kept;
    for (const Component& component : components) {
        if (component)
            kept.push_back(component);
        else
            qWarning("%s", InvalidComponentMessage);
    }
    AttributedString joined;
    std::vector<Range> ranges;
    qsizetype total = 0;
    bool allCount = true;
    for (size_t i = 0; i < kept.size(); ++i) {
        ranges.push_back(Range{joined.length(), kept[i]->length()});
        joined.append(kept[i]->attributedString());
        if (i + 1 < kept.size()) {
            if (isAttributedSeparator(m_separator))
                joined.append(m_separator.value<AttributedString>());
            else
                joined.replaceCharacters(Range{joined.length(), 0}, m_separator.toString());
        }
        if (const auto* counting = dynamic_cast<const XQWordCountingTextStorage*>(kept[i].get()))
            total += counting->wordCount();
        else
            allCount = false;
    }

    EditingBatch batch(*this);
    const qsizetype oldLength = m_backing.length();
    m_backing = kept.empty() ? AttributedString() : joined;
    edited(EditedCharacters | EditedAttributes, Range{0, oldLength}, m_backing.length() - oldLength);
    if (allCount)
        m_wordCount = total;
    m_components = kept;
    m_textRanges = ranges;
    for (const Component& component : m_components)
        observe(component);
}

void XQAggregatingTextStorage::insertTextStorageComponent(const Component& component, qsizetype index)
{
    const qsizetype n = qsizetype(m_components.size());
    if (!component || index < 0 || index > n) {
        qWarning("%s", InvalidComponentMessage);
        return;
    }
    EditingBatch batch(*this);
    qsizetype at = index < n ? m_textRanges[size_t(index)].location : m_backing.length();
    // Appended after other components, the new one needs a separator in front of it.
    if (index == n && n > 0) {
        writeSeparator(Range{at, 0}, m_separator);
        at += separatorLength();
    }
    const qsizetype length = component->length();
    m_backing.replaceCharacters(Range{at, 0}, component->attributedString());
    edited(EditedCharacters | EditedAttributes, Range{at, 0}, length);
    if (index < n)
        writeSeparator(Range{at + length, 0}, m_separator);
    m_components.insert(m_components.begin() + index, component);
    observe(component);
    updateTextRanges();
}

void XQAggregatingTextStorage::addTextStorageComponent(const Component& component)
{
    insertTextStorageComponent(component, qsizetype(m_components.size()));
}

void XQAggregatingTextStorage::removeTextStorageComponentAtIndex(qsizetype index)
{
    const qsizetype n = qsizetype(m_components.size());
    if (index < 0 || index >= n) {
        qWarning("%s", IndexOutOfBoundsMessage);
        return;
    }
    EditingBatch batch(*this);
    const Range text = m_textRanges[size_t(index)];
    const qsizetype sep = separatorLength();
    // With the separator after it, or for the last of several the one before it.
    const Range removed = index + 1 < n ? Range{text.location, text.length + sep}
        : n > 1                         ? Range{text.location - sep, text.length + sep}
                                        : text;
    m_backing.replaceCharacters(removed, QString());
    edited(EditedCharacters, removed, -removed.length);
    const Component component = m_components[size_t(index)];
    m_components.erase(m_components.begin() + index);
    stopObserving(component);
    updateTextRanges();
}

// ---------------------------------------------------------------- separator

qsizetype XQAggregatingTextStorage::separatorLength() const { return lengthOfSeparator(m_separator); }

void XQAggregatingTextStorage::writeSeparator(Range range, const QVariant& separator)
{
    if (isAttributedSeparator(separator)) {
        const AttributedString text = separator.value<AttributedString>();
        m_backing.replaceCharacters(range, text);
        edited(EditedCharacters | EditedAttributes, range, text.length() - range.length);
    } else {
        const QString text = separator.toString();
        m_backing.replaceCharacters(range, text);
        edited(EditedCharacters, range, text.size() - range.length);
    }
}

void XQAggregatingTextStorage::setComponentSeparator(const QString& separator)
{
    setComponentSeparator(QVariant(separator));
}

void XQAggregatingTextStorage::setComponentSeparator(const AttributedString& separator)
{
    setComponentSeparator(QVariant::fromValue(separator));
}

void XQAggregatingTextStorage::setComponentSeparator(const QVariant& separator)
{
    if (separator.metaType() != QMetaType::fromType<QString>() && !isAttributedSeparator(separator)) {
        qWarning("%s", InvalidSeparatorMessage);
        return;
    }
    EditingBatch batch(*this);
    const qsizetype oldLength = separatorLength();
    const qsizetype change = lengthOfSeparator(separator) - oldLength;
    qsizetype shift = 0;
    for (size_t i = 0; i + 1 < m_components.size(); ++i) {
        writeSeparator(Range{m_textRanges[i].end() + shift, oldLength}, separator);
        shift += change;
    }
    m_separator = separator;
    updateTextRanges();
}

// ---------------------------------------------------------------- ranges

void XQAggregatingTextStorage::updateTextRanges()
{
    const size_t n = m_components.size();
    const qsizetype sep = separatorLength();
    m_textRanges.resize(n);
    qsizetype pos = 0, total = 0;
    bool allCount = true;
    for (size_t i = 0; i < n; ++i) {
        const TextStorage* component = m_components[i].get();
        m_textRanges[i] = Range{pos, component->length()};
        pos += m_textRanges[i].length + (i + 1 < n ? sep : 0);
        if (const auto* counting = dynamic_cast<const XQWordCountingTextStorage*>(component))
            total += counting->wordCount();
        else
            allCount = false;
    }
    m_wordCount = allCount ? total : 0;
    NotificationCenter::defaultCenter().post(XQTextStorageStatisticsDidChangeNotification,
                                             static_cast<const TextStorage*>(this));
}

qsizetype XQAggregatingTextStorage::indexOfTextStorageContainingRange(Range range) const
{
    if (range.location < 0 || range.length < 0)
        return -1;
    // The first range reaching the range's end is the only one that can hold it.
    auto it = std::lower_bound(m_textRanges.begin(), m_textRanges.end(), range.end(),
                               [](const Range& r, qsizetype end) { return r.end() < end; });
    if (it == m_textRanges.end() || it->location > range.location)
        return -1;
    return qsizetype(it - m_textRanges.begin());
}

Range XQAggregatingTextStorage::rangeOfTextStorageAtIndex(qsizetype index) const
{
    if (index < 0 || index >= qsizetype(m_textRanges.size()))
        return Range::notFound();
    return m_textRanges[size_t(index)];
}

qsizetype XQAggregatingTextStorage::indexOfTextStorageComponent(const TextStorage* component) const
{
    for (size_t i = 0; i < m_components.size(); ++i) {
        if (m_components[i].get() == component)
            return qsizetype(i);
    }
    return -1;
}

bool XQAggregatingTextStorage::rangeIsEditable(Range range) const
{
    return indexOfTextStorageContainingRange(range) >= 0;
}

bool XQAggregatingTextStorage::rangesAreEditable(const std::vector<Range>& ranges) const
{
    return std::all_of(ranges.begin(), ranges.end(), [this](Range r) { return rangeIsEditable(r); });
}

qsizetype XQAggregatingTextStorage::wordCountForRange(Range range) const
{
    return qly::wordCount(m_backing, intersectionRange(range, Range{0, m_backing.length()}));
}

// ---------------------------------------------------------------- editing

void XQAggregatingTextStorage::replaceCharacters(Range range, const QString& text)
{
    const qsizetype index = indexOfTextStorageContainingRange(range);
    if (index < 0)
        return;
    EditingBatch batch(*this);
    const qsizetype before = m_backing.length();
    m_backing.replaceCharacters(range, text);
    edited(EditedCharacters, range, m_backing.length() - before);
    if (m_copyingComponentEdit) {
        updateTextRanges();
        return;
    }
    m_forwardingEdit = true;
    m_components[size_t(index)]->replaceCharacters(
        Range{range.location - m_textRanges[size_t(index)].location, range.length}, text);
    m_forwardingEdit = false;
    updateTextRanges();
    applyPendingSyncs();
}

void XQAggregatingTextStorage::setAttributes(const Attributes& attributes, Range range)
{
    const qsizetype index = indexOfTextStorageContainingRange(range);
    if (index < 0)
        return;
    EditingBatch batch(*this);
    m_backing.setAttributes(attributes, range);
    edited(EditedAttributes, range, 0);
    if (m_copyingComponentEdit)
        return;
    m_forwardingEdit = true;
    m_components[size_t(index)]->setAttributes(
        attributes, Range{range.location - m_textRanges[size_t(index)].location, range.length});
    m_forwardingEdit = false;
    applyPendingSyncs();
}

void XQAggregatingTextStorage::addAttribute(const QString& name, const QVariant& value, Range range)
{
    const qsizetype index = indexOfTextStorageContainingRange(range);
    if (index < 0)
        return;
    EditingBatch batch(*this);
    m_backing.addAttribute(name, value, range);
    edited(EditedAttributes, range, 0);
    if (m_copyingComponentEdit)
        return;
    m_forwardingEdit = true;
    m_components[size_t(index)]->addAttribute(
        name, value, Range{range.location - m_textRanges[size_t(index)].location, range.length});
    m_forwardingEdit = false;
    applyPendingSyncs();
}

void XQAggregatingTextStorage::componentEdited(TextStorage& component, int mask, Range editedRange, qsizetype delta)
{
    if (m_forwardingEdit) {
        // The component may have fixed attributes beyond what was forwarded; copied back afterwards.
        m_pendingSyncs.push_back(PendingSync{&component, editedRange});
        return;
    }
    const qsizetype index = indexOfTextStorageComponent(&component);
    if (index < 0)
        return;
    const qsizetype start = m_textRanges[size_t(index)].location;
    m_copyingComponentEdit = true;
    {
        EditingBatch batch(*this);
        if (mask & EditedCharacters) {
            replaceCharacters(Range{start + editedRange.location, editedRange.length - delta},
                              component.attributedSubstring(editedRange));
        } else {
            storage_detail::forEachDifferingRun(component, editedRange, m_backing, start,
                                                [this](const Attributes& attrs, Range r) { setAttributes(attrs, r); });
        }
    }
    m_copyingComponentEdit = false;
}

void XQAggregatingTextStorage::applyPendingSyncs()
{
    const std::vector<PendingSync> pending = std::exchange(m_pendingSyncs, {});
    for (const PendingSync& sync : pending) {
        const qsizetype index = indexOfTextStorageComponent(sync.component);
        if (index < 0)
            continue;
        const Range range = intersectionRange(sync.range, Range{0, sync.component->length()});
        storage_detail::forEachDifferingRun(*sync.component, range, m_backing, m_textRanges[size_t(index)].location,
                                            [this](const Attributes& attrs, Range r) {
                                                m_backing.setAttributes(attrs, r);
                                                edited(EditedAttributes, r, 0);
                                            });
    }
}

} // namespace qly
