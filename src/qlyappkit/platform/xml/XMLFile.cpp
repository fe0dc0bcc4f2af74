#include <qlyappkit/platform/xml/XMLFile.h>

#include <QFile>

namespace qly {
namespace {

const pugi::char_t* const kIndent = "    ";

// pugixml's output straight into the atomic file.
class AtomicWriter : public pugi::xml_writer {
public:
    explicit AtomicWriter(AtomicFileWriter& file) : m_file(file) { }
    void write(const void* data, size_t size) override { m_file.write(static_cast<const char*>(data), qint64(size)); }

private:
    AtomicFileWriter& m_file;
};

bool hasDeclaration(const pugi::xml_document& document)
{
    for (pugi::xml_node child = document.first_child(); child; child = child.next_sibling()) {
        if (child.type() == pugi::node_declaration)
            return true;
    }
    return false;
}

} // namespace

bool writeXMLDocumentAtomically(const pugi::xml_document& document, const QString& path, Error* error)
{
    AtomicFileWriter file(path);
    if (!file.open(error))
        return false;
    AtomicWriter writer(file);
    unsigned flags = pugi::format_indent;
    if (!hasDeclaration(document)) {
        file.write(XQXMLDeclaration.toUtf8() + '\n');
        flags |= pugi::format_no_declaration;
    }
    document.save(writer, kIndent, flags, pugi::encoding_utf8);
    return file.commit(error);
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
    return loadXMLDocumentFromData(bytes, document, preserveWhitespace);
}

pugi::xml_parse_result loadXMLDocumentFromData(const QByteArray& data, pugi::xml_document& document,
                                               bool preserveWhitespace)
{
    document.reset();
    unsigned options = pugi::parse_default;
    if (preserveWhitespace)
        options |= pugi::parse_ws_pcdata;
    return document.load_buffer(data.constData(), size_t(data.size()), options, pugi::encoding_auto);
}

} // namespace qly
