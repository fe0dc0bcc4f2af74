#include <qlyappkit/interchange/export/StoredText.h>

#include <qlyappkit/interchange/comments/CommentsSideFile.h>
#include <qlyappkit/platform/services/Localization.h>
#include <qlyappkit/platform/text/MutableAttributedString.h>
#include <qlyappkit/text/notes/NoteTags.h>

#include <QFileInfo>

namespace qly {

QString commentsSideFilePathForDocument(const QString& documentPath)
{
    const QFileInfo info(documentPath);
    const QString suffix = info.suffix();
    const QString stem = suffix.isEmpty() ? documentPath : documentPath.left(documentPath.size() - suffix.size() - 1);
    return stem + XQCommentsSideFileSuffix;
}

std::optional<AttributedString> storedTextFromAttributedString(const AttributedString& read,
                                                               const QString& commentsPath, Error* error)
{
    std::optional<XQCommentsByID> comments;
    if (!commentsPath.isEmpty()) {
        comments = commentsFromURL(commentsPath);
        if (!comments) {
            setError(error, XQDocumentErrorDomain, XQDocumentUnreadableError,
                     localized("\u201C%1\u201D is not a comments file.").arg(commentsPath));
            return std::nullopt;
        }
    }
    MutableAttributedString text(attributedStringByConvertingTagsToAttributes(read));
    if (comments)
        loadCommentsFromDictionary(text, *comments);
    return text.attributedString();
}

std::optional<AttributedString> storedTextFromDocumentData(const QByteArray& data, DocumentFormat format,
                                                           const QString& commentsPath, QVariantMap* documentAttributes,
                                                           Error* error, QStringList* warnings)
{
    const std::optional<AttributedString> read =
        attributedStringFromDocumentData(data, format, documentAttributes, error, warnings);
    if (!read)
        return std::nullopt;
    return storedTextFromAttributedString(*read, commentsPath, error);
}

} // namespace qly
