#include <qlyappkit/formats/opml/OPMLText.h>
#include <qlyappkit/formats/opml/XQOPMLStorage.h>
#include <qlyappkit/platform/services/NamedException.h>

#include <QByteArrayView>
#include <QFile>
#include <QHash>

#include <cstring>
#include <pugixml.hpp>

namespace qly {

namespace {

constexpr const char* OPMLElementName = "opml";
constexpr const char* HeadElementName = "head";
constexpr const char* BodyElementName = "body";
constexpr const char* OutlineElementName = "outline";

// Attribute text and entity references come back as written (no escapes), so that the OPML decoding
// rules apply and nothing is expanded; whitespace-only text is skipped; comments and processing
// instructions are kept as nodes because they count as an element's child nodes. pugixml never reads
// external entities and never expands the entities a DOCTYPE declares.
constexpr unsigned ParseOptions =
    pugi::parse_cdata | pugi::parse_comments | pugi::parse_pi | pugi::parse_eol | pugi::parse_wconv_attribute;

bool isElementNamed(const pugi::xml_node& node, const char* name)
{
    return node.type() == pugi::node_element && std::strcmp(node.name(), name) == 0;
}

} // namespace

// Builds a storage from a parse tree. The operations mirror the steps of reading: find the elements,
// then the header, then the body.
class OPMLTreeReader {
public:
    explicit OPMLTreeReader(XQOPMLStorage& storage) : m_storage(storage) { }

    // The last child of that name, so that of several same-named elements the last one is read.
    static pugi::xml_node treeNamed(const char* name, const pugi::xml_node& tree)
    {
        for (pugi::xml_node child = tree.last_child(); child; child = child.previous_sibling()) {
            if (isElementNamed(child, name))
                return child;
        }
        return {};
    }
    static pugi::xml_node OPMLTreeFromTree(const pugi::xml_node& document)
    {
        return treeNamed(OPMLElementName, document);
    }
    static pugi::xml_node subTreeNamed(const char* name, const pugi::xml_node& document)
    {
        const pugi::xml_node opml = OPMLTreeFromTree(document);
        return opml ? treeNamed(name, opml) : pugi::xml_node();
    }
    static pugi::xml_node headTreeFromTree(const pugi::xml_node& document)
    {
        return subTreeNamed(HeadElementName, document);
    }
    static pugi::xml_node bodyTreeFromTree(const pugi::xml_node& document)
    {
        return subTreeNamed(BodyElementName, document);
    }

    // The text of the element's direct text and CDATA children; grandchildren are not visited.
    static QString elementValueForTree(const pugi::xml_node& tree)
    {
        QString value;
        for (pugi::xml_node child = tree.first_child(); child; child = child.next_sibling()) {
            if (child.type() == pugi::node_pcdata)
                value += OPMLElementTextFromRawText(QString::fromUtf8(child.value()));
            else if (child.type() == pugi::node_cdata)
                value += QString::fromUtf8(child.value());
        }
        return value;
    }

    void createHeaderDictionaryFromTree(const pugi::xml_node& document)
    {
        const pugi::xml_node head = headTreeFromTree(document);
        if (!head)
            throw NamedException(XQOPMLMissingHeadExceptionName, XQOPMLMissingHeadReason);
        XQOPMLDictionary header;
        for (pugi::xml_node child = head.first_child(); child; child = child.next_sibling()) {
            if (child.type() == pugi::node_element)
                header.insert(name(child.name()), elementValueForTree(child));
        }
        m_storage.m_head = std::move(header);
    }

    void createBodyArrayFromTree(const pugi::xml_node& document)
    {
        const pugi::xml_node body = bodyTreeFromTree(document);
        if (!body)
            throw NamedException(XQOPMLMissingBodyExceptionName, XQOPMLMissingBodyReason);
        m_storage.m_body.clear();
        m_storage.m_items.clear();
        addItemsFromTree(body);
    }

