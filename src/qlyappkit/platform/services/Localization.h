#pragma once
// User-visible texts: the key is the English text itself.
#include <QString>

namespace qly {

/// The localised form of an English text (the English text when no translation is installed).
QString localized(const char* english);
QString localized(const QString& english);

} // namespace qly
