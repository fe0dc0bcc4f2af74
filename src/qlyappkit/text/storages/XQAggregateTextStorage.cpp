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
#include <qlyappkit/text/storages/ComponentCore_p.h>
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

using Part = storage_detail::ComponentCoreBase::Part;

} // namespace

static TextStorage* storageOf(const XQTextComponent& component) { return component.text.get(); }

XQAggregateTextStorage::XQAggregateTextStorage()
    : m_core(std::make_unique<storage_detail::ComponentCore<XQTextComponent>>(*this, m_backing)),
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

const std::vector<XQTextComponent>& XQAggregateTextStorage::components() const { return m_core->components(); }

qsizetype XQAggregateTextStorage::numberOfComponents() const { return m_core->count(); }

const std::vector<Range>& XQAggregateTextStorage::componentRanges() const { return m_core->componentRanges(); }

const std::vector<Range>& XQAggregateTextStorage::textRanges() const { return m_core->textRanges(); }

const std::vector<Range>& XQAggregateTextStorage::titleRanges() const { return m_core->headRanges(); }

bool XQAggregateTextStorage::isChangeInstigatedBySelf() const { return m_core->isForwarding(); }

bool XQAggregateTextStorage::isChangeInstigatedByComponent() const { return m_core->isMirroring(); }

void XQAggregateTextStorage::stopObservingComponents()
{
    m_commentsObserver.reset();
    for (const XQTextComponent& component : m_core->components()) {
        if (auto* member = membership(component))
            member->removeFromAggregateTextStorage();
    }
    m_core->stopObservingAll();
}

