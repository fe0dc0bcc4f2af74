#include <qlyappkit/corkboard/XQCorkboardArtwork.h>

#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <algorithm>
#include <cmath>
#include <vector>

#include <qlyappkit/corkboard/XQCorkboardTheme.h>

namespace qly {

namespace {

constexpr int PatternSize = 192;

// A small deterministic generator: the cork looks the same on every run and in every test.
struct Random {
    quint32 state;
    quint32 next()
    {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        return state;
    }
    double unit() { return double(next() % 100000) / 100000.0; }
};

void blurLine(const quint32* in, quint32* out, int count, int stride, int radius)
{
    // Running sums per channel over a window of 2r+1, edges clamped.
    const int window = 2 * radius + 1;
    long sum[4] = {0, 0, 0, 0};
    auto channel = [](quint32 p, int c) { return long((p >> (8 * c)) & 0xff); };
    for (int k = -radius; k <= radius; ++k) {
        const quint32 p = in[std::clamp(k, 0, count - 1) * stride];
        for (int c = 0; c < 4; ++c)
            sum[c] += channel(p, c);
    }
    for (int i = 0; i < count; ++i) {
        quint32 value = 0;
        for (int c = 0; c < 4; ++c)
            value |= quint32(sum[c] / window) << (8 * c);
        out[i] = value;
        const quint32 leaving = in[std::clamp(i - radius, 0, count - 1) * stride];
        const quint32 entering = in[std::clamp(i + radius + 1, 0, count - 1) * stride];
        for (int c = 0; c < 4; ++c)
            sum[c] += channel(entering, c) - channel(leaving, c);
    }
}

} // namespace

void XQBlurImage(QImage& image, int radius)
{
    if (radius <= 0 || image.isNull())
        return;
    image = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const int w = image.width(), h = image.height();
    std::vector<quint32> buffer(size_t(std::max(w, h)));
    for (int pass = 0; pass < 3; ++pass) {
        for (int y = 0; y < h; ++y) {
            auto* line = reinterpret_cast<quint32*>(image.scanLine(y));
            blurLine(line, buffer.data(), w, 1, radius);
            std::copy(buffer.begin(), buffer.begin() + w, line);
        }
        auto* bits = reinterpret_cast<quint32*>(image.bits());
        const int stride = int(image.bytesPerLine() / 4);
        for (int x = 0; x < w; ++x) {
            blurLine(bits + x, buffer.data(), h, stride, radius);
            for (int y = 0; y < h; ++y)
                bits[y * stride + x] = buffer[size_t(y)];
        }
    }
}

const QImage& XQCorkboardArtwork::corkPattern()
{
    static const QImage pattern = [] {
        QImage image(PatternSize, PatternSize, QImage::Format_ARGB32_Premultiplied);
        image.fill(QColor(184, 134, 84));
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        Random random{0x9e3779b9u};
        // Granules of pressed cork: many small dark and light flecks in a range of browns, each drawn
        // at its wrapped positions too, so the tile repeats without seams.
        const QColor tones[] = {QColor(120, 78, 42),   QColor(150, 102, 58), QColor(206, 160, 108),
                                QColor(224, 184, 130), QColor(98, 62, 34),   QColor(170, 118, 70)};
        for (int i = 0; i < 2600; ++i) {
            const double x = random.unit() * PatternSize;
            const double y = random.unit() * PatternSize;
            const double r = 0.6 + random.unit() * (i % 9 == 0 ? 3.2 : 1.6);
            QColor tone = tones[random.next() % 6];
            tone.setAlpha(90 + int(random.next() % 120));
            painter.setBrush(tone);
            for (int dx = -1; dx <= 1; ++dx) {
                for (int dy = -1; dy <= 1; ++dy)
                    painter.drawEllipse(QPointF(x + dx * PatternSize, y + dy * PatternSize), r, r * 0.8);
            }
        }
        painter.end();
        XQBlurImage(image, 1);
        return image;
    }();
    return pattern;
}

const QImage& XQCorkboardArtwork::pinImage(const QColor& color)
{
    auto it = m_pins.find(color.rgba());
    if (it != m_pins.end())
        return *it;
    const QSize size = pinSize();
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    {
        // The pin's shadow falls down and to the right of the head.
        QImage shadow(size, QImage::Format_ARGB32_Premultiplied);
        shadow.fill(Qt::transparent);
        QPainter sp(&shadow);
        sp.setRenderHint(QPainter::Antialiasing);
        sp.setPen(Qt::NoPen);
        sp.setBrush(QColor(40, 40, 40, 170));
        sp.drawEllipse(QRectF(5, 6.5, 12, 12));
        sp.end();
        XQBlurImage(shadow, int(XQCorkboardPinShadowBlurRadius));
        QPainter painter(&image);
        painter.drawImage(0, 0, shadow);
        painter.setRenderHint(QPainter::Antialiasing);
        const QRectF head(3, 1, 13, 13);
        QRadialGradient gradient(head.center() - QPointF(2.5, 2.5), head.width() * 0.7);
        gradient.setColorAt(0.0, color.lighter(185));
        gradient.setColorAt(0.35, color);
        gradient.setColorAt(1.0, color.darker(170));
        painter.setPen(QPen(color.darker(220), 0.6));
        painter.setBrush(gradient);
        painter.drawEllipse(head);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(255, 255, 255, 200));
        painter.drawEllipse(QRectF(6, 3.5, 3.5, 2.5));
    }
    return *m_pins.insert(color.rgba(), image);
}

int XQCorkboardArtwork::shadowMargin() { return int(std::ceil(XQCorkboardCardShadowBlurRadius)) + 4; }

const QImage& XQCorkboardArtwork::cardShadow(QSize cardSize, double intensity, bool rounded)
{
    const quint64 key = (quint64(quint32(cardSize.width())) << 33) ^ (quint64(quint32(cardSize.height())) << 1)
        ^ quint64(rounded) ^ (quint64(std::lround(intensity * 1000)) << 52);
    auto it = m_shadows.find(key);
    if (it != m_shadows.end())
        return *it;
    const int margin = shadowMargin();
    QImage image(cardSize + QSize(2 * margin, 2 * margin), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(0, 0, 0, int(std::clamp(intensity, 0.0, 1.0) * 200)));
        const QRectF card(margin, margin, cardSize.width(), cardSize.height());
        if (rounded)
            painter.drawRoundedRect(card, 8, 8);
        else
            painter.drawRect(card);
    }
    // The blur is a third of the radius three times over: about the spread of a blur of that radius.
    XQBlurImage(image, std::max(1, int(XQCorkboardCardShadowBlurRadius / 3)));
    return *m_shadows.insert(key, image);
}

} // namespace qly
