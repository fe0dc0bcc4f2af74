#pragma once
// Reading XML documents from files and writing them atomically.
#include <qlyappkit/platform/services/AtomicFile.h>
#include <qlyappkit/platform/services/Error.h>

#include <QByteArray>
#include <QString>
#include <pugixml.hpp>

namespace qly {

/// The error domain and codes of writeXMLDocumentAtomically: those of every atomic file write.
inline const QString& XQXMLFileErrorDomain = XQFileErrorDomain;
enum XQXMLFileErrorCode {
    XQXMLFileCannotOpenError = XQFileCannotOpenError,
    XQXMLFileCannotWriteError = XQFileCannotWriteError,
    XQXMLFileCannotCommitError = XQFileCannotCommitError
};

/// The declaration written before the root when the document holds none of its own.
inline const QString XQXMLDeclaration = QStringLiteral(R"(<?xml version="1.0" encoding="UTF-8"?>)");

/// Writes the document, indented with four spaces, as UTF-8 to a temporary file beside path and renames it
/// over path, so that readers see the old file or the whole new one. On failure path is untouched, no
/// temporary file is left, *error (when given) says why, and the result is false.
bool writeXMLDocumentAtomically(const pugi::xml_document& document, const QString& path, Error* error = nullptr);

/// Replaces document with the one parsed from the file. Whitespace-only text between elements is dropped
/// unless preserveWhitespace is set. A file that cannot be read gives status_file_not_found or
/// status_io_error; a parse problem gives its status and the byte offset where it was found.
pugi::xml_parse_result loadXMLDocument(const QString& path, pugi::xml_document& document, bool preserveWhitespace);
/// The same for a document's bytes.
pugi::xml_parse_result loadXMLDocumentFromData(const QByteArray& data, pugi::xml_document& document,
                                               bool preserveWhitespace);

} // namespace qly
