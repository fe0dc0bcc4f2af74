#pragma once
// Style identifiers in package RTF. The identifiers of named paragraph and character styles have no RTF
// form of their own, so they travel as ignorable groups placed wherever an identifier changes:
// "{\*\qlyparagraphstyleid ID}" and "{\*\qlycharacterstyleid ID}" (the identifier escaped as RTF text),
// with an empty identifier where one ends. Other RTF readers skip the groups.
#include <QByteArray>
#include <QString>
#include <vector>

#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

inline constexpr char PackageRTFParagraphStyleIDWord[] = "qlyparagraphstyleid";
inline constexpr char PackageRTFCharacterStyleIDWord[] = "qlycharacterstyleid";

/// A point where a style identifier starts (or, with an empty identifier, ends).
struct StyleIdentifierChange {
    qsizetype at = 0;
    bool paragraph = true; ///< paragraph style identifier, else character style identifier
    QString identifier;
    friend bool operator==(const StyleIdentifierChange&, const StyleIdentifierChange&) = default;
};

/// Where the text's style identifiers start and end, in text order (a paragraph change before a character
/// change at the same place). Empty identifiers count as none.
std::vector<StyleIdentifierChange> styleIdentifierChanges(const AttributedString& text);

/// Appends the group for a change.
void appendStyleIdentifierGroup(QByteArray& rtf, const StyleIdentifierChange& change);

/// Sets the identifiers: each runs from its change to the next change of the same kind or the text's end.
/// changes are in text order, their positions in text.
void applyStyleIdentifierChanges(AttributedString& text, const std::vector<StyleIdentifierChange>& changes);

} // namespace qly
