#pragma once
// Line-break normalisation for syncing with plain-text editors: empty lines are dropped and the
// remaining lines joined by one separator. Every kind of line break counts (LF, CR, CR LF, U+2028,
// U+2029); the output uses LF.
#include <QString>

namespace qly {

/// The non-empty lines joined by one line feed.
QString stringByRemovingExtraNewlines(const QString& string);
/// The non-empty lines joined by one space.
QString stringByReplacingNewlinesWithSpaces(const QString& string);
/// The non-empty lines joined by an empty line (two line feeds).
QString stringByInsertingExtraNewlines(const QString& string);

} // namespace qly
