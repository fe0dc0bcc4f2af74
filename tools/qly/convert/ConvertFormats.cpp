#include "ConvertFormats.h"

#include <QFileInfo>

namespace qly::tool {

const std::vector<DocumentFormatHandler>& documentFormatHandlers()
{
    static const std::vector<DocumentFormatHandler> handlers{
        plainTextFormatHandler(), rtfFormatHandler(),           wordRTFFormatHandler(),
        markdownFormatHandler(),  multiMarkdownFormatHandler(), screenplayFormatHandler(),
        packageRTFFormatHandler(),
        htmlFormatHandler(), // written only
    };
    return handlers;
}

const DocumentFormatHandler* documentFormatHandlerNamed(const QString& name)
{
    for (const DocumentFormatHandler& handler : documentFormatHandlers()) {
        if (handler.names.contains(name, Qt::CaseInsensitive))
            return &handler;
    }
    return nullptr;
}

const DocumentFormatHandler* documentFormatHandlerForPath(const QString& path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    for (const DocumentFormatHandler& handler : documentFormatHandlers()) {
        if (!suffix.isEmpty() && handler.extensions.contains(suffix))
            return &handler;
    }
    return nullptr;
}

QString documentFormatHandlerNames(bool readable)
{
    QStringList names;
    for (const DocumentFormatHandler& handler : documentFormatHandlers()) {
        if (readable ? bool(handler.read) : bool(handler.write))
            names.append(handler.names.constFirst());
    }
    return names.join(QStringLiteral(", "));
}

void printWarnings(const QString& inputPath, const QStringList& warnings)
{
    for (const QString& warning : warnings)
        printError(QStringLiteral("%1: warning: %2").arg(inputPath, warning));
}

} // namespace qly::tool
