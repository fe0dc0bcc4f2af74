// Drawing the board: cork, section bands, and each card with its shadow, pin, title rule, label chip,
// text (ruled and clipped with an ellipsis) or picture, status stamp and number.
#include <qlyappkit/corkboard/XQCorkboardView.h>

#include <QPaintEvent>
#include <QPainter>
#include <QPainterPath>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

#include <qlyappkit/corkboard/XQCorkboardArtwork.h>
#include <qlyappkit/platform/services/Localization.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>

namespace qly {

using DS = XQCorkboardViewDataSource;

namespace {

constexpr double CardCornerRadius = 8.0;
const QColor SelectionColor(46, 112, 214);
const QColor InkColor(38, 38, 44);

QFont fontOf(const Attributes& attributes, double fallbackSize)
{
    QFont font = (XQCorkboardFontOfAttributes(attributes) ? *XQCorkboardFontOfAttributes(attributes)
                                                          : Font::userFont(fallbackSize))
                     .toQFont();
    const double kern = attributes.value(KernAttributeName).toDouble();
    if (kern != 0)
        font.setLetterSpacing(QFont::AbsoluteSpacing, kern);
    return font;
}

QColor colorOf(const Attributes& attributes, const QColor& fallback)
{
    const QVariant value = attributes.value(ForegroundColorAttributeName);
    if (value.metaType() == QMetaType::fromType<Color>())
        return value.value<Color>().toQColor();
    return fallback;
}

// A saturated pin colour in the family of the theme's title rule.
QColor pinColorFor(const Color& divider)
{
    const QColor base = divider.toQColor();
    float h = 0, s = 0, v = 0;
    base.getHsvF(&h, &s, &v);
    return QColor::fromHsvF(h < 0 ? 0 : h, 0.85f, 0.78f);
}

// The line cut short so that an ellipsis fits after it.
QString withEllipsis(QString piece, const QFontMetricsF& metrics, double width)
{
    const QString ellipsis(QChar(0x2026));
    while (!piece.isEmpty() && metrics.horizontalAdvance(piece + ellipsis) > width)
        piece.chop(1);
    while (piece.endsWith(QLatin1Char(' ')))
        piece.chop(1);
    return piece + ellipsis;
}

} // namespace

void XQCorkboardView::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    paintBoard(painter, event->rect());
}

QImage XQCorkboardView::renderBoard(double scale) const
{
    const QSize pixels(int(std::ceil(width() * scale)), int(std::ceil(height() * scale)));
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    if (image.isNull())
        return image;
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.scale(scale, scale);
    paintBoard(painter, QRectF(rect()));
    return image;
}

QRectF XQCorkboardView::drawingRectForCardAtIndex(qsizetype index) const
{
    const QRectF card = rectOfCard(index);
    if (card.isNull())
        return {};
    const double margin = XQCorkboardArtwork::shadowMargin() + 4;
    QRectF area = card.adjusted(-margin, -margin, margin, margin - XQCorkboardCardShadowOffsetY);
    return area.united(pinRectForCardAtIndex(index).adjusted(-2, -2, 2, 2));
}

