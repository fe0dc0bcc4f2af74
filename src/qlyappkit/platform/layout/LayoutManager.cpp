#include <qlyappkit/platform/layout/LayoutManager.h>

#include <QGlyphRun>
#include <QPainter>
#include <algorithm>

#include <qlyappkit/platform/layout/LaidParagraph_p.h>
#include <qlyappkit/platform/layout/TextContainer.h>
#include <qlyappkit/platform/layout/Typesetter.h>

namespace qly {

namespace {
// Text is read in blocks of this many units when it is split into paragraphs.
constexpr qsizetype ScanBlock = 4096;
constexpr int BreakingActions = Typesetter::ParagraphBreakAction | Typesetter::ContainerBreakAction;

bool mayBreakParagraph(char16_t c) { return c < 0x20 || (c >= 0x7F && c <= 0x9F) || c == 0x2028 || c == 0x2029; }
} // namespace

void LayoutManagerDelegate::layoutManagerDidCompleteLayoutForTextContainer(LayoutManager&, TextContainer*, bool) { }
void LayoutManagerDelegate::layoutManagerDidSetLineFragmentRect(LayoutManager&, const QRectF&, Range) { }

LayoutManager::LayoutManager() : m_typesetter(std::make_unique<Typesetter>()) { m_typesetter->m_layoutManager = this; }

LayoutManager::~LayoutManager()
{
    if (m_storage)
        m_storage->removeObserver(this);
    for (auto& container : m_containers)
        container->m_layoutManager = nullptr;
}

void LayoutManager::setTextStorage(TextStorage* storage)
{
    if (m_storage == storage)
        return;
    if (m_storage)
        m_storage->removeObserver(this);
    m_storage = storage;
    if (m_storage)
        m_storage->addObserver(this);
    rebuildAllParagraphs();
}

// ---- containers

TextContainer* LayoutManager::addTextContainer(std::unique_ptr<TextContainer> container)
{
    return insertTextContainer(std::move(container), qsizetype(m_containers.size()));
}

TextContainer* LayoutManager::insertTextContainer(std::unique_ptr<TextContainer> container, qsizetype index)
{
    if (!container)
        return nullptr;
    index = std::clamp<qsizetype>(index, 0, qsizetype(m_containers.size()));
    TextContainer* raw = container.get();
    raw->m_layoutManager = this;
    m_containers.insert(m_containers.begin() + index, std::move(container));
    m_containerList.insert(m_containerList.begin() + index, raw);
    m_outOfContainers = false;
    // An appended container changes nothing laid out so far: no line can be in it yet. Any other
    // moves the containers after it.
    if (index + 1 < qsizetype(m_containers.size()))
        invalidateFromContainer(index);
    return raw;
}

void LayoutManager::removeTextContainerAtIndex(qsizetype index)
{
    if (index < 0 || index >= qsizetype(m_containers.size()))
        return;
    invalidateFromContainer(index);
    m_containers[size_t(index)]->m_layoutManager = nullptr;
    m_containers.erase(m_containers.begin() + index);
    m_containerList.erase(m_containerList.begin() + index);
}

qsizetype LayoutManager::indexOfTextContainer(const TextContainer* container) const
{
    const auto it = std::find(m_containerList.begin(), m_containerList.end(), container);
    return it == m_containerList.end() ? -1 : qsizetype(it - m_containerList.begin());
}

void LayoutManager::textContainerChangedGeometry(TextContainer* container)
{
    const qsizetype index = indexOfTextContainer(container);
    if (index >= 0)
        invalidateFromContainer(index);
}

void LayoutManager::setTypesetter(std::unique_ptr<Typesetter> typesetter)
{
    m_typesetter = typesetter ? std::move(typesetter) : std::make_unique<Typesetter>();
    m_typesetter->m_layoutManager = this;
    // Control characters may now split paragraphs differently.
    rebuildAllParagraphs();
}

void LayoutManager::setDefaultAttachmentScaling(ImageScaling scaling)
{
    if (scaling == m_attachmentScaling)
        return;
    m_attachmentScaling = scaling;
    for (auto& unit : m_units) {
        if (!unit->attachments.empty())
            unit->shaped = false;
    }
    invalidateFromContainer(0);
}

// ---- paragraphs

void LayoutManager::rebuildAllParagraphs()
{
    m_units.clear();
    m_validEnd = 0;
    m_endReported = false;
    m_extraLine = {};
    m_outOfContainers = false;
    if (m_storage)
        resegment(0, 0, 0, m_storage->length());
}

void LayoutManager::resegment(qsizetype firstUnit, qsizetype endUnit, qsizetype from, qsizetype to)
{
    m_units.erase(m_units.begin() + firstUnit, m_units.begin() + endUnit);
    std::vector<std::unique_ptr<LaidParagraph>> fresh;
    bool continues = firstUnit > 0 && m_units[size_t(firstUnit - 1)]->separator.length > 0
        && !(m_units[size_t(firstUnit - 1)]->endAction & Typesetter::ParagraphBreakAction);
    qsizetype start = from;
    auto addUnit = [&](qsizetype end, Range separator, int action) {
        auto unit = std::make_unique<LaidParagraph>();
        unit->range = Range{start, end - start};
        unit->separator = separator;
        unit->endAction = action;
        unit->continuesParagraph = continues;
        continues = !(action & Typesetter::ParagraphBreakAction);
        fresh.push_back(std::move(unit));
        start = end;
    };
    for (qsizetype block = from; block < to; block += ScanBlock) {
        const qsizetype blockEnd = std::min(to, block + ScanBlock);
        const QString chunk = m_storage->substring(Range{block, blockEnd - block});
        for (qsizetype i = 0; i < chunk.size(); ++i) {
            const qsizetype at = block + i;
            if (at < start || !mayBreakParagraph(chunk.at(i).unicode()))
                continue;
            const int action = m_typesetter->actionForControlCharacterAtIndex(at);
            if (!(action & BreakingActions))
                continue;
            qsizetype length = 1;
            if (chunk.at(i) == u'\r' && (action & Typesetter::ParagraphBreakAction) && at + 1 < m_storage->length()
                && m_storage->characterAt(at + 1) == u'\n')
                length = 2;
            addUnit(at + length, Range{at, length}, action);
        }
    }
    if (start < to)
        addUnit(to, Range{to, 0}, 0);
    const qsizetype count = qsizetype(fresh.size());
    m_units.insert(m_units.begin() + firstUnit, std::make_move_iterator(fresh.begin()),
                   std::make_move_iterator(fresh.end()));
    // The paragraph after the new ones may now continue, or stop continuing, the last of them.
    const qsizetype next = firstUnit + count;
    if (next < qsizetype(m_units.size()) && m_units[size_t(next)]->continuesParagraph != continues) {
        m_units[size_t(next)]->continuesParagraph = continues;
        m_units[size_t(next)]->shaped = false;
        m_units[size_t(next)]->trusted = false;
    }
}

qsizetype LayoutManager::unitAtCharacter(qsizetype index) const
{
    const auto it = std::upper_bound(m_units.begin(), m_units.end(), index,
                                     [](qsizetype i, const auto& unit) { return i < unit->range.location; });
    return qsizetype(it - m_units.begin()) - 1;
}

void LayoutManager::textStorageEdited(TextStorage& storage, int, Range newCharRange, qsizetype delta)
{
    if (&storage != m_storage)
        return;
    const qsizetype oldLength = storage.length() - delta;
    if (m_units.empty() || oldLength <= 0 || newCharRange.location == NotFound) {
        rebuildAllParagraphs();
        return;
    }
    const qsizetype location = std::clamp<qsizetype>(newCharRange.location, 0, oldLength);
    const qsizetype oldEnd = std::clamp<qsizetype>(location + newCharRange.length - delta, location, oldLength);
    // From the paragraph before the edit (a CR LF pair or a merge may join them) to the one holding
    // the character after it (a removed terminator joins that one too).
    const qsizetype first = std::max<qsizetype>(unitAtCharacter(std::max<qsizetype>(location - 1, 0)), 0);
    const qsizetype last = oldEnd >= oldLength ? qsizetype(m_units.size()) - 1 : unitAtCharacter(oldEnd);
    const qsizetype from = m_units[size_t(first)]->range.location;
    const qsizetype to = m_units[size_t(last)]->range.end() + delta;
    for (size_t i = size_t(last) + 1; i < m_units.size(); ++i) {
        m_units[i]->range.location += delta;
        m_units[i]->separator.location += delta;
    }
    resegment(first, last + 1, from, to);
    // The paragraph before may be placed by looking at the one that changed (kept with it).
    if (first > 0)
        m_units[size_t(first - 1)]->trusted = false;
    invalidateFromUnit(std::max<qsizetype>(first - 1, 0));
}

void LayoutManager::invalidateLayoutForCharacterRange(Range characterRange)
{
    if (m_units.empty())
        return;
    const qsizetype first = std::max<qsizetype>(unitAtCharacter(characterRange.location), 0);
    const qsizetype last = std::max<qsizetype>(unitAtCharacter(characterRange.end()), first);
    for (qsizetype i = first; i <= last && i < qsizetype(m_units.size()); ++i) {
        m_units[size_t(i)]->shaped = false;
        m_units[size_t(i)]->trusted = false;
    }
    invalidateFromUnit(std::max<qsizetype>(first - 1, 0));
}

void LayoutManager::invalidateFromUnit(qsizetype unit)
{
    m_validEnd = std::min(m_validEnd, unit);
    m_endReported = false;
    m_extraLine = {};
    m_outOfContainers = false;
}

void LayoutManager::invalidateFromContainer(qsizetype containerIndex)
{
    qsizetype firstUntrusted = qsizetype(m_units.size());
    for (qsizetype i = 0; i < qsizetype(m_units.size()); ++i) {
        LaidParagraph& unit = *m_units[size_t(i)];
        if (unit.trusted && unit.endContainer >= containerIndex) {
            unit.trusted = false;
            firstUntrusted = std::min(firstUntrusted, i);
        }
    }
    if (m_validEnd > firstUntrusted || firstUntrusted < qsizetype(m_units.size()))
        invalidateFromUnit(firstUntrusted);
    m_endReported = false;
    m_extraLine = {};
    m_outOfContainers = false;
}

// ---- layout

LayoutManager::Position LayoutManager::startOfUnit(qsizetype unit) const
{
    if (unit <= 0)
        return {0, 0};
    const LaidParagraph& previous = *m_units[size_t(unit - 1)];
    if (previous.endAction & Typesetter::ContainerBreakAction)
        return {previous.endContainer + 1, 0};
    return {previous.endContainer, previous.endY};
}

void LayoutManager::reportCompletion(qsizetype containerIndex, bool atEnd)
{
    if (!m_delegate)
        return;
    TextContainer* container = containerIndex >= 0 && containerIndex < qsizetype(m_containerList.size())
        ? m_containerList[size_t(containerIndex)]
        : nullptr;
    m_delegate->layoutManagerDidCompleteLayoutForTextContainer(*this, container, atEnd);
}

void LayoutManager::layoutUntil(const std::function<bool()>& stop)
{
    // A delegate asking for layout from inside a callback sees what is laid out so far.
    if (!m_storage || m_inLayout)
        return;
    m_inLayout = true;
    while (!stop()) {
        if (m_validEnd >= qsizetype(m_units.size())) {
            if (!m_endReported) {
                m_endReported = true;
                placeExtraLineFragment();
                if (m_containerList.empty())
                    reportCompletion(-1, true);
                else if (m_extraLine.container >= 0)
                    reportCompletion(m_extraLine.container, true);
                else
                    reportCompletion(m_units.empty() ? 0 : m_units.back()->endContainer, true);
            }
            break;
        }
        if (!layoutNextParagraph())
            break;
    }
    m_inLayout = false;
}

bool LayoutManager::layoutNextParagraph()
{
    LaidParagraph& unit = *m_units[size_t(m_validEnd)];
    const Position position = startOfUnit(m_validEnd);
    if (position.container >= qsizetype(m_containerList.size())) {
        if (m_outOfContainers)
            return false;
        const size_t before = m_containerList.size();
        reportCompletion(qsizetype(m_containerList.size()) - 1, false);
        if (m_containerList.size() > before)
            return true;
        m_outOfContainers = true;
        return false;
    }
    // Where it starts as it started before, a paragraph and all that follow it are placed as before.
    if (unit.trusted && unit.startContainer == position.container && unit.startY == position.y) {
        ++m_validEnd;
        return true;
    }
    TextContainer* container = m_containerList[size_t(position.container)];
    if (!unit.shaped || unit.shapedWidth != container->size().width()
        || unit.shapedPadding != container->lineFragmentPadding()) {
        m_cursor = position;
        shapeParagraph(unit, container->size().width(), container->lineFragmentPadding());
    }
    ++m_statistics.paragraphsPlaced;
    unit.trusted = false;
    unit.placed.clear();
    m_current = &unit;
    m_cursor = position;
    Typesetter& typesetter = *m_typesetter;
    typesetter.m_currentContainer = container;
    typesetter.m_paragraphRange = unit.range;
    typesetter.m_separatorRange = unit.separator;
    typesetter.m_style = unit.style;
    QPointF origin(0, position.y);
    typesetter.layoutParagraphAtPoint(origin);
    m_current = nullptr;
    if (m_outOfContainers)
        return false;
    unit.trusted = true;
    unit.startContainer = position.container;
    unit.startY = position.y;
    ++m_validEnd;
    return true;
}

qsizetype LayoutManager::typesetCurrentParagraph(QPointF& origin)
{
    LaidParagraph& unit = *m_current;
    int containerIndex = m_cursor.container;
    double y = origin.y();
    const bool endsParagraph = unit.separator.length == 0 || (unit.endAction & Typesetter::ParagraphBreakAction);
    for (size_t i = 0; i < unit.lines.size(); ++i) {
        const bool first = i == 0;
        double before = 0, after = 0;
        TextContainer* container = nullptr;
        for (;;) {
            container = m_containerList[size_t(containerIndex)];
            const double width = container->size().width();
            const ShapedLine& line = unit.lines[i];
            before = first && !unit.continuesParagraph ? m_typesetter->paragraphSpacingBeforeGlyphAtIndex(
                         unit.range.location + line.start, QRectF(0, y, width, line.height))
                                                       : 0;
            // A line always fits at the top of a container, or nothing would ever be placed.
            if (y <= 0 || y + before + line.height <= container->size().height())
                break;
            // The delegate may add a container here for the rest of the text.
            reportCompletion(containerIndex, false);
            if (containerIndex + 1 >= qsizetype(m_containerList.size())) {
                m_outOfContainers = true;
                unit.endContainer = containerIndex;
                unit.endY = y;
                return unit.range.location + unit.lines[i].start;
            }
            ++containerIndex;
            y = 0;
            TextContainer* next = m_containerList[size_t(containerIndex)];
            // A paragraph that moves whole to a container of another width is broken again for it.
            if (first
                && (next->size().width() != unit.shapedWidth || next->lineFragmentPadding() != unit.shapedPadding)) {
                m_cursor = {containerIndex, 0};
                shapeParagraph(unit, next->size().width(), next->lineFragmentPadding());
            }
        }
        const ShapedLine& line = unit.lines[i];
        const double width = container->size().width();
        if (i + 1 == unit.lines.size() && endsParagraph)
            after = m_typesetter->paragraphSpacingAfterGlyphAtIndex(unit.range.location + line.start
                                                                        + std::max<qsizetype>(line.length - 1, 0),
                                                                    QRectF(0, y + before, width, line.height));
        const QRectF rect(0, y, width, before + line.height + unit.style.lineSpacing() + after);
        const QRectF used(container->lineFragmentPadding() + line.x, y + before, line.width, line.height);
        m_cursor = {containerIndex, y};
        m_pendingBaseline = y + before + line.baseline;
        setLineFragmentRect(rect, Range{unit.range.location + line.start, line.length}, used);
        y += rect.height();
    }
    unit.endContainer = containerIndex;
    unit.endY = y;
    origin = QPointF(0, y);
    return unit.range.end();
}

void LayoutManager::setLineFragmentRect(const QRectF& fragmentRect, Range glyphRange, const QRectF& usedRect)
{
    if (!m_current)
        return;
    LineFragment line;
    line.rect = fragmentRect;
    line.usedRect = usedRect;
    line.glyphRange = Range{glyphRange.location - m_current->range.location, glyphRange.length};
    line.containerIndex = m_cursor.container;
    line.baseline = m_pendingBaseline;
    m_current->placed.push_back(line);
}

void LayoutManager::ensureLayoutForTextContainer(TextContainer* container)
{
    const qsizetype index = indexOfTextContainer(container);
    if (index < 0)
        return;
    layoutUntil([&] { return startOfUnit(m_validEnd).container > index; });
}

void LayoutManager::ensureLayoutForGlyphRange(Range glyphRange)
{
    const qsizetype end = std::max(glyphRange.end(), glyphRange.location + 1);
    layoutUntil([&] { return m_validEnd > 0 && m_units[size_t(m_validEnd - 1)]->range.end() >= end; });
}

void LayoutManager::ensureLayoutForAllText()
{
    layoutUntil([] { return false; });
}

bool LayoutManager::layoutReachedEnd()
{
    ensureLayoutForAllText();
    return m_validEnd >= qsizetype(m_units.size());
}

qsizetype LayoutManager::firstUnlaidCharacterIndex() const
{
    if (m_validEnd < qsizetype(m_units.size()))
        return m_units[size_t(m_validEnd)]->range.location;
    return m_storage ? m_storage->length() : 0;
}

// ---- queries

qsizetype LayoutManager::numberOfGlyphs() const { return m_storage ? m_storage->length() : 0; }

Range LayoutManager::glyphRangeForCharacterRange(Range characterRange, Range* actualCharacterRange) const
{
    if (actualCharacterRange)
        *actualCharacterRange = characterRange;
    return characterRange;
}

Range LayoutManager::characterRangeForGlyphRange(Range glyphRange, Range* actualGlyphRange) const
{
    if (actualGlyphRange)
        *actualGlyphRange = glyphRange;
    return glyphRange;
}

qsizetype LayoutManager::firstUnitInContainer(qsizetype containerIndex) const
{
    const auto end = m_units.begin() + m_validEnd;
    const auto it = std::partition_point(m_units.begin(), end,
                                         [&](const auto& unit) { return unit->endContainer < containerIndex; });
    return qsizetype(it - m_units.begin());
}

std::vector<LineFragment> LayoutManager::lineFragmentsForTextContainer(TextContainer* container)
{
    std::vector<LineFragment> lines;
    const qsizetype index = indexOfTextContainer(container);
    if (index < 0)
        return lines;
    ensureLayoutForTextContainer(container);
    for (qsizetype u = firstUnitInContainer(index); u < m_validEnd; ++u) {
        const LaidParagraph& unit = *m_units[size_t(u)];
        if (unit.startContainer > index)
            break;
        for (LineFragment line : unit.placed) {
            if (line.containerIndex != index)
                continue;
            line.glyphRange.location += unit.range.location;
            lines.push_back(line);
        }
    }
    return lines;
}

Range LayoutManager::glyphRangeForTextContainer(TextContainer* container)
{
    const std::vector<LineFragment> lines = lineFragmentsForTextContainer(container);
    if (lines.empty()) {
        const qsizetype index = indexOfTextContainer(container);
        const qsizetype unit = index < 0 ? m_validEnd : firstUnitInContainer(index);
        return Range{unit < qsizetype(m_units.size()) ? m_units[size_t(unit)]->range.location : numberOfGlyphs(), 0};
    }
    return Range{lines.front().glyphRange.location, lines.back().glyphRange.end() - lines.front().glyphRange.location};
}

const LineFragment* LayoutManager::lineAtGlyph(qsizetype glyphIndex)
{
    if (glyphIndex < 0 || glyphIndex >= numberOfGlyphs())
        return nullptr;
    ensureLayoutForGlyphRange(Range{glyphIndex, 1});
    const qsizetype u = unitAtCharacter(glyphIndex);
    if (u < 0 || u >= m_validEnd)
        return nullptr;
    const LaidParagraph& unit = *m_units[size_t(u)];
    const qsizetype offset = glyphIndex - unit.range.location;
    for (const LineFragment& line : unit.placed) {
        if (offset < line.glyphRange.end())
            return &line;
    }
    return nullptr;
}

TextContainer* LayoutManager::textContainerForGlyphAtIndex(qsizetype glyphIndex, Range* effectiveGlyphRange)
{
    const LineFragment* line = lineAtGlyph(glyphIndex);
    TextContainer* container = line ? m_containerList[size_t(line->containerIndex)] : nullptr;
    if (effectiveGlyphRange)
        *effectiveGlyphRange = container ? glyphRangeForTextContainer(container) : Range{NotFound, 0};
    return container;
}

QRectF LayoutManager::lineFragmentRectForGlyphAtIndex(qsizetype glyphIndex, Range* effectiveGlyphRange)
{
    const LineFragment* line = lineAtGlyph(glyphIndex);
    const qsizetype base = line ? m_units[size_t(unitAtCharacter(glyphIndex))]->range.location : 0;
    if (effectiveGlyphRange)
        *effectiveGlyphRange =
            line ? Range{line->glyphRange.location + base, line->glyphRange.length} : Range{NotFound, 0};
    return line ? line->rect : QRectF();
}

QRectF LayoutManager::lineFragmentUsedRectForGlyphAtIndex(qsizetype glyphIndex, Range* effectiveGlyphRange)
{
    const LineFragment* line = lineAtGlyph(glyphIndex);
    const qsizetype base = line ? m_units[size_t(unitAtCharacter(glyphIndex))]->range.location : 0;
    if (effectiveGlyphRange)
        *effectiveGlyphRange =
            line ? Range{line->glyphRange.location + base, line->glyphRange.length} : Range{NotFound, 0};
    return line ? line->usedRect : QRectF();
}

void LayoutManager::enumerateLineFragmentsForGlyphRange(Range glyphRange,
                                                        const std::function<bool(const LineFragment&)>& fn)
{
    ensureLayoutForGlyphRange(glyphRange);
    for (qsizetype u = std::max<qsizetype>(unitAtCharacter(glyphRange.location), 0); u < m_validEnd; ++u) {
        const LaidParagraph& unit = *m_units[size_t(u)];
        if (unit.range.location >= std::max(glyphRange.end(), glyphRange.location + 1))
            return;
        for (LineFragment line : unit.placed) {
            line.glyphRange.location += unit.range.location;
            if (line.glyphRange.end() <= glyphRange.location)
                continue;
            if (line.glyphRange.location >= std::max(glyphRange.end(), glyphRange.location + 1))
                return;
            if (!fn(line))
                return;
        }
    }
}

QRectF LayoutManager::usedRectForTextContainer(TextContainer* container)
{
    QRectF used;
    for (const LineFragment& line : lineFragmentsForTextContainer(container))
        used = used.isNull() ? line.usedRect : used.united(line.usedRect);
    return used;
}

// A line with pictures is drawn a run of characters at a time, leaving out the stand-in glyph each
// picture is laid out as: drawn, even transparent, it would be text in a PDF.
void LayoutManager::drawLineAroundAttachments(QPainter* painter, const LaidParagraph& unit, const QTextLine& line,
                                              const QPointF& position)
{
    const qsizetype start = line.textStart();
    const qsizetype end = std::min<qsizetype>(start + line.textLength(), unit.layout->text().size());
    const QList<QTextLayout::FormatRange> formats = unit.layout->formats();
    std::vector<qsizetype> cuts{start, end};
    for (const QTextLayout::FormatRange& range : formats) {
        cuts.push_back(std::clamp<qsizetype>(range.start, start, end));
        cuts.push_back(std::clamp<qsizetype>(range.start + range.length, start, end));
    }
    for (const AttachmentBox& box : unit.attachments) {
        cuts.push_back(std::clamp<qsizetype>(box.offset, start, end));
        cuts.push_back(std::clamp<qsizetype>(box.offset + 1, start, end));
    }
    std::sort(cuts.begin(), cuts.end());
    cuts.erase(std::unique(cuts.begin(), cuts.end()), cuts.end());
    for (size_t c = 0; c + 1 < cuts.size(); ++c) {
        const qsizetype from = cuts[c], to = cuts[c + 1];
        const bool attachment = std::any_of(unit.attachments.begin(), unit.attachments.end(),
                                            [&](const AttachmentBox& box) { return box.offset == from; });
        if (attachment)
            continue;
        QTextCharFormat format;
        for (const QTextLayout::FormatRange& range : formats) {
            if (range.start <= from && from < range.start + range.length)
                format = range.format;
        }
        if (format.hasProperty(QTextFormat::BackgroundBrush)) {
            const double left = line.cursorToX(int(from)), right = line.cursorToX(int(to));
            painter->fillRect(QRectF(position.x() + std::min(left, right), position.y() + line.y(),
                                     std::abs(right - left), line.height()),
                              format.background());
        }
        painter->setPen(format.hasProperty(QTextFormat::ForegroundBrush) ? format.foreground().color()
                                                                         : QColor(Qt::black));
        for (const QGlyphRun& run : line.glyphRuns(int(from), int(to - from)))
            painter->drawGlyphRun(position, run);
    }
    painter->setPen(QColor(Qt::black));
}

void LayoutManager::drawTextContainer(TextContainer* container, QPainter* painter, const QPointF& origin)
{
    const qsizetype index = indexOfTextContainer(container);
    if (index < 0 || !painter)
        return;
    ensureLayoutForTextContainer(container);
    const double padding = container->lineFragmentPadding();
    // Text without a colour of its own is black, whatever pen the painter was left with.
    painter->save();
    painter->setPen(QColor(Qt::black));
    for (qsizetype u = firstUnitInContainer(index); u < m_validEnd; ++u) {
        const LaidParagraph& unit = *m_units[size_t(u)];
        if (unit.startContainer > index)
            break;
        if (!unit.layout)
            continue;
        for (size_t i = 0; i < unit.placed.size() && i < unit.lines.size(); ++i) {
            const LineFragment& placed = unit.placed[i];
            if (placed.containerIndex != index)
                continue;
            const QTextLine line = unit.layout->lineAt(unit.lines[i].textLine);
            const QPointF position = origin + QPointF(padding, placed.baseline - line.ascent());
            const bool holdsAttachment =
                std::any_of(unit.attachments.begin(), unit.attachments.end(), [&](const AttachmentBox& box) {
                    return box.offset >= unit.lines[i].start && box.offset < unit.lines[i].start + unit.lines[i].length;
                });
            if (holdsAttachment)
                drawLineAroundAttachments(painter, unit, line, position);
            else
                line.draw(painter, position);
            for (const AttachmentBox& box : unit.attachments) {
                if (box.offset < unit.lines[i].start || box.offset >= unit.lines[i].start + unit.lines[i].length)
                    continue;
                const QImage image = box.attachment.image();
                if (image.isNull())
                    continue;
                const double x = line.cursorToX(int(box.offset));
                painter->drawImage(QRectF(origin + QPointF(padding + x, placed.baseline - box.size.height()), box.size),
                                   image);
            }
        }
    }
    painter->restore();
}

} // namespace qly
