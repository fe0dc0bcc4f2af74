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
    auto mark = [&](const QVariant& value, Range r) {
        const QStringView stretch = QStringView(text).sliced(r.location, r.length);
        const QString change = value.toString();
        const bool removed = change == XQChangedTextOld, added = change == XQChangedTextNew;
        if (!removed && !added) {
            out.append(stretch);
            return true;
        }
        const QString& start = removed ? markers.removedStart : markers.addedStart;
        const QString& end = removed ? markers.removedEnd : markers.addedEnd;
        if (!markers.closeAtLineBreaks) {
            out.append(start);
            out.append(stretch);
            out.append(end);
            return true;
        }
        // Opened only before something visible, so that a blank line inside a stretch stays bare.
        bool open = false;
        for (QChar c : stretch) {
            if (isLineTerminator(c)) {
                if (open)
                    out.append(end);
                open = false;
            } else if (!open) {
                out.append(start);
                open = true;
            }
            out.append(c);
        }
        if (open)
            out.append(end);
        return true;
    };
    merged.enumerateAttribute(XQChangedTextAttributeName, Range{0, merged.length()}, mark);
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
