#include <qlyappkit/corkboard/XQCorkboardCardList.h>

#include <algorithm>
#include <cmath>

#include <qlyappkit/platform/values/Color.h>

namespace qly {

void XQCorkboardCardList::setSections(QList<XQCorkboardSection> sections)
{
    m_sections = std::move(sections);
    reindex();
}

void XQCorkboardCardList::reindex()
{
    m_cards.clear();
    for (qsizetype s = 0; s < m_sections.size(); ++s) {
        for (qsizetype k = 0; k < m_sections[s].cards.size(); ++k)
            m_cards.emplace_back(s, k);
    }
}

XQCorkboardCard* XQCorkboardCardList::cardAt(qsizetype index)
{
    if (index < 0 || index >= cardCount())
        return nullptr;
    const auto [section, position] = m_cards[size_t(index)];
    return &m_sections[section].cards[position];
}

void XQCorkboardCardList::arrangeFreeform(double cardHeightRatio)
{
    // Columns 1.25 card widths apart; each card a third of a card height below the one above, nudged
    // a little by a fixed pattern so the board does not look machine-set. A picture card is at most
    // a card width tall, so it gets that much room.
    static constexpr double Nudges[] = {0.0, 0.06, -0.04, 0.09, 0.02, -0.07, 0.05};
    const double ratio = std::max(0.1, cardHeightRatio);
    const double gap = ratio * 0.33;
    qsizetype n = 0;
    for (qsizetype s = 0; s < m_sections.size(); ++s) {
        QList<XQCorkboardCard>& cards = m_sections[s].cards;
        double y = 0.12;
        for (qsizetype k = 0; k < cards.size(); ++k, ++n) {
            const double nx = Nudges[n % 7], ny = Nudges[(n + 3) % 7];
            cards[k].coordinate = QPointF(0.12 + double(s) * 1.25 + nx, y + ny * gap);
            y += (cards[k].image.isNull() ? ratio : std::max(ratio, 1.0)) + gap;
        }
    }
}

XQCorkboardCardList XQCorkboardCardList::fromOutline(const XQBaseNodeList& topLevelNodes)
{
    QList<XQCorkboardSection> sections;
    for (const XQBaseNodePtr& node : topLevelNodes) {
        if (!node)
            continue;
        XQCorkboardSection section;
        section.title = node->title();
        for (const XQBaseNodePtr& child : node->children()) {
            if (!child)
                continue;
            XQCorkboardCard card;
            card.title = child->title();
            const QVariantMap& properties = child->properties();
            card.text = properties.value(XQCorkboardNoteProperty).toString();
            card.stamp = properties.value(XQCorkboardStatusProperty).toString().trimmed();
            const QString label = properties.value(XQCorkboardLabelProperty).toString().trimmed();
            if (std::optional<Color> hex = Color::fromHexString(label))
                card.labelColor = hex->toQColor();
            else if (!label.isEmpty())
                card.labelColor = QColor::fromString(label); // stays invalid for an unknown name
            section.cards.append(card);
        }
        sections.append(section);
    }
    return XQCorkboardCardList(sections);
}

XQCorkboardCardList::Methods XQCorkboardCardList::implementedMethods() const
{
    return Methods(NumberOfSectionsInCorkboardView) | NumberOfCardsInSectionAtIndex | CardAtIndexIsImage
        | ImageForCardAtIndex | CoordinateOfCardAtIndex | TextForCardAtIndex | TitleForCardAtIndex
        | LabelColorForCardAtIndex | StampForCardAtIndex | SetTitleForCardAtIndex | SetTextForCardAtIndex
        | SetCoordinateOfCardAtIndex;
}

int XQCorkboardCardList::numberOfSectionsInCorkboardView(XQCorkboardView*) { return int(m_sections.size()); }

int XQCorkboardCardList::numberOfCardsInSectionAtIndex(XQCorkboardView*, int section)
{
    return section >= 0 && section < m_sections.size() ? int(m_sections[section].cards.size()) : 0;
}

bool XQCorkboardCardList::cardAtIndexIsImage(XQCorkboardView*, qsizetype index)
{
    const XQCorkboardCard* card = cardAt(index);
    return card && !card->image.isNull();
}

QImage XQCorkboardCardList::imageForCardAtIndex(XQCorkboardView*, qsizetype index, bool)
{
    const XQCorkboardCard* card = cardAt(index);
    return card ? card->image : QImage();
}

QPointF XQCorkboardCardList::coordinateOfCardAtIndex(XQCorkboardView*, qsizetype index)
{
    const XQCorkboardCard* card = cardAt(index);
    return card ? card->coordinate : QPointF();
}

QString XQCorkboardCardList::textForCardAtIndex(XQCorkboardView*, qsizetype index)
{
    const XQCorkboardCard* card = cardAt(index);
    return card ? card->text : QString();
}

QString XQCorkboardCardList::titleForCardAtIndex(XQCorkboardView*, qsizetype index)
{
    const XQCorkboardCard* card = cardAt(index);
    return card ? card->title : QString();
}

QColor XQCorkboardCardList::labelColorForCardAtIndex(XQCorkboardView*, qsizetype index)
{
    const XQCorkboardCard* card = cardAt(index);
    return card ? card->labelColor : QColor();
}

QString XQCorkboardCardList::stampForCardAtIndex(XQCorkboardView*, qsizetype index)
{
    const XQCorkboardCard* card = cardAt(index);
    return card ? card->stamp : QString();
}

void XQCorkboardCardList::setTitleForCardAtIndex(XQCorkboardView*, const QString& title, qsizetype index)
{
    if (XQCorkboardCard* card = cardAt(index))
        card->title = title;
}

void XQCorkboardCardList::setTextForCardAtIndex(XQCorkboardView*, const QString& text, qsizetype index)
{
    if (XQCorkboardCard* card = cardAt(index))
        card->text = text;
}

void XQCorkboardCardList::setCoordinateOfCardAtIndex(XQCorkboardView*, QPointF coordinate, qsizetype index)
{
    if (XQCorkboardCard* card = cardAt(index))
        card->coordinate = coordinate;
}

} // namespace qly