void XQCorkboardView::paintBoard(QPainter& painter, const QRectF& exposed) const
{
    painter.save();
    painter.setClipRect(exposed);
    if (m_backgroundColor)
        painter.fillRect(exposed, m_backgroundColor->toQColor());
    else
        painter.fillRect(exposed, QBrush(XQCorkboardArtwork::corkPattern()));

    // Section bands: a darker seam between the sections of a grid, a shaded gutter between columns.
    if (m_sectionRects.count() > 1) {
        painter.setRenderHint(QPainter::Antialiasing, false);
        const bool columns = usesSections() && m_multipleSectionsMode == 2;
        for (qsizetype s = 1; s < m_sectionRects.count(); ++s) {
            const QRectF band = m_sectionRects[s];
            const QRectF seam = columns ? QRectF(band.x() - 1, band.y(), 2, band.height())
                                        : QRectF(band.x(), band.y() - 1, band.width(), 2);
            if (seam.intersects(exposed))
                painter.fillRect(seam, QColor(70, 42, 20, 110));
        }
    }

    const QList<qsizetype> order = cardIndexesInDrawingOrder();
    for (qsizetype i : order) {
        if (i < m_cardRects.count() && drawingRectForCardAtIndex(i).intersects(exposed))
            paintCard(painter, i);
    }

    if (dropCardIndex() >= 0 && draggedCardIndex() >= 0 && !m_usesFreeformArrangement && m_cardRects.count() > 0) {
        // The insertion marker: a bar before the card at the drop index (after the last card at the end).
        const qsizetype at = std::min(dropCardIndex(), m_cardRects.count() - 1);
        const QRectF card = m_cardRects[at];
        const bool after = dropCardIndex() >= m_cardRects.count();
        const double hs = m_interCardSpacing * 0.5;
        QRectF bar;
        if (hasColumns())
            bar = QRectF(card.x(), (after ? card.bottom() + hs : card.top() - hs) - 2, card.width(), 4);
        else {
            const bool leadingIsLeft = !m_cardsUseRightToLeftDirection;
            const double x = (after == leadingIsLeft) ? card.right() + hs : card.left() - hs;
            bar = QRectF(x - 2, card.y(), 4, card.height());
        }
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(SelectionColor);
        painter.drawRoundedRect(bar, 2, 2);
    }

    if (!m_marqueeSelectionBounds.isEmpty()) {
        painter.setRenderHint(QPainter::Antialiasing, false);
        painter.setPen(QPen(QColor(255, 255, 255, 220), 1));
        painter.setBrush(QColor(SelectionColor.red(), SelectionColor.green(), SelectionColor.blue(), 50));
        painter.drawRect(m_marqueeSelectionBounds);
    }
    painter.restore();
}

