#pragma once
// Running the line-based comparison tool on two prepared sides. Thread-safe: every call has its own
// temporary files (names claimed by exclusive creation) and its own process.
#include <QByteArray>
#include <QIODevice>
#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

#include <qlyappkit/platform/services/Error.h>

namespace qly::difftool {

/// The tool's arguments: the old, new, unchanged and changed group formats, then the two paths.
QStringList diffToolArguments(const QString& oldPath, const QString& newPath);

/// Writes one side into the tool's file; false when a write failed.
using SideWriter = std::function<bool(QIODevice& file)>;
/// Takes the tool's standard output block by block, in order, as it arrives.
using OutputReader = std::function<void(const QByteArray& block)>;

/// Creates folder/name + extension, or, when a file of that name exists, name-1, name-2 … (a name is
/// claimed by exclusive creation, so concurrent callers never share one, and a link there is never
/// followed), and has write fill it. The path, or nothing and *error (nothing is left behind).
std::optional<QString> createUniqueFile(const QString& folder, const QString& name, const QString& extension,
                                        const SideWriter& write, Error* error);

/// Writes the sides to unique files in the user's temporary folder, runs the tool on them, hands its
/// output to read while it runs, and removes the files in every case. False and *error: no temporary
/// folder, a file that cannot be written (that write's error), or a tool that cannot run or reports
/// trouble (exit status above 1; differences alone give 1).
bool runDiffTool(const SideWriter& writeOld, const SideWriter& writeNew, const OutputReader& read, Error* error);

} // namespace qly::difftool
