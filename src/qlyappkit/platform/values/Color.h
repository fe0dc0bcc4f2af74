#pragma once
// Color: calibrated RGBA with double components, so that the exact decimal forms written to XML and
// tags survive (QColor's 16-bit channels would not).
#include <QColor>
#include <QMetaType>
#include <QString>
#include <optional>

namespace qly {

class Color {
public:
    constexpr Color() = default;
    constexpr Color(double red, double green, double blue, double alpha = 1.0)
        : m_red(red), m_green(green), m_blue(blue), m_alpha(alpha)
    {
    }
    static constexpr Color rgb(double red, double green, double blue, double alpha = 1.0)
    {
        return Color(red, green, blue, alpha);
    }
    /// A colour read from outside: each component clamped to 0–1 as calibrated colours are, NaN (and
    /// -0) giving 0, so that no value the text forms cannot write back survives.
    static Color calibratedRGB(double red, double green, double blue, double alpha = 1.0);
    /// A grey: calibrated white with the given level.
    static constexpr Color white(double level, double alpha = 1.0) { return Color(level, level, level, alpha); }
    static Color fromQColor(const QColor& color);

    constexpr double redComponent() const { return m_red; }
    constexpr double greenComponent() const { return m_green; }
    constexpr double blueComponent() const { return m_blue; }
    constexpr double alphaComponent() const { return m_alpha; }
    QColor toQColor() const;
    Color withAlpha(double alpha) const { return Color(m_red, m_green, m_blue, alpha); }

    static constexpr Color blackColor() { return Color(0, 0, 0); }
    static constexpr Color whiteColor() { return Color(1, 1, 1); }
    /// The red that inline annotations get when no other colour is known.
    static constexpr Color standardAnnotationColor() { return Color(1, 0, 0); }

    /// The colour mixed component by component (alpha too) with `other`: fraction 0 gives this colour,
    /// 1 gives `other`. The fraction is clamped to 0…1.
    Color blendedColorWithFraction(double fraction, const Color& other) const;
    /// An opaque colour from hexadecimal RGB text: "RRGGBB" or "RGB", with or without a leading "#",
    /// surrounding blanks ignored. Nothing for any other text.
    static std::optional<Color> fromHexString(const QString& text);

    friend constexpr bool operator==(const Color&, const Color&) = default;

private:
    double m_red = 0, m_green = 0, m_blue = 0, m_alpha = 1.0;
};

} // namespace qly

Q_DECLARE_METATYPE(qly::Color)
