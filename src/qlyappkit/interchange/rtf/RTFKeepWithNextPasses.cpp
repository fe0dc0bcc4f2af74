// Keep-with-next paragraphs: a start marker opens each such paragraph and a marker line follows it;
// the paragraph becomes a "{\keepn …}" group and the marker line goes.
#include <algorithm>

#include <qlyappkit/interchange/rtf/ExtendedRTFExport_p.h>
#include <qlyappkit/interchange/rtf/RTFTextToolkit.h>
#include <qlyappkit/platform/strings/NumberParsing.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>

namespace qly::extendedrtf {

namespace {

const QString KeepWithNextStart = QStringLiteral("<$--QLY_KEEP_WITH_NEXT-->");
// On a line of its own after the paragraph, so that the group can close before the next one.
const QString KeepWithNextEnds = QStringLiteral("<$QLY_KEEP_WITH_NEXT_ENDS-->");
const QString GroupOpen = QStringLiteral("{");
const QString GroupClose = QStringLiteral("}");
const QString KeepWithNextControl = QStringLiteral("\\keepn ");

bool isKept(const QVariant& keep)
{
    return keep.isValid() && (keep.typeId() == QMetaType::QString ? stringBoolValue(keep.toString()) : keep.toBool());
}

} // namespace

void markKeepWithNext(Context& c)
{
    std::vector<Range> paragraphs;
    const QString s = c.text.string();
    qsizetype start = 0;
    while (start < s.size()) {
        const Range paragraph = c.text.paragraphRange(Range{start, 0});
        const qsizetype end = std::max(paragraph.end(), start + 1);
        const QChar last = s.at(end - 1);
        const bool terminated = last == QLatin1Char('\n') || last == QLatin1Char('\r') || last == QChar(0x2029);
        if (terminated && isKept(c.text.attribute(XQKeepWithNextAttributeName, start))) {
            const QVariant styleValue = c.text.attribute(ParagraphStyleAttributeName, start);
            const ParagraphStyle style = styleValue.metaType() == QMetaType::fromType<ParagraphStyle>()
                ? styleValue.value<ParagraphStyle>()
                : ParagraphStyle::defaultParagraphStyle();
            if (style.textLists().isEmpty() && style.textBlocks().isEmpty())
                paragraphs.push_back(Range::fromBounds(start, end));
        }
        start = end;
    }
    for (auto it = paragraphs.rbegin(); it != paragraphs.rend(); ++it) {
        c.text.insert(
            AttributedString(KeepWithNextEnds + QLatin1Char('\n'), attributesForInsertion(c.text, it->end() - 1)),
            it->end());
        Attributes first = c.text.attributes(it->location);
        first.remove(AttachmentAttributeName);
        c.text.insert(AttributedString(KeepWithNextStart, first), it->location);
    }
}

void writeKeepWithNext(Context& c)
{
    std::vector<Edit> edits;
    qsizetype searchFrom = 0;
    for (qsizetype at = c.rtf.indexOf(KeepWithNextStart); at >= 0; at = c.rtf.indexOf(KeepWithNextStart, searchFrom)) {
        const Range paragraph = RTFParagraphRangeForRange(c.rtf, Range{at, KeepWithNextStart.size()});
        // The group opens at the line start; "\keepn" goes where the marker was, after any "\pard".
        edits.push_back({paragraph.location, 0, GroupOpen});
        edits.push_back({at, KeepWithNextStart.size(), KeepWithNextControl});
        edits.push_back({paragraph.end(), 0, GroupClose});
        searchFrom = paragraph.end();
        const qsizetype ends = c.rtf.indexOf(KeepWithNextEnds, searchFrom);
        if (ends >= 0) {
            const Range line = RTFParagraphRangeForRange(c.rtf, Range{ends, KeepWithNextEnds.size()});
            const qsizetype from = std::max(line.location, paragraph.end());
            edits.push_back({from, line.end() - from, QString()});
            searchFrom = std::max(searchFrom, line.end());
        }
    }
    c.rtf = applyEdits(c.rtf, edits);
}

} // namespace qly::extendedrtf
