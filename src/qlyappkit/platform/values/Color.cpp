#include <qlyappkit/platform/values/Color.h>

#include <algorithm>

namespace qly {

namespace {

double unitComponent(double value)
{
    if (!(value > 0))
        return 0;
    return value > 1 ? 1 : value;
}

} // namespace

Color Color::calibratedRGB(double red, double green, double blue, double alpha)
{
    return Color(unitComponent(red), unitComponent(green), unitComponent(blue), unitComponent(alpha));
}

Color Color::fromQColor(const QColor& color)
{
    // From the 16-bit channels in double precision: redF() and friends are floats, which would turn
    // 0.2 into 0.200000003 in every decimal form written afterwards.
    const QRgba64 rgb = color.toRgb().rgba64();
    constexpr double max = 65535.0;
    return Color(rgb.red() / max, rgb.green() / max, rgb.blue() / max, rgb.alpha() / max);
}

QColor Color::toQColor() const { return QColor::fromRgbF(float(m_red), float(m_green), float(m_blue), float(m_alpha)); }

Color Color::blendedColorWithFraction(double fraction, const Color& other) const
{
    const double f = std::clamp(fraction, 0.0, 1.0);
    auto mix = [f](double a, double b) { return a * (1.0 - f) + b * f; };
    return Color(mix(m_red, other.m_red), mix(m_green, other.m_green), mix(m_blue, other.m_blue),
                 mix(m_alpha, other.m_alpha));
}

std::optional<Color> Color::fromHexString(const QString& text)
{
    QStringView digits = QStringView(text).trimmed();
    if (digits.startsWith(u'#'))
        digits = digits.mid(1);
    if (digits.size() != 6 && digits.size() != 3)
        return std::nullopt;
    int values[6];
    for (qsizetype i = 0; i < digits.size(); ++i) {
        const char16_t c = digits[i].unicode();
        if (c >= u'0' && c <= u'9')
            values[i] = c - u'0';
        else if (c >= u'a' && c <= u'f')
            values[i] = c - u'a' + 10;
        else if (c >= u'A' && c <= u'F')
            values[i] = c - u'A' + 10;
        else
            return std::nullopt;
    }
    // "RGB" stands for "RRGGBB".
    auto channel = [&](int k) {
        const int v = digits.size() == 3 ? values[k] * 17 : values[2 * k] * 16 + values[2 * k + 1];
        return v / 255.0;
    };
    return Color(channel(0), channel(1), channel(2), 1.0);
}

} // namespace qly
