#pragma once
// The qly subcommands. Each takes its own arguments (without the command name) and returns the
// process exit code; messages for the user go to stderr, results to stdout.
#include <QStringList>

namespace qly::tool {

int runStats(const QStringList& args);
int runComments(const QStringList& args);
int runConvert(const QStringList& args);
int runNotes(const QStringList& args);
/// convert … --to word-rtf: a stored text and its comments to RTF for word processors.
int runWordRTFExport(const QStringList& args);

/// Prints "qly: <message>" on stderr.
void printError(const QString& message);
/// Writes UTF-8 text to stdout.
void printOut(const QString& text);
/// Reads a whole file as UTF-8 (a leading byte-order mark dropped); false with a message when unreadable.
bool readTextFile(const QString& path, QString& text, QString& message);

} // namespace qly::tool
