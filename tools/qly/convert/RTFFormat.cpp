// RTF as the platform writes and reads it; reading keeps the pictures a stored text (package RTF) embeds,
// for the formats that write them.
#include <qlyappkit/interchange/export/Documents.h>
#include <qlyappkit/interchange/package/PackageRTFReader.h>
#include <qlyappkit/platform/rtf/RTFWriter.h>
#include <qlyappkit/text/comments/CommentedText.h>

#include "ConvertFormats.h"

namespace qly::tool {

DocumentFormatHandler rtfFormatHandler()
{
    DocumentFormatHandler handler;
    handler.names = {QStringLiteral("rtf")};
    handler.extensions = {QStringLiteral("rtf")};
    handler.read = [](const QByteArray& bytes, const QString& inputPath,
                      const CommandLine&) -> std::optional<ConvertDocument> {
        ConvertDocument document{{}, {}, inputPath};
        Error error;
        QStringList warnings;
        std::optional<AttributedString> text = attributedStringFromDocumentData(
            bytes, DocumentFormat::RTF, &document.documentAttributes, &error, &warnings);
        printWarnings(inputPath, warnings);
        if (!text) {
            printError(QStringLiteral("%1: %2").arg(inputPath, error.localizedDescription));
            return std::nullopt;
        }
        document.text = *text;
        // A stored text's pictures: read as package RTF, not as main text, so that note tags stay tags
        // for the word-rtf export to convert and links stay as the platform reads them.
        if (bytes.contains("\\pict") || bytes.contains("\\quillerypdf")) {
            if (const std::optional<AttributedString> stored = initWithQuilleryPackageRTF(bytes, nullptr, false))
                document.text = attributedStringBySavingCommentAndQuilleryLinkIDsAsLinkAttributes(*stored, false);
        }
        return document;
    };
    handler.write = [](const ConvertDocument& document, const QString& outputPath, const CommandLine&) {
        const QByteArray rtf =
            RTFFromRange(document.text, Range{0, document.text.length()}, document.documentAttributes);
        return writeOutput(outputPath, rtf) ? ExitSuccess : ExitFailure;
    };
    return handler;
}

} // namespace qly::tool
