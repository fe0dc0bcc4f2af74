// The view's set-up, settings and the data source's counts.
#include <qlyappkit/corkboard/XQCorkboardView.h>

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QResizeEvent>
#include <QScrollArea>
#include <QScrollBar>

#include <algorithm>
#include <cmath>

#include <qlyappkit/corkboard/XQCardHitIndex_p.h>
#include <qlyappkit/corkboard/XQCorkboardArtwork.h>
#include <qlyappkit/platform/services/NotificationCenter.h>
#include <qlyappkit/platform/text/Range.h>

namespace qly {

using DS = XQCorkboardViewDataSource;

XQCorkboardView::XQCorkboardView(QWidget* parent)
    : QWidget(parent), m_hitIndex(std::make_unique<XQCardHitIndex>()), m_artwork(std::make_unique<XQCorkboardArtwork>())
{
    m_textTitleAttributes = XQCorkboardDefaultTextTitleAttributes();
    m_imageTitleAttributes = XQCorkboardDefaultImageTitleAttributes();
    m_textAttributes = XQCorkboardDefaultTextAttributes();
    m_stampFont = XQCorkboardDefaultStampFont();
    setRedAndBlueIndexCardTheme();
    XQInitRectArray(&m_cardRects);
    XQInitRectArray(&m_sectionRects);
    XQInitFloatArray(&m_columnModeRowOrigins);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

XQCorkboardView::~XQCorkboardView()
{
    if (m_watchedViewport)
        m_watchedViewport->removeEventFilter(this);
}

void XQCorkboardView::setDataSource(XQCorkboardViewDataSource* dataSource)
{
    m_dataSource = dataSource;
    reloadData();
}

// ---- settings

void XQCorkboardView::setCardsAcross(int cardsAcross)
{
    if (cardsAcross == 0)
        return;
    m_autoCalculatesCardsAcross = cardsAcross < 0;
    m_cardsAcross = cardsAcross < 0 ? std::max(1, m_cardsAcross) : cardsAcross;
    reloadData();
}

void XQCorkboardView::setUsesFreeformArrangement(bool on)
{
    m_usesFreeformArrangement = on;
    reloadData();
}

void XQCorkboardView::setMultipleSectionsMode(int mode)
{
    m_multipleSectionsMode = mode;
    reloadData();
}

void XQCorkboardView::setUsesTwoLineTitles(bool on)
{
    m_usesTwoLineTitles = on;
    reloadData();
}

void XQCorkboardView::setTitlesShrinkToFit(bool on)
{
    m_titlesShrinkToFit = on;
    reloadData();
}

void XQCorkboardView::setMinTitleFontSize(double size)
{
    m_minTitleFontSize = size;
    reloadData();
}

void XQCorkboardView::setShowsPlaceholderText(bool on)
{
    m_showsPlaceholderText = on;
    redisplayVisible();
}

void XQCorkboardView::setInterCardSpacing(double spacing)
{
    m_interCardSpacing = std::isfinite(spacing) ? std::max(0.0, spacing) : 30.0;
    reloadData();
}

void XQCorkboardView::setSizesCardsToFitWidth(bool on)
{
    m_sizesCardsToFitWidth = on;
    reloadData();
}

void XQCorkboardView::setFixedSizeCardWidth(double width)
{
    m_fixedSizeCardWidth = std::isfinite(width) ? std::round(width) : 300.0;
    reloadData();
}

void XQCorkboardView::setIndexCardHeightRatio(double ratio)
{
    m_indexCardHeightRatio = std::isfinite(ratio) && ratio > 0 ? ratio : 0.6;
    reloadData();
}

void XQCorkboardView::setAllowsFreeformCardResizing(bool on)
{
    m_allowsFreeformCardResizing = on;
    reloadData();
}

void XQCorkboardView::setHasDropShadows(bool on)
{
    m_hasDropShadows = on;
    redisplayVisible();
}

void XQCorkboardView::setShadowIntensity(double intensity)
{
    m_shadowIntensity = intensity;
    m_artwork->clearShadows();
    redisplayVisible();
}

void XQCorkboardView::setShowsPins(bool on)
{
    m_showsPins = on;
    redisplayVisible();
}

void XQCorkboardView::setDrawsLines(bool on)
{
    m_drawsLines = on;
    redisplayVisible();
}

void XQCorkboardView::setDrawsPinsOnRight(bool on)
{
    m_drawsPinsOnRight = on;
    redisplayVisible();
}

void XQCorkboardView::setDrawsTextOnLine(bool on)
{
    m_drawsTextOnLine = on;
    recalculateBaselineOffset();
    reloadData();
}

void XQCorkboardView::setUsesRoundedStyle(bool on)
{
    m_usesRoundedStyle = on;
    m_artwork->clearShadows();
    reloadData();
}

void XQCorkboardView::setShowsCardNumbers(bool on)
{
    m_showsCardNumbers = on;
    redisplayVisible();
}

void XQCorkboardView::setCardNumbersRestartAtSections(bool on)
{
    m_cardNumbersRestartAtSections = on;
    redisplayVisible();
}

void XQCorkboardView::setCardsUseRightToLeftDirection(bool on)
{
    m_cardsUseRightToLeftDirection = on;
    reloadData();
}

void XQCorkboardView::setBackgroundColor(std::optional<Color> color)
{
    m_backgroundColor = color;
    redisplayVisible();
}

void XQCorkboardView::setCardColor(const Color& color)
{
    m_cardColor = color;
    redisplayVisible();
}

void XQCorkboardView::setDividerColor(const Color& color)
{
    m_dividerColor = color;
    redisplayVisible();
}

void XQCorkboardView::setLineColor(const Color& color)
{
    m_lineColor = color;
    redisplayVisible();
}

void XQCorkboardView::setTextTitleAttributes(const Attributes& attributes)
{
    m_textTitleAttributes = attributes;
    recalculateTitleHeight();
    reloadData();
}

void XQCorkboardView::setImageTitleAttributes(const Attributes& attributes)
{
    m_imageTitleAttributes = attributes;
    recalculateTitleHeight();
    reloadData();
}

void XQCorkboardView::setTextAttributes(const Attributes& attributes)
{
    m_textAttributes = attributes;
    recalculateLineHeight();
    recalculateBaselineOffset();
    m_textHeightCache.clear();
    if (m_textEditor) {
        if (std::optional<Font> font = XQCorkboardFontOfAttributes(attributes))
            m_textEditor->setFont(font->toQFont());
    }
    reloadData();
}

void XQCorkboardView::setStampFont(const Font& font)
{
    m_stampFont = font;
    redisplayVisible();
}

void XQCorkboardView::setStampColor(const Color& color)
{
    m_stampColor = color;
    redisplayVisible();
}

void XQCorkboardView::setRedAndBlueIndexCardTheme()
{
    m_dividerColor = XQRedAndBlueIndexCardTheme.divider;
    m_lineColor = XQRedAndBlueIndexCardTheme.lines;
    redisplayVisible();
}

void XQCorkboardView::setBlueAndBlackIndexCardTheme()
{
    m_dividerColor = XQBlueAndBlackIndexCardTheme.divider;
    m_lineColor = XQBlueAndBlackIndexCardTheme.lines;
    redisplayVisible();
}

// ---- counts

bool XQCorkboardView::usesSections() const
{
    return m_dataSource && m_dataSource->respondsTo(DS::NumberOfSectionsInCorkboardView)
        && m_dataSource->respondsTo(DS::NumberOfCardsInSectionAtIndex);
}

int XQCorkboardView::numberOfSections() const
{
    if (m_dataSource && m_dataSource->respondsTo(DS::NumberOfSectionsInCorkboardView))
        return std::max(0, m_dataSource->numberOfSectionsInCorkboardView(const_cast<XQCorkboardView*>(this)));
    return 1;
}

int XQCorkboardView::numberOfCardsInSection(int section) const
{
    if (m_dataSource && m_dataSource->respondsTo(DS::NumberOfCardsInSectionAtIndex))
        return std::max(0, m_dataSource->numberOfCardsInSectionAtIndex(const_cast<XQCorkboardView*>(this), section));
    return 0;
}

qsizetype XQCorkboardView::numberOfCards() const
{
    if (usesSections()) {
        qsizetype total = 0;
        const int sections = numberOfSections();
        for (int s = 0; s < sections; ++s)
            total += numberOfCardsInSection(s);
        return total;
    }
    if (m_dataSource && m_dataSource->respondsTo(DS::NumberOfCardsInCorkboardView))
        return std::max(0, m_dataSource->numberOfCardsInCorkboardView(const_cast<XQCorkboardView*>(this)));
    return 0;
}

bool XQCorkboardView::hasColumns() const
{
    if (isDisplayingMultipleSections() && m_multipleSectionsMode == 2)
        return true;
    return m_cardsAcross == 1;
}

bool XQCorkboardView::isImageCard(qsizetype index) const
{
    if (!m_dataSource)
        return false;
    auto* self = const_cast<XQCorkboardView*>(this);
    if (m_dataSource->respondsTo(DS::CardAtIndexIsImage))
        return m_dataSource->cardAtIndexIsImage(self, index);
    if (m_dataSource->respondsTo(DS::ImageForCardAtIndex))
        return !m_dataSource->imageForCardAtIndex(self, index, true).isNull();
    return false;
}

QRectF XQCorkboardView::rectOfCard(qsizetype index) const
{
    if (index < 0 || index >= m_cardRects.count())
        return {};
    return m_cardRects[index];
}

// ---- reloading and frame changes

void XQCorkboardView::reloadData()
{
    watchViewport();
    const qsizetype cards = numberOfCards();
    if (!m_selectedCardIndexes.isEmpty() && m_selectedCardIndexes.lastIndex() >= cards)
        selectCardIndexes(std::nullopt, false);
    tile();
    redisplayVisible();
    if (m_editedCardIndex >= cards)
        dropEditors();
    else
        positionEditors();
    NotificationCenter::defaultCenter().post(XQCorkboardViewDidReloadNotification, this);
}

QScrollArea* XQCorkboardView::enclosingScrollArea() const
{
    QWidget* viewport = parentWidget();
    if (!viewport)
        return nullptr;
    auto* area = qobject_cast<QScrollArea*>(viewport->parentWidget());
    return area && area->viewport() == viewport ? area : nullptr;
}

QRectF XQCorkboardView::visibleArea() const
{
    if (QScrollArea* area = enclosingScrollArea())
        return area->viewport() ? QRectF(QPointF(0, 0), QSizeF(area->viewport()->size())) : QRectF();
    // On its own, the board's frame is what its owner last gave it, not the size tiling grew it to:
    // otherwise a board would only ever grow.
    return QRectF(QPointF(0, 0), QSizeF(size() == m_tiledSize ? m_ownerSize : size()));
}

void XQCorkboardView::finishTile(double width, double height)
{
    // Sizes are kept within what a widget can take; boards that large are not drawn whole anyway.
    constexpr double MaxExtent = 16000000;
    const QSize newSize(int(std::ceil(std::clamp(width, 0.0, MaxExtent))),
                        int(std::ceil(std::clamp(height, 0.0, MaxExtent))));
    if (size() != m_tiledSize)
        m_ownerSize = size();
    m_tiledSize = newSize;
    if (newSize != size()) {
        m_settingFrame = true;
        resize(newSize);
        m_settingFrame = false;
    }
    setToolTip(QString());
    m_artwork->clearShadows();
    m_hitIndex->rebuild(m_cardRects);
}

void XQCorkboardView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    // A pending resize delivered when a hidden board is shown reports the tiled size: not the owner's.
    if (!m_settingFrame && event->size() != m_tiledSize) {
        m_ownerSize = size();
        m_tiledSize = QSize();
    }
    // A board on its own follows its frame; one in a scroll area follows the viewport instead.
    if (!m_settingFrame && !enclosingScrollArea() && event->size().width() != event->oldSize().width())
        layoutChanged();
}

bool XQCorkboardView::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_watchedViewport && event->type() == QEvent::Resize && !m_settingFrame) {
        layoutChanged();
    } else if (m_editedCardIndex >= 0 && (watched == m_titleEditor || watched == m_textEditor)) {
        if (event->type() == QEvent::KeyPress) {
            const auto* key = static_cast<QKeyEvent*>(event);
            const bool isReturn = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
            if (key->key() == Qt::Key_Escape || (isReturn && (watched == m_titleEditor || m_returnEndsEditing))) {
                cancelOperation();
                return true;
            }
        } else if (event->type() == QEvent::FocusOut) {
            // Focus moving between the title and the text stays within the edit.
            QWidget* next = QApplication::focusWidget();
            if (next != m_titleEditor && next != m_textEditor)
                endEditing();
        }
    }
    return QWidget::eventFilter(watched, event);
}

