// XQAggregateTextStorage: titles, separators, the per-component setters and the delayed notifications.
#include <qlyappkit/text/storages/XQAggregateTextStorage.h>

#include <QObject>
#include <QTimer>
#include <utility>

#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/text/storages/ComponentCore_p.h>

namespace qly {

namespace {

const char* const InvalidTitleIndexMessage =
    "*** XQAggregateTextStorage Error: Invalid index in -setTitle:forComponentAtIndex:";
const char* const InvalidTitleColorIndexMessage =
    "*** XQAggregateTextStorage Error: Invalid index in -setTitleColor:forComponentAtIndex:";
const char* const InvalidPageBreakIndexMessage =
    "*** XQAggregateTextStorage Error: Invalid index in -setPageBreakBefore:forComponentAtIndex:";

constexpr int TitleNotificationDelayMs = 100;

bool meets(Range a, Range b) { return a.location < b.end() && b.location < a.end(); }

} // namespace

// ---------------------------------------------------------------- attributes of titles and separators

Attributes XQAggregateTextStorage::titleAttributesForComponent(qsizetype index) const
{
    Attributes attrs = m_titleAttributes;
    attrs.insert(XQAggregatedTitleAttributeName, true);
    if (index >= 0 && index < numberOfComponents() && m_core->component(index).titleColor)
        attrs.insert(ForegroundColorAttributeName, QVariant::fromValue(*m_core->component(index).titleColor));
    return attrs;
}

Attributes XQAggregateTextStorage::titleNewlineAttributesForComponent(qsizetype index) const
{
    Attributes attrs = titleAttributesForComponent(index);
    attrs.remove(UnderlineStyleAttributeName);
    if (titlesAreCentered())
        attrs.remove(BackgroundColorAttributeName);
    const Font font = attrs.value(FontAttributeName).value<Font>();
    if (font.isValid())
        attrs.insert(FontAttributeName, QVariant::fromValue(Font::fromFamily(font.familyName(), font.pointSize(), 0)));
    return attrs;
}

bool XQAggregateTextStorage::titlesAreCentered() const
{
    const QVariant style = m_titleAttributes.value(ParagraphStyleAttributeName);
    return style.canConvert<ParagraphStyle>() && style.value<ParagraphStyle>().alignment() == CenterTextAlignment;
}

void XQAggregateTextStorage::setAttributesWhereDifferent(const Attributes& attributes, Range range)
{
    range = intersectionRange(range, Range{0, m_backing.length()});
    for (qsizetype pos = range.location; pos < range.end();) {
        Range run;
        const Attributes existing = m_backing.attributes(pos, &run);
        const qsizetype end = std::clamp(run.end(), pos + 1, range.end());
        if (!sameAttributes(existing, attributes)) {
            m_backing.setAttributes(attributes, Range::fromBounds(pos, end));
            edited(EditedAttributes, Range::fromBounds(pos, end), 0);
        }
        pos = end;
    }
}

void XQAggregateTextStorage::fixAggregatedTitlesAndSeparatorsInRange(Range range)
{
    const qsizetype n = numberOfComponents();
    if (range.length <= 0 || n == 0)
        return;
    for (qsizetype i = storage_detail::ComponentCoreBase::firstRangeEndingAfter(componentRanges(), range.location);
         i < n && componentRanges()[size_t(i)].location < range.end(); ++i) {
        if (m_showsTitles) {
            const Range title = titleRanges()[size_t(i)];
            if (meets(title, range))
                setAttributesWhereDifferent(titleAttributesForComponent(i), title);
            const Range newline{title.end(), 1};
            if (meets(newline, range))
                setAttributesWhereDifferent(titleNewlineAttributesForComponent(i), newline);
        }
        const Range separator = separatorRangeAfter(i);
        if (separator.length > 0 && meets(separator, range)) {
            for (qsizetype pos = separator.location; pos < separator.end();) {
                Range run;
                Attributes attrs = m_backing.attributes(pos, &run);
                const qsizetype end = std::clamp(run.end(), pos + 1, separator.end());
                if (!attrs.contains(XQAggregatedSeparatorAttributeName)) {
                    attrs.insert(XQAggregatedSeparatorAttributeName, true);
                    attrs.insert(ParagraphStyleAttributeName, QVariant::fromValue(separatorParagraphStyle()));
                    m_backing.setAttributes(attrs, Range::fromBounds(pos, end));
                    edited(EditedAttributes, Range::fromBounds(pos, end), 0);
                }
                pos = end;
            }
        }
    }
}

// ---------------------------------------------------------------- separators

QString XQAggregateTextStorage::pageBreakSeparatorString() { return QStringLiteral("\n\f"); }

QString XQAggregateTextStorage::sectionSeparatorString() const
{
    return m_usesSingleLineSeparators ? QStringLiteral("\n") : QStringLiteral("\n\n");
}

QString XQAggregateTextStorage::separatorStringForComponentAtIndex(qsizetype index) const
{
    if (index < 0 || index + 1 >= numberOfComponents())
        return QString();
    return m_core->component(index).pageBreakBefore ? pageBreakSeparatorString() : sectionSeparatorString();
}

qsizetype XQAggregateTextStorage::separatorLengthBefore(qsizetype index) const
{
    return m_core->component(index).pageBreakBefore ? pageBreakSeparatorString().size()
                                                    : sectionSeparatorString().size();
}

Range XQAggregateTextStorage::separatorRangeAfter(qsizetype index) const
{
    return Range::fromBounds(textRanges()[size_t(index)].end(), componentRanges()[size_t(index)].end());
}

ParagraphStyle XQAggregateTextStorage::separatorParagraphStyle()
{
    ParagraphStyle style = ParagraphStyle::defaultParagraphStyle();
    style.setLineHeightMultiple(1.2);
    return style;
}

void XQAggregateTextStorage::insertSeparatorWithPageBreak(bool pageBreak, Range range, MutableAttributedString& text)
{
    const storage_detail::Holding updating(m_updatingSeparator);
    {
        EditingBatch batch(text);
        const QString separator = pageBreak ? pageBreakSeparatorString() : sectionSeparatorString();
        text.replaceCharacters(range, separator);
        const qsizetype after = range.location + separator.size();
        Attributes around;
        if (range.location > 0)
            around = text.attributes(range.location - 1);
        else if (after < text.length())
            around = text.attributes(after);
        Attributes attrs = m_separatorAttributes;
        if (around.contains(FontAttributeName))
            attrs.insert(FontAttributeName, around.value(FontAttributeName));
        attrs.insert(XQAggregatedSeparatorAttributeName, true);
        attrs.insert(ParagraphStyleAttributeName, QVariant::fromValue(separatorParagraphStyle()));
        text.setAttributes(attrs, Range{range.location, separator.size()});
    }
}

void XQAggregateTextStorage::rewriteSeparators()
{
    {
        EditingBatch batch(*this);
        // From the last to the first, so the separators still to do keep their places.
        for (qsizetype i = numberOfComponents() - 2; i >= 0; --i)
            insertSeparatorWithPageBreak(m_core->component(i + 1).pageBreakBefore, separatorRangeAfter(i), *this);
        updateRanges();
        postStatistics();
    }
    postUndoInvalidation();
}

void XQAggregateTextStorage::setUsesSingleLineSeparators(bool singleLine)
{
    if (singleLine == m_usesSingleLineSeparators)
        return;
    m_usesSingleLineSeparators = singleLine;
    rewriteSeparators();
}

void XQAggregateTextStorage::setSeparatorAttributes(const Attributes& attributes)
{
    m_separatorAttributes = attributes;
    rewriteSeparators();
}

void XQAggregateTextStorage::setPageBreakBefore(bool pageBreak, qsizetype index)
{
    if (index < 0 || index >= numberOfComponents()) {
        qWarning("%s", InvalidPageBreakIndexMessage);
        return;
    }
    if (m_core->component(index).pageBreakBefore == pageBreak)
        return;
    {
        EditingBatch batch(*this);
        const Range separator = index > 0 ? separatorRangeAfter(index - 1) : Range::notFound();
        m_core->component(index).pageBreakBefore = pageBreak;
        if (index > 0)
            insertSeparatorWithPageBreak(pageBreak, separator, *this);
        updateRanges();
        postStatistics();
    }
    postUndoInvalidation();
}

// ---------------------------------------------------------------- titles

void XQAggregateTextStorage::setShowsTitles(bool showsTitles)
{
    if (showsTitles == m_showsTitles)
        return;
    {
        EditingBatch batch(*this);
        {
            const storage_detail::Holding rebuilding(m_rebuildingTitles);
            for (qsizetype i = numberOfComponents() - 1; i >= 0; --i) {
                if (showsTitles) {
                    AttributedString title(m_core->component(i).title, titleAttributesForComponent(i));
                    title.append(QStringLiteral("\n"), titleNewlineAttributesForComponent(i));
                    replaceCharacters(Range{componentRanges()[size_t(i)].location, 0}, title);
                } else {
                    const Range title = titleRanges()[size_t(i)];
                    replaceCharacters(Range{title.location, title.length + 1}, QString());
                }
            }
        }
        m_showsTitles = showsTitles;
        updateRanges();
        postStatistics();
        if (showsTitles) {
            for (qsizetype i = 0; i < numberOfComponents(); ++i)
                setAttributes(titleAttributesForComponent(i), titleRanges()[size_t(i)]);
        }
    }
    postUndoInvalidation();
}

void XQAggregateTextStorage::setTitleAttributes(const Attributes& attributes)
{
    m_titleAttributes = attributes;
    if (!m_showsTitles)
        return;
    EditingBatch batch(*this);
    for (qsizetype i = 0; i < numberOfComponents(); ++i) {
        const Range title = titleRanges()[size_t(i)];
        setAttributesWhereDifferent(titleAttributesForComponent(i), title);
        setAttributesWhereDifferent(titleNewlineAttributesForComponent(i), Range{title.end(), 1});
    }
}

void XQAggregateTextStorage::setTitle(const QString& title, qsizetype index)
{
    if (index < 0 || index >= numberOfComponents()) {
        qWarning("%s", InvalidTitleIndexMessage);
        return;
    }
    if (m_core->component(index).title == title)
        return;
    if (m_showsTitles) {
        {
            const storage_detail::Holding titleChange(m_inTitleChange);
            replaceCharacters(titleRanges()[size_t(index)],
                              AttributedString(title, titleAttributesForComponent(index)));
        }
        postUndoInvalidation();
    } else {
        m_core->component(index).title = title;
        updateRanges();
        postStatistics();
    }
}

void XQAggregateTextStorage::setTitleColor(const std::optional<Color>& color, qsizetype index)
{
    if (index < 0 || index >= numberOfComponents()) {
        qWarning("%s", InvalidTitleColorIndexMessage);
        return;
    }
    m_core->component(index).titleColor = color;
    if (!m_showsTitles)
        return;
    EditingBatch batch(*this);
    const Range title = titleRanges()[size_t(index)];
    setAttributesWhereDifferent(titleAttributesForComponent(index), title);
    setAttributesWhereDifferent(titleNewlineAttributesForComponent(index), Range{title.end(), 1});
}

// ---------------------------------------------------------------- delayed notifications

void XQAggregateTextStorage::scheduleTitleNotification(qsizetype index)
{
    std::unique_ptr<QTimer>& timer = m_titleTimers[index];
    if (!timer) {
        timer = std::make_unique<QTimer>();
        timer->setSingleShot(true);
        timer->setInterval(TitleNotificationDelayMs);
        QObject::connect(timer.get(), &QTimer::timeout, m_timerContext.get(),
                         [this, index] { titleNotificationFired(index); });
    }
    // Restarting drops the pending notification: one per burst of typing.
    timer->start();
}

void XQAggregateTextStorage::titleNotificationFired(qsizetype index)
{
    if (index >= numberOfComponents())
        return;
    NotificationCenter::defaultCenter().post(XQAggregateTextStorageComponentTitleDidChangeNotification,
                                             static_cast<const TextStorage*>(this),
                                             QVariantMap{{XQAggregateNewTitleKey, m_core->component(index).title},
                                                         {XQAggregateComponentIndexKey, qlonglong(index)}});
    scheduleUndoInvalidation();
}

void XQAggregateTextStorage::scheduleUndoInvalidation()
{
    QTimer::singleShot(0, m_timerContext.get(), [this] { postUndoInvalidation(); });
}

void XQAggregateTextStorage::postUndoInvalidation()
{
    NotificationCenter::defaultCenter().post(XQAggregateTextStorageDidInvalidateUndoStackNotification,
                                             static_cast<const TextStorage*>(this));
}

} // namespace qly
