#pragma once
// Reading and writing whole documents in the formats the framework converts between: plain UTF-8
// text, RTF, and (for output) RTF for word processors. A front end names a format or lets the file
// name's extension choose one, then hands over bytes: reading standard input or writing standard
// output is the caller's business.
#include <qlyappkit/platform/services/Error.h>
#include <qlyappkit/platform/text/AttributedString.h>

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <optional>

namespace qly {

enum class DocumentFormat {
    Unknown,
    PlainText, ///< UTF-8 text ("txt", "text")
    RTF, ///< RTF as the platform writes and reads it ("rtf")
    WordRTF, ///< RTF for word processors: real footnotes, comments, sections ("word-rtf"; output only)
};

/// The error domain of reading documents, and its codes.
inline const QString XQDocumentErrorDomain = QStringLiteral("QlyAppKitDocumentErrorDomain");
enum XQDocumentErrorCode { XQDocumentUnreadableError = 1, XQDocumentNotRTFError = 2, XQDocumentUnknownFormatError = 3 };

/// The format of a name as users type it ("rtf", "txt", "text", "word-rtf"; any letter case).
DocumentFormat documentFormatNamed(const QString& name);
/// The format a file name's extension stands for (".rtf", ".txt", ".text"); Unknown otherwise.
DocumentFormat documentFormatOfPath(const QString& path);
/// The names documentFormatNamed() accepts, for messages.
QStringList documentFormatNames();
bool canReadDocumentFormat(DocumentFormat format);

/// The text of a document's bytes. Plain text is UTF-8 (a leading byte-order mark is dropped). RTF
/// that is damaged but readable gives what could be read and a warning; data that is not RTF at all
/// gives nothing and *error. documentAttributes receives what the RTF carried (page size, margins …).
std::optional<AttributedString> attributedStringFromDocumentData(const QByteArray& data, DocumentFormat format,
                                                                 QVariantMap* documentAttributes = nullptr,
                                                                 Error* error = nullptr,
                                                                 QStringList* warnings = nullptr);

/// The text as UTF-8 plain text: line and paragraph separators become line feeds, attachment
/// characters go.
QByteArray plainTextDocumentData(const AttributedString& text);

} // namespace qly
