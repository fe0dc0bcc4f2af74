// Keep-with-next paragraphs: a start marker opens each such paragraph and a marker line follows it;
// the paragraph becomes a "{\keepn …}" group, followed by the character formatting it ended with, and
// the marker line goes.
#include <QSet>
#include <algorithm>
#include <optional>

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

// Whether the RTF in [from, to) closes every group it opens and no other (escaped braces are text).
bool isBalanced(const QString& rtf, qsizetype from, qsizetype to)
{
    int depth = 0;
    for (qsizetype i = from; i < to; ++i) {
        const QChar ch = rtf.at(i);
        if (ch == QLatin1Char('\\'))
            ++i;
        else if (ch == QLatin1Char('{'))
            ++depth;
        else if (ch == QLatin1Char('}') && --depth < 0)
            return false;
    }
    return depth == 0;
}

bool isBraceFree(const QString& rtf, qsizetype from, qsizetype to)
{
    for (qsizetype i = from; i < to; ++i) {
        const QChar ch = rtf.at(i);
        if (ch == QLatin1Char('\\'))
            ++i;
        else if (ch == QLatin1Char('{') || ch == QLatin1Char('}'))
            return false;
    }
    return true;
}

// Just after the first paragraph break (a backslash and a line feed) from `from` outside the groups
// that open after it; nothing when the group holding `from` closes first.
std::optional<qsizetype> paragraphEndAtSameDepth(const QString& rtf, qsizetype from)
{
    int depth = 0;
    for (qsizetype i = from; i < rtf.size(); ++i) {
        const QChar ch = rtf.at(i);
        if (ch == QLatin1Char('\\')) {
            if (depth == 0 && i + 1 < rtf.size() && rtf.at(i + 1) == QLatin1Char('\n'))
                return i + 2;
            ++i;
        } else if (ch == QLatin1Char('{')) {
            ++depth;
        } else if (ch == QLatin1Char('}') && --depth < 0) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

// The control words that change character formatting, as the plain writer and the note tags write
// them.
const QSet<QString> CharacterFormattingWords{
    QStringLiteral("f"),          QStringLiteral("fs"),        QStringLiteral("b"),       QStringLiteral("i"),
    QStringLiteral("ul"),         QStringLiteral("ulnone"),    QStringLiteral("ulth"),    QStringLiteral("uldb"),
    QStringLiteral("ulc"),        QStringLiteral("strike"),    QStringLiteral("striked"), QStringLiteral("cf"),
    QStringLiteral("cb"),         QStringLiteral("highlight"), QStringLiteral("super"),   QStringLiteral("sub"),
    QStringLiteral("nosupersub"), QStringLiteral("up"),        QStringLiteral("dn"),      QStringLiteral("expnd"),
    QStringLiteral("expndtw"),    QStringLiteral("plain")};

// The character formatting controls written in [from, to) outside its inner groups, in order: played
// again after a group that spans the range, they give the formatting in force at its end, which the
// closing brace would otherwise undo for the text after it (the plain writer writes a control only
// where formatting changes).
QString characterFormattingOf(const QString& rtf, qsizetype from, qsizetype to)
{
    QString controls;
    int depth = 0;
    for (qsizetype i = from; i < to; ++i) {
        const QChar ch = rtf.at(i);
        if (ch == QLatin1Char('{')) {
            ++depth;
        } else if (ch == QLatin1Char('}')) {
            --depth;
        } else if (ch == QLatin1Char('\\')) {
            qsizetype end = i + 1;
            while (end < to && rtf.at(end).isLower() && rtf.at(end).unicode() < 0x80)
                ++end;
            const qsizetype nameEnd = end;
            if (end < to && rtf.at(end) == QLatin1Char('-'))
                ++end;
            while (end < to && rtf.at(end).isDigit())
                ++end;
            if (nameEnd == i + 1) {
                ++i; // a control symbol: the escaped character is text
                continue;
            }
            if (depth == 0 && CharacterFormattingWords.contains(rtf.mid(i + 1, nameEnd - i - 1)))
                controls.append(QStringView(rtf).mid(i, end - i));
            i = end - 1;
        }
    }
    return controls.isEmpty() ? controls : controls + QLatin1Char(' ');
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
    std::vector<qsizetype> braces; // where a brace goes in: no deletion may swallow one
    for (qsizetype at = c.rtf.indexOf(KeepWithNextStart); at >= 0;
         at = c.rtf.indexOf(KeepWithNextStart, at + KeepWithNextStart.size())) {
        // The paragraph break at the marker's own depth ends the paragraph (one in a note inside the
        // paragraph does not). When the marker's group closes first, the paragraph cannot be kept.
        const std::optional<qsizetype> end = paragraphEndAtSameDepth(c.rtf, at + KeepWithNextStart.size());
        if (!end) {
            edits.push_back({at, KeepWithNextStart.size(), QString()});
            continue;
        }
        // The group opens at the line start, so that it holds the paragraph's formatting, unless
        // that would cross a group boundary; "\keepn" goes where the marker was, after any "\pard".
        const qsizetype lineStart = RTFParagraphRangeForRange(c.rtf, Range{at, 0}).location;
        const qsizetype open = isBalanced(c.rtf, lineStart, at) ? lineStart : at;
        edits.push_back({open, 0, GroupOpen});
        edits.push_back({at, KeepWithNextStart.size(), KeepWithNextControl});
        edits.push_back({*end, 0, GroupClose + characterFormattingOf(c.rtf, open, *end)});
        braces.insert(braces.end(), {open, *end});
    }
    // Each marker line goes whole, paragraph break included, so that the group closes before the next
    // paragraph; when that would delete a brace or a place where one goes in, only the marker goes.
    std::sort(braces.begin(), braces.end());
    for (qsizetype at = c.rtf.indexOf(KeepWithNextEnds); at >= 0;
         at = c.rtf.indexOf(KeepWithNextEnds, at + KeepWithNextEnds.size())) {
        const Range line = RTFParagraphRangeForRange(c.rtf, Range{at, KeepWithNextEnds.size()});
        const auto brace = std::upper_bound(braces.begin(), braces.end(), line.location);
        const bool whole =
            isBraceFree(c.rtf, line.location, line.end()) && (brace == braces.end() || *brace >= line.end());
        edits.push_back(whole ? Edit{line.location, line.length, QString()}
                              : Edit{at, KeepWithNextEnds.size(), QString()});
    }
    c.rtf = applyEdits(c.rtf, edits);
}

} // namespace qly::extendedrtf
