#include <qlyappkit/formats/outline/XQBaseNode.h>
#include <qlyappkit/platform/text/Range.h>

#include <QCborArray>
#include <QCborValue>
#include <QSet>

using namespace qly;

namespace {

XQBaseNodePtr node(const QString& title, bool leaf = false)
{
    XQBaseNodePtr n = leaf ? XQBaseNode::initLeaf() : XQBaseNode::init();
    n->setTitle(title);
    return n;
}

QStringList titles(const XQBaseNodeList& nodes)
{
    QStringList out;
    for (const XQBaseNodePtr& n : nodes)
        out << n->title();
    return out;
}

// Every child of every node below root (root included) has that node as parent.
void expectParentLinks(const XQBaseNodePtr& root)
{
    XQBaseNodeList all = root->descendants();
    all.prepend(root);
    for (const XQBaseNodePtr& n : all) {
        for (const XQBaseNodePtr& child : n->children())
            EXPECT_EQ(child->parent(), n) << child->title().toStdString() << " under " << n->title().toStdString();
    }
}

// root
//   a
//     a1 (leaf, with a child a1x)
//     a2
//   b (leaf)
//   c
//     c1 (leaf)
struct Tree {
    XQBaseNodePtr root = node(QStringLiteral("root"));
    XQBaseNodePtr a = node(QStringLiteral("a")), a1 = node(QStringLiteral("a1"), true),
                  a1x = node(QStringLiteral("a1x"), true), a2 = node(QStringLiteral("a2")),
                  b = node(QStringLiteral("b"), true), c = node(QStringLiteral("c")),
                  c1 = node(QStringLiteral("c1"), true);
    Tree()
    {
        root->setChildren({a, b, c});
        a->setChildren({a1, a2});
        a1->addChild(a1x);
        c->addChild(c1);
    }
};

} // namespace

TEST(XQBaseNode, NewNodesAreUntitledAndEmpty)
{
    for (bool leaf : {false, true}) {
        const XQBaseNodePtr n = leaf ? XQBaseNode::initLeaf() : XQBaseNode::init();
        EXPECT_EQ(n->title(), QStringLiteral("Untitled"));
        EXPECT_EQ(n->isLeaf(), leaf);
        EXPECT_TRUE(n->properties().isEmpty());
        EXPECT_EQ(n->childCount(), 0);
        EXPECT_EQ(n->parent(), nullptr);
        EXPECT_TRUE(n->description().startsWith(QStringLiteral("Untitled <XQBaseNode: 0x")));
    }
    const XQBaseNodePtr n = XQBaseNode::init();
    n->setTitle(QString());
    EXPECT_FALSE(n->title().isNull()) << "a null title is stored as the empty text";
    EXPECT_TRUE(n->title().isEmpty());
    EXPECT_EQ(XQBaseNodeMutableKeys, (QStringList{"title", "properties", "isLeaf", "children"}));
}

