#pragma once
// Importing RTF that a word processor wrote: the extended reader and the repairs made around it, as
// one call. The result is ready to be stored (StoredText.h writes it with its comments side file).
#include <qlyappkit/interchange/rtf/ExtendedRTFReader.h>
#include <qlyappkit/platform/services/Error.h>

#include <QStringList>

namespace qly {

/// A word processor's document as the application keeps it.
struct WordRTFImport {
    AttributedString text;
    QVariantMap documentAttributes;
    ExtendedRTFImportReport report;
};

/// Reads word-processor RTF with its notes, comments and pictures, then drops white highlights and
/// sets list indents from their tab stops. Nothing, and *error, when the data is not RTF; RTF that
/// ends early gives what could be read and a warning.
std::optional<WordRTFImport> importWordRTF(const QByteArray& rtf, const ExtendedRTFImportOptions& options,
                                           Error* error = nullptr, QStringList* warnings = nullptr);

} // namespace qly
