#pragma once
// The text forms of values held in the link attribute: comment links ("quillcmt://<ID>") and document
// links (a {"QuilleryLink": identifier} dictionary in memory, "quilllnk://<identifier>" when flattened).
//
// Flattened links are written as QString, not QUrl: QUrl reads the identifier as a host name and
// lower-cases it (or reads a number as an IPv4 address), and identifiers are case-sensitive.
#include <QString>
#include <QVariant>
#include <optional>

namespace qly {

/// The text of a link held as a QUrl or a QString; nothing for other values (dictionaries, objects).
std::optional<QString> linkString(const QVariant& link);
/// "quillcmt://" + uniqueID.
QString commentLinkString(const QString& uniqueID);
/// "quilllnk://" + identifier.
QString documentLinkString(const QString& identifier);
/// The comment ID of a comment link (the text after the scheme); nothing for any other value.
std::optional<QString> commentIDFromLink(const QVariant& link);
/// The identifier of a flattened document link; nothing for any other value.
std::optional<QString> documentIdentifierFromLink(const QVariant& link);
/// The identifier held by an in-memory document link dictionary; nothing for any other value.
std::optional<QString> documentIdentifierFromDictionary(const QVariant& link);
/// The in-memory form of a document link.
QVariantMap documentLinkDictionary(const QString& identifier);

} // namespace qly
