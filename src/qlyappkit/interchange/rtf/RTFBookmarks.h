#pragma once
// Bookmark names that word processors accept.
#include <QString>

namespace qly {

/// Accents and characters other than letters, digits, "_" and blanks removed; each white space or
/// line break an "_", runs of "_" made one; every "_" deleted when the user default
/// "RemoveUnderscoresInRTFBookmarks" is set; names of 31 or more characters cut to 30.
QString RTFBookmarkNameForString(const QString& string);

} // namespace qly
