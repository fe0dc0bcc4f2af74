#include "ConvertFormats.h"

#include <QFileInfo>

namespace qly::tool {

const std::vector<DocumentFormatHandler>& documentFormatHandlers()
{
    static const std::vector<DocumentFormatHandler> handlers{
        plainTextFormatHandler(),     rtfFormatHandler(),        wordRTFFormatHandler(),    markdownFormatHandler(),
        multiMarkdownFormatHandler(), screenplayFormatHandler(), packageRTFFormatHandler(),
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

const DocumentFormatHandler* readingFormatHandler(const CommandLine& line, const QString& path)
{
    const QString fromOption = QStringLiteral("from");
    if (line.isSet(fromOption)) {
        const DocumentFormatHandler* handler = documentFormatHandlerNamed(line.value(fromOption));
        if (!handler || !handler->read)
            line.usageError(QStringLiteral("cannot read format '%1' (known: %2)")
                                .arg(line.value(fromOption), documentFormatHandlerNames(true)));
        return handler && handler->read ? handler : nullptr;
    }
    if (path == StandardStreamName) {
        line.usageError(QStringLiteral("standard input needs --from"));
        return nullptr;
    }
    const DocumentFormatHandler* handler = documentFormatHandlerForPath(path);
    if (!handler || !handler->read) {
        line.usageError(QStringLiteral("%1: unknown format (name it with --from; known: %2)")
                            .arg(path, documentFormatHandlerNames(true)));
        return nullptr;
    }
    return handler;
}

std::optional<ConvertDocument> readDocument(const CommandLine& line, const QString& path, int* exitCode)
{
    const DocumentFormatHandler* reader = readingFormatHandler(line, path);
    if (!reader) {
        *exitCode = ExitUsage;
        return std::nullopt;
    }
    *exitCode = ExitFailure;
    QByteArray bytes;
    if (!readInput(path, bytes))
        return std::nullopt;
    return reader->read(bytes, path, line);
}

void printWarnings(const QString& inputPath, const QStringList& warnings)
{
    for (const QString& warning : warnings)
        printError(QStringLiteral("%1: warning: %2").arg(inputPath, warning));
}

} // namespace qly::tool
