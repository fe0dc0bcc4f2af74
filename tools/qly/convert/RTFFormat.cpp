// RTF as the platform writes and reads it.
#include <qlyappkit/interchange/export/Documents.h>
#include <qlyappkit/platform/rtf/RTFWriter.h>

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