void XQCorkboardView::watchViewport()
{
    QScrollArea* area = enclosingScrollArea();
    QObject* viewport = area ? area->viewport() : nullptr;
    if (viewport == m_watchedViewport)
        return;
    if (m_watchedViewport)
        m_watchedViewport->removeEventFilter(this);
    m_watchedViewport = viewport;
    if (viewport)
        viewport->installEventFilter(this);
}

void XQCorkboardView::layoutChanged() { reloadData(); }

void XQCorkboardView::redisplay(const QRectF& rect) { update(rect.toAlignedRect()); }

void XQCorkboardView::redisplayVisible() { update(); }

void XQCorkboardView::beep()
{
    if (m_beepHandler)
        m_beepHandler();
    else
        QApplication::beep();
}

void XQCorkboardView::scrollCardAtIndexToVisible(qsizetype index)
{
    const QRectF rect = rectOfCard(index);
    if (rect.isNull())
        return;
    m_lastScrolledToRect = rect;
    if (QScrollArea* area = enclosingScrollArea()) {
        const QPointF c = rect.center();
        area->ensureVisible(int(c.x()), int(c.y()), int(rect.width() / 2 + m_interCardSpacing),
                            int(rect.height() / 2 + m_interCardSpacing));
    }
}

void XQCorkboardView::scrollToBeginningOfDocument()
{
    if (QScrollArea* area = enclosingScrollArea())
        area->verticalScrollBar()->setValue(0);
}

void XQCorkboardView::scrollToEndOfDocument()
{
    if (QScrollArea* area = enclosingScrollArea())
        area->verticalScrollBar()->setValue(area->verticalScrollBar()->maximum());
}

void XQCorkboardView::scrollPageUp()
{
    if (QScrollArea* area = enclosingScrollArea())
        area->verticalScrollBar()->triggerAction(QAbstractSlider::SliderPageStepSub);
}

void XQCorkboardView::scrollPageDown()
{
    if (QScrollArea* area = enclosingScrollArea())
        area->verticalScrollBar()->triggerAction(QAbstractSlider::SliderPageStepAdd);
}

} // namespace qly
