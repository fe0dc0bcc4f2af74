#include <qlyappkit/formats/outline/OPMLOutline.h>

#include <vector>

namespace qly {

XQBaseNodeList XQBaseNodesFromOPMLStorage(const XQOPMLStorage& storage)
{
    const std::vector<XQOPMLItem>& items = storage.items();
    std::vector<XQBaseNodePtr> nodes;
    nodes.reserve(items.size());
    for (const XQOPMLItem& item : items) {
        XQBaseNodePtr node = XQBaseNode::init();
        QVariantMap properties;
        for (const XQOPMLDictionary::Entry& attribute : item.attributes.entries()) {
            if (attribute.first == XQOPMLTextAttributeName)
                node->setTitle(attribute.second);
            else
                properties.insert(attribute.first, attribute.second);
        }
        node->setProperties(properties);
        node->setLeaf(!item.hasChildNodes);
        nodes.push_back(std::move(node));
    }
    // Items come before their children, so each child is still childless when it is added: adding it
    // costs no cycle search.
    for (size_t i = 0; i < items.size(); ++i) {
        for (qsizetype child : items[i].children)
            nodes[i]->addChild(nodes[size_t(child)]);
    }
    XQBaseNodeList top;
    top.reserve(storage.body().size());
    for (qsizetype index : storage.body())
        top.append(nodes[size_t(index)]);
    return top;
}

} // namespace qly
