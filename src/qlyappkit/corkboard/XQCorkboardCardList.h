#pragma once
// A ready-made corkboard model: sections of cards held in memory, serving every data-source method.
// Tools and tests fill it from files or an outline; applications with a model of their own write
// their own data source instead.
#include <QColor>
#include <QImage>
#include <QList>
#include <QPointF>
#include <QString>

#include <qlyappkit/corkboard/XQCorkboardViewDataSource.h>
#include <qlyappkit/formats/outline/XQBaseNode.h>

namespace qly {

struct XQCorkboardCard {
    QString title;
    QString text;
    QImage image; ///< non-null makes a picture card
    QColor labelColor; ///< invalid: no label chip
    QString stamp;
    QPointF coordinate; ///< freeform position, in card widths
};

struct XQCorkboardSection {
    QString title;
    QList<XQCorkboardCard> cards;
};

/// The outline properties a card is read from, besides the node's title.
inline const QString XQCorkboardNoteProperty = QStringLiteral("_note");
inline const QString XQCorkboardStatusProperty = QStringLiteral("_status");
inline const QString XQCorkboardLabelProperty = QStringLiteral("_label");

class XQCorkboardCardList : public XQCorkboardViewDataSource {
public:
    XQCorkboardCardList() = default;
    explicit XQCorkboardCardList(QList<XQCorkboardSection> sections) : m_sections(std::move(sections)) { reindex(); }

    const QList<XQCorkboardSection>& sections() const { return m_sections; }
    void setSections(QList<XQCorkboardSection> sections);
    qsizetype cardCount() const { return qsizetype(m_cards.size()); }
    const XQCorkboardCard& card(qsizetype index) const
    {
        return m_sections[m_cards[size_t(index)].first].cards[m_cards[size_t(index)].second];
    }
    /// Places the cards for the freeform arrangement: each section a loose column, cards a little askew
    /// in position as if pinned by hand.
    void arrangeFreeform(double cardHeightRatio);

    /// Top-level nodes become sections, their children cards: the title from the node's title, the
    /// text from its "_note" property, a stamp from "_status" and a label chip from "_label" (a colour
    /// as #RRGGBB or a colour name). Deeper nodes are left out.
    static XQCorkboardCardList fromOutline(const XQBaseNodeList& topLevelNodes);

    Methods implementedMethods() const override;
    int numberOfSectionsInCorkboardView(XQCorkboardView* view) override;
    int numberOfCardsInSectionAtIndex(XQCorkboardView* view, int section) override;
    bool cardAtIndexIsImage(XQCorkboardView* view, qsizetype index) override;
    QImage imageForCardAtIndex(XQCorkboardView* view, qsizetype index, bool fastDrawing) override;
    QPointF coordinateOfCardAtIndex(XQCorkboardView* view, qsizetype index) override;
    QString textForCardAtIndex(XQCorkboardView* view, qsizetype index) override;
    QString titleForCardAtIndex(XQCorkboardView* view, qsizetype index) override;
    QColor labelColorForCardAtIndex(XQCorkboardView* view, qsizetype index) override;
    QString stampForCardAtIndex(XQCorkboardView* view, qsizetype index) override;
    void setTitleForCardAtIndex(XQCorkboardView* view, const QString& title, qsizetype index) override;
    void setTextForCardAtIndex(XQCorkboardView* view, const QString& text, qsizetype index) override;
    void setCoordinateOfCardAtIndex(XQCorkboardView* view, QPointF coordinate, qsizetype index) override;

private:
    void reindex();
    XQCorkboardCard* cardAt(qsizetype index);

    QList<XQCorkboardSection> m_sections;
    // Global card order: the section and the position in it (positions, not pointers, so that copies
    // of the list stay independent).
    std::vector<std::pair<qsizetype, qsizetype>> m_cards;
};

} // namespace qly
