#pragma once
// The generic outline tree node: a title, a free property dictionary, ordered children and a back link
// to the parent, with the queries that selection and drag-and-drop code need.
#include <qlyappkit/formats/outline/TitleOrdering.h>

#include <QByteArray>
#include <QCborMap>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <memory>
#include <optional>

namespace qly {

class XQBaseNode;
using XQBaseNodePtr = std::shared_ptr<XQBaseNode>;
using XQBaseNodeList = QList<XQBaseNodePtr>;

/// The text a new node is titled with (localised).
inline constexpr const char* XQBaseNodeUntitledTitle = "Untitled";
/// The persistent keys, in the order they are archived.
inline const QStringList XQBaseNodeMutableKeys = {QStringLiteral("title"), QStringLiteral("properties"),
                                                  QStringLiteral("isLeaf"), QStringLiteral("children")};
/// Archives hold at most this many levels of nodes: the CBOR reader refuses deeper nesting, so a deeper
/// tree is refused when archived rather than written and then unreadable.
inline constexpr int XQBaseNodeMaximumArchiveDepth = 200;

/// A node of an outline tree.
///
/// Ownership: a node owns its children (shared pointers in its children list) and never its parent (a
/// weak link). Nodes therefore always live in an XQBaseNodePtr; make them with init()/initLeaf(), or in
/// a subclass with std::make_shared and the Token. A node may sit in several children lists (nothing
/// forbids it, as in the framework's other lists); its parent link names the last list it was added to.
///
/// Invariant kept by every child operation: each node in children() has this node as parent(). When a
/// child leaves (removal, replacement of the list, destruction of this node) its parent link is
/// cleared, but only if it still points at this node. removeObjectFromChildren() is the one deliberate
/// exception. A node is never made a child of itself or of one of its descendants (no ownership
/// cycles): such an insertion is refused.
///
/// No operation recurses on depth: trees of any depth can be walked, sorted, copied and destroyed.
class XQBaseNode : public std::enable_shared_from_this<XQBaseNode> {
protected:
    /// Makes the constructor usable only by this class and its subclasses (through std::make_shared).
    struct Token {
        explicit Token() = default;
    };

public:
    explicit XQBaseNode(Token);
    XQBaseNode(Token, const QString& title);
    virtual ~XQBaseNode();
    XQBaseNode(const XQBaseNode&) = delete;
    XQBaseNode& operator=(const XQBaseNode&) = delete;

    /// A node titled "Untitled" (localised) with no properties, children or parent, not a leaf.
    static XQBaseNodePtr init();
    /// The same, as a leaf.
    static XQBaseNodePtr initLeaf();
    /// A node with that title (and no lookup of the localised default: for building large trees).
    static XQBaseNodePtr initWithTitle(const QString& title);

    /// "title <XQBaseNode: 0x…>".
    QString description() const;

    const QString& title() const { return m_title; }
    /// A null text is stored as the empty text.
    void setTitle(const QString& title);
    const QVariantMap& properties() const { return m_properties; }
    QVariantMap& properties() { return m_properties; }
    void setProperties(const QVariantMap& properties) { m_properties = properties; }
    bool isLeaf() const { return m_isLeaf; }
    void setLeaf(bool leaf) { m_isLeaf = leaf; }

    // Ordering by title, digit runs by numeric value.
    ComparisonResult compare(const XQBaseNode& other) const;
    /// Titles lower-cased (character by character) first.
    ComparisonResult caseInsensitiveCompare(const XQBaseNode& other) const;
    /// caseInsensitiveCompare with ascending and descending swapped.
    ComparisonResult reverseCaseInsensitiveCompare(const XQBaseNode& other) const;
    using Comparator = ComparisonResult (XQBaseNode::*)(const XQBaseNode&) const;
    /// Sorts the children in place (stable) with one of the comparisons above, e.g. &XQBaseNode::compare.
    void sortChildrenUsingSelector(Comparator comparator);
    /// sortChildrenUsingSelector on this node and on every node below it.
    void sortAllChildrenUsingSelector(Comparator comparator);

