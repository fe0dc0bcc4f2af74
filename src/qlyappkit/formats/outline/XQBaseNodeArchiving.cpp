// Keyed archiving and deep copies of outline nodes.
#include <qlyappkit/formats/outline/XQBaseNode.h>
#include <qlyappkit/platform/services/KeyedArchiver.h>

#include <QCborArray>
#include <QCborValue>

#include <vector>

namespace qly {

namespace {

const QString TitleKey = XQBaseNodeMutableKeys[0];
const QString PropertiesKey = XQBaseNodeMutableKeys[1];
const QString IsLeafKey = XQBaseNodeMutableKeys[2];
const QString ChildrenKey = XQBaseNodeMutableKeys[3];

// Recursion is bounded by XQBaseNodeMaximumArchiveDepth.
std::optional<QCborMap> encodeNode(const XQBaseNode& node, int depth)
{
    if (depth > XQBaseNodeMaximumArchiveDepth)
        return std::nullopt;
    QCborMap map;
    map.insert(TitleKey, node.title());
    map.insert(PropertiesKey, archiving::encode(node.properties()));
    map.insert(IsLeafKey, node.isLeaf());
    QCborArray children;
    for (const XQBaseNodePtr& child : node.children()) {
        std::optional<QCborMap> encoded = encodeNode(*child, depth + 1);
        if (!encoded)
            return std::nullopt;
        children.append(*encoded);
    }
    map.insert(ChildrenKey, children);
    return map;
}

XQBaseNodePtr decodeNode(const QCborMap& coder, int depth)
{
    if (depth > XQBaseNodeMaximumArchiveDepth)
        return {};
    XQBaseNodePtr node = XQBaseNode::init();
    const QCborValue title = coder.value(TitleKey);
    node->setTitle(title.isString() ? title.toString() : QString());
    const QVariant properties = archiving::decode(coder.value(PropertiesKey));
    node->setProperties(properties.metaType() == QMetaType::fromType<QVariantMap>() ? properties.toMap()
                                                                                    : QVariantMap());
    const QCborValue leaf = coder.value(IsLeafKey);
    node->setLeaf(leaf.isBool() ? leaf.toBool() : (leaf.isInteger() && leaf.toInteger() != 0));
    XQBaseNodeList children;
    const QCborValue encodedChildren = coder.value(ChildrenKey);
    if (encodedChildren.isArray()) {
        const QCborArray array = encodedChildren.toArray();
        children.reserve(array.size());
        for (const QCborValue& child : array) {
            if (!child.isMap())
                continue;
            XQBaseNodePtr decoded = decodeNode(child.toMap(), depth + 1);
            if (!decoded)
                return {};
            children.append(std::move(decoded));
        }
    }
    node->setChildren(children);
    return node;
}

} // namespace

std::optional<QCborMap> XQBaseNode::encodeWithCoder() const { return encodeNode(*this, 1); }

XQBaseNodePtr XQBaseNode::initWithCoder(const QCborMap& coder) { return decodeNode(coder, 1); }

QByteArray XQBaseNode::archivedData() const
{
    const std::optional<QCborMap> map = encodeWithCoder();
    return map ? QCborValue(*map).toCbor() : QByteArray();
}

XQBaseNodePtr XQBaseNode::unarchiveFromData(const QByteArray& data)
{
    QCborParserError error;
    const QCborValue value = QCborValue::fromCbor(data, &error);
    if (error.error != QCborError::NoError || !value.isMap())
        return {};
    return initWithCoder(value.toMap());
}

XQBaseNodePtr XQBaseNode::copy() const
{
    // The same result as archiving and unarchiving the subtree, made directly so that any depth can be
    // copied and each node keeps its class.
    const auto copyFields = [](const XQBaseNode& source) {
        XQBaseNodePtr node = source.newNode();
        node->m_title = source.m_title;
        node->m_isLeaf = source.m_isLeaf;
        if (!source.m_properties.isEmpty()) {
            const QVariant copied = archiving::deepCopy(source.m_properties);
            node->m_properties =
                copied.metaType() == QMetaType::fromType<QVariantMap>() ? copied.toMap() : source.m_properties;
        } else {
            node->m_properties.clear();
        }
        return node;
    };
    XQBaseNodePtr root = copyFields(*this);
    std::vector<std::pair<const XQBaseNode*, XQBaseNode*>> pending{{this, root.get()}};
    while (!pending.empty()) {
        const auto [source, target] = pending.back();
        pending.pop_back();
        target->m_children.reserve(source->m_children.size());
        for (const XQBaseNodePtr& child : source->m_children) {
            XQBaseNodePtr copied = copyFields(*child);
            target->adopt(copied);
            target->m_children.append(copied);
            if (child->childCount() > 0)
                pending.push_back({child.get(), copied.get()});
        }
    }
    return root;
}

} // namespace qly