void XQCorkboardView::paintCard(QPainter& painter, qsizetype index) const
{
    const QRectF card = m_cardRects[index];
    if (card.width() <= 0 || card.height() <= 0)
        return;
    auto* self = const_cast<XQCorkboardView*>(this);
    const bool image = isImageCard(index);
    const bool rounded = m_usesRoundedStyle;
    const bool selected = m_selectedCardIndexes.contains(index);
    painter.save();

    if (m_hasDropShadows && m_shadowIntensity > 0) {
        const QImage& shadow = m_artwork->cardShadow(card.size().toSize(), m_shadowIntensity, rounded);
        const double margin = XQCorkboardArtwork::shadowMargin();
        // The shadow falls below the card (the offset is given with y up).
        painter.drawImage(QPointF(card.x() - margin, card.y() - margin - XQCorkboardCardShadowOffsetY), shadow);
    }

    painter.setRenderHint(QPainter::Antialiasing, rounded);
    QPainterPath outline;
    if (rounded)
        outline.addRoundedRect(card, CardCornerRadius, CardCornerRadius);
    else
        outline.addRect(card);
    painter.fillPath(outline, m_cardColor.toQColor());
    if (selected) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(SelectionColor, 3));
        painter.setBrush(Qt::NoBrush);
        if (rounded)
            painter.drawRoundedRect(card.adjusted(-1.5, -1.5, 1.5, 1.5), CardCornerRadius + 1.5,
                                    CardCornerRadius + 1.5);
        else
            painter.drawRect(card.adjusted(-1.5, -1.5, 1.5, 1.5));
    } else {
        painter.setPen(QPen(QColor(0, 0, 0, 40), 1));
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(outline);
    }
    painter.setClipPath(outline, Qt::IntersectClip);
    painter.setRenderHint(QPainter::Antialiasing, false);

    // Title, after the icon, short of the label chip.
    double iconOffset = 0;
    const QRectF titleRect = titleRectForCardAtIndex(index, card, &iconOffset);
    const QRectF chip = labelChipRectForCardAtIndex(index, card);
    const bool rtl = m_cardsUseRightToLeftDirection;
    if (iconOffset > 0) {
        const QImage icon = m_dataSource->iconForCardAtIndex(self, index);
        const double scale = icon.height() > titleHeight() ? titleHeight() / icon.height() : 1.0;
        const QSizeF iconSize(icon.width() * scale, icon.height() * scale);
        const double x = rtl ? titleRect.right() - iconSize.width() - 2 : titleRect.x() + 2;
        painter.drawImage(QRectF(QPointF(x, titleRect.center().y() - iconSize.height() / 2), iconSize), icon);
    }
    const QString title = m_dataSource && m_dataSource->respondsTo(DS::TitleForCardAtIndex)
        ? m_dataSource->titleForCardAtIndex(self, index)
        : QString();
    Attributes titleAttributes = image ? m_imageTitleAttributes : m_textTitleAttributes;
    QRectF textTitleRect = titleRect.adjusted(rtl ? XQCorkboardLabelChipWidth + 2 : iconOffset + 3, 0,
                                              rtl ? -(iconOffset + 3) : -(XQCorkboardLabelChipWidth + 2), 0);
    QRectF shrunkRect = textTitleRect;
    adjustedTitleRectAndAttributes(&shrunkRect, &titleAttributes, title, textTitleRect);
    if (!title.isEmpty()) {
        painter.setFont(fontOf(titleAttributes, 14));
        painter.setPen(colorOf(titleAttributes, InkColor));
        const Qt::Alignment alignment =
            (rtl ? Qt::AlignRight : Qt::AlignLeft) | (m_usesTwoLineTitles ? Qt::AlignTop : Qt::AlignVCenter);
        if (m_usesTwoLineTitles) {
            painter.drawText(shrunkRect, int(alignment) | Qt::TextWordWrap, title);
        } else {
            const QString elided = painter.fontMetrics().elidedText(title, Qt::ElideRight, int(shrunkRect.width()));
            painter.drawText(shrunkRect, int(alignment), elided);
        }
    }
    if (m_dataSource && m_dataSource->respondsTo(DS::LabelColorForCardAtIndex)) {
        const QColor label = m_dataSource->labelColorForCardAtIndex(self, index);
        if (label.isValid()) {
            painter.setRenderHint(QPainter::Antialiasing);
            painter.setPen(QPen(label.darker(140), 1));
            painter.setBrush(label);
            painter.drawRoundedRect(chip.adjusted(2, 3, -2, -3), 2, 2);
            painter.setRenderHint(QPainter::Antialiasing, false);
        }
    }

    const QRectF textRect = textRectForCardAtIndex(index, card);
    if (image) {
        const QImage picture = m_dataSource && m_dataSource->respondsTo(DS::ImageForCardAtIndex)
            ? m_dataSource->imageForCardAtIndex(self, index, false)
            : QImage();
        const QRectF frame =
            QRectF(card.x() + 6, titleRect.bottom() + 3, card.width() - 12, card.bottom() - titleRect.bottom() - 9);
        if (!picture.isNull() && frame.width() > 0 && frame.height() > 0) {
            QSizeF size = QSizeF(picture.size()).scaled(frame.size(), Qt::KeepAspectRatio);
            const QRectF target(frame.center() - QPointF(size.width() / 2, size.height() / 2), size);
            painter.setRenderHint(QPainter::SmoothPixmapTransform);
            painter.drawImage(target, picture);
        } else {
            painter.fillRect(frame, QColor(232, 228, 220));
        }
    } else {
        // The title rule, then the ruled lines, then the text on them.
        painter.setPen(QPen(m_dividerColor.toQColor(), 1.5));
        const double ruleY = titleRect.bottom() + 0.5;
        painter.drawLine(QPointF(card.x() + 1, ruleY), QPointF(card.right() - 1, ruleY));
        if (m_drawsLines && lineHeight() > 2) {
            painter.setPen(QPen(m_lineColor.toQColor(), 1));
            const double first = textRect.top() + (m_drawsTextOnLine ? 0 : lineHeight()) + 0.5;
            for (double y = first; y < card.bottom() - 2; y += lineHeight())
                painter.drawLine(QPointF(card.x() + 1, y), QPointF(card.right() - 1, y));
        }
        paintCardText(painter, index, textRect);
    }

    if (m_dataSource && m_dataSource->respondsTo(DS::StampForCardAtIndex)) {
        const QString stamp = m_dataSource->stampForCardAtIndex(self, index);
        if (!stamp.isEmpty()) {
            const QRectF band = stampRectForCardAtIndex(index);
            painter.save();
            painter.setRenderHint(QPainter::Antialiasing);
            painter.translate(band.center());
            painter.rotate(-14);
            QFont font = m_stampFont.toQFont();
            const QRectF box(-band.width() / 2, -band.height() / 2, band.width(), band.height());
            const double textWidth = QFontMetricsF(font).horizontalAdvance(stamp.toUpper());
            if (textWidth > box.width() - 8 && textWidth > 0)
                font.setPixelSize(std::max(6, int(font.pixelSize() * (box.width() - 8) / textWidth)));
            const QColor ink = m_stampColor.toQColor();
            painter.setPen(QPen(ink, 2.5));
            painter.setBrush(Qt::NoBrush);
            painter.drawRoundedRect(box, 4, 4);
            painter.setFont(font);
            painter.drawText(box, Qt::AlignCenter, stamp.toUpper());
            painter.restore();
        }
    }

    if (m_showsCardNumbers) {
        const QRectF box = numberRectForCardAtIndex(index);
        QFont font = Font::userFont(10).toQFont();
        font.setBold(true);
        painter.setFont(font);
        painter.setPen(QColor(120, 120, 130));
        painter.drawText(box, int(rtl ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignVCenter,
                         QString::number(cardNumberForCardAtIndex(index)));
    }
    painter.restore();

    if (m_showsPins) {
        const QRectF pin = pinRectForCardAtIndex(index);
        painter.drawImage(pin.topLeft(), m_artwork->pinImage(pinColorFor(m_dividerColor)));
    }
}

