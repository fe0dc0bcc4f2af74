// XQAggregateTextStorage: components, ranges, locating and the routing of edits. Titles, separators
// and their notifications are in XQAggregateTextStorageTitles.cpp, comments in
// XQAggregateTextStorageComments.cpp.
#include <qlyappkit/text/storages/XQAggregateTextStorage.h>

#include <QObject>
#include <QTimer>
#include <algorithm>
#include <utility>

#include <qlyappkit/platform/services/NamedException.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/text/WordCounting.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/comments/XQComment.h>
#include <qlyappkit/text/storages/StorageSupport_p.h>
#include <qlyappkit/text/storages/XQAggregateTextStorageComponent.h>
#include <qlyappkit/text/storages/XQTextStorage.h>

namespace qly {

namespace {

const QString NilComponentName = QStringLiteral("XQAggregateTextStorage - nil component.");
const QString NilComponentReason =
    QStringLiteral("Attempted to load a nil coponent text storage in XQAggregateTextStorage");
const QString InvalidComponentName = QStringLiteral("XQAggregateTextStorage - invalid component.");
const QString InvalidComponentReason = QStringLiteral("Attempted to load a component text storage that does not "
                                                      "conform to the XQAggregateTextStorageComponent protocol.");

bool contains(Range outer, Range inner) { return outer.location <= inner.location && inner.end() <= outer.end(); }

XQAggregateTextStorageComponent* membership(const XQTextComponent& component)
{
    return dynamic_cast<XQAggregateTextStorageComponent*>(component.text.get());
}

} // namespace

XQAggregateTextStorage::XQAggregateTextStorage()
    : m_observer(std::make_unique<storage_detail::EditForwardingObserver>(
        [this](TextStorage& component, int mask, Range range, qsizetype delta) {
            componentEdited(component, mask, range, delta);
        })),
      m_timerContext(std::make_unique<QObject>())
{
    ParagraphStyle centred;
    centred.setAlignment(CenterTextAlignment);
    m_titleAttributes = {
        {FontAttributeName, QVariant::fromValue(Font::fromFamily(QStringLiteral("Helvetica"), 14, BoldFontMask))},
        {ParagraphStyleAttributeName, QVariant::fromValue(centred)}};
    m_separatorAttributes = {{FontAttributeName, QVariant::fromValue(Font::userFont(12))}};
}

XQAggregateTextStorage::~XQAggregateTextStorage() { stopObservingComponents(); }

// ---------------------------------------------------------------- components

void XQAggregateTextStorage::stopObservingComponents()
{
    m_commentsObserver.reset();
    for (const XQTextComponent& component : m_components) {
        component.text->removeObserver(m_observer.get());
        if (auto* member = membership(component))
            member->removeFromAggregateTextStorage();
    }
}

void XQAggregateTextStorage::setComponents(const std::vector<XQTextComponent>& components)
{
    if (components == m_components)
        return;
    // A bad array is refused before anything changes.
    for (const XQTextComponent& component : components) {
        if (!component.text)
            throw NamedException(NilComponentName, NilComponentReason);
        if (!membership(component))
            throw NamedException(InvalidComponentName, InvalidComponentReason);
    }
    stopObservingComponents();
    m_componentRanges.clear();
    m_textRanges.clear();
    m_titleRanges.clear();
    m_counters.clear();

    EditingBatch batch(*this);
    const qsizetype oldLength = m_backing.length();
    if (components.empty()) {
        m_backing = AttributedString();
        edited(EditedCharacters | EditedAttributes, Range{0, oldLength}, -oldLength);
        m_components.clear();
        m_wordCount = 0;
        m_componentsHaveComments = false;
        m_comments.clear();
        NotificationCenter::defaultCenter().post(XQTextStorageCommentsDidChangeNotification,
                                                 static_cast<const TextStorage*>(this));
        return;
    }

    m_components = components; // the title attributes below read the components' colours
    m_componentsHaveComments = true;
    MutableAttributedString built;
    const qsizetype n = qsizetype(components.size());
    for (qsizetype i = 0; i < n; ++i) {
        const XQTextComponent& component = components[size_t(i)];
        membership(component)->addToAggregateTextStorage();
        const qsizetype start = built.length();
        if (m_showsTitles) {
            m_titleRanges.push_back(Range{start, component.title.size()});
            built.append(AttributedString(component.title, titleAttributesForComponent(i)));
            built.append(AttributedString(QStringLiteral("\n"), titleNewlineAttributesForComponent(i)));
        }
        m_textRanges.push_back(Range{built.length(), component.text->length()});
        built.append(component.text->attributedString());
        if (i + 1 < n)
            insertSeparatorWithPageBreak(components[size_t(i + 1)].pageBreakBefore, Range{built.length(), 0}, built);
        m_componentRanges.push_back(Range::fromBounds(start, built.length()));

        m_counters.push_back(dynamic_cast<const XQWordCountingTextStorage*>(component.text.get()));
        if (!dynamic_cast<const XQCommentedTextStorageMethods*>(component.text.get()))
            m_componentsHaveComments = false;
        component.text->addObserver(m_observer.get());
    }
    // One observation for all components (the notification centre compares every observation on
    // every post, and components post on every keystroke).
    m_commentsObserver =
        ScopedObserver(XQTextStorageCommentsDidChangeNotification, nullptr, [this](const Notification& note) {
            if (indexOfComponentContainingTextStorage(static_cast<const TextStorage*>(note.object)) != NotFound)
                rebuildComments();
        });
    m_backing = built.attributedString();
    edited(EditedCharacters | EditedAttributes, Range{0, oldLength}, m_backing.length() - oldLength);
    updateRanges();
    rebuildComments();
}

std::vector<std::shared_ptr<TextStorage>> XQAggregateTextStorage::componentTextStorages() const
{
    std::vector<std::shared_ptr<TextStorage>> out;
    out.reserve(m_components.size());
    for (const XQTextComponent& component : m_components)
        out.push_back(component.text);
    return out;
}

void XQAggregateTextStorage::updateRanges()
{
    const size_t n = m_components.size();
    m_componentRanges.resize(n);
    m_textRanges.resize(n);
    m_titleRanges.resize(m_showsTitles ? n : 0);
    m_componentWords.resize(n);
    qsizetype pos = 0, total = 0;
    bool allCount = true;
    for (size_t i = 0; i < n; ++i) {
        const qsizetype start = pos;
        if (m_showsTitles) {
            m_titleRanges[i] = Range{pos, m_components[i].title.size()};
            pos += m_titleRanges[i].length + 1;
        }
        m_textRanges[i] = Range{pos, m_components[i].text->length()};
        pos += m_textRanges[i].length;
        if (i + 1 < n)
            pos += separatorLengthBefore(qsizetype(i + 1));
        m_componentRanges[i] = Range::fromBounds(start, pos);
        m_componentWords[i] = m_counters[i] ? m_counters[i]->wordCount() : 0;
        total += m_componentWords[i];
        allCount = allCount && m_counters[i];
    }
    m_allComponentsCount = allCount;
    m_wordCount = allCount ? total : 0;
}

void XQAggregateTextStorage::shiftRanges(qsizetype index, int element, qsizetype delta)
{
    const size_t k = size_t(index);
    m_componentRanges[k].length += delta;
    if (element == TitleElement) {
        m_titleRanges[k].length += delta;
        m_textRanges[k].location += delta;
    } else {
        m_textRanges[k].length += delta;
    }
    for (size_t j = k + 1; j < m_components.size(); ++j) {
        m_componentRanges[j].location += delta;
        m_textRanges[j].location += delta;
        if (m_showsTitles)
            m_titleRanges[j].location += delta;
    }
    if (element == TextElement && m_counters[k]) {
        const qsizetype words = m_counters[k]->wordCount();
        if (m_allComponentsCount)
            m_wordCount += words - m_componentWords[k];
        m_componentWords[k] = words;
    }
}

void XQAggregateTextStorage::postStatistics()
{
    NotificationCenter::defaultCenter().post(XQTextStorageStatisticsDidChangeNotification,
                                             static_cast<const TextStorage*>(this));
}

qsizetype XQAggregateTextStorage::wordCountForRange(Range range) const
{
    return qly::wordCount(m_backing, intersectionRange(range, Range{0, m_backing.length()}));
}

// ---------------------------------------------------------------- locating

qsizetype XQAggregateTextStorage::firstRangeEndingAfter(const std::vector<Range>& ranges, qsizetype location)
{
    auto it = std::upper_bound(ranges.begin(), ranges.end(), location,
                               [](qsizetype loc, const Range& r) { return loc < r.end(); });
    return qsizetype(it - ranges.begin());
}

qsizetype XQAggregateTextStorage::indexOfComponentContainingRange(Range range, int* element) const
{
    if (element)
        *element = SeparatorElement;
    const qsizetype n = numberOfComponents();
    if (range.location < 0 || range.length < 0 || n == 0)
        return NotFound;
    // Component ranges are contiguous: the first one reaching the range's end is the only candidate.
    auto it = std::lower_bound(m_componentRanges.begin(), m_componentRanges.end(), range.end(),
                               [](const Range& r, qsizetype end) { return r.end() < end; });
    if (it == m_componentRanges.end())
        return NotFound;
    qsizetype index = qsizetype(it - m_componentRanges.begin());
    if (range.length == 0 && range.location == it->end() && index + 1 < n)
        ++index;
    const Range component = m_componentRanges[size_t(index)];
    if (!contains(component, range))
        return NotFound;
    if (element) {
        if (contains(m_textRanges[size_t(index)], range))
            *element = TextElement;
        else if (m_showsTitles && contains(m_titleRanges[size_t(index)], range))
            *element = TitleElement;
    }
    return index;
}

Range XQAggregateTextStorage::rangeOfEntireComponentAtIndex(qsizetype index) const
{
    return index >= 0 && index < numberOfComponents() ? m_componentRanges[size_t(index)] : Range::notFound();
}

Range XQAggregateTextStorage::rangeOfTitleForComponentAtIndex(qsizetype index) const
{
    return m_showsTitles && index >= 0 && index < numberOfComponents() ? m_titleRanges[size_t(index)]
                                                                       : Range::notFound();
}

Range XQAggregateTextStorage::rangeOfTextStorageForComponentAtIndex(qsizetype index) const
{
    return index >= 0 && index < numberOfComponents() ? m_textRanges[size_t(index)] : Range::notFound();
}

qsizetype XQAggregateTextStorage::indexOfComponent(const XQTextComponent& component) const
{
    auto it = std::find(m_components.begin(), m_components.end(), component);
    return it == m_components.end() ? NotFound : qsizetype(it - m_components.begin());
}

qsizetype XQAggregateTextStorage::indexOfComponentContainingTextStorage(const TextStorage* storage) const
{
    for (size_t i = 0; i < m_components.size(); ++i) {
        if (m_components[i].text.get() == storage)
            return qsizetype(i);
    }
    return NotFound;
}

std::shared_ptr<TextStorage> XQAggregateTextStorage::textStorageForComponentAtIndex(qsizetype index) const
{
    return index >= 0 && index < numberOfComponents() ? m_components[size_t(index)].text : nullptr;
}

std::shared_ptr<TextStorage> XQAggregateTextStorage::textStorageForRange(Range range) const
{
    int element = SeparatorElement;
    const qsizetype index = indexOfComponentContainingRange(range, &element);
    return index != NotFound && element == TextElement ? m_components[size_t(index)].text : nullptr;
}

std::vector<std::shared_ptr<TextStorage>>
XQAggregateTextStorage::componentTextStoragesIntersectingRanges(const std::vector<Range>& ranges) const
{
    std::vector<std::shared_ptr<TextStorage>> out;
    for (size_t i = 0; i < m_components.size(); ++i) {
        const Range text = m_textRanges[i];
        const bool meets = std::any_of(ranges.begin(), ranges.end(), [&](Range r) {
            return r.length == 0 ? contains(text, r) : intersectionRange(text, r).length > 0;
        });
        if (meets)
            out.push_back(m_components[i].text);
    }
    return out;
}

std::vector<Range> XQAggregateTextStorage::rangesLimitedToTextRanges(const std::vector<Range>& ranges) const
{
    std::vector<Range> out;
    for (const Range& r : ranges) {
        for (const Range& text : m_textRanges) {
            if (r.length == 0 ? contains(text, r) : intersectionRange(text, r).length > 0) {
                out.push_back(r.length == 0 ? r : intersectionRange(text, r));
                if (r.length == 0)
                    break;
            }
        }
    }
    return out;
}

bool XQAggregateTextStorage::rangeIsEditable(Range range, const std::optional<QString>& replacement) const
{
    int element = SeparatorElement;
    const qsizetype index = indexOfComponentContainingRange(range, &element);
    if (replacement)
        return index != NotFound && element != SeparatorElement;
    return !(index != NotFound && element == TitleElement && m_showsTitles);
}

bool XQAggregateTextStorage::rangesAreEditable(const std::vector<Range>& ranges,
                                               const std::optional<QStringList>& replacements) const
{
    if (replacements && replacements->size() != qsizetype(ranges.size()))
        return false;
    for (size_t i = 0; i < ranges.size(); ++i) {
        const std::optional<QString> replacement =
            replacements ? std::optional<QString>(replacements->at(qsizetype(i))) : std::nullopt;
        if (!rangeIsEditable(ranges[i], replacement))
            return false;
    }
    return true;
}

// ---------------------------------------------------------------- editing

void XQAggregateTextStorage::replaceCharacters(Range range, const QString& text)
{
    const qsizetype n = m_backing.length();
    range.location = std::clamp<qsizetype>(range.location, 0, n);
    range.length = std::clamp<qsizetype>(range.length, 0, n - range.location);
    const bool routed = !m_isRebuildingTitles && !m_isUpdatingSeparator && !m_changeInstigatedByComponent;
    int element = SeparatorElement;
    const qsizetype index = routed ? indexOfComponentContainingRange(range, &element) : NotFound;

    EditingBatch batch(*this);
    m_backing.replaceCharacters(range, text);
    const qsizetype delta = text.size() - range.length;
    edited(EditedCharacters, range, delta);
    if (m_isRebuildingTitles || m_isUpdatingSeparator)
        return;
    if (m_changeInstigatedByComponent) {
        if (m_mirroredComponent != NotFound)
            shiftRanges(m_mirroredComponent, TextElement, delta);
        else
            updateRanges();
        postStatistics();
        return;
    }
    if (index == NotFound || element == SeparatorElement)
        return;
    if (element == TitleElement) {
        const Range title = m_titleRanges[size_t(index)];
        m_components[size_t(index)].title = m_backing.substring(Range{title.location, title.length + delta});
        if (!m_inTitleChange) {
            scheduleTitleNotification(index);
            scheduleUndoInvalidation();
        }
    } else {
        TextStorage& component = *m_components[size_t(index)].text;
        m_changeInstigatedBySelf = true;
        {
            EditingBatch componentBatch(component);
            component.replaceCharacters(Range{range.location - m_textRanges[size_t(index)].location, range.length},
                                        text);
        }
        m_changeInstigatedBySelf = false;
    }
    shiftRanges(index, element, delta);
    applyPendingSyncs();
    postStatistics();
}

void XQAggregateTextStorage::setAttributes(const Attributes& attributes, Range range)
{
    Attributes attrs = attributes;
    const bool separatorAttributes = attrs.contains(XQAggregatedSeparatorAttributeName);
    if (!m_isUpdatingSeparator)
        attrs.remove(XQAggregatedSeparatorAttributeName);
    const bool routed = !m_isRebuildingTitles && !m_isUpdatingSeparator && !m_changeInstigatedByComponent;
    if (routed && m_showsTitles) {
        int element = SeparatorElement;
        const qsizetype index = indexOfComponentContainingRange(range, &element);
        if (index != NotFound && element == TitleElement)
            attrs = titleAttributesForComponent(index);
    }
    if (const XQCommentPtr comment = commentFromVariant(attrs.value(XQCommentAttributeName))) {
        attrs.insert(LinkAttributeName, variantFromComment(comment));
        attrs.insert(ToolTipAttributeName, comment->tooltipString());
    }
    EditingBatch batch(*this);
    m_backing.setAttributes(attrs, range);
    edited(EditedAttributes, range, 0);
    if (!routed || separatorAttributes)
        return;
    // Every component text the range touches takes the same attributes over its part.
    for (qsizetype i = firstRangeEndingAfter(m_textRanges, range.location);
         i < numberOfComponents() && m_textRanges[size_t(i)].location < range.end(); ++i) {
        const Range part = intersectionRange(m_textRanges[size_t(i)], range);
        if (part.length <= 0)
            continue;
        m_changeInstigatedBySelf = true;
        m_components[size_t(i)].text->setAttributes(
            attrs, Range{part.location - m_textRanges[size_t(i)].location, part.length});
        m_changeInstigatedBySelf = false;
    }
    applyPendingSyncs();
}

void XQAggregateTextStorage::componentEdited(TextStorage& component, int mask, Range editedRange, qsizetype delta)
{
    if (m_changeInstigatedBySelf) {
        // The component may have fixed attributes beyond what was passed on; copied back afterwards.
        m_pendingSyncs.push_back(PendingSync{&component, editedRange});
        return;
    }
    const qsizetype index = indexOfComponentContainingTextStorage(&component);
    if (index == NotFound)
        return;
    const qsizetype start = m_textRanges[size_t(index)].location;
    m_changeInstigatedByComponent = true;
    m_mirroredComponent = index;
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
    m_changeInstigatedByComponent = false;
    m_mirroredComponent = NotFound;
}

void XQAggregateTextStorage::applyPendingSyncs()
{
    const std::vector<PendingSync> pending = std::exchange(m_pendingSyncs, {});
    for (const PendingSync& sync : pending) {
        const qsizetype index = indexOfComponentContainingTextStorage(sync.component);
        if (index == NotFound)
            continue;
        const Range range = intersectionRange(sync.range, Range{0, sync.component->length()});
        storage_detail::forEachDifferingRun(*sync.component, range, m_backing, m_textRanges[size_t(index)].location,
                                            [this](const Attributes& attrs, Range r) {
                                                m_backing.setAttributes(attrs, r);
                                                edited(EditedAttributes, r, 0);
                                            });
    }
}

void XQAggregateTextStorage::fixAttributesInRange(Range range)
{
    TextStorage::fixAttributesInRange(range);
    fixAggregatedTitlesAndSeparatorsInRange(range);
}

} // namespace qly
