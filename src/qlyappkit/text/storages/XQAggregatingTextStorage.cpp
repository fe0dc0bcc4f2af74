#include <qlyappkit/text/storages/XQAggregatingTextStorage.h>

#include <algorithm>
#include <utility>

#include <qlyappkit/platform/services/NotificationCenter.h>
#include <qlyappkit/platform/text/WordCounting.h>
#include <qlyappkit/text/storages/ComponentCore_p.h>
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

static TextStorage* storageOf(const XQAggregatingTextStorage::Component& component) { return component.get(); }

XQAggregatingTextStorage::XQAggregatingTextStorage()
    : m_separator(QStringLiteral("\n")),
      m_core(std::make_unique<storage_detail::ComponentCore<Component>>(*this, m_backing))
{
}

XQAggregatingTextStorage::XQAggregatingTextStorage(const AttributedString& text) : XQAggregatingTextStorage()
{
    m_backing = text;
}

XQAggregatingTextStorage::~XQAggregatingTextStorage() = default;

// ---------------------------------------------------------------- components

const std::vector<XQAggregatingTextStorage::Component>& XQAggregatingTextStorage::textStorageComponents() const
{
    return m_core->components();
}

void XQAggregatingTextStorage::setTextStorageComponents(const std::vector<Component>& components)
{
    m_core->stopObservingAll();
    std::vector<Component> kept;
    for (const Component& component : components) {
        if (component)
            kept.push_back(component);
        else
            qWarning("%s", InvalidComponentMessage);
    }
    AttributedString joined;
    for (size_t i = 0; i < kept.size(); ++i) {
        joined.append(kept[i]->attributedString());
        if (i + 1 < kept.size()) {
            if (isAttributedSeparator(m_separator))
                joined.append(m_separator.value<AttributedString>());
            else
                joined.replaceCharacters(Range{joined.length(), 0}, m_separator.toString());
        }
    }

    EditingBatch batch(*this);
    const qsizetype oldLength = m_backing.length();
    m_backing = kept.empty() ? AttributedString() : joined;
    edited(EditedCharacters | EditedAttributes, Range{0, oldLength}, m_backing.length() - oldLength);
    m_core->setComponents(std::move(kept));
    relayout();
    // Without a count from every component the old total stays (until the next range update).
    if (m_core->allComponentsCount())
        m_wordCount = m_core->wordTotal();
}

void XQAggregatingTextStorage::insertTextStorageComponent(const Component& component, qsizetype index)
{
    const qsizetype n = m_core->count();
    if (!component || index < 0 || index > n) {
        qWarning("%s", InvalidComponentMessage);
        return;
    }
    EditingBatch batch(*this);
    qsizetype at = index < n ? textRanges()[size_t(index)].location : m_backing.length();
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
    m_core->insert(index, component);
    updateTextRanges();
}

void XQAggregatingTextStorage::addTextStorageComponent(const Component& component)
{
    insertTextStorageComponent(component, m_core->count());
}

void XQAggregatingTextStorage::removeTextStorageComponentAtIndex(qsizetype index)
{
    const qsizetype n = m_core->count();
    if (index < 0 || index >= n) {
        qWarning("%s", IndexOutOfBoundsMessage);
        return;
    }
    EditingBatch batch(*this);
    const Range text = textRanges()[size_t(index)];
    const qsizetype sep = separatorLength();
    // With the separator after it, or for the last of several the one before it.
    const Range removed = index + 1 < n ? Range{text.location, text.length + sep}
        : n > 1                         ? Range{text.location - sep, text.length + sep}
                                        : text;
    m_backing.replaceCharacters(removed, QString());
    edited(EditedCharacters, removed, -removed.length);
    m_core->erase(index);
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
    for (qsizetype i = 0; i + 1 < m_core->count(); ++i) {
        writeSeparator(Range{textRanges()[size_t(i)].end() + shift, oldLength}, separator);
        shift += change;
    }
    m_separator = separator;
    updateTextRanges();
}

// ---------------------------------------------------------------- ranges

const std::vector<Range>& XQAggregatingTextStorage::textRanges() const { return m_core->textRanges(); }

void XQAggregatingTextStorage::relayout()
{
    const qsizetype n = m_core->count();
    const qsizetype sep = separatorLength();
    m_core->relayout(
        [n, sep](qsizetype index) {
            return storage_detail::ComponentParts{0, 0, index + 1 < n ? sep : 0};
        },
        false);
}