TEST(XQBaseNode, ChildOperationsKeepParentLinks)
{
    const XQBaseNodePtr parent = node(QStringLiteral("P"));
    const XQBaseNodePtr x = node(QStringLiteral("x")), y = node(QStringLiteral("y")), z = node(QStringLiteral("z"));
    EXPECT_TRUE(parent->insertChild(x, -1));
    EXPECT_TRUE(parent->insertChild(y, -1)) << "-1 appends";
    EXPECT_TRUE(parent->insertChild(z, 0));
    EXPECT_EQ(titles(parent->children()), (QStringList{"z", "x", "y"}));
    EXPECT_FALSE(parent->insertChild(node(QStringLiteral("w")), 4)) << "past the end";
    EXPECT_FALSE(parent->insertChild(node(QStringLiteral("w")), -2));
    EXPECT_FALSE(parent->insertChild(nullptr, 0));
    EXPECT_EQ(parent->childCount(), 3);
    expectParentLinks(parent);

    parent->addChildren({x, node(QStringLiteral("n1")), x, node(QStringLiteral("n2"))});
    EXPECT_EQ(titles(parent->children()), (QStringList{"z", "x", "y", "n1", "n2"}))
        << "children already there are left alone";
    parent->insertChildren({node(QStringLiteral("i1")), y, node(QStringLiteral("i2"))}, 1);
    EXPECT_EQ(titles(parent->children()), (QStringList{"z", "i1", "i2", "x", "y", "n1", "n2"}));
    EXPECT_FALSE(parent->insertChildren({node(QStringLiteral("q"))}, 99));
    expectParentLinks(parent);

    EXPECT_EQ(parent->indexOfChild(x.get()), 3);
    EXPECT_EQ(parent->indexOfChild(node(QStringLiteral("x")).get()), NotFound) << "by identity, not by title";
    EXPECT_EQ(parent->childAtIndex(0), z);
    EXPECT_EQ(parent->childAtIndex(7), nullptr);

    parent->removeChild(x.get());
    EXPECT_EQ(x->parent(), nullptr);
    EXPECT_EQ(parent->indexOfChild(x.get()), NotFound);
    parent->removeChildAtIndex(0);
    EXPECT_EQ(z->parent(), nullptr);
    EXPECT_EQ(titles(parent->children()), (QStringList{"i1", "i2", "y", "n1", "n2"}));
    parent->removeChildAtIndex(10); // nothing
    EXPECT_EQ(parent->childCount(), 5);

    // A node in two lists points at the last one; leaving the first does not clear that link.
    const XQBaseNodePtr other = node(QStringLiteral("O"));
    other->addChild(y);
    EXPECT_EQ(y->parent(), other);
    parent->removeChild(y.get());
    EXPECT_EQ(y->parent(), other);
    other->addChild(y); // addChild does not look for duplicates
    EXPECT_EQ(titles(other->children()), (QStringList{"y", "y"}));
    other->removeChild(y.get());
    EXPECT_EQ(other->childCount(), 0) << "every occurrence goes";

    // Replacing the list releases the old children that point here and adopts the new ones.
    const XQBaseNodePtr n1 = parent->childAtIndex(2);
    const XQBaseNodePtr kept = node(QStringLiteral("k"));
    parent->setChildren({kept});
    EXPECT_EQ(n1->parent(), nullptr);
    EXPECT_EQ(kept->parent(), parent);
}

TEST(XQBaseNode, CyclesAreRefused)
{
    Tree t;
    EXPECT_FALSE(t.a->addChild(t.a));
    EXPECT_FALSE(t.a1->addChild(t.root)) << "an ancestor";
    EXPECT_FALSE(t.a1x->insertChild(t.a, 0));
    t.a1x->addChildren({t.root, t.c1});
    EXPECT_EQ(titles(t.a1x->children()), (QStringList{"c1"}));
    t.c1->setChildren({t.c, t.a2});
    EXPECT_EQ(titles(t.c1->children()), (QStringList{"a2"}));
    EXPECT_EQ(t.root->descendants().size(), 10) << "c1 and a2 now sit in two lists each";
}

TEST(XQBaseNode, DestroyingAParentClearsOnlyLinksThatPointAtIt)
{
    XQBaseNodePtr child = node(QStringLiteral("child")), moved = node(QStringLiteral("moved"));
    const XQBaseNodePtr elsewhere = node(QStringLiteral("elsewhere"));
    {
        XQBaseNodePtr parent = node(QStringLiteral("parent"));
        parent->setChildren({child, moved});
        elsewhere->addChild(moved);
        EXPECT_EQ(child->parent(), parent);
    }
    EXPECT_EQ(child->parent(), nullptr);
    EXPECT_EQ(moved->parent(), elsewhere);

    // A removed node keeps its link (removeObjectFromChildren); it never dangles once the parent goes.
    XQBaseNodePtr orphan = node(QStringLiteral("orphan"));
    {
        XQBaseNodePtr parent = node(QStringLiteral("parent"));
        parent->addChild(orphan);
        parent->removeObjectFromChildren(orphan.get());
        EXPECT_EQ(orphan->parent(), parent);
    }
    EXPECT_EQ(orphan->parent(), nullptr);
}

