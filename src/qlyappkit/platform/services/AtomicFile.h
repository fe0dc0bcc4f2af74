#pragma once
// Writing files atomically: the bytes go to a temporary file beside the target, which is renamed over
// the target only when everything was written, so readers see the old file or the whole new one and a
// failed write leaves neither a half-written target nor a temporary file behind. Every file the
// framework writes goes through here.
#include <qlyappkit/platform/services/Error.h>

#include <QByteArray>
#include <QSaveFile>
#include <QString>

namespace qly {

/// The error domain and codes of atomic file writes.
inline const QString XQFileErrorDomain = QStringLiteral("QlyAppKitFileErrorDomain");
enum XQFileErrorCode { XQFileCannotOpenError = 1, XQFileCannotWriteError = 2, XQFileCannotCommitError = 3 };

/// Fills *error (when asked for) with the error every file write reports: the file's name in the
/// description, the system's reason as the recovery suggestion.
void setFileSaveError(Error* error, XQFileErrorCode code, const QString& path, const QString& reason);

/// A file written in pieces and committed at the end. Destroying it without commit() discards
/// everything written.
class AtomicFileWriter {
public:
    explicit AtomicFileWriter(const QString& path);
    /// Starts the temporary file; false (and *error) when the folder cannot hold it.
    bool open(Error* error = nullptr);
    /// Appends bytes; a failure is remembered and reported by commit().
    void write(const char* data, qint64 size);
    void write(const QByteArray& bytes) { write(bytes.constData(), bytes.size()); }
    /// Renames the temporary file over the target; false (and *error) when any write failed or the
    /// rename did, in which case nothing is left behind.
    bool commit(Error* error = nullptr);

private:
    QString m_path;
    QSaveFile m_file;
    QString m_writeError;
};

/// The whole file at once; see AtomicFileWriter.
bool writeFileAtomically(const QString& path, const QByteArray& bytes, Error* error = nullptr);

// ---- files of a folder that is written aside and moved into place whole
// Such a folder is private until it is moved, so its files need neither a temporary name nor a flush
// each: they are created new, and the folder is flushed once before the move.

/// Creates path (which must not exist) holding bytes, without flushing it to disk. False (and *error,
/// nothing left behind) when it exists already or cannot be written.
bool writeNewFileInStagedFolder(const QString& path, const QByteArray& bytes, Error* error = nullptr);
/// Flushes everything written to the file system holding folder; false when that fails.
bool flushStagedFolder(const QString& folder);

} // namespace qly
