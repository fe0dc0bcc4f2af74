// Where the caret and the selection go: the extra line at the end of the text, insertion points,
// hit testing and highlight rectangles, all read from the placed lines of the layout.
#include <algorithm>

#include <qlyappkit/platform/layout/LaidParagraph_p.h>
#include <qlyappkit/platform/layout/LayoutManager.h>
#include <qlyappkit/platform/layout/TextContainer.h>
#include <qlyappkit/platform/layout/Typesetter.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>

namespace qly {

namespace {
constexpr double CaretWidth = 1.0;

// Characters of a paragraph that its QTextLayout holds (the terminator is not among them).
qsizetype layoutTextLength(const LaidParagraph& unit) { return unit.range.length - unit.separator.length; }
} // namespace

void LayoutManager::placeExtraLineFragment()
{
    m_extraLine = {};
    if (!m_storage || m_containerList.empty())
        return;
    const qsizetype length = m_storage->length();
    if (!m_units.empty()) {
        const LaidParagraph& last = *m_units.back();
        if (last.separator.length == 0 || !(last.endAction & Typesetter::ParagraphBreakAction))
            return;
    }
    Font font = Font::userFont();
    ParagraphStyle style = ParagraphStyle::defaultParagraphStyle();
    if (length > 0) {
        const Attributes attributes = m_storage->attributes(length - 1);
        const QVariant fontValue = attributes.value(FontAttributeName);
        if (fontValue.metaType() == QMetaType::fromType<Font>())
            font = fontValue.value<Font>();
        const QVariant styleValue = attributes.value(ParagraphStyleAttributeName);
        if (styleValue.metaType() == QMetaType::fromType<ParagraphStyle>())
            style = styleValue.value<ParagraphStyle>();
    }
    const double height = defaultLineHeightForFont(font);
    Position at = startOfUnit(qsizetype(m_units.size()));
    // The empty line goes where a line of text would: below the last one, or at the top of the next
    // container (which the delegate may add) when there is no room left.
    while (at.container < qsizetype(m_containerList.size()) && at.y > 0
           && at.y + height > m_containerList[size_t(at.container)]->size().height())
        at = {at.container + 1, 0};
    if (at.container >= qsizetype(m_containerList.size())) {
        const size_t before = m_containerList.size();
        reportCompletion(qsizetype(before) - 1, false);
        if (m_containerList.size() > before)
            at = {int(before), 0};
        else if (!m_units.empty())
            at = {m_units.back()->endContainer, m_units.back()->endY};
        else
            at = {int(before) - 1, 0};
    }
    const TextContainer& container = *m_containerList[size_t(at.container)];
    const double padding = container.lineFragmentPadding();
    const double width = container.size().width();
    double x = padding + style.firstLineHeadIndent();
    const double right = style.tailIndent() > 0 ? padding + style.tailIndent() : width - padding + style.tailIndent();
    if (style.alignment() == CenterTextAlignment)
        x = (x + right) / 2;
    else if (style.alignment() == RightTextAlignment)
        x = right;
    m_extraLine.container = at.container;
    m_extraLine.rect = QRectF(0, at.y, width, height);
    m_extraLine.usedRect = QRectF(x, at.y, 0, height);
}

QRectF LayoutManager::extraLineFragmentRect()
{
    ensureLayoutForAllText();
    return m_extraLine.container >= 0 ? m_extraLine.rect : QRectF();
}

QRectF LayoutManager::extraLineFragmentUsedRect()
{
    ensureLayoutForAllText();
    return m_extraLine.container >= 0 ? m_extraLine.usedRect : QRectF();
}

TextContainer* LayoutManager::extraLineFragmentTextContainer()
{
    ensureLayoutForAllText();
    if (m_extraLine.container < 0 || m_extraLine.container >= qsizetype(m_containerList.size()))
        return nullptr;
    return m_containerList[size_t(m_extraLine.container)];
}

double LayoutManager::xForOffset(const LaidParagraph& unit, size_t line, qsizetype offset) const
{
    const double padding = unit.shapedPadding;
    if (!unit.layout || line >= unit.lines.size())
        return padding;
    offset = std::clamp<qsizetype>(offset, 0, layoutTextLength(unit));
    return padding + unit.layout->lineAt(unit.lines[line].textLine).cursorToX(int(offset));
}

qsizetype LayoutManager::characterIndexForPoint(const QPointF& point, TextContainer* container)
{
    const qsizetype index = indexOfTextContainer(container);
    if (index < 0)
        return 0;
    ensureLayoutForAllText();
    if (m_extraLine.container == index && point.y() >= m_extraLine.rect.top())
        return numberOfGlyphs();
    // The first line reaching below the point, else the last line of the container.
    const LaidParagraph* hitUnit = nullptr;
    size_t hitLine = 0;
    bool below = false;
    for (qsizetype u = firstUnitInContainer(index); u < m_validEnd && !below; ++u) {
        const LaidParagraph& unit = *m_units[size_t(u)];
        if (unit.startContainer > index)
            break;
        for (size_t i = 0; i < unit.placed.size() && i < unit.lines.size(); ++i) {
            if (unit.placed[i].containerIndex != index)
                continue;
            hitUnit = &unit;
            hitLine = i;
            if (unit.placed[i].rect.bottom() > point.y()) {
                below = true;
                break;
            }
        }
    }
    if (!hitUnit || !hitUnit->layout)
        return m_extraLine.container == index ? numberOfGlyphs() : glyphRangeForTextContainer(container).location;
    const LaidParagraph& unit = *hitUnit;
    const ShapedLine& line = unit.lines[hitLine];
    const QTextLine textLine = unit.layout->lineAt(line.textLine);
    qsizetype offset = textLine.xToCursor(point.x() - unit.shapedPadding, QTextLine::CursorBetweenCharacters);
    const qsizetype lineEnd = line.start + line.length;
    const bool lastLine = hitLine + 1 == unit.lines.size();
    qsizetype last = lastLine ? layoutTextLength(unit) : lineEnd;
    // The end of a wrapped line is the start of the next: a click there stays before the wrapping space.
    if (!lastLine && line.length > 0)
        last = lineEnd - 1;
    offset = std::clamp(offset, line.start, std::max(line.start, last));
    return unit.range.location + offset;
}

QRectF LayoutManager::insertionPointRectForCharacterIndex(qsizetype index, TextContainer** container)
{
    if (container)
        *container = nullptr;
    const qsizetype length = numberOfGlyphs();
    index = std::clamp<qsizetype>(index, 0, length);
    if (index == length) {
        ensureLayoutForAllText();
        if (m_extraLine.container >= 0 && m_extraLine.container < qsizetype(m_containerList.size())) {
            if (container)
                *container = m_containerList[size_t(m_extraLine.container)];
            return QRectF(m_extraLine.usedRect.x(), m_extraLine.rect.y(), CaretWidth, m_extraLine.rect.height());
        }
        if (length == 0)
            return QRectF();
    }
    const qsizetype probe = index == length ? length - 1 : index;
    ensureLayoutForGlyphRange(Range{probe, 1});
    const qsizetype u = unitAtCharacter(probe);
    if (u < 0 || u >= m_validEnd)
        return QRectF();
    const LaidParagraph& unit = *m_units[size_t(u)];
    const qsizetype offset = index - unit.range.location;
    size_t i = 0;
    while (i + 1 < unit.lines.size() && offset >= unit.lines[i].start + unit.lines[i].length)
        ++i;
    if (i >= unit.placed.size())
        return QRectF();
    const LineFragment& placed = unit.placed[i];
    if (container)
        *container = m_containerList[size_t(placed.containerIndex)];
    return QRectF(xForOffset(unit, i, offset), placed.usedRect.top(), CaretWidth, placed.usedRect.height());
}

std::vector<QRectF> LayoutManager::selectionRectsForCharacterRange(Range range, TextContainer* container)
{
    std::vector<QRectF> rects;
    const qsizetype index = indexOfTextContainer(container);
    if (index < 0 || range.length <= 0)
        return rects;
    ensureLayoutForTextContainer(container);
    for (qsizetype u = firstUnitInContainer(index); u < m_validEnd; ++u) {
        const LaidParagraph& unit = *m_units[size_t(u)];
        if (unit.startContainer > index || unit.range.location >= range.end())
            break;
        if (unit.range.end() <= range.location)
            continue;
        for (size_t i = 0; i < unit.placed.size() && i < unit.lines.size(); ++i) {
            const LineFragment& placed = unit.placed[i];
            if (placed.containerIndex != index)
                continue;
            const qsizetype lineStart = unit.range.location + unit.lines[i].start;
            const qsizetype lineEnd = lineStart + unit.lines[i].length;
            if (lineEnd <= range.location || lineStart >= range.end())
                continue;
            const double from = xForOffset(unit, i, std::max(range.location, lineStart) - unit.range.location);
            const double to =
                range.end() < lineEnd ? xForOffset(unit, i, range.end() - unit.range.location) : placed.rect.right();
            rects.emplace_back(std::min(from, to), placed.rect.top(), std::abs(to - from), placed.rect.height());
        }
    }
    return rects;
}

} // namespace qly