TEST(XQBaseNode, RemoveObjectFromChildrenStopsAtTheFirstDirectOccurrence)
{
    // root: [s1: [u: [t], t], t, s2: [t]] — t is one node listed in several places.
    const XQBaseNodePtr root = node(QStringLiteral("root")), t = node(QStringLiteral("t"));
    const XQBaseNodePtr s1 = node(QStringLiteral("s1")), u = node(QStringLiteral("u")), s2 = node(QStringLiteral("s2"));
    root->setChildren({s1, t, s2});
    s1->setChildren({u, t});
    u->addChild(t);
    s2->addChild(t);
    const XQBaseNodePtr parentBefore = t->parent();
    root->removeObjectFromChildren(t.get());
    EXPECT_EQ(titles(root->children()), (QStringList{"s1", "s2"}));
    EXPECT_EQ(titles(s1->children()), (QStringList{"u"})) << "an earlier sibling's subtree is searched on the way";
    EXPECT_EQ(u->childCount(), 0) << "and so is the subtree before the direct occurrence at that level";
    EXPECT_EQ(titles(s2->children()), (QStringList{"t"})) << "the walk ended at the direct occurrence";
    EXPECT_EQ(t->parent(), parentBefore) << "the parent link is left as it is";
    EXPECT_EQ(parentBefore, s2);
}

TEST(XQBaseNode, TreeQueries)
{
    Tree t;
    EXPECT_EQ(titles(t.root->descendants()), (QStringList{"a", "a1", "a1x", "a2", "b", "c", "c1"}));
    EXPECT_EQ(titles(t.root->allChildLeafs()), (QStringList{"a1", "b", "c1"})) << "a leaf's children are not visited";
    EXPECT_EQ(titles(t.root->groupChildren()), (QStringList{"a", "c"}));

    struct Level {
        XQBaseNodePtr node, ancestor;
        int level;
    };
    const XQBaseNodePtr stranger = node(QStringLiteral("s"));
    const Level levels[] = {
        {t.root, t.a, 1},   {t.root, stranger, 1}, {t.a, t.root, 1},     {t.a1, t.root, 2},
        {t.a1x, t.root, 3}, {t.a1x, t.a, 2},       {t.a1x, stranger, 4}, {t.a1x, nullptr, 4},
    };
    for (const Level& l : levels)
        EXPECT_EQ(l.node->levelRelativeToAncestor(l.ancestor.get()), l.level) << l.node->title().toStdString();

    EXPECT_TRUE(t.a1x->isDescendantOfNode(t.root.get()));
    EXPECT_TRUE(t.a1x->isDescendantOfNode(t.a.get()));
    EXPECT_FALSE(t.a1x->isDescendantOfNode(t.a1x.get())) << "a node is not its own descendant";
    EXPECT_FALSE(t.a->isDescendantOfNode(t.c.get()));
    EXPECT_TRUE(t.c1->isDescendantOfNodes({t.a, t.c}));
    EXPECT_FALSE(t.c1->isDescendantOfNodes({t.a, t.c1}));
    EXPECT_TRUE(t.c1->isDescendantOfOrOneOfNodes({t.a, t.c1}));
    EXPECT_FALSE(t.c1->isDescendantOfOrOneOfNodes({t.a, t.b}));

    EXPECT_EQ(titles(XQBaseNode::nodesWithAllDescendantsFromNodes({t.a1, t.a})),
              (QStringList{"a1", "a1x", "a", "a1", "a1x", "a2"}))
        << "a child listed before its parent comes twice";
    EXPECT_EQ(titles(XQBaseNode::nodesWithAllDescendantsFromNodes({t.a, t.a1, t.b})),
              (QStringList{"a", "a1", "a1x", "a2", "b"}));

    EXPECT_EQ(t.a1x->indexPathInArray({stranger, t.root}), (QList<qsizetype>{1, 0, 0, 0}));
    EXPECT_EQ(t.c1->indexPathInArray({t.root}), (QList<qsizetype>{0, 2, 0}));
    EXPECT_EQ(t.root->indexPathInArray({t.root}), (QList<qsizetype>{0}));
    EXPECT_FALSE(t.c1->indexPathInArray({t.a}).has_value()) << "top ancestor not in the list";
    t.c->removeObjectFromChildren(t.c1.get()); // c1 still names c as parent, but c no longer lists it
    EXPECT_FALSE(t.c1->indexPathInArray({t.root}).has_value());

    EXPECT_EQ(t.root->rootParent(), nullptr);
    EXPECT_EQ(t.a1x->rootParent(), nullptr) << "answers at once for a node with a parent";
}