void XQAggregatingTextStorage::updateTextRanges()
{
    relayout();
    m_wordCount = m_core->wordTotal();
    postStatistics();
}

void XQAggregatingTextStorage::componentTextChanged(qsizetype index, qsizetype delta)
{
    m_core->shift(index, storage_detail::ComponentCoreBase::Part::Text, delta);
    m_wordCount = m_core->wordTotal();
    postStatistics();
}

void XQAggregatingTextStorage::postStatistics()
{
    NotificationCenter::defaultCenter().post(XQTextStorageStatisticsDidChangeNotification,
                                             static_cast<const TextStorage*>(this));
}

qsizetype XQAggregatingTextStorage::indexOfTextStorageContainingRange(Range range) const
{
    if (range.location < 0 || range.length < 0)
        return -1;
    // The first range reaching the range's end is the only one that can hold it.
    const std::vector<Range>& ranges = textRanges();
    auto it = std::lower_bound(ranges.begin(), ranges.end(), range.end(),
                               [](const Range& r, qsizetype end) { return r.end() < end; });
    if (it == ranges.end() || it->location > range.location)
        return -1;
    return qsizetype(it - ranges.begin());
}

Range XQAggregatingTextStorage::rangeOfTextStorageAtIndex(qsizetype index) const
{
    if (index < 0 || index >= m_core->count())
        return Range::notFound();
    return textRanges()[size_t(index)];
}

qsizetype XQAggregatingTextStorage::indexOfTextStorageComponent(const TextStorage* component) const
{
    const qsizetype index = m_core->indexOfStorage(component);
    return index == NotFound ? -1 : index;
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
    const qsizetype delta = m_backing.length() - before;
    edited(EditedCharacters, range, delta);
    if (m_core->isMirroring()) {
        componentTextChanged(m_core->mirroredIndex(), delta);
        return;
    }
    m_core->forward(index, range, [&](TextStorage& component, Range r) { component.replaceCharacters(r, text); });
    componentTextChanged(index, delta);
    m_core->applyPendingSyncs();
}

void XQAggregatingTextStorage::setAttributes(const Attributes& attributes, Range range)
{
    const qsizetype index = indexOfTextStorageContainingRange(range);
    if (index < 0)
        return;
    EditingBatch batch(*this);
    m_backing.setAttributes(attributes, range);
    edited(EditedAttributes, range, 0);
    if (m_core->isMirroring())
        return;
    m_core->forward(index, range, [&](TextStorage& component, Range r) { component.setAttributes(attributes, r); });
    m_core->applyPendingSyncs();
}

void XQAggregatingTextStorage::addAttribute(const QString& name, const QVariant& value, Range range)
{
    const qsizetype index = indexOfTextStorageContainingRange(range);
    if (index < 0)
        return;
    EditingBatch batch(*this);
    m_backing.addAttribute(name, value, range);
    edited(EditedAttributes, range, 0);
    if (m_core->isMirroring())
        return;
    m_core->forward(index, range, [&](TextStorage& component, Range r) { component.addAttribute(name, value, r); });
    m_core->applyPendingSyncs();
}

// ---------------------------------------------------------------- invariants

bool XQAggregatingTextStorage::checkInvariants(QString* failure) const
{
    if (!m_core->checkInvariants(failure))
        return false;
    auto fail = [failure](const QString& why) {
        if (failure)
            *failure = why;
        return false;
    };
    const std::vector<Range>& ranges = textRanges();
    const qsizetype sep = separatorLength();
    for (size_t i = 0; i + 1 < ranges.size(); ++i) {
        const Range separator{ranges[i].end(), sep};
        if (ranges[i + 1].location != separator.end())
            return fail(QStringLiteral("component %1 does not start right after the separator before it").arg(i + 1));
        const bool same = isAttributedSeparator(m_separator)
            ? m_backing.attributedSubstring(separator) == m_separator.value<AttributedString>()
            : m_backing.substring(separator) == m_separator.toString();
        if (!same)
            return fail(
                QStringLiteral("separator after component %1 is \"%2\"").arg(i).arg(m_backing.substring(separator)));
    }
    if (!ranges.empty() && ranges.front().location != 0)
        return fail(QStringLiteral("the first component does not start at 0"));
    if (m_core->allComponentsCount() && m_wordCount != m_core->wordTotal())
        return fail(QStringLiteral("word count %1, the components have %2").arg(m_wordCount).arg(m_core->wordTotal()));
    if (!m_backing.checkInvariants())
        return fail(QStringLiteral("text invariants"));
    return true;
}

} // namespace qly
