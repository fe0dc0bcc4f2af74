#include <qlyappkit/corkboard/XQCorkboardTheme.h>

#include <qlyappkit/platform/text/PlatformAttributes.h>

namespace qly {

namespace {

Attributes attributesWithFont(const Font& font)
{
    Attributes attributes;
    attributes.insert(FontAttributeName, QVariant::fromValue(font));
    return attributes;
}

} // namespace

Attributes XQCorkboardDefaultTextTitleAttributes() { return attributesWithFont(Font(XQCorkboardTextFontName, 14)); }

Attributes XQCorkboardDefaultImageTitleAttributes()
{
    return attributesWithFont(Font(XQCorkboardImageTitleFontName, 12));
}

Attributes XQCorkboardDefaultTextAttributes() { return attributesWithFont(Font(XQCorkboardTextFontName, 12)); }

Font XQCorkboardDefaultStampFont()
{
    Font font = Font::userFont(16);
    if (std::optional<Font> bold = font.convertedToHaveTrait(BoldFontMask))
        return *bold;
    return Font::fromFamily(font.familyName(), 16, BoldFontMask);
}

std::optional<Font> XQCorkboardFontOfAttributes(const Attributes& attributes)
{
    const QVariant value = attributes.value(FontAttributeName);
    if (value.metaType() != QMetaType::fromType<Font>())
        return std::nullopt;
    const Font font = value.value<Font>();
    if (!font.isValid())
        return std::nullopt;
    return font;
}

} // namespace qly
