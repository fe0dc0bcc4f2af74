// Plain UTF-8 text.
#include <qlyappkit/interchange/export/Documents.h>

#include "ConvertFormats.h"

namespace qly::tool {

DocumentFormatHandler plainTextFormatHandler()
{
    DocumentFormatHandler handler;
    handler.names = {QStringLiteral("txt"), QStringLiteral("text")};
    handler.extensions = {QStringLiteral("txt"), QStringLiteral("text")};
    handler.read = [](const QByteArray& bytes, const QString& inputPath, const CommandLine&) {
        return std::optional<ConvertDocument>(ConvertDocument{
            attributedStringFromDocumentData(bytes, DocumentFormat::PlainText).value_or(AttributedString()),
            {},
            inputPath});
    };
    handler.write = [](const ConvertDocument& document, const QString& outputPath, const CommandLine&) {
        return writeOutput(outputPath, plainTextDocumentData(document.text)) ? ExitSuccess : ExitFailure;
    };
    return handler;
}

} // namespace qly::tool
