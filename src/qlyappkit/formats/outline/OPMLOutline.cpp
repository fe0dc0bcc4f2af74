#include <qlyappkit/formats/outline/OPMLOutline.h>

#include <optional>
#include <vector>

namespace qly {

XQBaseNodeList XQBaseNodesFromOPMLStorage(const XQOPMLStorage& storage)
{
    const qsizetype count = storage.itemCount();
    std::vector<XQBaseNodePtr> nodes;
    nodes.reserve(size_t(count));
    for (qsizetype item = 0; item < count; ++item) {
        std::optional<QString> title;
        QVariantMap properties;
        for (qsizetype i = 0; i < storage.attributeCount(item); ++i) {
            const QString& name = storage.attributeName(item, i);
            if (name == XQOPMLTextAttributeName)
                title = storage.attributeValue(item, i);
            else
                properties.insert(name, storage.attributeValue(item, i));
        }
        XQBaseNodePtr node = title ? XQBaseNode::initWithTitle(*title) : XQBaseNode::init();
        node->setProperties(properties);
        node->setLeaf(!storage.hasChildNodes(item));
        nodes.push_back(std::move(node));
    }
    // Items come before their children, so each child is still childless when it is added: adding it
    // costs no cycle search.
    for (qsizetype item = 0; item < count; ++item) {
        for (qsizetype child = storage.firstChild(item); child >= 0; child = storage.nextSibling(child))
            nodes[size_t(item)]->addChild(nodes[size_t(child)]);
    }
    XQBaseNodeList top;
    top.reserve(storage.body().size());
    for (qsizetype index : storage.body())
        top.append(nodes[size_t(index)]);
    return top;
}

} // namespace qly