TEST(XQBaseNode, LoopingParentLinksEndEveryUpwardWalk)
{
    const XQBaseNodePtr a = node(QStringLiteral("a")), b = node(QStringLiteral("b")), x = node(QStringLiteral("x"));
    a->setParent(b);
    b->setParent(a);
    EXPECT_EQ(a->levelRelativeToAncestor(x.get()), 2) << "the walk stops when it comes back to a";
    EXPECT_FALSE(a->isDescendantOfNode(x.get()));
    EXPECT_TRUE(a->isDescendantOfNode(b.get()));
    EXPECT_FALSE(a->indexPathInArray({a, b}).has_value());
}

TEST(XQBaseNode, OrderingComparesDigitRunsByValue)
{
    struct Case {
        const char* a;
        const char* b;
        ComparisonResult exact, caseInsensitive;
    };
    const Case cases[] = {
        {"Item 2", "Item 10", OrderedAscending, OrderedAscending},
        {"Item 10", "Item 9", OrderedDescending, OrderedDescending},
        {"Item 007", "Item 7", OrderedSame, OrderedSame},
        {"Item 99999999999999999999", "Item 100000000000000000000", OrderedAscending, OrderedAscending},
        {"a", "B", OrderedDescending, OrderedAscending},
        {"Scene", "scene", OrderedAscending, OrderedSame},
        {"Part 2 Scene 10", "Part 2 Scene 9", OrderedDescending, OrderedDescending},
        {"Ch 1", "Ch 1a", OrderedAscending, OrderedAscending},
        {"x9", "xa", OrderedAscending, OrderedAscending},
        {"", "a", OrderedAscending, OrderedAscending},
        {"\u00c9te", "\u00e9te", OrderedAscending, OrderedSame},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.a) + " / " + c.b);
        const XQBaseNodePtr a = node(QString::fromUtf8(c.a)), b = node(QString::fromUtf8(c.b));
        EXPECT_EQ(a->compare(*b), c.exact);
        EXPECT_EQ(b->compare(*a), ComparisonResult(-c.exact));
        EXPECT_EQ(a->caseInsensitiveCompare(*b), c.caseInsensitive);
        EXPECT_EQ(a->reverseCaseInsensitiveCompare(*b), ComparisonResult(-c.caseInsensitive));
    }

    const XQBaseNodePtr parent = node(QStringLiteral("P"));
    for (const char* title : {"item 10", "Item 2", "item 1", "Item 1", "item 20"})
        parent->addChild(node(QString::fromUtf8(title)));
    parent->sortChildrenUsingSelector(&XQBaseNode::compare);
    EXPECT_EQ(titles(parent->children()), (QStringList{"Item 1", "Item 2", "item 1", "item 10", "item 20"}));
    parent->sortChildrenUsingSelector(&XQBaseNode::caseInsensitiveCompare);
    EXPECT_EQ(titles(parent->children()), (QStringList{"Item 1", "item 1", "Item 2", "item 10", "item 20"}))
        << "stable: equal titles keep their order";
    parent->sortChildrenUsingSelector(&XQBaseNode::reverseCaseInsensitiveCompare);
    EXPECT_EQ(titles(parent->children()), (QStringList{"item 20", "item 10", "Item 2", "Item 1", "item 1"}));
    expectParentLinks(parent);

    // Every level below, not only the children.
    const XQBaseNodePtr b = node(QStringLiteral("b")), item10 = node(QStringLiteral("Item 10"));
    const XQBaseNodePtr top = node(QStringLiteral("T"));
    top->setChildren({b, node(QStringLiteral("a"))});
    b->setChildren({item10, node(QStringLiteral("Item 9"))});
    item10->setChildren({node(QStringLiteral("z")), node(QStringLiteral("y"))});
    top->sortAllChildrenUsingSelector(&XQBaseNode::compare);
    EXPECT_EQ(titles(top->children()), (QStringList{"a", "b"}));
    EXPECT_EQ(titles(b->children()), (QStringList{"Item 9", "Item 10"}));
    EXPECT_EQ(titles(item10->children()), (QStringList{"y", "z"}));
}

