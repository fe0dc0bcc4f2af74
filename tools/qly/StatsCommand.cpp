// qly stats: words and characters of text files, counted by the framework's word-counting storage.
// UTF-8 text, or RTF for files ending in .rtf (read with the platform RTF reader).
#include <QFile>
#include <QFileInfo>

#include <qlyappkit/platform/rtf/RTFReader.h>
#include <qlyappkit/text/storages/XQWordCountingTextStorage.h>

#include "Commands.h"

namespace qly::tool {

namespace {

/// The text of one file; false with a message when it cannot be read.
bool readDocument(const QString& path, AttributedString& text, QString& message)
{
    if (QFileInfo(path).suffix().compare(QLatin1String("rtf"), Qt::CaseInsensitive) != 0) {
        QString plain;
        if (!readTextFile(path, plain, message))
            return false;
        text = AttributedString(plain);
        return true;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        message = QStringLiteral("cannot read %1: %2").arg(path, file.errorString());
        return false;
    }
    RTFParseResult result;
    const std::optional<AttributedString> read = attributedStringFromRTF(file.readAll(), nullptr, &result);
    if (!read) {
        message = QStringLiteral("%1: %2").arg(path, result.description());
        return false;
    }
    // What could be read is counted; a damaged file is still reported.
    if (!result)
        printError(QStringLiteral("%1: %2 at byte %3").arg(path, result.description()).arg(result.offset));
    text = *read;
    return true;
}

} // namespace

int runStats(const QStringList& args)
{
    if (args.isEmpty()) {
        printError(QStringLiteral("stats needs at least one file"));
        return 2;
    }
    qsizetype totalWords = 0, totalCharacters = 0;
    int status = 0;
    for (const QString& path : args) {
        AttributedString text;
        QString message;
        if (!readDocument(path, text, message)) {
            printError(message);
            status = 1;
            continue;
        }
        const XQWordCountingTextStorage storage(text);
        totalWords += storage.wordCount();
        totalCharacters += storage.length();
        printOut(QStringLiteral("%1\t%2\t%3\n").arg(storage.wordCount()).arg(storage.length()).arg(path));
    }
    if (args.size() > 1)
        printOut(QStringLiteral("%1\t%2\ttotal\n").arg(totalWords).arg(totalCharacters));
    return status;
}

} // namespace qly::tool