    // Children.
    const XQBaseNodeList& children() const { return m_children; }
    /// Replaces the list: old children pointing here lose their parent link, the new ones get it. Nodes
    /// that would make a cycle (this node or one of its ancestors) are left out.
    void setChildren(const XQBaseNodeList& children);
    qsizetype childCount() const { return m_children.size(); }
    /// The child at index; null when the index is out of range.
    XQBaseNodePtr childAtIndex(qsizetype index) const;
    /// The first position of child (by identity); NotFound when absent.
    qsizetype indexOfChild(const XQBaseNode* child) const;
    /// Inserts at index (-1 appends) and sets the parent. False, changing nothing, for an index out of
    /// range, a null child, or a child that would make a cycle.
    bool insertChild(const XQBaseNodePtr& child, qsizetype index);
    /// Appends (no check for duplicates) and sets the parent; false as insertChild.
    bool addChild(const XQBaseNodePtr& child) { return insertChild(child, -1); }
    /// Appends each node that is not already a child (identity), setting its parent.
    void addChildren(const XQBaseNodeList& children);
    /// Inserts the nodes that are not already children at consecutive positions from index, in order.
    /// False, changing nothing, for an index out of range.
    bool insertChildren(const XQBaseNodeList& children, qsizetype index);
    /// Clears the child's parent link if it points here, then removes every occurrence of it (identity).
    void removeChild(const XQBaseNode* child);
    /// removeChild for the child at index; nothing for an index out of range.
    void removeChildAtIndex(qsizetype index);
    /// The parent, or null when there is none (or it no longer exists).
    XQBaseNodePtr parent() const { return m_parent.lock(); }
    /// Sets the back link only; the parent's children list is not changed.
    void setParent(const XQBaseNodePtr& parent) { m_parent = parent; }
    /// Removes node from anywhere below: the children are walked in order; the first one that is node is
    /// removed and ends the walk at this level, while the subtrees of the children before it are searched
    /// (and node removed from them) on the way. The removed node keeps its parent link, on purpose: a
    /// caller moving it elsewhere still knows where it came from.
    void removeObjectFromChildren(const XQBaseNode* node);

    // Queries.
    /// 1 for a node without parent; otherwise 1 plus the number of ancestors passed before reaching
    /// ancestor (a direct child of ancestor is at level 1). Without ancestor on the chain, to the top.
    int levelRelativeToAncestor(const XQBaseNode* ancestor) const;
    /// Every node below, depth first, each before its own descendants (leaf flags ignored).
    XQBaseNodeList descendants() const;
    /// The leaves below, depth first; a non-leaf child contributes its own leaves, never itself, and a
    /// leaf's children are not visited.
    XQBaseNodeList allChildLeafs() const;
    /// The direct children that are not leaves.
    XQBaseNodeList groupChildren() const;
    /// True when node is a proper ancestor (by parent links; a node is not its own descendant).
    bool isDescendantOfNode(const XQBaseNode* node) const;
    bool isDescendantOfNodes(const XQBaseNodeList& nodes) const;
    /// True when this node is one of nodes or a descendant of one.
    bool isDescendantOfOrOneOfNodes(const XQBaseNodeList& nodes) const;
    /// For each listed node not already in the result: the node, then all its descendants. A child
    /// listed before its parent therefore appears twice with its subtree.
    static XQBaseNodeList nodesWithAllDescendantsFromNodes(const XQBaseNodeList& nodes);
    /// The index of the top ancestor in rootNodes, then the index of each node below it in its parent's
    /// children down to this node; nothing when any of them is not found.
    std::optional<QList<qsizetype>> indexPathInArray(const XQBaseNodeList& rootNodes) const;
    /// Always null. Kept for callers of the original interface, where it answered nothing for a root and
    /// never returned for a node with a parent; here a node with a parent gets null too, with a warning.
    /// Use parent() to walk upward.
    XQBaseNodePtr rootParent() const;

    // Keyed archiving and copying.
    /// The node's keyed form: "title", "properties", "isLeaf", "children" in that order (never the
    /// parent); nothing when the subtree is deeper than XQBaseNodeMaximumArchiveDepth or a property
    /// cannot be archived.
    std::optional<QCborMap> encodeWithCoder() const;
    /// A node rebuilt from its keyed form: a missing leaf flag is false, a missing title empty, missing
    /// children none; values of the wrong type count as missing. Null for a form nested deeper than
    /// XQBaseNodeMaximumArchiveDepth.
    static XQBaseNodePtr initWithCoder(const QCborMap& coder);
    /// The keyed form as CBOR bytes; empty when encodeWithCoder gives nothing.
    QByteArray archivedData() const;
    /// Reads archivedData(); null for bytes that are not a node archive.
    static XQBaseNodePtr unarchiveFromData(const QByteArray& data);
    /// A deep copy without parent: every node below is new (each made by its original's newNode()),
    /// titles and leaf flags copied, properties deep-copied through the archiver.
    XQBaseNodePtr copy() const;

protected:
    /// A fresh node of this node's class, for copies; subclasses override it.
    virtual XQBaseNodePtr newNode() const;

private:
    /// True when adding child here would make a cycle.
    bool wouldMakeCycle(const XQBaseNode* child) const;
    void adopt(const XQBaseNodePtr& child);
    void release(const XQBaseNodePtr& child);

    QString m_title;
    QVariantMap m_properties;
    XQBaseNodeList m_children;
    bool m_isLeaf = false;
    std::weak_ptr<XQBaseNode> m_parent;
};

} // namespace qly
