#include <qlyappkit/platform/xml/XMLFile.h>

#include <qlyappkit/platform/services/Localization.h>

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace qly {
namespace {

const pugi::char_t* const kIndent = "    ";

class SaveFileWriter : public pugi::xml_writer {
public:
    explicit SaveFileWriter(QSaveFile& file) : m_file(file) { }
    void write(const void* data, size_t size) override
    {
        if (m_failed)
            return;
        if (m_file.write(static_cast<const char*>(data), qint64(size)) != qint64(size))
            m_failed = true;
    }
    bool failed() const { return m_failed; }

private:
    QSaveFile& m_file;
    bool m_failed = false;
};

bool hasDeclaration(const pugi::xml_document& document)
{
    for (pugi::xml_node child = document.first_child(); child; child = child.next_sibling()) {
        if (child.type() == pugi::node_declaration)
            return true;
    }
    return false;
}

void fail(Error* error, XQXMLFileErrorCode code, const QString& path, const QString& reason)
{
    setError(error, XQXMLFileErrorDomain, code,
             localized("The file \u201C%1\u201D could not be saved.").arg(QFileInfo(path).fileName()), reason);
}

} // namespace

bool writeXMLDocumentAtomically(const pugi::xml_document& document, const QString& path, Error* error)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        fail(error, XQXMLFileCannotOpenError, path, file.errorString());
        return false;
    }
    SaveFileWriter writer(file);
    unsigned flags = pugi::format_indent;
    if (!hasDeclaration(document)) {
        const QByteArray declaration = XQXMLDeclaration.toUtf8() + '\n';
        writer.write(declaration.constData(), size_t(declaration.size()));
        flags |= pugi::format_no_declaration;
    }
    document.save(writer, kIndent, flags, pugi::encoding_utf8);
    if (writer.failed()) {
        const QString reason = file.errorString();
        file.cancelWriting();
        fail(error, XQXMLFileCannotWriteError, path, reason);
        return false;
    }
    if (!file.commit()) {
        fail(error, XQXMLFileCannotCommitError, path, file.errorString());
        return false;
    }
    return true;
}

pugi::xml_parse_result loadXMLDocument(const QString& path, pugi::xml_document& document, bool preserveWhitespace)
{
    document.reset();
    QFile file(path);
    pugi::xml_parse_result result;
    if (!file.exists()) {
        result.status = pugi::status_file_not_found;
        return result;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        result.status = pugi::status_io_error;
        return result;
    }
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        result.status = pugi::status_io_error;
        return result;
    }
    unsigned options = pugi::parse_default;
    if (preserveWhitespace)
        options |= pugi::parse_ws_pcdata;
    return document.load_buffer(bytes.constData(), size_t(bytes.size()), options, pugi::encoding_auto);
}

} // namespace qly
