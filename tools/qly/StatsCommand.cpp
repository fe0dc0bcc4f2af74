// qly stats: words and characters of text files.
#include <qlyappkit/platform/WordCounting.h>

#include "Commands.h"

namespace qly::tool {

int runStats(const QStringList& args)
{
    if (args.isEmpty()) {
        printError(QStringLiteral("stats needs at least one file"));
        return 2;
    }
    qsizetype totalWords = 0, totalCharacters = 0;
    int status = 0;
    for (const QString& path : args) {
        QString text, message;
        if (!readTextFile(path, text, message)) {
            printError(message);
            status = 1;
            continue;
        }
        const qsizetype words = wordCount(QStringView(text));
        totalWords += words;
        totalCharacters += text.size();
        printOut(QStringLiteral("%1\t%2\t%3\n").arg(words).arg(text.size()).arg(path));
    }
    if (args.size() > 1)
        printOut(QStringLiteral("%1\t%2\ttotal\n").arg(totalWords).arg(totalCharacters));
    return status;
}

} // namespace qly::tool
