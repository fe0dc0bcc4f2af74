#pragma once
// Running the line-based comparison tool on two prepared sides. Thread-safe: every call has its own
// temporary files (names claimed by exclusive creation) and its own process.
#include <QByteArray>
#include <QString>
#include <QStringList>
#include <optional>

#include <qlyappkit/platform/services/Error.h>

namespace qly::difftool {

/// The tool's arguments: the old, new, unchanged and changed group formats, then the two paths.
QStringList diffToolArguments(const QString& oldPath, const QString& newPath);

/// Creates folder/name + extension, or, when a file of that name exists, name-1, name-2 … (a name is
/// claimed by exclusive creation, so concurrent callers never share one), and writes bytes into it.
/// The path, or nothing and *error (nothing is left behind).
std::optional<QString> createUniqueFile(const QString& folder, const QString& name, const QString& extension,
                                        const QByteArray& bytes, Error* error);

/// Writes the sides to unique files in the user's temporary folder, runs the tool on them and removes
/// the files in every case. The tool's standard output, or nothing and *error: no temporary folder, a
/// file that cannot be written (that write's error), or a tool that cannot run or reports trouble
/// (exit status above 1; differences alone give 1).
std::optional<QByteArray> runDiffTool(const QByteArray& oldSide, const QByteArray& newSide, Error* error);

} // namespace qly::difftool
