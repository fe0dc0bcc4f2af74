#pragma once
// The text of a document as the application stores it: package RTF (PackageRTFWriter.h: notes as tags,
// pictures embedded, linked pictures as links), and linked comments in a comments side file beside it
// ("NAME.comments.xml" for "NAME.rtf"). Reading it gives the text with its notes as attributes, its
// pictures as attachments and its comments on their anchors, ready for export. Plain RTF and plain text
// stored by earlier versions read the same way.
#include <qlyappkit/interchange/export/Documents.h>

namespace qly {

/// What follows a document's name, less its extension, to name its comments side file.
inline const QString XQCommentsSideFileSuffix = QStringLiteral(".comments.xml");

/// The comments side file that belongs beside a document: "NAME.comments.xml" for "NAME.EXT".
QString commentsSideFilePathForDocument(const QString& documentPath);

/// A stored text from the text its document was read into: note tags become attributes and, when
/// commentsPath names a side file, its comments are put on their links. A side file that cannot be
/// read is an error (nothing returned, *error set).
std::optional<AttributedString> storedTextFromAttributedString(const AttributedString& read,
                                                               const QString& commentsPath, Error* error = nullptr);

/// A stored text read from bytes: note tags become attributes and, when commentsPath names a side
/// file, its comments are put on their links. A side file that cannot be read is an error (nothing
/// returned, *error set); a text that is not RTF when RTF was asked for is too.
std::optional<AttributedString> storedTextFromDocumentData(const QByteArray& data, DocumentFormat format,
                                                           const QString& commentsPath,
                                                           QVariantMap* documentAttributes = nullptr,
                                                           Error* error = nullptr, QStringList* warnings = nullptr);

/// Writes a stored text: the package RTF of text (as main text) to path and its comments to the side file
/// beside it, each atomically. A text without comments removes a side file left from an earlier save.
/// False (and *error) when either write fails.
bool writeStoredText(const AttributedString& text, const QString& path, const QVariantMap& documentAttributes = {},
                     Error* error = nullptr);

} // namespace qly
