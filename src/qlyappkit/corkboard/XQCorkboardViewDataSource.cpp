#include <qlyappkit/corkboard/XQCorkboardViewDataSource.h>

// The base implementations answer the fallback a view would use; the view never reaches them unless a
// subclass claims the method in respondsTo() without overriding it.
namespace qly {

int XQCorkboardViewDataSource::numberOfSectionsInCorkboardView(XQCorkboardView*) { return 1; }
int XQCorkboardViewDataSource::numberOfCardsInSectionAtIndex(XQCorkboardView*, int) { return 0; }
int XQCorkboardViewDataSource::numberOfCardsInCorkboardView(XQCorkboardView*) { return 0; }
bool XQCorkboardViewDataSource::cardAtIndexIsImage(XQCorkboardView*, qsizetype) { return false; }
QImage XQCorkboardViewDataSource::imageForCardAtIndex(XQCorkboardView*, qsizetype, bool) { return {}; }
QPointF XQCorkboardViewDataSource::coordinateOfCardAtIndex(XQCorkboardView*, qsizetype) { return {}; }
QString XQCorkboardViewDataSource::textForCardAtIndex(XQCorkboardView*, qsizetype) { return {}; }
QImage XQCorkboardViewDataSource::iconForCardAtIndex(XQCorkboardView*, qsizetype) { return {}; }
QList<qsizetype> XQCorkboardViewDataSource::freeformDrawingOrderForCorkboardView(XQCorkboardView*) { return {}; }
int XQCorkboardViewDataSource::relativeDragIndexForCardAtIndex(XQCorkboardView*, qsizetype) { return -1; }
QString XQCorkboardViewDataSource::titleForCardAtIndex(XQCorkboardView*, qsizetype) { return {}; }
QColor XQCorkboardViewDataSource::labelColorForCardAtIndex(XQCorkboardView*, qsizetype) { return {}; }
QString XQCorkboardViewDataSource::stampForCardAtIndex(XQCorkboardView*, qsizetype) { return {}; }
void XQCorkboardViewDataSource::setTitleForCardAtIndex(XQCorkboardView*, const QString&, qsizetype) { }
void XQCorkboardViewDataSource::setTextForCardAtIndex(XQCorkboardView*, const QString&, qsizetype) { }
void XQCorkboardViewDataSource::setCoordinateOfCardAtIndex(XQCorkboardView*, QPointF, qsizetype) { }

int XQCorkboardViewDelegate::numberOfColorChipsForCardAtIndex(XQCorkboardView*, qsizetype) { return 0; }
void XQCorkboardViewDelegate::corkboardViewDidReceiveReturnKeyEvent(XQCorkboardView*, Qt::KeyboardModifiers) { }
void XQCorkboardViewDelegate::corkboardViewDidReceiveDeleteKeyEvent(XQCorkboardView*, Qt::KeyboardModifiers) { }
void XQCorkboardViewDelegate::corkboardViewDidReceiveSpaceKeyEvent(XQCorkboardView*, Qt::KeyboardModifiers) { }
void XQCorkboardViewDelegate::corkboardViewSelectionDidChange(XQCorkboardView*, const XQIndexSet&) { }
void XQCorkboardViewDelegate::moveCardsAtIndexes(XQCorkboardView*, const XQIndexSet&, qsizetype) { }
void XQCorkboardViewDelegate::doubleClickedCardAtIndex(XQCorkboardView*, qsizetype) { }

} // namespace qly
