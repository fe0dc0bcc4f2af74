#pragma once
// The text forms of values held in the link attribute: comment links ("quillcmt://<ID>") and document
// links (a {"QuilleryLink": identifier} dictionary in memory, "quilllnk://<identifier>" when flattened).
//
// Flattened links are written as QString, not QUrl: QUrl reads the identifier as a host name and
// lower-cases it (or reads a number as an IPv4 address), and identifiers are case-sensitive.
//
// Reading accepts both. A link's text form (a QString) gives its identifier exactly as written, and
// its scheme is matched without regard to case. A QUrl gives what it still holds: its scheme, its host
// as a Unicode name (not the "xn--" form QUrl keeps for non-ASCII names) and its path, query and
// fragment, decoded. What QUrl has already lost stays lost:
//  - the case of the host part, which for an identifier without "/" is all of it ("quilllnk://Ch-1"
//    as a QUrl reads "ch-1"; a path after the host keeps its case);
//  - a number read as an IPv4 address ("quilllnk://12345" reads "0.0.48.57");
//  - an identifier that is no valid host name (a space, say): the QUrl is invalid and empty, and
//    the link is not read as a comment or document link at all.
// Comment IDs are upper-case hexadecimal, so comment links are matched to comments without regard to
// case (CommentedText.h) and lose nothing through QUrl.
#include <QString>
#include <QVariant>
#include <optional>

namespace qly {

/// The text of a link held as a QUrl or a QString; nothing for other values (dictionaries, objects).
/// (For a QUrl, its own text form: the host lower-cased, a non-ASCII host in its "xn--" form.)
std::optional<QString> linkString(const QVariant& link);
/// "quillcmt://" + uniqueID.
QString commentLinkString(const QString& uniqueID);
/// "quilllnk://" + identifier.
QString documentLinkString(const QString& identifier);
/// The comment ID of a comment link (the text after the scheme); nothing for any other value. From a
/// QUrl it comes lower-cased.
std::optional<QString> commentIDFromLink(const QVariant& link);
/// The identifier of a flattened document link; nothing for any other value. Its case is kept from a
/// QString; from a QUrl see the header comment.
std::optional<QString> documentIdentifierFromLink(const QVariant& link);
/// The identifier held by an in-memory document link dictionary; nothing for any other value.
std::optional<QString> documentIdentifierFromDictionary(const QVariant& link);
/// The in-memory form of a document link.
QVariantMap documentLinkDictionary(const QString& identifier);

} // namespace qly