void XQCorkboardView::paintCardText(QPainter& painter, qsizetype index, const QRectF& textRect) const
{
    if (textRect.width() <= 4 || textRect.height() <= 0)
        return;
    auto* self = const_cast<XQCorkboardView*>(this);
    QString text = m_dataSource && m_dataSource->respondsTo(DS::TextForCardAtIndex)
        ? m_dataSource->textForCardAtIndex(self, index)
        : QString();
    QFont font = fontOf(m_textAttributes, 12);
    QColor ink = colorOf(m_textAttributes, InkColor);
    if (text.isEmpty()) {
        if (!m_showsPlaceholderText)
            return;
        text = localized(XQCorkboardPlaceholderText);
        font.setItalic(true);
        ink = QColor(150, 150, 150);
    }
    text.replace(QLatin1Char('\n'), QChar::LineSeparator);
    const double padding = m_usesRoundedStyle ? 2.0 : 4.0;
    const double lineWidth = textRect.width() - 2 * padding;
    const double lineStep = lineHeight() > 0 ? lineHeight() : QFontMetricsF(font).lineSpacing();
    const QFontMetricsF metrics(font);

    QTextLayout layout(text, font);
    QTextOption option(m_cardsUseRightToLeftDirection ? Qt::AlignRight : Qt::AlignLeft);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    option.setTextDirection(m_cardsUseRightToLeftDirection ? Qt::RightToLeft : Qt::LeftToRight);
    layout.setTextOption(option);
    layout.setCacheEnabled(true);
    // Lines are laid until the next one would not fit; the last one that fits ends with an ellipsis
    // when text remains.
    const int maxLines = std::max(0, int((textRect.height() + 0.01) / lineStep));
    struct Placed {
        int start, length;
    };
    std::vector<Placed> lines;
    layout.beginLayout();
    bool more = false;
    for (;;) {
        QTextLine line = layout.createLine();
        if (!line.isValid())
            break;
        if (int(lines.size()) == maxLines) {
            more = true;
            break;
        }
        line.setLineWidth(lineWidth);
        lines.push_back({line.textStart(), line.textLength()});
    }
    layout.endLayout();

    painter.save();
    // Text on the ruled lines has its baseline at the top of its (lowered) area: keep the ascenders.
    painter.setClipRect(textRect.adjusted(0, m_drawsTextOnLine ? -baselineOffset() : 0, 0, 0), Qt::IntersectClip);
    painter.setFont(font);
    painter.setPen(ink);
    const double baseline = m_drawsTextOnLine ? 0 : metrics.ascent();
    for (size_t k = 0; k < lines.size(); ++k) {
        const double y = textRect.top() + double(k) * lineStep + baseline;
        QString piece = text.mid(lines[k].start, lines[k].length);
        while (piece.endsWith(QChar::LineSeparator) || piece.endsWith(QLatin1Char(' ')))
            piece.chop(1);
        if (k + 1 == lines.size() && more)
            piece = withEllipsis(piece, metrics, lineWidth);
        const double advance = metrics.horizontalAdvance(piece);
        const double x = m_cardsUseRightToLeftDirection ? textRect.right() - padding - advance : textRect.x() + padding;
        painter.drawText(QPointF(x, y), piece);
    }
    painter.restore();
}

} // namespace qly
