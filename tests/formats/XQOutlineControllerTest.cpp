#include <qlyappkit/formats/outline/OPMLOutline.h>
#include <qlyappkit/formats/outline/XQOutlineController.h>

#include <QRandomGenerator>

using namespace qly;

namespace {

XQBaseNodeList nodesTitled(const QStringList& titles)
{
    XQBaseNodeList nodes;
    for (const QString& title : titles) {
        XQBaseNodePtr n = XQBaseNode::init();
        n->setTitle(title);
        nodes << n;
    }
    return nodes;
}

QStringList titlesOf(const XQBaseNodeList& nodes)
{
    QStringList out;
    for (const XQBaseNodePtr& n : nodes)
        out << n->title();
    return out;
}

} // namespace

TEST(XQOutlineController, BasenameFromTitleSplitsOffATrailingNumber)
{
    struct Case {
        QString title, base;
        qint64 number;
    };
    const Case cases[] = {
        {QStringLiteral("Scene-12"), QStringLiteral("Scene"), 12},
        {QStringLiteral("Scene"), QStringLiteral("Scene"), 0},
        {QStringLiteral("Scene-"), QStringLiteral("Scene-"), 0},
        {QStringLiteral("Scene-1a"), QStringLiteral("Scene-1a"), 0},
        {QStringLiteral("Scene-+1"), QStringLiteral("Scene-+1"), 0},
        {QStringLiteral("Chapter-0"), QStringLiteral("Chapter-0"), 0},
        {QStringLiteral("Chapter-007"), QStringLiteral("Chapter"), 7},
        {QStringLiteral("a-b-3"), QStringLiteral("a-b"), 3},
        {QStringLiteral("-5"), QString(), 5},
        {QStringLiteral("Scene-\u0663"), QStringLiteral("Scene-\u0663"), 0}, // a digit, but not one that counts
        {QStringLiteral("Big-9223372036854775807"), QStringLiteral("Big"), std::numeric_limits<qint64>::max()},
        {QStringLiteral("Big-99999999999999999999"), QStringLiteral("Big-99999999999999999999"), 0}, // too large
    };
    for (const Case& c : cases) {
        qint64 number = -1;
        EXPECT_EQ(XQOutlineController::basenameFromTitle(c.title, &number), c.base) << c.title.toStdString();
        EXPECT_EQ(number, c.number) << c.title.toStdString();
    }
}

TEST(XQOutlineController, MakeTitleOfItemUniqueCountsUpPastEverySiblingItMeets)
{
    struct Case {
        QStringList siblings;
        int item; // which one is made unique
        QString expected;
    };
    const Case cases[] = {
        {{"Note", "note-1", "Note"}, 2, QStringLiteral("Note-2")},
        {{"Chapter-0", "Chapter-0"}, 0, QStringLiteral("Chapter-0-1")},
        {{"Chapter-0", "Chapter"}, 0, QStringLiteral("Chapter-0")},
        {{"Unique", "Other"}, 0, QStringLiteral("Unique")},
        {{"X", "X", "X"}, 0, QStringLiteral("X-2")}, // two matches in one pass add two
        {{"X", "x", "X-2", "x-3"}, 0, QStringLiteral("X-1")},
        {{"X", "x", "X-1", "x-2"}, 0, QStringLiteral("X-3")},
        {{"Scene-3", "scene-3", "Scene-4"}, 0, QStringLiteral("Scene-5")},
        {{"Solo"}, 0, QStringLiteral("Solo")},
        {{"Huge-99999999999999999999"}, 0, QStringLiteral("Huge-99999999999999999999")},
        // Counting past the largest number starts again from the numbered title.
        {{"x-9223372036854775807", "X-9223372036854775807"}, 0, QStringLiteral("x-9223372036854775807-1")},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.siblings.join(u',').toStdString());
        // Once under a parent, once as the controller's top-level contents.
        for (bool topLevel : {false, true}) {
            const XQBaseNodeList siblings = nodesTitled(c.siblings);
            XQOutlineController controller;
            XQBaseNodePtr parent = XQBaseNode::init();
            if (topLevel)
                controller.setContents(siblings);
            else
                parent->setChildren(siblings);
            controller.makeTitleOfItemUnique(siblings[c.item]);
            EXPECT_EQ(siblings[c.item]->title(), c.expected);
            for (int i = 0; i < siblings.size(); ++i) {
                if (i != c.item) {
                    EXPECT_EQ(siblings[i]->title(), c.siblings[i]) << "only the item is renamed";
                }
            }
        }
    }
}

