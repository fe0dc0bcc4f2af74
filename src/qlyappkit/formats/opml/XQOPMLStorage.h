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

/// One `outline` element: every attribute by name (values decoded), and its child items. hasChildNodes
/// tells whether the element had any child node at all (text, comment, element...): only such items
/// have a "children" entry in their dictionary form, possibly an empty one.
struct XQOPMLItem {
    XQOPMLDictionary attributes;
    bool hasChildNodes = false;
    /// Indexes of the child items in XQOPMLStorage::items(), in document order.
    QList<qsizetype> children;
};

/// Why a file could not be read: the file error or the XML parser's message, with the byte offset of
/// the fault in the file (-1 when it has none).
struct XQOPMLReadError {
    QString message;
    qsizetype offset = -1;
};

/// An OPML file read into memory. The items are held flat, in document order (a parent always comes
/// before its children), so that neither reading nor copying nor destroying a storage recurses on the
/// file's nesting depth.
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
    const std::vector<XQOPMLItem>& items() const { return m_items; }
    const XQOPMLItem& item(qsizetype index) const { return m_items[size_t(index)]; }

    /// The dictionary form of one item: its attributes, and XQOPMLChildren with the list of its children's
    /// dictionaries when it has child nodes (that entry replaces an attribute named "children"). Below
    /// maximumDepth levels the children lists are left empty, so that hostile nesting cannot build a value
    /// too deep to destroy.
    QVariantMap itemDictionary(qsizetype index, int maximumDepth = 256) const;

private:
    friend class OPMLTreeReader;

    XQOPMLDictionary m_head;
    QList<qsizetype> m_body;
    std::vector<XQOPMLItem> m_items;
};

} // namespace qly
