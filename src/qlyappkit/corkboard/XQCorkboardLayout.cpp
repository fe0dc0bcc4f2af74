// The three layout passes, the cached text metrics and the rectangles inside a card.
#include <qlyappkit/corkboard/XQCorkboardView.h>

#include <QFontMetricsF>
#include <QPlainTextEdit>

#include <algorithm>
#include <cmath>

#include <qlyappkit/corkboard/XQCorkboardArtwork.h>
#include <qlyappkit/geometry/XQTextMeasuring.h>
#include <qlyappkit/platform/layout/LayoutManager.h>
#include <qlyappkit/platform/layout/TextContainer.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/text/Range.h>
#include <qlyappkit/platform/text/TextStorage.h>

namespace qly {

using DS = XQCorkboardViewDataSource;

namespace {

// The platform rounds as roundf does: halves away from zero.
double roundf(double value) { return std::round(value); }

struct ImageCardSize {
    double width, height, inset;
};

ImageCardSize imageCardSize(double w, double h)
{
    const double iw = XQCorkboardView::imageCardWidthForIndexCardWidth(w);
    const double pw = iw < h ? w : iw;
    const double ph = std::max(h, pw);
    return {pw, ph, (w - pw) * 0.5};
}

// Freeform coordinates from a data source may be anything; keep them finite and on the board.
double freeformPosition(double coordinate, double unit)
{
    constexpr double Farthest = 1000000;
    const double value = roundf(coordinate * unit);
    if (!std::isfinite(value) || value < 0)
        return value > 0 ? Farthest : 0;
    return std::min(value, Farthest);
}

} // namespace

double XQCorkboardView::imageCardWidthForIndexCardWidth(double width) { return width - roundf(width / 6); }

double XQCorkboardView::indexCardWidthForImageCardWidth(double width) { return width * 5 / 6; }

// ---- grid and rows

void XQCorkboardView::tile()
{
    if (m_usesFreeformArrangement) {
        freeformTile();
        return;
    }
    const bool sections = usesSections();
    const int sectionCount = sections ? numberOfSections() : 1;
    if (sections && m_multipleSectionsMode == 2 && sectionCount > 1) {
        tileColumns();
        return;
    }
    const bool rowsMode = m_multipleSectionsMode == 1 && sectionCount > 1;
    const QRectF visible = visibleArea();
    double W = visible.width();
    const double H = visible.height();
    const double spacing = m_interCardSpacing;
    m_currentIndexCardSize = QSizeF(0, 0);
    m_currentPhotoSize = QSizeF(0, 0);

    double w;
    if (!m_autoCalculatesCardsAcross && m_sizesCardsToFitWidth && !rowsMode)
        w = roundf((W - (m_cardsAcross + 1) * spacing) / m_cardsAcross);
    else
        w = m_fixedSizeCardWidth;
    w = std::max(w, 10.0);
    const double h = roundf(m_indexCardHeightRatio * w);
    m_currentCardWidth = w;
    m_currentTextCardHeight = h;
    if (m_autoCalculatesCardsAcross) {
        m_cardsAcross = std::max(1, int(std::min(W / (w + spacing), 1e6)));
        if (m_cardsAcross == 1)
            W = std::max(W, 2 * spacing + w);
    }
    const int across = m_cardsAcross;
    if (!m_sizesCardsToFitWidth && !rowsMode)
        W = std::max(W, across * w + (across + 1) * spacing);
    const ImageCardSize image = imageCardSize(w, h);

    XQEmptyRectArray(&m_cardRects);
    XQEmptyRectArray(&m_sectionRects);
    XQEmptyFloatArray(&m_columnModeRowOrigins);
    m_sectionStarts.clear();
    const bool rtl = m_cardsUseRightToLeftDirection;
    const double x0 = rtl ? W - w - spacing : spacing;
    const double step = rtl ? -(w + spacing) : w + spacing;
    double y = spacing;
    double B = 0;
    double widestRow = 0;
    qsizetype global = 0;
    for (int s = 0; s < sectionCount; ++s) {
        const qsizetype n = sections ? numberOfCardsInSection(s) : numberOfCards();
        m_sectionStarts.push_back(global);
        const double T = B;
        B = y + h + spacing;
        double r = h;
        double x = x0;
        double rowWidth = spacing;
        for (qsizetype i = 0; i < n; ++i, ++global) {
            const bool isImage = isImageCard(global);
            const QSizeF size = isImage ? QSizeF(image.width, image.height) : QSizeF(w, h);
            XQAddRectToArray(&m_cardRects, QRectF(QPointF(roundf(x) + (isImage ? image.inset : 0), roundf(y)), size));
            r = std::max(r, size.height());
            (isImage ? m_currentPhotoSize : m_currentIndexCardSize) = size;
            if (rowsMode)
                rowWidth += size.width() + spacing;
            if (i != n - 1) {
                x += step;
                if (!rowsMode && i % across == across - 1) {
                    x = x0;
                    y += r + spacing;
                    r = h;
                }
            } else {
                B = y + r + spacing;
            }
        }
        y += r + 2 * spacing;
        widestRow = std::max(widestRow, rowWidth);
        const double bottom = s == sectionCount - 1 ? std::max(B, H) : B;
        XQAddRectToArray(&m_sectionRects, QRectF(0, T, W, bottom - T));
    }
    m_sectionStarts.push_back(global);
    const double height = std::max(B, H);
    if (rowsMode)
        W = std::max(W, widestRow);
    // Cards narrowed to the 10-point minimum can run past a very narrow visible width: the board
    // widens to hold them rather than cut them off.
    if (!rtl) {
        for (const QRectF& card : m_cardRects.rects)
            W = std::max(W, card.right() + spacing);
    }
    for (QRectF& rect : m_sectionRects.rects)
        rect.setWidth(W);
    finishTile(W, height);
}

// ---- columns

void XQCorkboardView::tileColumns()
{
    const int S = numberOfSections();
    const QRectF visible = visibleArea();
    double W = visible.width();
    const double H = visible.height();
    const double spacing = m_interCardSpacing;
    m_currentIndexCardSize = QSizeF(0, 0);
    m_currentPhotoSize = QSizeF(0, 0);
    const double w = std::max(m_fixedSizeCardWidth, 10.0);
    const double h = roundf(m_indexCardHeightRatio * w);
    m_currentCardWidth = w;
    m_currentTextCardHeight = h;
    W = std::max(W, S * w + (S + 1) * spacing);
    const ImageCardSize image = imageCardSize(w, h);

    XQEmptyRectArray(&m_cardRects);
    XQEmptyRectArray(&m_sectionRects);
    XQEmptyFloatArray(&m_columnModeRowOrigins);
    m_sectionStarts.clear();
    const bool rtl = m_cardsUseRightToLeftDirection;
    double x = rtl ? W - w - spacing : spacing;
    const double cw = m_fixedSizeCardWidth + spacing;
    std::vector<double>& origins = m_columnModeRowOrigins.floats;
    double tallestColumn = 0;
    qsizetype global = 0;
    for (int s = 0; s < S; ++s) {
        const qsizetype n = numberOfCardsInSection(s);
        m_sectionStarts.push_back(global);
        double sx = rtl ? spacing * 0.5 + (W - cw - spacing) - s * cw : spacing * 0.5 + s * cw;
        double sw = cw;
        if (s == (rtl ? S - 1 : 0)) {
            sw += sx;
            sx = 0;
        }
        if (s == (rtl ? 0 : S - 1))
            sw = W - sx;
        double y = spacing;
        for (qsizetype j = 0; j < n; ++j, ++global) {
            const bool isImage = isImageCard(global);
            const QSizeF size = isImage ? QSizeF(image.width, image.height) : QSizeF(w, h);
            const QRectF card(QPointF(roundf(x) + (isImage ? image.inset : 0), roundf(y)), size);
            XQAddRectToArray(&m_cardRects, card);
            (isImage ? m_currentPhotoSize : m_currentIndexCardSize) = size;
            if (j < qsizetype(origins.size())) {
                if (origins[size_t(j)] < card.y()) {
                    const double delta = card.y() - origins[size_t(j)];
                    for (size_t k = size_t(j); k < origins.size(); ++k)
                        origins[k] += delta;
                }
            } else {
                XQAddFloatToArray(&m_columnModeRowOrigins, card.y());
            }
            if (s == S - 1 && j == n - 1 && qsizetype(origins.size()) > n) {
                const double lowest = roundf(card.y() + card.height() + spacing);
                if (origins[size_t(n)] < lowest) {
                    const double delta = lowest - origins[size_t(n)];
                    for (size_t k = size_t(n); k < origins.size(); ++k)
                        origins[k] += delta;
                }
            }
            y = card.y() + card.height() + spacing;
            if (j + 1 < qsizetype(origins.size()))
                y = std::max(y, origins[size_t(j + 1)]);
        }
        tallestColumn = std::max(tallestColumn, y);
        XQAddRectToArray(&m_sectionRects, QRectF(sx, 0, sw, tallestColumn));
        x += rtl ? -(w + spacing) : w + spacing;
    }
    m_sectionStarts.push_back(global);

    double B = 0;
    for (int s = 0; s < S; ++s) {
        for (qsizetype g = m_sectionStarts[size_t(s)]; g < m_sectionStarts[size_t(s) + 1]; ++g) {
            QRectF& card = m_cardRects.rects[size_t(g)];
            card.moveTop(origins[size_t(g - m_sectionStarts[size_t(s)])]);
            B = std::max(B, card.bottom() + spacing);
        }
    }
    const double height = std::max(H, B);
    for (QRectF& rect : m_sectionRects.rects)
        rect.setHeight(height);
    finishTile(W, height);
}

// ---- freeform

void XQCorkboardView::freeformTile()
{
    const QRectF visible = visibleArea();
    double W = visible.width();
    double H = visible.height();
    m_currentIndexCardSize = QSizeF(0, 0);
    m_currentPhotoSize = QSizeF(0, 0);
    const double w = std::max(m_fixedSizeCardWidth, 10.0);
    const double h = roundf(m_indexCardHeightRatio * w);
    m_currentTextCardHeight = h;
    W = std::max(W, 7 * w);
    H = std::max(H, 7 * h);
    const ImageCardSize image = imageCardSize(w, h);

    XQEmptyRectArray(&m_cardRects);
    XQEmptyRectArray(&m_sectionRects);
    XQEmptyFloatArray(&m_columnModeRowOrigins);
    m_sectionStarts.clear();
    const qsizetype cards = numberOfCards();
    auto* self = this;
    if (m_dataSource && m_dataSource->respondsTo(DS::CoordinateOfCardAtIndex)) {
        const bool resizing = m_allowsFreeformCardResizing;
        const bool hasText = m_dataSource->respondsTo(DS::TextForCardAtIndex);
        for (qsizetype i = 0; i < cards; ++i) {
            const QPointF c = m_dataSource->coordinateOfCardAtIndex(self, i);
            const double x = freeformPosition(c.x(), m_fixedSizeCardWidth);
            const double y = freeformPosition(c.y(), m_fixedSizeCardWidth);
            const bool isImage = isImageCard(i);
            QSizeF size = isImage ? QSizeF(image.width, image.height) : QSizeF(w, h);
            if (resizing && !isImage) {
                double textHeight = -1;
                if (i == m_editedCardIndex && m_textEditor && m_textEditor->isVisible()) {
                    textHeight = m_textEditor->height();
                } else {
                    const QString text = hasText ? m_dataSource->textForCardAtIndex(self, i) : QString();
                    if (!text.isEmpty())
                        textHeight = measuredFreeformTextHeight(
                            i, text, textRectForCardAtIndex(i, QRectF(0, 0, w, 100)).width());
                }
                if (textHeight >= 0) {
                    double needed = textHeight + titleHeight() + 3.0;
                    if (m_drawsTextOnLine)
                        needed += baselineOffset();
                    size.setHeight(std::max(h, needed + 4.0));
                }
            }
            XQAddRectToArray(&m_cardRects, QRectF(QPointF(x, y), size));
            W = std::max(W, x + 2 * size.width() + 30);
            H = std::max(H, y + 2 * size.height() + 30);
        }
    }
    finishTile(W, H);
}

double XQCorkboardView::measuredFreeformTextHeight(qsizetype, const QString& text, double width) const
{
    // A card's text is measured once for a given width and text attributes; re-tiling a board whose
    // texts did not change measures nothing.
    if (width != m_textHeightCacheWidth) {
        m_textHeightCache.clear();
        m_textHeightCacheWidth = width;
    }
    auto it = m_textHeightCache.constFind(text);
    if (it != m_textHeightCache.constEnd())
        return *it;
    const double height =
        XQHeightForStringDrawingBySettingPadding(text, width, m_textAttributes, m_usesRoundedStyle ? 2.0 : 4.0);
    if (m_textHeightCache.size() > 100000)
        m_textHeightCache.clear();
    m_textHeightCache.insert(text, height);
    return height;
}

// ---- metrics

void XQCorkboardView::recalculateTitleHeight()
{
    double height = 0;
    for (const Attributes* attributes : {&m_textTitleAttributes, &m_imageTitleAttributes}) {
        const std::optional<Font> font = XQCorkboardFontOfAttributes(*attributes);
        height =
            std::max(height, font ? roundf(XQDefaultLineHeightForFont(*font)) + 2 : XQCorkboardTitleHeightWithoutFont);
    }
    m_titleHeight = height;
}

double XQCorkboardView::titleHeight() const
{
    if (m_titleHeight == 0)
        const_cast<XQCorkboardView*>(this)->recalculateTitleHeight();
    return m_usesTwoLineTitles ? 2 * m_titleHeight : m_titleHeight;
}

void XQCorkboardView::recalculateLineHeight()
{
    m_lineHeight = XQHeightForStringDrawingBySettingPadding(XQCorkboardLineHeightSample, 10000000, m_textAttributes, 0);
}

double XQCorkboardView::lineHeight() const
{
    if (m_lineHeight == 0)
        const_cast<XQCorkboardView*>(this)->recalculateLineHeight();
    return m_lineHeight;
}

void XQCorkboardView::recalculateBaselineOffset()
{
    m_baselineOffsetComputed = true;
    m_baselineOffset = 0;
    if (!m_drawsTextOnLine)
        return;
    TextStorage storage;
    LayoutManager layoutManager;
    layoutManager.setTextStorage(&storage);
    auto container = std::make_unique<TextContainer>();
    container->setSize(QSizeF(100, 100));
    container->setLineFragmentPadding(0);
    TextContainer* laid = layoutManager.addTextContainer(std::move(container));
    storage.setAttributedString(AttributedString(QStringLiteral("x"), m_textAttributes));
    const std::vector<LineFragment> lines = layoutManager.lineFragmentsForTextContainer(laid);
    if (!lines.empty())
        m_baselineOffset = lines.front().baseline - lines.front().rect.top();
}

double XQCorkboardView::baselineOffset() const
{
    if (!m_baselineOffsetComputed)
        const_cast<XQCorkboardView*>(this)->recalculateBaselineOffset();
    return m_baselineOffset;
}

double XQCorkboardView::minimumTextHeight() const
{
    const double pad = m_usesRoundedStyle || (m_usesFreeformArrangement && m_allowsFreeformCardResizing) ? 4.0 : 0.0;
    return m_currentTextCardHeight - 2 - (titleHeight() + 1) - pad - baselineOffset();
}

// ---- rectangles inside a card

QRectF XQCorkboardView::titleRectForCardAtIndex(qsizetype index, const QRectF& cardRect, double* iconOffset) const
{
    if (iconOffset)
        *iconOffset = 0;
    if (index < 0 || index >= numberOfCards())
        return {};
    if (iconOffset && m_dataSource && m_dataSource->respondsTo(DS::IconForCardAtIndex)) {
        const QImage icon = m_dataSource->iconForCardAtIndex(const_cast<XQCorkboardView*>(this), index);
        if (!icon.isNull()) {
            double iconWidth = icon.width();
            if (icon.height() > titleHeight())
                iconWidth *= titleHeight() / icon.height();
            *iconOffset = iconWidth + (m_usesRoundedStyle ? 4.0 : 2.0);
        }
    }
    return QRectF(cardRect.x() + 1, cardRect.y() + 1, cardRect.width() - 2, titleHeight());
}

QRectF XQCorkboardView::titleRectForCardAtIndex(qsizetype index) const
{
    return titleRectForCardAtIndex(index, rectOfCard(index));
}

QRectF XQCorkboardView::textRectForCardAtIndex(qsizetype index, const QRectF& cardRect) const
{
    if (index < 0 || index >= numberOfCards())
        return {};
    QRectF rect(cardRect.x() + 1, cardRect.y() + 1, cardRect.width() - 2, cardRect.height() - 2);
    const double title = titleHeight() + 1;
    rect.setTop(rect.top() + title);
    if (m_drawsTextOnLine)
        rect.setTop(rect.top() + baselineOffset());
    if (m_usesRoundedStyle)
        rect.adjust(4, 0, -4, -4);
    else if (m_usesFreeformArrangement && m_allowsFreeformCardResizing)
        rect.setHeight(rect.height() - 4);
    if (m_delegate && m_delegate->respondsTo(XQCorkboardViewDelegate::NumberOfColorChipsForCardAtIndex)
        && m_delegate->numberOfColorChipsForCardAtIndex(const_cast<XQCorkboardView*>(this), index) >= 1)
        rect.setWidth(rect.width() - (m_usesRoundedStyle ? 6.0 : 10.0));
    return rect;
}

QRectF XQCorkboardView::textRectForCardAtIndex(qsizetype index) const
{
    return textRectForCardAtIndex(index, rectOfCard(index));
}

QRectF XQCorkboardView::pinRectForCardAtIndex(qsizetype index) const
{
    const QRectF card = rectOfCard(index);
    if (card.isNull())
        return {};
    const QSizeF pin = XQCorkboardArtwork::pinSize();
    const double x =
        m_drawsPinsOnRight ? card.x() + card.width() - pin.width() : card.x() + card.width() / 2 - pin.width() / 2;
    return QRectF(QPointF(x, card.y() + pin.height() / 1.65 - pin.height()), pin);
}

QRectF XQCorkboardView::labelChipRectForCardAtIndex(qsizetype index, const QRectF& cardRect) const
{
    const QRectF title = titleRectForCardAtIndex(index, cardRect);
    if (title.isNull())
        return {};
    const double right = title.x() + title.width();
    const double x = roundf(right - XQCorkboardLabelChipWidth);
    return QRectF(x, title.y(), right - x, title.height() - (isImageCard(index) ? 2 : 0));
}

QRectF XQCorkboardView::labelChipRectForCardAtIndex(qsizetype index) const
{
    return labelChipRectForCardAtIndex(index, rectOfCard(index));
}

QRectF XQCorkboardView::stampRectForCardAtIndex(qsizetype index) const
{
    const QRectF card = rectOfCard(index);
    if (card.isNull())
        return {};
    const double band = std::min(card.height() * 0.4, m_stampFont.pointSize() * 2.2);
    return QRectF(card.x() + card.width() * 0.12, card.center().y() - band / 2, card.width() * 0.76, band);
}

QRectF XQCorkboardView::numberRectForCardAtIndex(qsizetype index) const
{
    const QRectF card = rectOfCard(index);
    if (card.isNull())
        return {};
    const double boxWidth = std::min(card.width() - 2, 44.0), boxHeight = std::min(card.height() - 2, 14.0);
    const double x = m_cardsUseRightToLeftDirection ? card.x() + 3 : card.right() - boxWidth - 3;
    return QRectF(x, card.bottom() - boxHeight - 2, boxWidth, boxHeight);
}

double XQCorkboardView::maximumCardHeightInRowOfCardAtIndex(qsizetype index) const
{
    const QRectF card = rectOfCard(index);
    if (card.isNull())
        return 0;
    qsizetype offset = 0;
    const qsizetype section = sectionIndexForCardIndex(index, &offset);
    if (section == NotFound)
        return card.height();
    const qsizetype k = index - offset;
    const qsizetype n = numberOfCardsInSection(int(section));
    const bool several = usesSections() && numberOfSections() > 1;
    const auto heightOf = [&](qsizetype i) { return i >= 0 && i < m_cardRects.count() ? m_cardRects[i].height() : 0; };
    double tallest = card.height();
    if (several && m_multipleSectionsMode == 2) {
        if (k + 1 < m_columnModeRowOrigins.count())
            return m_columnModeRowOrigins[k + 1] - card.y() - m_interCardSpacing;
        if (n == m_columnModeRowOrigins.count()) {
            for (size_t s = 0; s + 1 < m_sectionStarts.size(); ++s) {
                if (m_sectionStarts[s + 1] > m_sectionStarts[s])
                    tallest = std::max(tallest, heightOf(m_sectionStarts[s + 1] - 1));
            }
        }
        return tallest;
    }
    if (several && m_multipleSectionsMode == 1) {
        // The in-section offset read as a global index, as the board has always done.
        for (qsizetype i = k; i < n; ++i)
            tallest = std::max(tallest, heightOf(i));
        return tallest;
    }
    const qsizetype across = std::max(1, m_cardsAcross);
    const qsizetype rowStart = offset + across * (k / across);
    const qsizetype rowEnd = std::min(offset + n, rowStart + across);
    for (qsizetype i = rowStart; i < rowEnd; ++i)
        tallest = std::max(tallest, heightOf(i));
    return tallest;
}

qsizetype XQCorkboardView::cardNumberForCardAtIndex(qsizetype index) const
{
    if (!m_cardNumbersRestartAtSections)
        return index + 1;
    qsizetype offset = 0;
    if (sectionIndexForCardIndex(index, &offset) == NotFound)
        return index + 1;
    return index - offset + 1;
}

// ---- shrinking titles

namespace {

Font titleFont(const Attributes& attributes)
{
    if (std::optional<Font> font = XQCorkboardFontOfAttributes(attributes))
        return *font;
    return Font::userFont();
}

void setTitleFont(Attributes* attributes, const Font& font, bool kerned)
{
    attributes->insert(FontAttributeName, QVariant::fromValue(font));
    if (kerned)
        attributes->insert(KernAttributeName, XQCorkboardShrunkTitleKerning);
    else
        attributes->remove(KernAttributeName);
}

double titleWidth(const QString& title, const Attributes& attributes)
{
    QFont font = titleFont(attributes).toQFont();
    const double kern = attributes.value(KernAttributeName).toDouble();
    if (kern != 0)
        font.setLetterSpacing(QFont::AbsoluteSpacing, kern);
    return QFontMetricsF(font).horizontalAdvance(title);
}

} // namespace

void XQCorkboardView::adjustedTitleRectAndAttributes(QRectF* rect, Attributes* attributes, const QString& title,
                                                     const QRectF& originalRect) const
{
    if (!rect || !attributes)
        return;
    *rect = originalRect;
    const Font start = titleFont(*attributes);
    if (!m_titlesShrinkToFit || start.pointSize() <= m_minTitleFontSize)
        return;
    const bool twoLines = m_usesTwoLineTitles;
    const auto fits = [&](const Attributes& candidate) {
        if (twoLines)
            return XQHeightForStringDrawing(title, originalRect.width(), candidate) <= originalRect.height();
        return titleWidth(title, candidate) <= originalRect.width();
    };
    if (fits(*attributes))
        return;
    double size = m_minTitleFontSize;
    setTitleFont(attributes, start.withSize(size), true);
    for (int guard = 0; size <= start.pointSize() && guard < 1000; ++guard) {
        Attributes plain = *attributes;
        setTitleFont(&plain, start.withSize(size), false);
        if (fits(plain))
            *attributes = plain;
        if (size + 1 > start.pointSize())
            break;
        Attributes larger = *attributes;
        setTitleFont(&larger, start.withSize(size + 1), true);
        if (!fits(larger))
            break;
        *attributes = larger;
        size += 1;
    }
    const Font chosen = titleFont(*attributes);
    const double measured = twoLines ? 2 * XQDefaultLineHeightForFont(chosen) : XQDefaultLineHeightForFont(chosen);
    rect->setHeight(measured);
    rect->moveTop(originalRect.y() + roundf((originalRect.height() - measured) * 0.5));
}

} // namespace qly
