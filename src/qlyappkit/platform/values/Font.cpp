#include <qlyappkit/platform/values/Font.h>

#include <QFontDatabase>
#include <QGuiApplication>
#include <QHash>
#include <QMutex>

#include <array>

namespace qly {

namespace {

// Face-name suffixes and the traits they stand for. Longer suffixes first, so that "-BoldItalic" is not
// read as "-Italic". "-Roman" and "-Regular" name the plain face of families such as "Times-Roman".
struct Suffix {
    const char* text;
    unsigned traits;
};
constexpr std::array<Suffix, 7> kSuffixes{{
    {"-BoldItalic", BoldFontMask | ItalicFontMask},
    {"-BoldOblique", BoldFontMask | ItalicFontMask},
    {"-Oblique", ItalicFontMask},
    {"-Italic", ItalicFontMask},
    {"-Bold", BoldFontMask},
    {"-Roman", 0},
    {"-Regular", 0},
}};

// The installed families that stand in for the standard faces documents name (metric-compatible), and
// for the hand-lettered face the corkboard titles its picture cards with (the first installed wins).
struct Substitute {
    const char* requested;
    const char* installed;
};
constexpr std::array<Substitute, 11> kSubstitutes{{
    {"Helvetica", "Liberation Sans"},
    {"Arial", "Liberation Sans"},
    {"ArialMT", "Liberation Sans"},
    {"Times", "Liberation Serif"},
    {"Times New Roman", "Liberation Serif"},
    {"TimesNewRomanPSMT", "Liberation Serif"},
    {"Courier", "Liberation Mono"},
    {"Courier New", "Liberation Mono"},
    {"Chalkboard", "Comic Neue"},
    {"Chalkboard", "Humor Sans"},
    {"Chalkboard", "DejaVu Sans"},
}};

// What the font database knows about one requested family: the installed family it resolves to
// (empty when none) and which of the four bold/italic combinations it has a face for.
struct FamilyInfo {
    QString installed;
    std::array<bool, 4> faces{}; // index: bold * 2 + italic
};

int faceIndex(unsigned traits) { return ((traits & BoldFontMask) ? 2 : 0) + ((traits & ItalicFontMask) ? 1 : 0); }

QString installedFamily(const QString& family, const QStringList& families)
{
    for (const QString& f : families) {
        if (f.compare(family, Qt::CaseInsensitive) == 0)
            return f;
    }
    for (const Substitute& s : kSubstitutes) {
        if (family.compare(QLatin1String(s.requested), Qt::CaseInsensitive) == 0) {
            const QString target = QLatin1String(s.installed);
            if (families.contains(target, Qt::CaseInsensitive))
                return target;
        }
    }
    return {};
}

// The font database is read once per family and remembered: font lookups happen per run while
// converting documents. Without a GUI application there is no font database, and nothing is cached.
FamilyInfo familyInfo(const QString& family)
{
    if (family.isEmpty() || !qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        return {};
    static QMutex mutex;
    static QHash<QString, FamilyInfo> cache;
    const QString key = family.toLower();
    QMutexLocker lock(&mutex);
    auto it = cache.constFind(key);
    if (it != cache.constEnd())
        return *it;

    FamilyInfo info;
    info.installed = installedFamily(family, QFontDatabase::families());
    if (!info.installed.isEmpty()) {
        const QStringList styles = QFontDatabase::styles(info.installed);
        for (const QString& style : styles) {
            // Semibold and heavier count as bold; oblique counts as italic (QFontDatabase::italic
            // would only report true italics).
            const bool bold = QFontDatabase::weight(info.installed, style) >= QFont::DemiBold;
            const bool italic = QFontDatabase::font(info.installed, style, 12).style() != QFont::StyleNormal;
            const unsigned traits = (bold ? unsigned(BoldFontMask) : 0u) | (italic ? unsigned(ItalicFontMask) : 0u);
            info.faces[faceIndex(traits)] = true;
        }
    }
    cache.insert(key, info);
    return info;
}

} // namespace

Font::Font(const QString& fontName, double pointSize) : m_family(fontName), m_pointSize(pointSize)
{
    for (const Suffix& s : kSuffixes) {
        const QLatin1String suffix(s.text);
        if (fontName.size() > suffix.size() && fontName.endsWith(suffix, Qt::CaseInsensitive)) {
            m_family = fontName.left(fontName.size() - suffix.size());
            m_traits = s.traits;
            break;
        }
    }
}

Font Font::fromFamily(const QString& family, double pointSize, unsigned traits)
{
    Font font;
    font.m_family = family;
    font.m_pointSize = pointSize;
    font.m_traits = traits & (BoldFontMask | ItalicFontMask);
    return font;
}

std::optional<Font> Font::fontWithName(const QString& fontName, double pointSize)
{
    Font font(fontName, pointSize);
    if (familyInfo(font.m_family).installed.isEmpty())
        return std::nullopt;
    return font;
}

Font Font::userFont(double pointSize)
{
    return fromFamily(QStringLiteral("Helvetica"), pointSize > 0 ? pointSize : 12.0);
}

Font Font::fromQFont(const QFont& font)
{
    const double size = font.pixelSize() > 0 ? double(font.pixelSize()) : font.pointSizeF();
    return fromFamily(font.family(), size,
                      (font.bold() ? unsigned(BoldFontMask) : 0u) | (font.italic() ? unsigned(ItalicFontMask) : 0u));
}

QString Font::fontName() const
{
    switch (m_traits & (BoldFontMask | ItalicFontMask)) {
    case BoldFontMask | ItalicFontMask:
        return m_family + QStringLiteral("-BoldItalic");
    case BoldFontMask:
        return m_family + QStringLiteral("-Bold");
    case ItalicFontMask:
        return m_family + QStringLiteral("-Italic");
    default:
        return m_family;
    }
}

Font Font::withSize(double pointSize) const
{
    Font font = *this;
    font.m_pointSize = pointSize;
    return font;
}

std::optional<Font> Font::convertedToHaveTrait(unsigned trait) const
{
    unsigned traits = m_traits;
    if (trait & BoldFontMask)
        traits |= BoldFontMask;
    if (trait & UnboldFontMask)
        traits &= ~unsigned(BoldFontMask);
    if (trait & ItalicFontMask)
        traits |= ItalicFontMask;
    if (trait & UnitalicFontMask)
        traits &= ~unsigned(ItalicFontMask);

    const FamilyInfo info = familyInfo(m_family);
    if (info.installed.isEmpty() || !info.faces[faceIndex(traits)])
        return std::nullopt;
    Font font = *this;
    font.m_traits = traits;
    return font;
}

// The size goes in as a pixel size so that one layout unit is one point whatever the device's
// resolution. QFont takes whole pixels only, so fractional sizes are rounded; no document relies on
// measuring at fractions of a point.
QFont Font::toQFont() const
{
    const FamilyInfo info = familyInfo(m_family);
    QFont font(info.installed.isEmpty() ? m_family : info.installed);
    font.setPixelSize(qMax(1, qRound(m_pointSize > 0 ? m_pointSize : 12.0)));
    font.setBold(isBold());
    font.setItalic(isItalic());
    return font;
}

} // namespace qly
