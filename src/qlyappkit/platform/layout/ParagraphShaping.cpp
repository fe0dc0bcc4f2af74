// Shaping one paragraph: its text and attribute runs into a QTextLayout, broken into lines at the
// widths its style leaves, with the line heights the style asks for.
#include <QFontMetricsF>
#include <QHash>
#include <QTextOption>
#include <cmath>

#include <qlyappkit/platform/layout/LaidParagraph_p.h>
#include <qlyappkit/platform/layout/LayoutManager.h>
#include <qlyappkit/platform/layout/TextContainer.h>
#include <qlyappkit/platform/layout/Typesetter.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Color.h>
#include <qlyappkit/platform/values/Font.h>

namespace qly {

namespace {

// An attachment is laid out as one ideograph (break opportunities on both sides, as around a picture)
// in a one-pixel font, widened by letter spacing to the picture's width and drawn transparent.
constexpr char16_t AttachmentPlaceholder = 0x4E00;
constexpr double MinimumLineWidth = 1.0;

const QFont& qFontFor(const QVariant& value)
{
    static QHash<QString, QFont> cache;
    static const QFont userFont = Font::userFont().toQFont();
    if (value.metaType() != QMetaType::fromType<Font>())
        return userFont;
    const Font font = value.value<Font>();
    const QString key = font.fontName() + QLatin1Char('@') + QString::number(font.pointSize());
    auto it = cache.find(key);
    if (it == cache.end())
        it = cache.insert(key, font.toQFont());
    return *it;
}

QFont placeholderFont(const QFont& base)
{
    QFont font = base;
    font.setPixelSize(1);
    return font;
}

// Advance of the placeholder glyph in its one-pixel font, measured once as the layout will shape it.
double placeholderAdvance(const QFont& font)
{
    static QHash<QString, double> cache;
    auto it = cache.find(font.family());
    if (it != cache.end())
        return *it;
    QTextLayout probe(QString(QChar(AttachmentPlaceholder)), font);
    probe.beginLayout();
    QTextLine line = probe.createLine();
    line.setLineWidth(1e6);
    probe.endLayout();
    const double advance = line.isValid() ? line.naturalTextWidth() : 0.0;
    cache.insert(font.family(), advance);
    return advance;
}

QSizeF scaledAttachmentSize(QSizeF size, ImageScaling scaling, double lineWidth, double containerHeight)
{
    if (size.isEmpty())
        return QSizeF(0, 0);
    const QSizeF room(std::max(lineWidth, MinimumLineWidth), std::max(containerHeight, 1.0));
    switch (scaling) {
    case ImageScaling::None:
        return size;
    case ImageScaling::AxesIndependently:
        return size.boundedTo(room);
    case ImageScaling::ProportionallyDown:
        if (size.width() <= room.width() && size.height() <= room.height())
            return size;
        return size.scaled(room, Qt::KeepAspectRatio);
    case ImageScaling::ProportionallyUpOrDown:
        return size.scaled(QSizeF(std::min(room.width(), size.width() * 1e3), room.height()), Qt::KeepAspectRatio);
    }
    return size;
}

// QTextLayout aligns visually: natural alignment is resolved by the paragraph's direction here.
Qt::Alignment qtAlignment(TextAlignment alignment, bool rightToLeft)
{
    switch (alignment) {
    case LeftTextAlignment:
        return Qt::AlignLeft;
    case RightTextAlignment:
        return Qt::AlignRight;
    case CenterTextAlignment:
        return Qt::AlignHCenter;
    case JustifiedTextAlignment:
        return Qt::AlignJustify;
    case NaturalTextAlignment:
        break;
    }
    return rightToLeft ? Qt::AlignRight : Qt::AlignLeft;
}

// Underline, strikethrough and background colour: they change no metric, only the drawing. Qt has one
// underline weight, so thick and double underlines are drawn single.
bool addDecorations(const Attributes& attributes, QTextCharFormat& format)
{
    bool added = false;
    if (attributes.value(UnderlineStyleAttributeName).toInt() != UnderlineStyleNone) {
        format.setUnderlineStyle(QTextCharFormat::SingleUnderline);
        const QVariant color = attributes.value(UnderlineColorAttributeName);
        if (color.metaType() == QMetaType::fromType<Color>())
            format.setUnderlineColor(color.value<Color>().toQColor());
        added = true;
    }
    if (attributes.value(StrikethroughStyleAttributeName).toInt() != UnderlineStyleNone) {
        format.setFontStrikeOut(true);
        added = true;
    }
    const QVariant background = attributes.value(BackgroundColorAttributeName);
    if (background.metaType() == QMetaType::fromType<Color>()) {
        format.setBackground(background.value<Color>().toQColor());
        added = true;
    }
    return added;
}

bool isLayoutControl(char16_t c) { return c < 0x20 || (c >= 0x7F && c <= 0x9F) || c == 0x2028; }

} // namespace

void LayoutManager::shapeParagraph(LaidParagraph& p, double containerWidth, double padding)
{
    ++m_statistics.paragraphsShaped;
    const TextStorage& text = *m_storage;
    const qsizetype length = p.range.length - p.separator.length;
    QString string = text.substring(Range{p.range.location, length});

    const QVariant styleValue =
        text.length() > p.range.location ? text.attribute(ParagraphStyleAttributeName, p.range.location) : QVariant();
    p.style = styleValue.metaType() == QMetaType::fromType<ParagraphStyle>() ? styleValue.value<ParagraphStyle>()
                                                                             : ParagraphStyle::defaultParagraphStyle();
    const ParagraphStyle& style = p.style;

    // The widths lines may take, from the text's left edge (the container less its padding).
    const double textWidth = std::max(containerWidth - 2 * padding, MinimumLineWidth);
    const double firstLeft = p.continuesParagraph ? style.headIndent() : style.firstLineHeadIndent();
    const double left = style.headIndent();
    const double right = style.tailIndent() > 0 ? style.tailIndent() : textWidth + style.tailIndent();
    const double firstWidth = std::max(right - firstLeft, MinimumLineWidth);
    const double width = std::max(right - left, MinimumLineWidth);

    // Control characters keep their place but take the form their action gives them.
    for (qsizetype i = 0; i < string.size(); ++i) {
        const char16_t c = string.at(i).unicode();
        if (!isLayoutControl(c))
            continue;
        const int action = m_typesetter->actionForControlCharacterAtIndex(p.range.location + i);
        if (action & Typesetter::LineBreakAction)
            string[i] = QChar(QChar::LineSeparator);
        else if (action & Typesetter::HorizontalTabAction)
            string[i] = QLatin1Char('\t');
        else if (action & Typesetter::WhitespaceAction)
            string[i] = QLatin1Char(' ');
        else
            string[i] = QChar(0x200B);
    }

    // Attribute runs become formats; a paragraph in one plain font needs none.
    QList<QTextLayout::FormatRange> formats;
    p.attachments.clear();
    const qsizetype fontIndex = length > 0 ? p.range.location : std::min(p.range.location, text.length() - 1);
    const QFont& baseFont = fontIndex >= 0 ? qFontFor(text.attribute(FontAttributeName, fontIndex)) : qFontFor({});
    qsizetype at = 0;
    while (at < length) {
        Range run;
        const Attributes attributes = text.attributes(p.range.location + at, &run);
        const qsizetype runEnd = std::min(run.end() - p.range.location, length);
        if (runEnd <= at)
            break;
        QTextCharFormat format;
        bool needed = false;
        const QFont& font = qFontFor(attributes.value(FontAttributeName));
        QFont runFont = font;
        const double kern = attributes.value(KernAttributeName).toDouble();
        if (kern != 0)
            runFont.setLetterSpacing(QFont::AbsoluteSpacing, kern);
        if (!(runFont == baseFont)) {
            format.setFont(runFont, QTextCharFormat::FontPropertiesAll);
            needed = true;
        }
        const QVariant color = attributes.value(ForegroundColorAttributeName);
        if (color.metaType() == QMetaType::fromType<Color>()) {
            format.setForeground(color.value<Color>().toQColor());
            needed = true;
        }
        needed |= addDecorations(attributes, format);
        if (needed)
            formats.append({int(at), int(runEnd - at), format});
        const QVariant attachment = attributes.value(AttachmentAttributeName);
        if (attachment.metaType() == QMetaType::fromType<TextAttachment>()) {
            const TextAttachment value = attachment.value<TextAttachment>();
            const double containerHeight = size_t(m_cursor.container) < m_containerList.size()
                ? m_containerList[size_t(m_cursor.container)]->size().height()
                : TextContainer::LargeDimension;
            for (qsizetype i = at; i < runEnd; ++i) {
                if (string.at(i) != QChar(AttachmentCharacter))
                    continue;
                const QSizeF size = scaledAttachmentSize(value.bounds(), m_attachmentScaling, width, containerHeight);
                string[i] = QChar(AttachmentPlaceholder);
                QTextCharFormat box;
                QFont boxFont = placeholderFont(runFont);
                boxFont.setLetterSpacing(QFont::AbsoluteSpacing, size.width() - placeholderAdvance(boxFont));
                box.setFont(boxFont, QTextCharFormat::FontPropertiesAll);
                box.setForeground(QColor(Qt::transparent));
                formats.append({int(i), 1, box});
                p.attachments.push_back({i, size, value});
            }
        }
        at = runEnd;
    }

    auto layout = std::make_unique<QTextLayout>(string, baseFont);
    const bool rightToLeft = string.isRightToLeft();
    QTextOption option(qtAlignment(style.alignment(), rightToLeft));
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    option.setTextDirection(rightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
    QList<QTextOption::Tab> tabs;
    for (const TextTab& tab : style.tabStops()) {
        const QTextOption::TabType type = tab.alignment == RightTextAlignment ? QTextOption::RightTab
            : tab.alignment == CenterTextAlignment                            ? QTextOption::CenterTab
                                                                              : QTextOption::LeftTab;
        tabs.append(QTextOption::Tab(tab.location, type));
    }
    option.setTabs(tabs);
    option.setTabStopDistance(style.defaultTabInterval() > 0 ? style.defaultTabInterval() : 28.0);
    layout->setTextOption(option);
    if (!formats.isEmpty())
        layout->setFormats(formats);

    p.lines.clear();
    layout->beginLayout();
    for (;;) {
        QTextLine line = layout->createLine();
        if (!line.isValid())
            break;
        const bool first = p.lines.empty();
        line.setPosition(QPointF(first ? firstLeft : left, 0));
        line.setLineWidth(first ? firstWidth : width);
        ShapedLine shaped;
        shaped.start = line.textStart();
        shaped.length = line.textLength();
        shaped.textLine = line.lineNumber();
        p.lines.push_back(shaped);
    }
    layout->endLayout();

    const double multiple = style.lineHeightMultiple();
    size_t box = 0;
    for (size_t i = 0; i < p.lines.size(); ++i) {
        ShapedLine& shaped = p.lines[i];
        const QTextLine line = layout->lineAt(shaped.textLine);
        // Lines are contiguous; the last one owns the paragraph's terminator.
        shaped.length = (i + 1 < p.lines.size() ? p.lines[i + 1].start : p.range.length) - shaped.start;
        double ascent = line.ascent();
        const double descent = line.descent();
        const double leading = std::max(0.0, line.leading());
        while (box < p.attachments.size() && p.attachments[box].offset < shaped.start + shaped.length) {
            ascent = std::max(ascent, p.attachments[box].size.height());
            ++box;
        }
        const double natural = ascent + descent + leading;
        double height = multiple > 0 ? natural * multiple : natural;
        if (style.minimumLineHeight() > 0)
            height = std::max(height, style.minimumLineHeight());
        if (style.maximumLineHeight() > 0)
            height = std::min(height, style.maximumLineHeight());
        shaped.height = height;
        shaped.baseline = height - descent - leading;
        const QRectF natural_ = line.naturalTextRect();
        const bool justified = style.alignment() == JustifiedTextAlignment && i + 1 < p.lines.size();
        shaped.x = justified ? line.x() : natural_.x();
        shaped.width = justified ? line.width() : line.horizontalAdvance();
    }
    p.layout = std::move(layout);
    p.shaped = true;
    p.shapedWidth = containerWidth;
    p.shapedPadding = padding;
}

double LayoutManager::defaultLineHeightForFont(const Font& font)
{
    const QFontMetricsF metrics(qFontFor(QVariant::fromValue(font)));
    return metrics.ascent() + metrics.descent() + std::max(0.0, metrics.leading());
}

} // namespace qly