TEST(XQBaseNode, ArchivesInKeyOrderWithoutTheParentAndReadsBackTheSameBytes)
{
    Tree t;
    t.a->setProperties({{QStringLiteral("status"), QStringLiteral("draft")},
                        {QStringLiteral("words"), 1200},
                        {QStringLiteral("tags"), QStringList{QStringLiteral("x"), QStringLiteral("y")}}});
    const std::optional<QCborMap> map = t.a->encodeWithCoder();
    ASSERT_TRUE(map);
    QStringList keys;
    for (auto it = map->begin(); it != map->end(); ++it)
        keys << it.key().toString();
    EXPECT_EQ(keys, XQBaseNodeMutableKeys) << "no parent key";

    const QByteArray bytes = t.a->archivedData();
    const XQBaseNodePtr back = XQBaseNode::unarchiveFromData(bytes);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->parent(), nullptr);
    EXPECT_EQ(back->title(), QStringLiteral("a"));
    EXPECT_EQ(back->properties(), t.a->properties());
    EXPECT_EQ(titles(back->descendants()), (QStringList{"a1", "a1x", "a2"}));
    EXPECT_TRUE(back->childAtIndex(0)->isLeaf());
    EXPECT_FALSE(back->childAtIndex(1)->isLeaf());
    expectParentLinks(back);
    EXPECT_EQ(back->archivedData(), bytes);
}

