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

    void createBodyArrayFromTree(const pugi::xml_node& document, qsizetype bufferSize)
    {
        const pugi::xml_node body = bodyTreeFromTree(document);
        if (!body)
            throw NamedException(XQOPMLMissingBodyExceptionName, XQOPMLMissingBodyReason);
        m_storage.m_body.clear();
        m_storage.m_items.clear();
        m_storage.m_attributes.clear();
        m_storage.m_values.clear();
        // Decoded values are never longer than the text they come from.
        m_storage.m_values.reserve(bufferSize);
        reserveForItemsBelow(body);
        addItemsFromTree(body);
        m_storage.m_values.squeeze();
    }

    // Counts the outline elements and their attributes below tree (a flat walk over the parse tree),
    // so that the item tables are allocated once.
    void reserveForItemsBelow(const pugi::xml_node& tree)
    {
        size_t items = 0, attributes = 0;
        pugi::xml_node node = tree.first_child();
        while (node) {
            if (isElementNamed(node, OutlineElementName)) {
                ++items;
                for (pugi::xml_attribute a = node.first_attribute(); a; a = a.next_attribute())
                    ++attributes;
            }
            if (node.first_child()) {
                node = node.first_child();
                continue;
            }
            while (node && node != tree && !node.next_sibling())
                node = node.parent();
            node = node && node != tree ? node.next_sibling() : pugi::xml_node();
        }
        m_storage.m_items.reserve(items);
        m_storage.m_attributes.reserve(attributes);
    }

    // Walks the tree below `tree` in document order with an explicit stack (one frame per open item),
    // so that nesting depth costs heap, not call stack.
    void addItemsFromTree(const pugi::xml_node& tree)
    {
        struct Frame {
            pugi::xml_node next; // the next child to look at
            qsizetype owner; // the item whose children are being read; -1 for the body
            qsizetype lastChild; // the owner's last child item so far
        };
        std::vector<Frame> stack{{tree.first_child(), -1, -1}};
        auto& items = m_storage.m_items;
        while (!stack.empty()) {
            Frame& frame = stack.back();
            const pugi::xml_node child = frame.next;
            if (!child) {
                stack.pop_back();
                continue;
            }
            frame.next = child.next_sibling();
            if (!isElementNamed(child, OutlineElementName))
                continue; // skipped with everything below it
            const qsizetype index = qsizetype(items.size());
            items.emplace_back();
            flattenItemAttributes(child, items.back());
            if (frame.owner < 0)
                m_storage.m_body.append(index);
            else if (frame.lastChild < 0)
                items[size_t(frame.owner)].firstChild = index;
            else
                items[size_t(frame.lastChild)].nextSibling = index;
            frame.lastChild = index;
            if (const pugi::xml_node first = child.first_child()) {
                items.back().hasChildNodes = true;
                stack.push_back({first, index, -1}); // frame is not used after this
            }
        }
    }

    // The element's attributes, values decoded, into the storage's tables. A name written twice keeps
    // its first place and its last value.
    void flattenItemAttributes(const pugi::xml_node& tree, XQOPMLStorage::ItemRecord& into)
    {
        auto& attributes = m_storage.m_attributes;
        into.firstAttribute = qsizetype(attributes.size());
        constexpr size_t None = size_t(-1);
        QHash<qint32, size_t> seen; // name → record, once the element has many attributes
        for (pugi::xml_attribute attribute = tree.first_attribute(); attribute;
             attribute = attribute.next_attribute()) {
            const qint32 name = nameIndex(attribute.name());
            const qsizetype offset = m_storage.m_values.size();
            const char* raw = attribute.value();
            appendTranslatingOPMLTags(m_storage.m_values, raw, qsizetype(std::strlen(raw)));
            const XQOPMLStorage::AttributeRecord record{offset, m_storage.m_values.size() - offset, name};
            size_t existing = None;
            if (into.attributeCount < LinearAttributeLookup) {
                for (size_t i = size_t(into.firstAttribute); i < attributes.size() && existing == None; ++i) {
                    if (attributes[i].name == name)
                        existing = i;
                }
            } else {
                if (seen.isEmpty()) {
                    for (size_t i = size_t(into.firstAttribute); i < attributes.size(); ++i)
                        seen.insert(attributes[i].name, i);
                }
                existing = seen.value(name, None);
            }
            if (existing != None) {
                attributes[existing] = record; // the earlier value's bytes stay unused
                continue;
            }
            if (!seen.isEmpty())
                seen.insert(name, attributes.size());
            attributes.push_back(record);
            ++into.attributeCount;
        }
    }

private:
    static constexpr qint32 LinearAttributeLookup = 16;

    // Element and attribute names repeat on every item: each distinct name is made into a QString once
    // and shared from then on.
    QString name(const char* utf8) { return m_storage.m_names[nameIndex(utf8)]; }
    qint32 nameIndex(const char* utf8)
    {
        const QByteArrayView key(utf8);
        auto it = m_names.constFind(key);
        if (it == m_names.constEnd()) {
            it = m_names.insert(key, qint32(m_storage.m_names.size()));
            m_storage.m_names.append(QString::fromUtf8(key));
        }
        return *it;
    }

    XQOPMLStorage& m_storage;
    QHash<QByteArrayView, qint32> m_names; // views into the parse tree, which outlives the reader
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
    reader.createBodyArrayFromTree(document, data.size());
    return storage;
}

XQOPMLItem XQOPMLStorage::item(qsizetype index) const
{
    XQOPMLItem out;
    for (qsizetype i = 0; i < attributeCount(index); ++i)
        out.attributes.insert(attributeName(index, i), attributeValue(index, i));
    out.hasChildNodes = hasChildNodes(index);
    out.children = children(index);
    return out;
}

const QString& XQOPMLStorage::attributeName(qsizetype item, qsizetype i) const
{
    return m_names[m_attributes[size_t(m_items[size_t(item)].firstAttribute + i)].name];
}

QString XQOPMLStorage::attributeValue(qsizetype item, qsizetype i) const
{
    const AttributeRecord& record = m_attributes[size_t(m_items[size_t(item)].firstAttribute + i)];
    return QString::fromUtf8(m_values.constData() + record.offset, record.length);
}

QString XQOPMLStorage::attributeValue(qsizetype item, const QString& name, const QString& defaultValue) const
{
    for (qsizetype i = 0; i < attributeCount(item); ++i) {
        if (attributeName(item, i) == name)
            return attributeValue(item, i);
    }
    return defaultValue;
}

QList<qsizetype> XQOPMLStorage::children(qsizetype item) const
{
    QList<qsizetype> out;
    for (qsizetype child = firstChild(item); child >= 0; child = nextSibling(child))
        out.append(child);
    return out;
}

QVariantMap XQOPMLStorage::itemDictionary(qsizetype index, int maximumDepth) const
{
    QVariantMap dictionary;
    for (qsizetype i = 0; i < attributeCount(index); ++i)
        dictionary.insert(attributeName(index, i), attributeValue(index, i));
    if (hasChildNodes(index)) {
        QVariantList children;
        if (maximumDepth > 1) {
            for (qsizetype child = firstChild(index); child >= 0; child = nextSibling(child))
                children.append(itemDictionary(child, maximumDepth - 1));
        }
        dictionary.insert(XQOPMLChildren, children);
    }
    return dictionary;
}

} // namespace qly
