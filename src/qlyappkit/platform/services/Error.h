#pragma once
// The error value that file-producing operations hand back through an `Error*` out-parameter.
#include <QString>

namespace qly {

struct Error {
    QString domain;
    int code = 0;
    QString localizedDescription;
    QString localizedRecoverySuggestion;
};

/// Fills *error when the caller asked for it.
inline void setError(Error* error, const QString& domain, int code, const QString& description,
                     const QString& suggestion = {})
{
    if (error)
        *error = Error{domain, code, description, suggestion};
}

} // namespace qly
