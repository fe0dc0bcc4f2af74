#include <qlyappkit/interchange/export/StoredText.h>

#include <qlyappkit/interchange/comments/CommentsSideFile.h>
#include <qlyappkit/interchange/package/PackageRTFReader.h>
#include <qlyappkit/interchange/package/PackageRTFWriter.h>
#include <qlyappkit/platform/services/AtomicFile.h>
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
    if (format != DocumentFormat::RTF)
        return storedTextFromAttributedString(*read, commentsPath, error);
    // Read again as package RTF, for the pictures the platform reader leaves out; the first read gave the
    // error or warnings a damaged file deserves. Tags stay text here so that they are converted once, below.
    const std::optional<AttributedString> package = initWithQuilleryPackageRTF(data, documentAttributes, false);
    return storedTextFromAttributedString(package.value_or(*read), commentsPath, error);
}

bool writeStoredText(const AttributedString& text, const QString& path, const QVariantMap& documentAttributes,
                     Error* error)
{
    const QByteArray rtf = quilleryPackageRTFFromRange(text, Range{0, text.length()}, documentAttributes, true);
    return writeFileAtomically(path, rtf, error)
        && writeCommentsToURL(text, commentsSideFilePathForDocument(path), error);
}

} // namespace qly
