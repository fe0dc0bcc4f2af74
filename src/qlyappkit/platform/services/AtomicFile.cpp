#include <qlyappkit/platform/services/AtomicFile.h>

#include <qlyappkit/platform/services/Localization.h>

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <unistd.h>

namespace qly {

void setFileSaveError(Error* error, XQFileErrorCode code, const QString& path, const QString& reason)
{
    setError(error, XQFileErrorDomain, code,
             localized("The file \u201C%1\u201D could not be saved.").arg(QFileInfo(path).fileName()), reason);
}

namespace {

void fail(Error* error, XQFileErrorCode code, const QString& path, const QString& reason)
{
    setFileSaveError(error, code, path, reason);
}

} // namespace

AtomicFileWriter::AtomicFileWriter(const QString& path) : m_path(path), m_file(path) { }

bool AtomicFileWriter::open(Error* error)
{
    if (m_file.open(QIODevice::WriteOnly))
        return true;
    fail(error, XQFileCannotOpenError, m_path, m_file.errorString());
    return false;
}

void AtomicFileWriter::write(const char* data, qint64 size)
{
    if (!m_writeError.isEmpty() || !m_file.isOpen())
        return;
    if (m_file.write(data, size) != size) {
        m_writeError = m_file.errorString();
        m_file.cancelWriting();
    }
}

bool AtomicFileWriter::commit(Error* error)
{
    if (!m_file.isOpen() && m_writeError.isEmpty()) {
        fail(error, XQFileCannotOpenError, m_path, localized("The file was never opened for writing."));
        return false;
    }
    if (!m_writeError.isEmpty()) {
        m_file.commit(); // after cancelWriting() this only removes the temporary file
        fail(error, XQFileCannotWriteError, m_path, m_writeError);
        return false;
    }
    if (!m_file.commit()) {
        fail(error, XQFileCannotCommitError, m_path, m_file.errorString());
        return false;
    }
    return true;
}

bool writeFileAtomically(const QString& path, const QByteArray& bytes, Error* error)
{
    AtomicFileWriter file(path);
    if (!file.open(error))
        return false;
    file.write(bytes);
    return file.commit(error);
}

bool writeNewFileInStagedFolder(const QString& path, const QByteArray& bytes, Error* error)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
        fail(error, XQFileCannotOpenError, path, file.errorString());
        return false;
    }
    if (file.write(bytes) != bytes.size() || !file.flush()) {
        fail(error, XQFileCannotWriteError, path, file.errorString());
        file.close();
        QFile::remove(path);
        return false;
    }
    return true;
}

bool flushStagedFolder(const QString& folder)
{
    const int fd = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return false;
    // One flush of the file system for all the folder's files, instead of one per file.
    const bool flushed = ::syncfs(fd) == 0;
    ::close(fd);
    return flushed;
}

} // namespace qly