TEST(XQBaseNode, DecodingFillsMissingOrWrongValuesByTheNilRules)
{
    struct Case {
        const char* what;
        QCborMap coder;
        QString title;
        bool leaf;
        qsizetype children;
    };
    QCborArray mixed;
    mixed.append(QCborMap{{QStringLiteral("title"), QStringLiteral("kid")}});
    mixed.append(42);
    const Case cases[] = {
        {"empty archive", QCborMap(), QStringLiteral(""), false, 0},
        {"leaf as a number", QCborMap{{QStringLiteral("isLeaf"), 1}}, QStringLiteral(""), true, 0},
        {"wrong types", QCborMap{{QStringLiteral("title"), 5}, {QStringLiteral("children"), QStringLiteral("no")}},
         QStringLiteral(""), false, 0},
        {"non-node children skipped",
         QCborMap{{QStringLiteral("title"), QStringLiteral("t")}, {QStringLiteral("children"), mixed}},
         QStringLiteral("t"), false, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const XQBaseNodePtr n = XQBaseNode::initWithCoder(c.coder);
        ASSERT_TRUE(n);
        EXPECT_EQ(n->title(), c.title);
        EXPECT_EQ(n->isLeaf(), c.leaf);
        EXPECT_EQ(n->childCount(), c.children);
        EXPECT_TRUE(n->properties().isEmpty());
    }
    EXPECT_EQ(XQBaseNode::unarchiveFromData("not cbor at all"), nullptr);
    EXPECT_EQ(XQBaseNode::unarchiveFromData(QCborValue(QStringLiteral("a string")).toCbor()), nullptr);
}

TEST(XQBaseNode, ArchivesRefuseTreesDeeperThanTheBound)
{
    const auto chain = [](int depth) {
        XQBaseNodePtr top = node(QStringLiteral("0"));
        XQBaseNodePtr last = top;
        for (int i = 1; i < depth; ++i) {
            XQBaseNodePtr next = node(QString::number(i));
            last->addChild(next);
            last = next;
        }
        return top;
    };
    const XQBaseNodePtr fits = chain(XQBaseNodeMaximumArchiveDepth);
    const QByteArray bytes = fits->archivedData();
    ASSERT_FALSE(bytes.isEmpty());
    const XQBaseNodePtr back = XQBaseNode::unarchiveFromData(bytes);
    ASSERT_TRUE(back) << "what is written can be read";
    EXPECT_EQ(back->descendants().size(), XQBaseNodeMaximumArchiveDepth - 1);
    EXPECT_FALSE(chain(XQBaseNodeMaximumArchiveDepth + 1)->encodeWithCoder().has_value());
    EXPECT_TRUE(chain(XQBaseNodeMaximumArchiveDepth + 1)->archivedData().isEmpty());
}

TEST(XQBaseNode, CopiesShareNoNodeWithTheirSource)
{
    Tree t;
    t.a2->setProperties({{QStringLiteral("nested"), QVariantMap{{QStringLiteral("k"), QVariantList{1, 2}}}}});
    const XQBaseNodePtr copy = t.a->copy();
    ASSERT_TRUE(copy);
    EXPECT_EQ(copy->parent(), nullptr) << "t.a has a parent; its copy does not";
    EXPECT_EQ(copy->archivedData(), t.a->archivedData()) << "same content";
    XQBaseNodeList source = t.a->descendants(), copied = copy->descendants();
    source << t.a;
    copied << copy;
    QSet<const XQBaseNode*> sourceNodes;
    for (const XQBaseNodePtr& n : source)
        sourceNodes.insert(n.get());
    for (const XQBaseNodePtr& n : copied)
        EXPECT_FALSE(sourceNodes.contains(n.get())) << n->title().toStdString();
    expectParentLinks(copy);
    copy->childAtIndex(0)->setTitle(QStringLiteral("changed"));
    EXPECT_EQ(t.a1->title(), QStringLiteral("a1"));
}

TEST(XQBaseNode, DeepTreesAreWalkedCopiedAndDestroyedWithoutRecursion)
{
    constexpr int Depth = 100'000;
    XQBaseNodePtr top = node(QStringLiteral("top"));
    XQBaseNodePtr last = top;
    for (int i = 1; i < Depth; ++i) {
        XQBaseNodePtr next = node(QString::number(i), i == Depth - 1);
        ASSERT_TRUE(last->addChild(next));
        last = next;
    }
    EXPECT_EQ(top->descendants().size(), Depth - 1);
    EXPECT_EQ(top->allChildLeafs().size(), 1);
    EXPECT_EQ(last->levelRelativeToAncestor(top.get()), Depth - 1);
    EXPECT_TRUE(last->isDescendantOfNode(top.get()));
    EXPECT_EQ(last->indexPathInArray({top})->size(), Depth);
    EXPECT_FALSE(last->addChild(top)) << "the cycle search walks the deep subtree";
    XQBaseNodePtr copy = top->copy();
    EXPECT_EQ(copy->descendants().size(), Depth - 1);
    top->removeObjectFromChildren(last.get());
    EXPECT_EQ(top->descendants().size(), Depth - 2);
    const XQBaseNodePtr keptMiddle = top->descendants()[Depth / 2];
    top.reset();
    copy.reset();
    EXPECT_EQ(keptMiddle->parent(), nullptr) << "its parent went with the rest of the tree";
    EXPECT_EQ(keptMiddle->descendants().size(), Depth / 2 - 3) << "a node still held keeps its subtree";
}
