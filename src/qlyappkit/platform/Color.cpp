#include <qlyappkit/platform/Color.h>

namespace qly {

Color Color::fromQColor(const QColor& color)
{
    const QColor rgb = color.toRgb();
    return Color(rgb.redF(), rgb.greenF(), rgb.blueF(), rgb.alphaF());
}

QColor Color::toQColor() const
{
    return QColor::fromRgbF(float(m_red), float(m_green), float(m_blue), float(m_alpha));
}

} // namespace qly