    // Walks the tree below `tree` in document order with an explicit stack (one frame per open item),
    // so that nesting depth costs heap, not call stack.
    void addItemsFromTree(const pugi::xml_node& tree)
    {
        struct Frame {
            pugi::xml_node next; // the next child to look at
            qsizetype owner; // the item whose children are being read; -1 for the body
        };
        std::vector<Frame> stack{{tree.first_child(), -1}};
        std::vector<XQOPMLItem>& items = m_storage.m_items;
        while (!stack.empty()) {
            const pugi::xml_node child = stack.back().next;
            if (!child) {
                stack.pop_back();
                continue;
            }
            const qsizetype owner = stack.back().owner;
            stack.back().next = child.next_sibling();
            if (!isElementNamed(child, OutlineElementName))
                continue; // skipped with everything below it
            const qsizetype index = qsizetype(items.size());
            items.emplace_back();
            flattenItemAttributes(child, items.back().attributes);
            (owner < 0 ? m_storage.m_body : items[size_t(owner)].children).append(index);
            if (const pugi::xml_node first = child.first_child()) {
                items.back().hasChildNodes = true;
                stack.push_back({first, index});
            }
        }
    }

    void flattenItemAttributes(const pugi::xml_node& tree, XQOPMLDictionary& into)
    {
        for (pugi::xml_attribute attribute = tree.first_attribute(); attribute; attribute = attribute.next_attribute())
            into.insert(name(attribute.name()),
                        stringByTranslatingOPMLTagsFromString(QString::fromUtf8(attribute.value())));
    }

private:
    // Element and attribute names repeat on every item: each distinct name is made into a QString once
    // and shared from then on.
    QString name(const char* utf8)
    {
        const QByteArrayView key(utf8);
        auto it = m_names.constFind(key);
        if (it == m_names.constEnd())
            it = m_names.insert(key, QString::fromUtf8(key));
        return *it;
    }

    XQOPMLStorage& m_storage;
    QHash<QByteArrayView, QString> m_names; // views into the parse tree, which outlives the reader
};

std::optional<XQOPMLStorage> XQOPMLStorage::initWithContentsOfFile(const QString& path, XQOPMLReadError* error)
{
    QFile file(path);
    QByteArray bytes;
    if (file.open(QIODevice::ReadOnly))
        bytes = file.readAll();
    if (!file.isOpen() || file.error() != QFileDevice::NoError) {
        if (error)
            *error = XQOPMLReadError{file.errorString(), -1};
        return std::nullopt;
    }
    file.close();
    return initWithData(std::move(bytes), error);
}

std::optional<XQOPMLStorage> XQOPMLStorage::initWithData(QByteArray data, XQOPMLReadError* error)
{
    pugi::xml_document document;
    // In place: the tree points into the buffer, which lives until the end of this function.
    const pugi::xml_parse_result parsed =
        document.load_buffer_inplace(data.data(), size_t(data.size()), ParseOptions, pugi::encoding_auto);
    if (!parsed) {
        if (error)
            *error = XQOPMLReadError{QString::fromUtf8(parsed.description()), qsizetype(parsed.offset)};
        return std::nullopt;
    }
    XQOPMLStorage storage;
    OPMLTreeReader reader(storage);
    reader.createHeaderDictionaryFromTree(document);
    reader.createBodyArrayFromTree(document);
    return storage;
}

QVariantMap XQOPMLStorage::itemDictionary(qsizetype index, int maximumDepth) const
{
    const XQOPMLItem& it = item(index);
    QVariantMap dictionary = it.attributes.toVariantMap();
    if (it.hasChildNodes) {
        QVariantList children;
        if (maximumDepth > 1) {
            for (qsizetype child : it.children)
                children.append(itemDictionary(child, maximumDepth - 1));
        }
        dictionary.insert(XQOPMLChildren, children);
    }
    return dictionary;
}

} // namespace qly
