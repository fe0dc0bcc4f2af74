#pragma once
// The qly subcommands. Each takes its arguments (without the command name) and returns the process
// exit code: 0 done, 1 a file could not be read or written, 2 a usage error. Messages for the user go
// to stderr, results to stdout or the output file.
#include <QStringList>

namespace qly::tool {

int runStats(const QStringList& args);
int runComments(const QStringList& args);
int runConvert(const QStringList& args);
int runNotes(const QStringList& args);
int runScreenplay(const QStringList& args);
/// Exit status 0 equal, 1 different, 2 trouble (usage errors included), as comparison tools have it.
int runDiff(const QStringList& args);
int runOutline(const QStringList& args);
int runFits(const QStringList& args);
int runPages(const QStringList& args);
int runBoard(const QStringList& args);

} // namespace qly::tool
