#include <qlyappkit/formats/manuscript/ManuscriptEmphasis.h>

#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>

#include <optional>
#include <vector>

namespace qly {

namespace {

struct FontRun {
    Font font;
    bool hasFont;
    Range range;
};

std::vector<FontRun> fontRuns(const AttributedString& text)
{
    std::vector<FontRun> runs;
    text.enumerateAttribute(FontAttributeName, Range{0, text.length()}, [&](const QVariant& value, Range range) {
        const bool hasFont = value.metaType() == QMetaType::fromType<Font>();
        runs.push_back({hasFont ? value.value<Font>() : Font::userFont(), hasFont, range});
        return true;
    });
    return runs;
}

// The font with a trait added or removed. A family without that face on this machine still gets the
// trait in its description: the text is headed for a word processor that has its own faces, and
// keeping the font unchanged would drop the emphasis altogether.
Font withTrait(const Font& font, unsigned trait)
{
    if (const std::optional<Font> converted = font.convertedToHaveTrait(trait))
        return *converted;
    unsigned traits = font.traits();
    if (trait & ItalicFontMask)
        traits |= ItalicFontMask;
    if (trait & UnitalicFontMask)
        traits &= ~unsigned(ItalicFontMask);
    return Font::fromFamily(font.familyName(), font.pointSize(), traits);
}

bool isSpaceOrTab(QChar c) { return c == u' ' || c == u'\t'; }

} // namespace

AttributedString attributedStringByConvertingItalicsToUnderlines(const AttributedString& text)
{
    AttributedString result = text;
    const QString string = text.string();
    const std::vector<FontRun> runs = fontRuns(text);
    std::optional<qsizetype> lastStart;
    qsizetype lastLength = 0;
    for (size_t i = 0; i < runs.size(); ++i) {
        const FontRun& run = runs[i];
        if (!run.font.isItalic())
            continue;
        qsizetype start = run.range.location, end = run.range.end();
        // Leading spaces stay outside the underline, unless the run carries on an underline that
        // ended right where it begins. Line breaks are ordinary characters here.
        if (!(lastStart && *lastStart + lastLength == start)) {
            qsizetype first = start;
            while (first < end && isSpaceOrTab(string.at(first)))
                ++first;
            if (first < end)
                start = first;
        }
        // Trailing spaces stay outside too, unless more italic follows: then the underline runs on.
        const bool italicFollows = i + 1 < runs.size() && runs[i + 1].font.isItalic();
        if (!italicFollows) {
            while (end > start && isSpaceOrTab(string.at(end - 1)))
                --end;
        }
        if (end > start) {
            result.addAttribute(UnderlineStyleAttributeName, int(UnderlineStyleSingle), Range::fromBounds(start, end));
            lastStart = start;
            lastLength = end - start;
        } else {
            lastLength = 0;
        }
        result.addAttribute(FontAttributeName, QVariant::fromValue(withTrait(run.font, UnitalicFontMask)), run.range);
    }
    return result;
}

AttributedString attributedStringByConvertingUnderlinesToItalics(const AttributedString& text)
{
    AttributedString result = text;
    for (const FontRun& run : fontRuns(text)) {
        const QVariant italic = QVariant::fromValue(withTrait(run.font, ItalicFontMask));
        text.enumerateAttribute(UnderlineStyleAttributeName, run.range, [&](const QVariant& value, Range range) {
            if (value.isValid() && value.toInt() != UnderlineStyleNone) {
                result.addAttribute(FontAttributeName, italic, range);
                result.removeAttribute(UnderlineStyleAttributeName, range);
            }
            return true;
        });
    }
    return result;
}

} // namespace qly
