#pragma once
// A merged comparison text as plain text, its removed and added stretches between markers, for a
// terminal or a text file.
#include <QString>

#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

inline const QString XQDiffRemovedTextOpeningMark = QStringLiteral("[-");
inline const QString XQDiffRemovedTextClosingMark = QStringLiteral("-]");
inline const QString XQDiffAddedTextOpeningMark = QStringLiteral("{+");
inline const QString XQDiffAddedTextClosingMark = QStringLiteral("+}");
/// Terminal escapes: removed text red and struck through, added text blue and underlined.
inline const QString XQDiffRemovedTextTerminalStart = QStringLiteral("\x1b[9;31m");
inline const QString XQDiffAddedTextTerminalStart = QStringLiteral("\x1b[4;34m");
inline const QString XQDiffTerminalReset = QStringLiteral("\x1b[0m");

/// What goes around removed and added text.
struct DiffTextMarkers {
    QString removedStart, removedEnd, addedStart, addedEnd;
    /// Close the marker before each line break inside a stretch and open it again after (terminal
    /// colours would otherwise run on into what a pager or the next prompt shows).
    bool closeAtLineBreaks = false;
};

/// "[-removed-]{+added+}".
DiffTextMarkers bracketDiffTextMarkers();
/// Terminal colours and strikethrough/underline instead of brackets.
DiffTextMarkers terminalDiffTextMarkers();

/// The merged text's characters, each stretch whose XQChangedTextAttributeName is "OldText" or
/// "NewText" between the removed or added markers.
QString textMarkingDifferences(const AttributedString& merged, const DiffTextMarkers& markers);

/// True when some stretch of the merged text is marked as removed or added.
bool hasDifferences(const AttributedString& merged);

} // namespace qly
