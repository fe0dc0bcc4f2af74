#include <qlyappkit/platform/services/AtomicFile.h>

#include <qlyappkit/platform/services/Localization.h>

#include <QFileInfo>

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

} // namespace qly
