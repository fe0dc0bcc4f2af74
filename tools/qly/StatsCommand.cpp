// qly stats: words and characters of documents, counted by the framework's word-counting storage.
#include <qlyappkit/interchange/export/Documents.h>
#include <qlyappkit/text/storages/XQWordCountingTextStorage.h>

#include "CommandLine.h"
#include "Commands.h"

namespace qly::tool {

int runStats(const QStringList& args)
{
    CommandLine line(
        QStringLiteral("stats"), QStringLiteral("FILE..."),
        QStringLiteral("Counts the words and characters (UTF-16 units) of each file, RTF for names ending\n"
                       "in .rtf and UTF-8 text otherwise (\"-\" reads standard input), and prints\n"
                       "words<TAB>characters<TAB>name, with a total line for several files."));
    int exitCode = 0;
    if (!line.parse(args, 1, -1, &exitCode))
        return exitCode;

    qsizetype totalWords = 0, totalCharacters = 0;
    int status = ExitSuccess;
    for (const QString& path : line.arguments()) {
        QByteArray bytes;
        if (!readInput(path, bytes)) {
            status = ExitFailure;
            continue;
        }
        const DocumentFormat format =
            documentFormatOfPath(path) == DocumentFormat::RTF ? DocumentFormat::RTF : DocumentFormat::PlainText;
        Error error;
        QStringList warnings;
        const std::optional<AttributedString> text =
            attributedStringFromDocumentData(bytes, format, nullptr, &error, &warnings);
        // What could be read is counted; a damaged file is still reported.
        for (const QString& warning : warnings)
            printError(QStringLiteral("%1: %2").arg(path, warning));
        if (!text) {
            printError(QStringLiteral("%1: %2").arg(path, error.localizedDescription));
            status = ExitFailure;
            continue;
        }
        const XQWordCountingTextStorage storage(*text);
        totalWords += storage.wordCount();
        totalCharacters += storage.length();
        printOut(QStringLiteral("%1\t%2\t%3\n").arg(storage.wordCount()).arg(storage.length()).arg(path));
    }
    if (line.arguments().size() > 1)
        printOut(QStringLiteral("%1\t%2\ttotal\n").arg(totalWords).arg(totalCharacters));
    return status;
}

} // namespace qly::tool