TEST(XQOutlineController, TheIndexedPassRenamesExactlyAsOneItemAtATime)
{
    const QStringList vocabulary = {"a",
                                    "A",
                                    "a-1",
                                    "A-2",
                                    "a-3",
                                    "b",
                                    "b-0",
                                    "B-1",
                                    "a-b",
                                    "c-1",
                                    "c-01",
                                    "m-9223372036854775807",
                                    "m-9223372036854775806",
                                    "m-9223372036854775807-1"};
    QRandomGenerator random(11);
    for (int round = 0; round < 2000; ++round) {
        QStringList titles;
        const int count = random.bounded(1, 9);
        for (int i = 0; i < count; ++i)
            titles << vocabulary[random.bounded(int(vocabulary.size()))];
        XQBaseNodeList one = nodesTitled(titles), all = nodesTitled(titles);
        if (random.bounded(3) == 0) {
            // The same node listed twice: it is never its own sibling.
            const int twice = random.bounded(count);
            one.append(one[twice]);
            all.append(all[twice]);
        }
        XQOutlineController controller;
        controller.setContents(one);
        for (const XQBaseNodePtr& item : one)
            controller.makeTitleOfItemUnique(item);
        XQOutlineController::makeTitlesUniqueAmongSiblings(all);
        ASSERT_EQ(titlesOf(all), titlesOf(one)) << titles.join(u',').toStdString();
        QSet<QString> lowered;
        QSet<const XQBaseNode*> distinct;
        for (const XQBaseNodePtr& n : all) {
            lowered.insert(n->title().toLower());
            distinct.insert(n.get());
        }
        EXPECT_EQ(lowered.size(), distinct.size()) << "titles end up unique: " << titlesOf(all).join(u',').toStdString();
    }
}

TEST(XQOutlineController, MakeAllTitlesUniqueWorksOnEveryLevel)
{
    const XQBaseNodeList top = nodesTitled({"Part", "part"});
    top[0]->setChildren(nodesTitled({"Scene", "Scene", "scene-1"}));
    top[1]->setChildren(nodesTitled({"Scene"}));
    top[0]->childAtIndex(0)->setChildren(nodesTitled({"Beat", "Beat"}));
    XQOutlineController controller;
    controller.setContents(top);
    controller.makeAllTitlesUnique();
    EXPECT_EQ(titlesOf(top), (QStringList{"Part-1", "part"}));
    EXPECT_EQ(titlesOf(top[0]->children()), (QStringList{"Scene-2", "Scene", "scene-1"}));
    EXPECT_EQ(titlesOf(top[1]->children()), (QStringList{"Scene"})) << "cousins are not siblings";
    EXPECT_EQ(titlesOf(top[0]->childAtIndex(0)->children()), (QStringList{"Beat-1", "Beat"}));
}

TEST(OPMLOutline, ItemsBecomeNodesTitledByTheirText)
{
    const std::optional<XQOPMLStorage> storage = XQOPMLStorage::initWithData(
        "<opml><head/><body><outline text=\"Part\" type=\"part\"><outline text=\"Scene\" _note=\"a&#10;b\"/>"
        "<outline _note=\"no text\"/></outline><outline text=\"Empty group\"><!-- none yet "
        "--></outline></body></opml>");
    ASSERT_TRUE(storage);
    const XQBaseNodeList top = XQBaseNodesFromOPMLStorage(*storage);
    ASSERT_EQ(top.size(), 2);
    EXPECT_EQ(top[0]->title(), QStringLiteral("Part"));
    EXPECT_EQ(top[0]->properties(), (QVariantMap{{QStringLiteral("type"), QStringLiteral("part")}}));
    EXPECT_FALSE(top[0]->isLeaf());
    ASSERT_EQ(top[0]->childCount(), 2);
    const XQBaseNodePtr scene = top[0]->childAtIndex(0);
    EXPECT_EQ(scene->title(), QStringLiteral("Scene"));
    EXPECT_EQ(scene->properties().value(QStringLiteral("_note")), QStringLiteral("a\nb"));
    EXPECT_TRUE(scene->isLeaf());
    EXPECT_EQ(scene->parent(), top[0]);
    EXPECT_EQ(top[0]->childAtIndex(1)->title(), QStringLiteral("Untitled")) << "no text: the default title";
    EXPECT_FALSE(top[1]->isLeaf()) << "an item with child nodes is a group, even with no items below";
    EXPECT_EQ(top[1]->childCount(), 0);
}
