#include <qlyappkit/formats/comparison/DiffMarkup.h>

#include <qlyappkit/formats/comparison/DiffConstants.h>
#include <qlyappkit/platform/text/ParagraphRanges.h>

namespace qly {

DiffTextMarkers bracketDiffTextMarkers()
{
    return {XQDiffRemovedTextOpeningMark, XQDiffRemovedTextClosingMark, XQDiffAddedTextOpeningMark,
            XQDiffAddedTextClosingMark, false};
}

DiffTextMarkers terminalDiffTextMarkers()
{
    return {XQDiffRemovedTextTerminalStart, XQDiffTerminalReset, XQDiffAddedTextTerminalStart, XQDiffTerminalReset,
            true};
}

QString textMarkingDifferences(const AttributedString& merged, const DiffTextMarkers& markers)
{
    const QString text = merged.substring(Range{0, merged.length()});
    QString out;
    out.reserve(text.size() + text.size() / 8);
    merged.enumerateAttribute(
        XQChangedTextAttributeName, Range{0, merged.length()}, [&](const QVariant& value, Range r) {
            const QStringView stretch = QStringView(text).sliced(r.location, r.length);
            const QString change = value.toString();
            const bool removed = change == XQChangedTextOld, added = change == XQChangedTextNew;
            if (!removed && !added) {
                out.append(stretch);
                return true;
            }
            const QString& start = removed ? markers.removedStart : markers.addedStart;
            const QString& end = removed ? markers.removedEnd : markers.addedEnd;
            out.append(start);
            if (!markers.closeAtLineBreaks) {
                out.append(stretch);
            } else {
                for (qsizetype i = 0; i < stretch.size(); ++i) {
                    if (!isLineTerminator(stretch[i])) {
                        out.append(stretch[i]);
                        continue;
                    }
                    out.append(end);
                    out.append(stretch[i]);
                    if (stretch[i] == u'\r' && i + 1 < stretch.size() && stretch[i + 1] == u'\n')
                        out.append(stretch[++i]);
                    if (i + 1 < stretch.size())
                        out.append(start);
                    else
                        return true; // the stretch ended with the line break: nothing left to mark
                }
            }
            out.append(end);
            return true;
        });
    return out;
}

bool hasDifferences(const AttributedString& merged)
{
    bool found = false;
    merged.enumerateAttribute(XQChangedTextAttributeName, Range{0, merged.length()}, [&](const QVariant& value, Range) {
        const QString change = value.toString();
        found = change == XQChangedTextOld || change == XQChangedTextNew;
        return !found;
    });
    return found;
}

} // namespace qly
