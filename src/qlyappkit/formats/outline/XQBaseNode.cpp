#include <qlyappkit/formats/outline/XQBaseNode.h>
#include <qlyappkit/platform/services/Localization.h>
#include <qlyappkit/platform/text/Range.h>

#include <QSet>
#include <QtDebug>

#include <algorithm>
#include <vector>

namespace qly {

namespace {

const QString NodeClassName = QStringLiteral("XQBaseNode");

// Calls visit(ancestor) for each node up the parent links, nearest first, until it returns false. Parent
// links are free to set, so they may loop: a node met twice ends the walk.
template <typename Visit> void walkAncestors(const XQBaseNode* node, Visit visit)
{
    QSet<const XQBaseNode*> seen;
    for (XQBaseNodePtr ancestor = node->parent(); ancestor; ancestor = ancestor->parent()) {
        if (seen.contains(ancestor.get()) || ancestor.get() == node)
            return;
        seen.insert(ancestor.get());
        if (!visit(ancestor.get()))
            return;
    }
}

// Pre-order walk below root; visit(child) returns whether to go below child.
template <typename Visit> void walkDescendants(const XQBaseNode* root, Visit visit)
{
    std::vector<std::pair<const XQBaseNode*, qsizetype>> stack{{root, 0}};
    while (!stack.empty()) {
        const XQBaseNode* node = stack.back().first;
        const qsizetype index = stack.back().second++;
        if (index >= node->childCount()) {
            stack.pop_back();
            continue;
        }
        const XQBaseNodePtr& child = node->children()[index];
        if (visit(child) && child->childCount() > 0)
            stack.push_back({child.get(), 0});
    }
}

} // namespace

XQBaseNode::XQBaseNode(Token) : m_title(localized(XQBaseNodeUntitledTitle)) { }

XQBaseNode::XQBaseNode(Token, const QString& title) : m_title(title.isNull() ? QStringLiteral("") : title) { }

XQBaseNode::~XQBaseNode()
{
    // The weak link of a child to this node can no longer be locked, but it still shares this node's
    // control block: that tells the children that point here from those that point elsewhere.
    const std::weak_ptr<XQBaseNode> self = weak_from_this();
    const auto pointsAt = [](const std::weak_ptr<XQBaseNode>& link, const std::weak_ptr<XQBaseNode>& node) {
        return !node.owner_before(link) && !link.owner_before(node);
    };
    // Children this node alone keeps alive are emptied here rather than in their own destructors, so
    // that destroying a deep tree does not recurse.
    std::vector<XQBaseNodePtr> pending;
    for (XQBaseNodePtr& child : m_children) {
        if (pointsAt(child->m_parent, self))
            child->m_parent.reset();
        pending.push_back(std::move(child));
    }
    m_children.clear();
    while (!pending.empty()) {
        XQBaseNodePtr node = std::move(pending.back());
        pending.pop_back();
        if (node.use_count() != 1)
            continue; // someone else still holds it; it keeps its children
        for (XQBaseNodePtr& child : node->m_children) {
            if (child->m_parent.lock() == node)
                child->m_parent.reset();
            pending.push_back(std::move(child));
        }
        node->m_children.clear();
    }
}

XQBaseNodePtr XQBaseNode::init() { return std::make_shared<XQBaseNode>(Token()); }

XQBaseNodePtr XQBaseNode::initWithTitle(const QString& title) { return std::make_shared<XQBaseNode>(Token(), title); }

XQBaseNodePtr XQBaseNode::initLeaf()
{
    XQBaseNodePtr node = init();
    node->setLeaf(true);
    return node;
}

XQBaseNodePtr XQBaseNode::newNode() const { return init(); }

QString XQBaseNode::description() const
{
    return QStringLiteral("%1 <%2: 0x%3>").arg(m_title, NodeClassName).arg(quintptr(this), 0, 16);
}

void XQBaseNode::setTitle(const QString& title) { m_title = title.isNull() ? QStringLiteral("") : title; }

ComparisonResult XQBaseNode::compare(const XQBaseNode& other) const
{
    return compareTitlesNumerically(m_title, other.m_title);
}

ComparisonResult XQBaseNode::caseInsensitiveCompare(const XQBaseNode& other) const
{
    return compareTitlesNumerically(m_title, other.m_title, true);
}

ComparisonResult XQBaseNode::reverseCaseInsensitiveCompare(const XQBaseNode& other) const
{
    return ComparisonResult(-int(caseInsensitiveCompare(other)));
}

void XQBaseNode::sortChildrenUsingSelector(Comparator comparator)
{
    std::stable_sort(m_children.begin(), m_children.end(),
                     [comparator](const XQBaseNodePtr& a, const XQBaseNodePtr& b) {
                         return ((*a).*comparator)(*b) == OrderedAscending;
                     });
}

void XQBaseNode::sortAllChildrenUsingSelector(Comparator comparator)
{
    std::vector<XQBaseNode*> pending{this};
    while (!pending.empty()) {
        XQBaseNode* node = pending.back();
        pending.pop_back();
        node->sortChildrenUsingSelector(comparator);
        for (const XQBaseNodePtr& child : node->m_children) {
            if (child->childCount() > 0)
                pending.push_back(child.get());
        }
    }
}

bool XQBaseNode::wouldMakeCycle(const XQBaseNode* child) const
{
    if (child == this)
        return true;
    if (child->childCount() == 0)
        return false;
    // Nodes may be shared between lists, so the subtree may meet a node twice: each is searched once.
    bool found = false;
    QSet<const XQBaseNode*> seen;
    walkDescendants(child, [&](const XQBaseNodePtr& node) {
        if (node.get() == this)
            found = true;
        if (found || seen.contains(node.get()))
            return false;
        seen.insert(node.get());
        return true;
    });
    return found;
}

void XQBaseNode::adopt(const XQBaseNodePtr& child) { child->m_parent = weak_from_this(); }

void XQBaseNode::release(const XQBaseNodePtr& child)
{
    if (child->m_parent.lock().get() == this)
        child->m_parent.reset();
}

void XQBaseNode::setChildren(const XQBaseNodeList& children)
{
    const XQBaseNodeList old = std::exchange(m_children, {});
    for (const XQBaseNodePtr& child : old)
        release(child);
    m_children.reserve(children.size());
    for (const XQBaseNodePtr& child : children) {
        if (!child || wouldMakeCycle(child.get()))
            continue;
        m_children.append(child);
        adopt(child);
    }
}

XQBaseNodePtr XQBaseNode::childAtIndex(qsizetype index) const
{
    return index >= 0 && index < m_children.size() ? m_children[index] : XQBaseNodePtr();
}

qsizetype XQBaseNode::indexOfChild(const XQBaseNode* child) const
{
    for (qsizetype i = 0; i < m_children.size(); ++i) {
        if (m_children[i].get() == child)
            return i;
    }
    return NotFound;
}

bool XQBaseNode::insertChild(const XQBaseNodePtr& child, qsizetype index)
{
    if (index == -1)
        index = m_children.size();
    if (!child || index < 0 || index > m_children.size() || wouldMakeCycle(child.get()))
        return false;
    m_children.insert(index, child);
    adopt(child);
    return true;
}

void XQBaseNode::addChildren(const XQBaseNodeList& children) { insertChildren(children, -1); }

bool XQBaseNode::insertChildren(const XQBaseNodeList& children, qsizetype index)
{
    if (index == -1)
        index = m_children.size();
    if (index < 0 || index > m_children.size())
        return false;
    QSet<const XQBaseNode*> present;
    present.reserve(m_children.size() + children.size());
    for (const XQBaseNodePtr& child : std::as_const(m_children))
        present.insert(child.get());
    XQBaseNodeList added;
    for (const XQBaseNodePtr& child : children) {
        if (!child || present.contains(child.get()) || wouldMakeCycle(child.get()))
            continue;
        present.insert(child.get());
        added.append(child);
        adopt(child);
    }
    m_children.insert(index, added.size(), XQBaseNodePtr());
    std::move(added.begin(), added.end(), m_children.begin() + index);
    return true;
}

void XQBaseNode::removeChild(const XQBaseNode* child)
{
    const qsizetype at = indexOfChild(child);
    if (at == NotFound)
        return;
    const XQBaseNodePtr keep = m_children[at]; // alive until the links are settled
    release(keep);
    m_children.removeIf([child](const XQBaseNodePtr& node) { return node.get() == child; });
}

void XQBaseNode::removeChildAtIndex(qsizetype index)
{
    if (const XQBaseNodePtr child = childAtIndex(index))
        removeChild(child.get());
}

void XQBaseNode::removeObjectFromChildren(const XQBaseNode* node)
{
    // One frame per level being walked; finding node directly in a level's list ends that level only.
    std::vector<std::pair<XQBaseNode*, qsizetype>> stack{{this, 0}};
    while (!stack.empty()) {
        XQBaseNode* level = stack.back().first;
        const qsizetype index = stack.back().second++;
        if (index >= level->m_children.size()) {
            stack.pop_back();
            continue;
        }
        XQBaseNode* child = level->m_children[index].get();
        if (child == node) {
            level->m_children.removeAt(index); // the parent link stays as it is
            stack.pop_back();
        } else if (child->childCount() > 0) {
            stack.push_back({child, 0});
        }
    }
}

int XQBaseNode::levelRelativeToAncestor(const XQBaseNode* ancestor) const
{
    int level = 1;
    walkAncestors(this, [&](const XQBaseNode* node) {
        if (node == ancestor)
            return false;
        ++level;
        return true;
    });
    return level;
}

XQBaseNodeList XQBaseNode::descendants() const
{
    XQBaseNodeList out;
    walkDescendants(this, [&](const XQBaseNodePtr& node) {
        out.append(node);
        return true;
    });
    return out;
}

XQBaseNodeList XQBaseNode::allChildLeafs() const
{
    XQBaseNodeList out;
    walkDescendants(this, [&](const XQBaseNodePtr& node) {
        if (node->isLeaf()) {
            out.append(node);
            return false;
        }
        return true;
    });
    return out;
}

XQBaseNodeList XQBaseNode::groupChildren() const
{
    XQBaseNodeList out;
    for (const XQBaseNodePtr& child : m_children) {
        if (!child->isLeaf())
            out.append(child);
    }
    return out;
}

bool XQBaseNode::isDescendantOfNode(const XQBaseNode* node) const
{
    bool found = false;
    walkAncestors(this, [&](const XQBaseNode* ancestor) {
        found = ancestor == node;
        return !found;
    });
    return found;
}

bool XQBaseNode::isDescendantOfNodes(const XQBaseNodeList& nodes) const
{
    if (nodes.isEmpty())
        return false;
    QSet<const XQBaseNode*> set;
    for (const XQBaseNodePtr& node : nodes)
        set.insert(node.get());
    bool found = false;
    walkAncestors(this, [&](const XQBaseNode* ancestor) {
        found = set.contains(ancestor);
        return !found;
    });
    return found;
}

bool XQBaseNode::isDescendantOfOrOneOfNodes(const XQBaseNodeList& nodes) const
{
    for (const XQBaseNodePtr& node : nodes) {
        if (node.get() == this)
            return true;
    }
    return isDescendantOfNodes(nodes);
}

XQBaseNodeList XQBaseNode::nodesWithAllDescendantsFromNodes(const XQBaseNodeList& nodes)
{
    XQBaseNodeList out;
    QSet<const XQBaseNode*> inResult;
    for (const XQBaseNodePtr& node : nodes) {
        if (!node || inResult.contains(node.get()))
            continue;
        out.append(node);
        inResult.insert(node.get());
        walkDescendants(node.get(), [&](const XQBaseNodePtr& descendant) {
            out.append(descendant);
            inResult.insert(descendant.get());
            return true;
        });
    }
    return out;
}

std::optional<QList<qsizetype>> XQBaseNode::indexPathInArray(const XQBaseNodeList& rootNodes) const
{
    QList<qsizetype> reversed;
    const XQBaseNode* node = this;
    bool ok = true;
    walkAncestors(this, [&](const XQBaseNode* ancestor) {
        const qsizetype index = ancestor->indexOfChild(node);
        if (index == NotFound) {
            ok = false;
            return false;
        }
        reversed.append(index);
        node = ancestor;
        return true;
    });
    // A loop of parent links has no top: the walk ended on a node whose parent was already passed.
    if (!ok || node->parent())
        return std::nullopt;
    qsizetype top = NotFound;
    for (qsizetype i = 0; i < rootNodes.size(); ++i) {
        if (rootNodes[i].get() == node) {
            top = i;
            break;
        }
    }
    if (top == NotFound)
        return std::nullopt;
    reversed.append(top);
    std::reverse(reversed.begin(), reversed.end());
    return reversed;
}

XQBaseNodePtr XQBaseNode::rootParent() const
{
    if (parent())
        qWarning("rootParent is not meant for nodes that have a parent: walk parent() instead");
    return {};
}

} // namespace qly
