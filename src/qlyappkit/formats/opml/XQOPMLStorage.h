#pragma once
// The OPML reader: an outline file read into its head (element name → text) and its body (the tree of
// `outline` items with all their attributes). Read only; nothing here writes OPML.
#include <qlyappkit/formats/opml/XQOPMLDictionary.h>

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>
#include <vector>

namespace qly {

/// The key under which an item's dictionary form holds its children.
inline const QString XQOPMLChildren = QStringLiteral("children");

/// Raised (as NamedException) when the file has no `head` element; a file without `opml` counts as such.
inline const QString XQOPMLMissingHeadExceptionName = QStringLiteral("OPMLcreateHeaderDictionaryFromTreeFailed");
inline const QString XQOPMLMissingHeadReason = QStringLiteral("Couldn't find the <head> tree.");
/// Raised (as NamedException) when the file has a head but no `body` element.
inline const QString XQOPMLMissingBodyExceptionName = QStringLiteral("OPMLParsercreateBodyArrayFromTreeFailed");
inline const QString XQOPMLMissingBodyReason = QStringLiteral("Couldn't find the outline items.");

/// One `outline` element as a plain value: every attribute by name (values decoded), whether it had any
/// child node at all (text, comment, element...), and its child items. Only items with child nodes have
/// a "children" entry in their dictionary form, possibly an empty one.
struct XQOPMLItem {
    XQOPMLDictionary attributes;
    bool hasChildNodes = false;
    /// Indexes of the child items, in document order.
    QList<qsizetype> children;
};

/// Why a file could not be read: the file error or the XML parser's message, with the byte offset of
/// the fault in the file (-1 when it has none).
struct XQOPMLReadError {
    QString message;
    qsizetype offset = -1;
};

/// An OPML file read into memory.
///
/// Items are numbered in document order (a parent always comes before its children) and held flat, with
/// their attribute values decoded into one shared UTF-8 buffer: a storage takes little more memory than
/// the file, and neither reading nor copying nor destroying it recurses on the file's nesting depth.
/// item() gives an item as a value; the per-attribute accessors read without building one.
class XQOPMLStorage {
public:
    /// Reads the file; nothing (and *error) when it cannot be read or is not well-formed XML. Throws
    /// NamedException when the XML lacks the `head` or the `body` element (head is looked for first).
    static std::optional<XQOPMLStorage> initWithContentsOfFile(const QString& path, XQOPMLReadError* error = nullptr);
    /// As initWithContentsOfFile, from the file's bytes (any encoding the XML declares or its byte-order
    /// mark shows). A buffer handed over by move is parsed in place, without a copy.
    static std::optional<XQOPMLStorage> initWithData(QByteArray data, XQOPMLReadError* error = nullptr);

    /// The children of the (last) `head` element: name → element text; a later element of the same name
    /// replaces the value of an earlier one.
    const XQOPMLDictionary& head() const { return m_head; }
    /// Indexes of the top-level items (the `outline` children of the last `body` element).
    const QList<qsizetype>& body() const { return m_body; }
    qsizetype itemCount() const { return qsizetype(m_items.size()); }

    /// The item at index (0 ≤ index < itemCount()).
    XQOPMLItem item(qsizetype index) const;
    qsizetype attributeCount(qsizetype item) const { return m_items[size_t(item)].attributeCount; }
    /// The name and the decoded value of an item's attribute i (0 ≤ i < attributeCount(item)).
    const QString& attributeName(qsizetype item, qsizetype i) const;
    QString attributeValue(qsizetype item, qsizetype i) const;
    /// The value of the item's attribute of that name; defaultValue when it has none.
    QString attributeValue(qsizetype item, const QString& name, const QString& defaultValue = {}) const;
    bool hasChildNodes(qsizetype item) const { return m_items[size_t(item)].hasChildNodes; }
    /// The item's first child and the next item with the same parent; -1 when there is none.
    qsizetype firstChild(qsizetype item) const { return m_items[size_t(item)].firstChild; }
    qsizetype nextSibling(qsizetype item) const { return m_items[size_t(item)].nextSibling; }
    QList<qsizetype> children(qsizetype item) const;

    /// The dictionary form of one item: its attributes, and XQOPMLChildren with the list of its children's
    /// dictionaries when it has child nodes (that entry replaces an attribute named "children"). Below
    /// maximumDepth levels the children lists are left empty, so that hostile nesting cannot build a value
    /// too deep to destroy.
    QVariantMap itemDictionary(qsizetype index, int maximumDepth = 256) const;

private:
    friend class OPMLTreeReader;

    struct ItemRecord {
        qsizetype firstAttribute = 0;
        qsizetype firstChild = -1;
        qsizetype nextSibling = -1;
        qint32 attributeCount = 0;
        bool hasChildNodes = false;
    };
    struct AttributeRecord {
        qsizetype offset; // in m_values
        qsizetype length;
        qint32 name; // in m_names
    };

    XQOPMLDictionary m_head;
    QList<qsizetype> m_body;
    std::vector<ItemRecord> m_items;
    std::vector<AttributeRecord> m_attributes;
    QStringList m_names;
    QByteArray m_values;
};

} // namespace qly
