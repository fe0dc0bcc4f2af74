// qly convert: documents from one format into another (see convert/ for the formats).
#include "CommandLine.h"
#include "Commands.h"
#include "ManuscriptOptions.h"
#include "convert/ConvertFormats.h"

#include <qlyappkit/platform/services/ContainedPaths.h>

#include <QDir>
#include <QFileInfo>

namespace qly::tool {

namespace {

const QString OutputOption = QStringLiteral("output");
const QString FromOption = QStringLiteral("from");
const QString ToOption = QStringLiteral("to");

// The format an option names, or else the file name's; nothing after a message when neither tells.
const DocumentFormatHandler* chosenHandler(const CommandLine& line, const QString& option, const QString& path)
{
    const bool reading = option == FromOption;
    const DocumentFormatHandler* handler = nullptr;
    if (line.isSet(option)) {
        handler = documentFormatHandlerNamed(line.value(option));
        if (!handler) {
            line.usageError(QStringLiteral("unknown format '%1' (known: %2)")
                                .arg(line.value(option), documentFormatHandlerNames(reading)));
            return nullptr;
        }
    } else if (path == StandardStreamName) {
        line.usageError(QStringLiteral("standard %1 needs --%2")
                            .arg(reading ? QStringLiteral("input") : QStringLiteral("output"), option));
        return nullptr;
    } else if (!(handler = documentFormatHandlerForPath(path))) {
        line.usageError(QStringLiteral("%1: unknown format (name it with --%2; known: %3)")
                            .arg(path, option, documentFormatHandlerNames(reading)));
        return nullptr;
    }
    if (reading ? !handler->read : !handler->write) {
        line.usageError(QStringLiteral("%1 can be %2 but not %3")
                            .arg(handler->names.constFirst(),
                                 reading ? QStringLiteral("written") : QStringLiteral("read"),
                                 reading ? QStringLiteral("read") : QStringLiteral("written")));
        return nullptr;
    }
    return handler;
}

// "-o DIR/" (or an existing folder) receives one document per piece.
bool isFolderOutput(const QString& output)
{
    return output != StandardStreamName && (output.endsWith(u'/') || QFileInfo(output).isDir());
}

// Writes each piece as DIR/<input name>-NNN.<extension>, every file atomically and inside DIR.
int writePieces(const ConvertDocument& document, const QString& folder, const DocumentFormatHandler& target,
                const CommandLine& line)
{
    if (!QDir().mkpath(folder)) {
        printError(QStringLiteral("cannot make the folder %1").arg(folder));
        return ExitFailure;
    }
    const QString stem = document.inputPath == StandardStreamName ? QStringLiteral("piece")
                                                                  : QFileInfo(document.inputPath).completeBaseName();
    const QString extension = target.extensions.isEmpty() ? target.names.constFirst() : target.extensions.constFirst();
    const int width = std::max(3, int(QString::number(document.pieces.size()).size()));
    for (qsizetype i = 0; i < document.pieces.size(); ++i) {
        const QString name =
            QStringLiteral("%1-%2.%3").arg(stem).arg(i + 1, width, 10, QLatin1Char('0')).arg(extension);
        QString problem;
        const std::optional<QString> path = pathInsideFolder(folder, name, &problem);
        if (!path) {
            printError(QStringLiteral("refusing to write %1 in %2: %3").arg(name, folder, problem));
            return ExitFailure;
        }
        ConvertDocument piece(applyManuscriptOptions(line, document.pieces[i]), document.documentAttributes,
                              document.inputPath);
        if (const int code = target.write(piece, *path, line))
            return code;
    }
    return ExitSuccess;
}

} // namespace

int runConvert(const QStringList& args)
{
    CommandLine line(
        QStringLiteral("convert"), QStringLiteral("IN -o OUT [-f FORMAT] [-t FORMAT] [format options]"),
        QStringLiteral("Converts a document from one format into another. Formats come from the file names'\n"
                       "extensions unless -f/-t name them; \"-\" reads standard input or writes standard output.\n"
                       "-t word-rtf exports a stored text (RTF with note tags, comments in IN.comments.xml beside it)\n"
                       "as RTF for word processors: real footnotes, endnotes, comments, bookmarks, sections, headers\n"
                       "and footers, pictures. Its links qlybookmark:NAME, qlypageref:NAME and qlypicture:FILE (FILE\n"
                       "inside the input's folder) become bookmarks, page references and pictures; the text and each\n"
                       "page break start a section.\n"
                       "Markdown (.md, .markdown, .fountain) carries bold, italic and underline as emphasis\n"
                       "markers; -f multimarkdown (.mmd) reads the older rules. -f screenplay types a plain-text\n"
                       "screenplay and formats it; with --split-by TYPE -o DIR/ it writes one file per piece.\n"
                       "--manuscript, --dashes and --ellipses convert any document for manuscript submission.\n"
                       "HTML (.html, .htm) is written with the notes inline; a text with pictures becomes a folder\n"
                       "OUT.html holding the page OUT.html and an Images folder (an earlier export there is replaced,\n"
                       "any other folder is left alone)."));
    line.addOption({{QStringLiteral("o"), OutputOption},
                    QStringLiteral("The output file (\"-\": standard output)."),
                    QStringLiteral("OUT")});
    line.addOption({{QStringLiteral("f"), FromOption},
                    QStringLiteral("The input format: %1.").arg(documentFormatHandlerNames(true)),
                    QStringLiteral("FORMAT")});
    line.addOption({{QStringLiteral("t"), ToOption},
                    QStringLiteral("The output format: %1.").arg(documentFormatHandlerNames(false)),
                    QStringLiteral("FORMAT")});
    for (const DocumentFormatHandler& handler : documentFormatHandlers()) {
        for (const QCommandLineOption& option : handler.options)
            line.addOption(option);
    }
    addManuscriptOptions(line);
    int exitCode = 0;
    if (!line.parse(args, 1, 1, &exitCode))
        return exitCode;
    const QString input = line.arguments().constFirst();
    const QString output = line.value(OutputOption);
    if (output.isEmpty())
        return line.usageError(QStringLiteral("missing -o OUT"));
    const DocumentFormatHandler* source = chosenHandler(line, FromOption, input);
    if (!source)
        return ExitUsage;
    // A format that writes a folder at the output path itself (a page with pictures) takes an existing
    // folder there for its own earlier output.
    const DocumentFormatHandler* named =
        line.isSet(ToOption) ? documentFormatHandlerNamed(line.value(ToOption)) : documentFormatHandlerForPath(output);
    const bool folderOutput = isFolderOutput(output) && !(named && named->writesFolderAtPath && !output.endsWith(u'/'));
    // Pieces written into a folder are RTF unless -t names another format.
    const DocumentFormatHandler* target = folderOutput && !line.isSet(ToOption)
        ? documentFormatHandlerNamed(QStringLiteral("rtf"))
        : chosenHandler(line, ToOption, output);
    if (!target)
        return ExitUsage;
    if (!line.isSet(ToOption) && !source->storedFormat.isEmpty()
        && target == documentFormatHandlerNamed(QStringLiteral("rtf")))
        target = documentFormatHandlerNamed(source->storedFormat);
    // An option of a format that takes no part is refused rather than silently ignored.
    for (const DocumentFormatHandler& handler : documentFormatHandlers()) {
        if (&handler == source || &handler == target)
            continue;
        for (const QCommandLineOption& option : handler.options) {
            if (line.isSet(option.names().constFirst()))
                return line.usageError(QStringLiteral("--%1 applies only to %2")
                                           .arg(option.names().constFirst(), handler.names.constFirst()));
        }
    }

    for (const DocumentFormatHandler* handler : {source, target}) {
        if (handler->checkOptions) {
            if (const int code = handler->checkOptions(line))
                return code;
        }
    }
    if (const int code = checkManuscriptOptions(line))
        return code;

    QByteArray bytes;
    if (!readInput(input, bytes))
        return ExitFailure;
    std::optional<ConvertDocument> document = source->read(bytes, input, line);
    if (!document)
        return ExitFailure;
    if (document->splitInto != folderOutput) {
        return line.usageError(
            folderOutput ? QStringLiteral("%1 is a folder: only a split (--split-by) writes into one").arg(output)
                         : QStringLiteral("a split writes one file per piece: -o names a folder (DIR/)"));
    }
    if (folderOutput)
        return writePieces(*document, output, *target, line);
    document->text = applyManuscriptOptions(line, document->text);
    return target->write(*document, output, line);
}

} // namespace qly::tool
