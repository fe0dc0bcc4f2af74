// The in-memory card list: an outline's items become sections and cards with their notes, stamps
// and label colours, and the freeform arrangement never stacks one card on another.
#include <gtest/gtest.h>

#include <qlyappkit/corkboard/XQCorkboardCardList.h>
#include <qlyappkit/corkboard/XQCorkboardView.h>

using namespace qly;

namespace {

XQBaseNodePtr node(const QString& title, const QVariantMap& properties = {}, const XQBaseNodeList& children = {})
{
    XQBaseNodePtr n = XQBaseNode::initWithTitle(title);
    n->setProperties(properties);
    n->setChildren(children);
    return n;
}

} // namespace

TEST(CorkboardCardList, AnOutlineGivesSectionsOfCards)
{
    const XQBaseNodeList top = {
        node("Act One", {},
             {node("Arrival", {{"_note", "She lands."}, {"_status", "  Draft "}, {"_label", "#3060C0"}}),
              node("Tower", {{"_label", "green"}}, {node("too deep")}), node("Odd", {{"_label", "no such colour"}})}),
        node("Empty act"),
    };
    XQCorkboardCardList cards = XQCorkboardCardList::fromOutline(top);
    ASSERT_EQ(cards.sections().size(), 2);
    EXPECT_EQ(cards.sections()[1].title, "Empty act");
    ASSERT_EQ(cards.cardCount(), 3);
    EXPECT_EQ(cards.card(0).title, "Arrival");
    EXPECT_EQ(cards.card(0).text, "She lands.");
    EXPECT_EQ(cards.card(0).stamp, "Draft");
    EXPECT_EQ(cards.card(0).labelColor, QColor(0x30, 0x60, 0xC0));
    EXPECT_EQ(cards.card(1).labelColor, QColor(0, 128, 0));
    EXPECT_TRUE(cards.card(1).text.isEmpty());
    EXPECT_FALSE(cards.card(2).labelColor.isValid());

    XQCorkboardView view;
    EXPECT_EQ(cards.numberOfCardsInSectionAtIndex(&view, 0), 3);
    EXPECT_EQ(cards.numberOfCardsInSectionAtIndex(&view, 1), 0);
    EXPECT_EQ(cards.numberOfCardsInSectionAtIndex(&view, 7), 0);
    EXPECT_EQ(cards.stampForCardAtIndex(&view, 0), "Draft");
    cards.setTitleForCardAtIndex(&view, "Landing", 0);
    EXPECT_EQ(cards.titleForCardAtIndex(&view, 0), "Landing");
}

TEST(CorkboardCardList, TheFreeformArrangementStacksNoCardOnAnother)
{
    QImage picture(60, 90, QImage::Format_RGB32);
    picture.fill(Qt::darkBlue);
    for (double ratio : {0.3, 0.6, 1.2}) {
        SCOPED_TRACE(ratio);
        QList<XQCorkboardSection> sections;
        for (int s = 0; s < 3; ++s) {
            XQCorkboardSection section;
            for (int k = 0; k < 9; ++k) {
                XQCorkboardCard card;
                card.title = QStringLiteral("Card %1").arg(k);
                if ((k + s) % 3 == 0)
                    card.image = picture;
                section.cards.append(card);
            }
            sections.append(section);
        }
        XQCorkboardCardList cards(sections);
        XQCorkboardView view;
        view.resize(800, 600);
        view.setIndexCardHeightRatio(ratio);
        cards.arrangeFreeform(view.indexCardHeightRatio());
        view.setUsesFreeformArrangement(true);
        view.setDataSource(&cards);
        const auto& rects = view.cardRects().rects;
        ASSERT_EQ(rects.size(), 27u);
        for (size_t i = 0; i < rects.size(); ++i) {
            for (size_t j = i + 1; j < rects.size(); ++j)
                EXPECT_FALSE(rects[i].intersects(rects[j])) << "cards " << i << " and " << j;
        }
    }
}
