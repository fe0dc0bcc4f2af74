#pragma once
// What a corkboard asks of the model it shows (the data source) and what it tells the controller that
// owns it (the delegate).
//
// Every method is optional. A data source or delegate says which ones it implements by answering
// respondsTo(); the view asks before every call and never calls a method that is not implemented,
// falling back as each method documents. An implemented method may still answer "nothing" where its
// return type allows it (a null image, a null text), which is not the same as not implementing it:
// a card is an image card when cardAtIndexIsImage() is not implemented and imageForCardAtIndex()
// answers a non-null image.
//
// The methods are named after the distinguishing part of their selectors:
// `corkboardView:numberOfCardsInSectionAtIndex:` is numberOfCardsInSectionAtIndex(view, section).
#include <QColor>
#include <QFlags>
#include <QImage>
#include <QPointF>
#include <QString>
#include <QStringList>

#include <qlyappkit/corkboard/XQIndexSet.h>

namespace qly {

class XQCorkboardView;

class XQCorkboardViewDataSource {
public:
    enum Method : quint32 {
        NumberOfSectionsInCorkboardView = 1u << 0,
        NumberOfCardsInSectionAtIndex = 1u << 1,
        NumberOfCardsInCorkboardView = 1u << 2,
        CardAtIndexIsImage = 1u << 3,
        ImageForCardAtIndex = 1u << 4,
        CoordinateOfCardAtIndex = 1u << 5,
        TextForCardAtIndex = 1u << 6,
        IconForCardAtIndex = 1u << 7,
        FreeformDrawingOrderForCorkboardView = 1u << 8,
        RelativeDragIndexForCardAtIndex = 1u << 9,
        TitleForCardAtIndex = 1u << 10,
        LabelColorForCardAtIndex = 1u << 11,
        StampForCardAtIndex = 1u << 12,
        SetTitleForCardAtIndex = 1u << 13,
        SetTextForCardAtIndex = 1u << 14,
        SetCoordinateOfCardAtIndex = 1u << 15,
    };
    Q_DECLARE_FLAGS(Methods, Method)

    virtual ~XQCorkboardViewDataSource() = default;
    /// Whether the method is implemented; the view calls no method that answers false here.
    virtual bool respondsTo(Method method) const { return implementedMethods().testFlag(method); }
    /// The implemented methods, for data sources that know them up front.
    virtual Methods implementedMethods() const { return {}; }

    // ---- counts
    virtual int numberOfSectionsInCorkboardView(XQCorkboardView* view);
    virtual int numberOfCardsInSectionAtIndex(XQCorkboardView* view, int section);
    /// Used only when the two section methods are not both implemented.
    virtual int numberOfCardsInCorkboardView(XQCorkboardView* view);

    // ---- what a card shows (indexes are global: sections concatenated)
    virtual bool cardAtIndexIsImage(XQCorkboardView* view, qsizetype index);
    /// The card's picture; a null image for none. fastDrawing asks for a cheap (cached, scaled) one.
    virtual QImage imageForCardAtIndex(XQCorkboardView* view, qsizetype index, bool fastDrawing);
    /// The freeform position, in units of the fixed card width.
    virtual QPointF coordinateOfCardAtIndex(XQCorkboardView* view, qsizetype index);
    /// The card's text; a null text for none.
    virtual QString textForCardAtIndex(XQCorkboardView* view, qsizetype index);
    /// The icon drawn at the start of the title; a null image for none.
    virtual QImage iconForCardAtIndex(XQCorkboardView* view, qsizetype index);
    /// Card indexes back to front; used only when it lists every card.
    virtual QList<qsizetype> freeformDrawingOrderForCorkboardView(XQCorkboardView* view);
    /// The index of the dragged card relative to its drag group.
    virtual int relativeDragIndexForCardAtIndex(XQCorkboardView* view, qsizetype index);
    virtual QString titleForCardAtIndex(XQCorkboardView* view, qsizetype index);
    /// The colour of the card's label chip; an invalid colour for no chip.
    virtual QColor labelColorForCardAtIndex(XQCorkboardView* view, qsizetype index);
    /// The status stamped across the card; empty for none.
    virtual QString stampForCardAtIndex(XQCorkboardView* view, qsizetype index);

    // ---- edits made on the board
    virtual void setTitleForCardAtIndex(XQCorkboardView* view, const QString& title, qsizetype index);
    virtual void setTextForCardAtIndex(XQCorkboardView* view, const QString& text, qsizetype index);
    /// A freeform card moved by the user, in units of the fixed card width.
    virtual void setCoordinateOfCardAtIndex(XQCorkboardView* view, QPointF coordinate, qsizetype index);
};

class XQCorkboardViewDelegate {
public:
    enum Method : quint32 {
        NumberOfColorChipsForCardAtIndex = 1u << 0,
        CorkboardViewDidReceiveReturnKeyEvent = 1u << 1,
        CorkboardViewDidReceiveDeleteKeyEvent = 1u << 2,
        CorkboardViewDidReceiveSpaceKeyEvent = 1u << 3,
        CorkboardViewSelectionDidChange = 1u << 4,
        MoveCardsAtIndexes = 1u << 5,
        DoubleClickedCardAtIndex = 1u << 6,
    };
    Q_DECLARE_FLAGS(Methods, Method)

    virtual ~XQCorkboardViewDelegate() = default;
    virtual bool respondsTo(Method method) const { return implementedMethods().testFlag(method); }
    virtual Methods implementedMethods() const { return {}; }

    /// Colour chips drawn on the card; one or more narrows its text area.
    virtual int numberOfColorChipsForCardAtIndex(XQCorkboardView* view, qsizetype index);
    /// Return, Delete (or forward delete) and the space bar, with the event's modifiers.
    virtual void corkboardViewDidReceiveReturnKeyEvent(XQCorkboardView* view, Qt::KeyboardModifiers modifiers);
    virtual void corkboardViewDidReceiveDeleteKeyEvent(XQCorkboardView* view, Qt::KeyboardModifiers modifiers);
    virtual void corkboardViewDidReceiveSpaceKeyEvent(XQCorkboardView* view, Qt::KeyboardModifiers modifiers);
    /// After every change of the selection, with the selection it replaced.
    virtual void corkboardViewSelectionDidChange(XQCorkboardView* view, const XQIndexSet& oldSelection);
    /// The user dragged the cards to the insertion index (a position between cards, before the move).
    virtual void moveCardsAtIndexes(XQCorkboardView* view, const XQIndexSet& indexes, qsizetype insertionIndex);
    virtual void doubleClickedCardAtIndex(XQCorkboardView* view, qsizetype index);
};

Q_DECLARE_OPERATORS_FOR_FLAGS(XQCorkboardViewDataSource::Methods)
Q_DECLARE_OPERATORS_FOR_FLAGS(XQCorkboardViewDelegate::Methods)

} // namespace qly
