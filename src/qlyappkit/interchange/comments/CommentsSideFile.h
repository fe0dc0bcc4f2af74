#pragma once
// The comments side file: an XML document whose root "Comments" holds one "Comment" element per run
// of linked comments in a text, in text order, and the loading of those comments back onto the
// comment links ("quillcmt://<ID>") of a text.
#include <QHash>
#include <QString>
#include <memory>
#include <optional>
#include <vector>
#include <pugixml.hpp>

#include <qlyappkit/platform/services/Error.h>
#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/text/MutableAttributedString.h>
#include <qlyappkit/text/comments/CommentedText.h>
#include <qlyappkit/text/comments/XQComment.h>

namespace qly {

// Element and attribute names of the side file.
inline const QString XQCommentsXMLRootElementName = QStringLiteral("Comments");
inline const QString XQCommentsXMLCommentElementName = QStringLiteral("Comment");
inline const QString XQCommentsXMLIDAttributeName = QStringLiteral("ID");
inline const QString XQCommentsXMLFootnoteAttributeName = QStringLiteral("Footnote");
inline const QString XQCommentsXMLNumberAttributeName = QStringLiteral("Number");
inline const QString XQCommentsXMLCollapsedAttributeName = QStringLiteral("Collapsed");
inline const QString XQCommentsXMLColorAttributeName = QStringLiteral("Color");

/// The error domain of writeCommentsToURL() when a stale side file cannot be removed (code 1); write
/// failures come in the XML file error domain.
inline const QString XQCommentsFileErrorDomain = QStringLiteral("QlyAppKitCommentsFileErrorDomain");
inline constexpr int XQCommentsFileCannotRemoveError = 1;

/// A document whose root is the "Comments" element for the text's comments; null when it has none.
std::unique_ptr<pugi::xml_document> commentsXMLRepresentation(const AttributedString& text);
/// Writes the side file atomically. With no comments any file at path is removed instead; the result
/// is then whether that removal worked (true when there was no file).
bool writeCommentsToURL(const AttributedString& text, const QString& path, Error* error = nullptr);

/// The comments of a side file; nothing when it is missing, not XML or not rooted in "Comments".
std::optional<XQCommentsByID> commentsFromURL(const QString& path);
/// The comments of a side file in the order the file holds them; nothing as for commentsFromURL().
std::optional<std::vector<XQCommentPtr>> commentListFromURL(const QString& path);
/// The same from the bytes of a side file.
std::optional<std::vector<XQCommentPtr>> commentListFromXMLData(const QByteArray& data);
/// New comments from the children of a "Comments" element (each keeps its stored ID); children
/// without "ID" are skipped.
XQCommentsByID commentsInfoFromXMLRepresentation(pugi::xml_node element);
/// The same in the children's order (a repeated ID appears each time).
std::vector<XQCommentPtr> commentListFromXMLRepresentation(pugi::xml_node element);

/// loadCommentsFromDictionary() with the comments of a side file; nothing when it gives none.
void loadCommentsFromURL(MutableAttributedString& text, const QString& path);

} // namespace qly
