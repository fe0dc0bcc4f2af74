#include <qlyappkit/formats/comparison/DiffTool_p.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <qlyappkit/formats/comparison/DiffConstants.h>
#include <qlyappkit/platform/services/AtomicFile.h>
#include <qlyappkit/platform/services/Localization.h>

namespace qly::difftool {

namespace {

/// A bound on name-N attempts, so that a folder that refuses every name cannot keep the loop going.
constexpr int MaximumNameAttempts = 100000;

// Removes the files when the comparison is done with them, whichever way it ends.
class TemporaryFiles {
public:
    TemporaryFiles() = default;
    TemporaryFiles(const TemporaryFiles&) = delete;
    TemporaryFiles& operator=(const TemporaryFiles&) = delete;
    ~TemporaryFiles()
    {
        for (const QString& path : m_paths)
            QFile::remove(path);
    }
    void add(const QString& path) { m_paths.append(path); }

private:
    QStringList m_paths;
};

// The localised file name for a key, kept to a plain name.
QString fileNameFor(const char* key)
{
    const QString name = QFileInfo(localized(key)).fileName();
    return name.isEmpty() ? QString::fromLatin1(key) : name;
}

void setToolError(Error* error)
{
    setError(error, QString(), 0, localized(XQDiffOutputUnreadableDescription),
             localized(XQDiffOutputUnreadableSuggestion));
}

} // namespace

QStringList diffToolArguments(const QString& oldPath, const QString& newPath)
{
    const QString oldGroup = XQDiffOldTextStartTag + QStringLiteral("%<") + XQDiffOldTextEndTag;
    const QString newGroup = XQDiffNewTextStartTag + QStringLiteral("%>") + XQDiffNewTextEndTag;
    return {QStringLiteral("--old-group-format=") + oldGroup,
            QStringLiteral("--new-group-format=") + newGroup,
            QStringLiteral("--unchanged-group-format=%="),
            QStringLiteral("--changed-group-format=") + oldGroup + newGroup,
            oldPath,
            newPath};
}

std::optional<QString> createUniqueFile(const QString& folder, const QString& name, const QString& extension,
                                        const SideWriter& write, Error* error)
{
    bool retried = false;
    for (int attempt = 0; attempt < MaximumNameAttempts; ++attempt) {
        const QString path = QDir(folder).filePath(
            attempt == 0 ? name + extension : QStringLiteral("%1-%2%3").arg(name).arg(attempt).arg(extension));
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
            const QFileInfo existing(path);
            if (existing.exists() || existing.isSymLink()) {
                retried = false;
                continue; // taken: try the next name
            }
            // Another process may have removed its file between the open and the look: try the same
            // name once more before calling the folder unwritable.
            if (!retried) {
                retried = true;
                --attempt;
                continue;
            }
            setFileSaveError(error, XQFileCannotOpenError, path, file.errorString());
            return std::nullopt;
        }
        // The name is ours alone from here on, and the tool reads the file only after it is closed, so a
        // plain write is as safe as an atomic one, and spares a disk sync of a file about to be removed.
        if (!write(file) || !file.flush()) {
            const QString reason = file.errorString();
            file.close();
            QFile::remove(path);
            setFileSaveError(error, XQFileCannotWriteError, path, reason);
            return std::nullopt;
        }
        file.close();
        return path;
    }
    setFileSaveError(error, XQFileCannotOpenError, QDir(folder).filePath(name + extension),
                     localized("Every free name for the file is taken."));
    return std::nullopt;
}

bool runDiffTool(const SideWriter& writeOld, const SideWriter& writeNew, const OutputReader& read, Error* error)
{
    const QString folder = QDir::tempPath();
    if (folder.isEmpty() || !QFileInfo(folder).isDir()) {
        setError(error, QString(), 0, localized(XQDiffNoTemporaryDirectoryDescription),
                 localized(XQDiffNoTemporaryDirectorySuggestion));
        return false;
    }
    TemporaryFiles files;
    const std::optional<QString> oldPath =
        createUniqueFile(folder, fileNameFor(XQDiffOldFileNameKey), XQDiffFileExtension, writeOld, error);
    if (!oldPath)
        return false;
    files.add(*oldPath);
    const std::optional<QString> newPath =
        createUniqueFile(folder, fileNameFor(XQDiffNewFileNameKey), XQDiffFileExtension, writeNew, error);
    if (!newPath)
        return false;
    files.add(*newPath);

    // An argument list, never a shell. Standard error is a pipe of its own that the process object
    // drains while it waits, so the tool never blocks on it; what it said is kept for the log. The
    // output is taken as it comes, so the reader works while the tool does.
    QProcess process;
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(XQDiffToolPath, diffToolArguments(*oldPath, *newPath), QIODevice::ReadOnly);
    if (!process.waitForStarted(-1)) {
        qWarning("Text comparison: %s could not be started: %s", qPrintable(XQDiffToolPath),
                 qPrintable(process.errorString()));
        setToolError(error);
        return false;
    }
    while (process.waitForReadyRead(-1))
        read(process.readAllStandardOutput());
    process.waitForFinished(-1);
    read(process.readAllStandardOutput());
    // Differences make the exit status 1; a crash or a status above 1 means the tool failed, and its
    // output cannot be trusted to hold both texts.
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() > 1) {
        qWarning("Text comparison: %s failed (exit status %d): %s", qPrintable(XQDiffToolPath), process.exitCode(),
                 process.readAllStandardError().trimmed().constData());
        setToolError(error);
        return false;
    }
    return true;
}

} // namespace qly::difftool
