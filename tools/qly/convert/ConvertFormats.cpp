#include "ConvertFormats.h"

namespace qly::tool {

const std::vector<DocumentFormatHandler>& documentFormatHandlers()
{
    static const std::vector<DocumentFormatHandler> handlers{
        plainTextFormatHandler(), rtfFormatHandler(),           wordRTFFormatHandler(),
        markdownFormatHandler(),  multiMarkdownFormatHandler(), screenplayFormatHandler(),
        htmlFormatHandler(), // written only
    };
    return handlers;
}

void printWarnings(const QString& inputPath, const QStringList& warnings)
{
    for (const QString& warning : warnings)
        printError(QStringLiteral("%1: warning: %2").arg(inputPath, warning));
}

} // namespace qly::tool
