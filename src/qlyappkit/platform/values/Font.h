#pragma once
// Font: a face name, a point size and bold/italic traits. Converted to QFont only to measure or draw
// (pixel size = point size, so one layout unit is one point).
#include <QFont>
#include <QMetaType>
#include <QString>
#include <optional>

namespace qly {

/// Font traits as the platform's font manager numbers them.
enum FontTrait : unsigned {
    ItalicFontMask = 1,
    BoldFontMask = 2,
    UnboldFontMask = 4,
    UnitalicFontMask = 0x1000000,
};

class Font {
public:
    Font() = default;
    /// A font by face name ("Helvetica", "Helvetica-Bold", "Times-Italic" …) and point size.
    /// Traits are read from a "-Bold"/"-Italic"/"-BoldItalic"/"-Oblique" suffix of the name.
    Font(const QString& fontName, double pointSize);
    /// A font by family, size and traits (a mask of ItalicFontMask | BoldFontMask).
    static Font fromFamily(const QString& family, double pointSize, unsigned traits = 0);
    /// The named font when a face of that family is installed; nothing otherwise. Helvetica/Arial,
    /// Times/Times New Roman and Courier/Courier New resolve to their metric-compatible installed
    /// stand-ins; the font keeps the requested family name. Needs a QGuiApplication (font database).
    static std::optional<Font> fontWithName(const QString& fontName, double pointSize);
    /// Helvetica 12 pt at the given size (12 when size is 0).
    static Font userFont(double pointSize = 0);
    /// The QFont's family and traits; its pixel size (or point size when it has none) as the size.
    static Font fromQFont(const QFont& font);

    bool isValid() const { return !m_family.isEmpty(); }
    /// The face name: family plus "-Bold", "-Italic" or "-BoldItalic" when traited.
    QString fontName() const;
    QString familyName() const { return m_family; }
    double pointSize() const { return m_pointSize; }
    unsigned traits() const { return m_traits; }
    bool isBold() const { return m_traits & BoldFontMask; }
    bool isItalic() const { return m_traits & ItalicFontMask; }
    Font withSize(double pointSize) const;
    /// The font converted to have (or, with the Unbold/Unitalic masks, to lose) a trait; nothing when
    /// no such face of the family is installed.
    std::optional<Font> convertedToHaveTrait(unsigned trait) const;
    /// A QFont for measuring and drawing: the installed family (or stand-in), pixel size = point size
    /// rounded to whole pixels (QFont has no fractional pixel size).
    QFont toQFont() const;

    friend bool operator==(const Font&, const Font&) = default;

private:
    QString m_family;
    double m_pointSize = 0;
    unsigned m_traits = 0;
};

} // namespace qly

Q_DECLARE_METATYPE(qly::Font)
