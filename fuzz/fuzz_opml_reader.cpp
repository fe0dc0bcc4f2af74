// Fuzz target for the OPML reader: any bytes must read (or be refused) without a crash, a hang or
// undefined behaviour; a storage read must hold a well-formed item tree (children after their parent,
// each item listed once), and the outline made from it must survive ordering, unique titles,
// archiving and copying.
#include <QSet>

#include <cstdint>
#include <cstdlib>
#include <vector>

#include <qlyappkit/formats/opml/XQOPMLStorage.h>
#include <qlyappkit/formats/outline/OPMLOutline.h>
#include <qlyappkit/formats/outline/XQOutlineController.h>
#include <qlyappkit/platform/services/NamedException.h>

namespace {

void checkItems(const qly::XQOPMLStorage& storage)
{
    std::vector<int> listed(size_t(storage.itemCount()), 0);
    const auto note = [&](qsizetype index, qsizetype parent) {
        if (index <= parent || index >= storage.itemCount())
            std::abort();
        ++listed[size_t(index)];
    };
    for (qsizetype index : storage.body())
        note(index, -1);
    for (qsizetype i = 0; i < storage.itemCount(); ++i) {
        if (!storage.hasChildNodes(i) && storage.firstChild(i) >= 0)
            std::abort();
        for (qsizetype child = storage.firstChild(i); child >= 0; child = storage.nextSibling(child))
            note(child, i);
        // Attribute names are unique within an item.
        QSet<QString> names;
        for (qsizetype a = 0; a < storage.attributeCount(i); ++a)
            names.insert(storage.attributeName(i, a));
        if (names.size() != storage.attributeCount(i))
            std::abort();
    }
    for (int count : listed) {
        if (count != 1)
            std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::optional<qly::XQOPMLStorage> storage;
    try {
        storage = qly::XQOPMLStorage::initWithData(QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)));
    } catch (const qly::NamedException&) {
        return 0;
    }
    if (!storage)
        return 0;
    checkItems(*storage);
    if (!storage->body().isEmpty())
        storage->itemDictionary(storage->body().constFirst(), 16);

    const qly::XQBaseNodeList top = qly::XQBaseNodesFromOPMLStorage(*storage);
    qly::XQOutlineController controller;
    controller.setContents(top);
    controller.makeAllTitlesUnique();
    qly::XQBaseNodePtr root = qly::XQBaseNode::init();
    root->setChildren(top);
    if (root->childCount() != top.size())
        std::abort();
    root->sortChildrenUsingSelector(&qly::XQBaseNode::caseInsensitiveCompare);
    const qly::XQBaseNodeList all = root->descendants();
    if (all.size() != storage->itemCount())
        std::abort();
    for (const qly::XQBaseNodePtr& node : all)
        node->sortChildrenUsingSelector(&qly::XQBaseNode::compare);
    const QByteArray archived = root->archivedData();
    if (!archived.isEmpty()) {
        const qly::XQBaseNodePtr back = qly::XQBaseNode::unarchiveFromData(archived);
        if (!back || back->archivedData() != archived)
            std::abort();
    }
    const qly::XQBaseNodePtr copy = root->copy();
    if (copy->descendants().size() != all.size())
        std::abort();
    return 0;
}
