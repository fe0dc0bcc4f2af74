#pragma once
// Escaping text for HTML with named character references.
#include <QList>
#include <QString>
#include <QVariantMap>

namespace qly {

/// The 131 entries of the entity table, in order: each a map with the keys "Character" (one
/// character) and "HTML" (its named reference). First "&", the double quotation mark, "'", "<" and
/// ">"; then the Latin-1 letters and signs U+00A1–U+00FE, then a choice of general punctuation,
/// arrows and signs, and "⇒" once more at the end. The Latin-1 part keeps its own departures from the
/// HTML 4 names: no entry for U+00A4, U+00A6, U+00A8, U+00AA, U+00AF, U+00B8 and U+00EE; "&lgrave;",
/// "&lacute;", "&lcirc;", "&luml;" for U+00CC–U+00CF; "&yuml;" for U+00FE (and none for U+00FF).
const QList<QVariantMap>& HTMLCharacterEntityReferences();

/// The text with every character of the table replaced by its reference, as if entry by entry in
/// table order ("&" first, so that no reference is escaped again); in one pass.
QString HTMLFriendlyString(const QString& text);

} // namespace qly