void XQAggregateTextStorage::setComponents(const std::vector<XQTextComponent>& components)
{
    if (components == m_core->components())
        return;
    // A bad array is refused before anything changes.
    for (const XQTextComponent& component : components) {
        if (!component.text)
            throw NamedException(NilComponentName, NilComponentReason);
        if (!membership(component))
            throw NamedException(InvalidComponentName, InvalidComponentReason);
    }
    stopObservingComponents();

    EditingBatch batch(*this);
    const qsizetype oldLength = m_backing.length();
    if (components.empty()) {
        m_backing = AttributedString();
        edited(EditedCharacters | EditedAttributes, Range{0, oldLength}, -oldLength);
        updateRanges();
        m_wordCount = 0;
        m_componentsHaveComments = false;
        m_comments.clear();
        NotificationCenter::defaultCenter().post(XQTextStorageCommentsDidChangeNotification,
                                                 static_cast<const TextStorage*>(this));
        return;
    }

    // The core observes the new components; the title attributes below read their colours.
    m_core->setComponents(components);
    m_componentsHaveComments = true;
    MutableAttributedString built;
    const qsizetype n = qsizetype(components.size());
    for (qsizetype i = 0; i < n; ++i) {
        const XQTextComponent& component = components[size_t(i)];
        membership(component)->addToAggregateTextStorage();
        if (m_showsTitles) {
            built.append(AttributedString(component.title, titleAttributesForComponent(i)));
            built.append(AttributedString(QStringLiteral("\n"), titleNewlineAttributesForComponent(i)));
        }
        built.append(component.text->attributedString());
        if (i + 1 < n)
            insertSeparatorWithPageBreak(components[size_t(i + 1)].pageBreakBefore, Range{built.length(), 0}, built);
        if (!dynamic_cast<const XQCommentedTextStorageMethods*>(component.text.get()))
            m_componentsHaveComments = false;
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
    out.reserve(m_core->components().size());
    for (const XQTextComponent& component : m_core->components())
        out.push_back(component.text);
    return out;
}

void XQAggregateTextStorage::updateRanges()
{
    const qsizetype n = numberOfComponents();
    m_core->relayout(
        [this, n](qsizetype i) {
            storage_detail::ComponentParts parts;
            if (m_showsTitles) {
                parts.head = m_core->component(i).title.size();
                parts.headGap = 1;
            }
            if (i + 1 < n)
                parts.tail = separatorLengthBefore(i + 1);
            return parts;
        },
        m_showsTitles);
    m_wordCount = m_core->wordTotal();
}

void XQAggregateTextStorage::shiftRanges(qsizetype index, int element, qsizetype delta)
{
    m_core->shift(index, element == TitleElement ? Part::Head : Part::Text, delta);
    m_wordCount = m_core->wordTotal();
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

qsizetype XQAggregateTextStorage::indexOfComponentContainingRange(Range range, int* element) const
{
    if (element)
        *element = SeparatorElement;
    const qsizetype n = numberOfComponents();
    if (range.location < 0 || range.length < 0 || n == 0)
        return NotFound;
    // Component ranges are contiguous: the first one reaching the range's end is the only candidate.
    const std::vector<Range>& components = componentRanges();
    auto it = std::lower_bound(components.begin(), components.end(), range.end(),
                               [](const Range& r, qsizetype end) { return r.end() < end; });
    if (it == components.end())
        return NotFound;
    qsizetype index = qsizetype(it - components.begin());
    if (range.length == 0 && range.location == it->end() && index + 1 < n)
        ++index;
    const Range component = components[size_t(index)];
    if (!contains(component, range))
        return NotFound;
    if (element) {
        if (contains(textRanges()[size_t(index)], range))
            *element = TextElement;
        else if (m_showsTitles && contains(titleRanges()[size_t(index)], range))
            *element = TitleElement;
    }
    return index;
}

Range XQAggregateTextStorage::rangeOfEntireComponentAtIndex(qsizetype index) const
{
    return index >= 0 && index < numberOfComponents() ? componentRanges()[size_t(index)] : Range::notFound();
}

Range XQAggregateTextStorage::rangeOfTitleForComponentAtIndex(qsizetype index) const
{
    return m_showsTitles && index >= 0 && index < numberOfComponents() ? titleRanges()[size_t(index)]
                                                                       : Range::notFound();
}

Range XQAggregateTextStorage::rangeOfTextStorageForComponentAtIndex(qsizetype index) const
{
    return index >= 0 && index < numberOfComponents() ? textRanges()[size_t(index)] : Range::notFound();
}

qsizetype XQAggregateTextStorage::indexOfComponent(const XQTextComponent& component) const
{
    const std::vector<XQTextComponent>& components = m_core->components();
    auto it = std::find(components.begin(), components.end(), component);
    return it == components.end() ? NotFound : qsizetype(it - components.begin());
}

qsizetype XQAggregateTextStorage::indexOfComponentContainingTextStorage(const TextStorage* storage) const
{
    return m_core->indexOfStorage(storage);
}

std::shared_ptr<TextStorage> XQAggregateTextStorage::textStorageForComponentAtIndex(qsizetype index) const
{
    return index >= 0 && index < numberOfComponents() ? m_core->component(index).text : nullptr;
}

std::shared_ptr<TextStorage> XQAggregateTextStorage::textStorageForRange(Range range) const
{
    int element = SeparatorElement;
    const qsizetype index = indexOfComponentContainingRange(range, &element);
    return index != NotFound && element == TextElement ? m_core->component(index).text : nullptr;
}

std::vector<std::shared_ptr<TextStorage>>
XQAggregateTextStorage::componentTextStoragesIntersectingRanges(const std::vector<Range>& ranges) const
{
    std::vector<std::shared_ptr<TextStorage>> out;
    for (qsizetype i = 0; i < numberOfComponents(); ++i) {
        const Range text = textRanges()[size_t(i)];
        const bool meets = std::any_of(ranges.begin(), ranges.end(), [&](Range r) {
            return r.length == 0 ? contains(text, r) : intersectionRange(text, r).length > 0;
        });
        if (meets)
            out.push_back(m_core->component(i).text);
    }
    return out;
}

std::vector<Range> XQAggregateTextStorage::rangesLimitedToTextRanges(const std::vector<Range>& ranges) const
{
    std::vector<Range> out;
    for (const Range& r : ranges) {
        for (const Range& text : textRanges()) {
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
    const bool layingOut = isRebuildingTitles() || isUpdatingSeparator();
    int element = SeparatorElement;
    const qsizetype index =
        !layingOut && !m_core->isMirroring() ? indexOfComponentContainingRange(range, &element) : NotFound;

    EditingBatch batch(*this);
    m_backing.replaceCharacters(range, text);
    const qsizetype delta = text.size() - range.length;
    edited(EditedCharacters, range, delta);
    if (layingOut)
        return;
    if (m_core->isMirroring()) {
        shiftRanges(m_core->mirroredIndex(), TextElement, delta);
        postStatistics();
        return;
    }
    if (index == NotFound || element == SeparatorElement)
        return;
    if (element == TitleElement) {
        const Range title = titleRanges()[size_t(index)];
        m_core->component(index).title = m_backing.substring(Range{title.location, title.length + delta});
        if (!isInTitleChange()) {
            scheduleTitleNotification(index);
            scheduleUndoInvalidation();
        }
    } else {
        m_core->forward(index, range, [&](TextStorage& component, Range relative) {
            EditingBatch componentBatch(component);
            component.replaceCharacters(relative, text);
        });
    }
    shiftRanges(index, element, delta);
    m_core->applyPendingSyncs();
    postStatistics();
}

void XQAggregateTextStorage::setAttributes(const Attributes& attributes, Range range)
{
    Attributes attrs = attributes;
    const bool separatorAttributes = attrs.contains(XQAggregatedSeparatorAttributeName);
    if (!isUpdatingSeparator())
        attrs.remove(XQAggregatedSeparatorAttributeName);
    const bool routed = !isRebuildingTitles() && !isUpdatingSeparator() && !m_core->isMirroring();
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
    const std::vector<Range>& texts = textRanges();
    for (qsizetype i = storage_detail::ComponentCoreBase::firstRangeEndingAfter(texts, range.location);
         i < numberOfComponents() && texts[size_t(i)].location < range.end(); ++i) {
        const Range part = intersectionRange(texts[size_t(i)], range);
        if (part.length > 0)
            m_core->forward(i, part,
                            [&](TextStorage& component, Range relative) { component.setAttributes(attrs, relative); });
    }
    m_core->applyPendingSyncs();
}

void XQAggregateTextStorage::fixAttributesInRange(Range range)
{
    TextStorage::fixAttributesInRange(range);
    fixAggregatedTitlesAndSeparatorsInRange(range);
}

// ---------------------------------------------------------------- invariants

bool XQAggregateTextStorage::checkInvariants(QString* failure) const
{
    if (!m_core->checkInvariants(failure))
        return false;
    auto fail = [failure](const QString& why) {
        if (failure)
            *failure = why;
        return false;
    };
    if (isInTitleChange() || isRebuildingTitles() || isUpdatingSeparator())
        return fail(QStringLiteral("a title or separator guard is still held"));
    const qsizetype n = numberOfComponents();
    if (m_core->keepsHeads() != m_showsTitles)
        return fail(QStringLiteral("title ranges kept while titles are %1").arg(m_showsTitles ? "shown" : "hidden"));
    for (qsizetype i = 0; i < n; ++i) {
        const Range component = componentRanges()[size_t(i)];
        const Range text = textRanges()[size_t(i)];
        if (m_showsTitles) {
            const Range title = titleRanges()[size_t(i)];
            if (m_backing.substring(title) != m_core->component(i).title)
                return fail(QStringLiteral("title %1 reads \"%2\", the component's is \"%3\"")
                                .arg(i)
                                .arg(m_backing.substring(title), m_core->component(i).title));
            if (text.location != title.end() + 1 || m_backing.characterAt(title.end()) != u'\n')
                return fail(QStringLiteral("no newline between title %1 and its text").arg(i));
            for (qsizetype pos = title.location; pos < title.end();) {
                Range run;
                const Attributes attrs = m_backing.attributes(pos, &run);
                if (!attrs.value(XQAggregatedTitleAttributeName).toBool())
                    return fail(QStringLiteral("title %1 without title attributes at %2").arg(i).arg(pos));
                pos = std::max(run.end(), pos + 1);
            }
        } else if (text.location != component.location) {
            return fail(QStringLiteral("text %1 does not start its component").arg(i));
        }
        const Range separator = separatorRangeAfter(i);
        const QString expected = i + 1 < n
            ? (m_core->component(i + 1).pageBreakBefore ? pageBreakSeparatorString() : sectionSeparatorString())
            : QString();
        if (m_backing.substring(separator) != expected)
            return fail(
                QStringLiteral("separator after component %1 reads \"%2\"").arg(i).arg(m_backing.substring(separator)));
        for (qsizetype pos = separator.location; pos < separator.end();) {
            Range run;
            const Attributes attrs = m_backing.attributes(pos, &run);
            if (!attrs.value(XQAggregatedSeparatorAttributeName).toBool())
                return fail(QStringLiteral("separator after component %1 without its mark at %2").arg(i).arg(pos));
            pos = std::max(run.end(), pos + 1);
        }
    }
    if (n == 0 && m_backing.length() != 0)
        return fail(QStringLiteral("text without components"));
    if (m_wordCount != m_core->wordTotal())
        return fail(QStringLiteral("word count %1, the components have %2").arg(m_wordCount).arg(m_core->wordTotal()));
    if (m_componentsHaveComments) {
        std::vector<XQCommentPtr> comments;
        for (const XQTextComponent& component : m_core->components()) {
            const auto* commented = dynamic_cast<const XQCommentedTextStorageMethods*>(component.text.get());
            comments.insert(comments.end(), commented->comments().begin(), commented->comments().end());
        }
        if (comments != m_comments)
            return fail(QStringLiteral("the comments list is not the components' lists"));
    }
    if (!m_backing.checkInvariants())
        return fail(QStringLiteral("text invariants"));
    return true;
}

} // namespace qly
