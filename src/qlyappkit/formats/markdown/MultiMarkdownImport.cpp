#include <qlyappkit/formats/markdown/MultiMarkdownImport.h>

#include <qlyappkit/formats/markdown/EmphasisPass_p.h>
#include <qlyappkit/formats/markdown/MarkdownConstants.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>

namespace qly {

namespace {

using markdown::EmphasisFormat;

// Every backslash-asterisk becomes one asterisk; a replacement never forms a new pair with what
// precedes it, because the scan goes on after the asterisk it left.
void replaceEscapedAsterisks(MutableAttributedString& text)
{
    const QString pair = XQMarkdownEscapeCharacter + XQMarkdownItalicMarker;
    const QString string = text.string();
    std::vector<qsizetype> found;
    for (qsizetype at = string.indexOf(pair); at >= 0; at = string.indexOf(pair, at + pair.size()))
        found.push_back(at);
    // From the end, so that the positions found stay valid.
    for (auto it = found.rbegin(); it != found.rend(); ++it)
        text.replaceCharacters(Range{*it, pair.size()}, XQMarkdownItalicMarker);
}

} // namespace

AttributedString attributedStringByConvertingMultiMarkdown(const AttributedString& text)
{
    MutableAttributedString copy(text);
    convertMultiMarkdown(copy);
    return copy.attributedString();
}

AttributedString attributedStringByConvertingMultiMarkdownFromString(const QString& string)
{
    return attributedStringByConvertingMultiMarkdown(AttributedString(string));
}

void convertMultiMarkdown(MutableAttributedString& text)
{
    EditingBatch batch(text);
    markdown::runEmphasisPasses(text,
                                {
                                    {XQMarkdownBoldMarker, EmphasisFormat::TraitPerRun, BoldFontMask},
                                    {XQMarkdownItalicMarker, EmphasisFormat::TraitPerRun, ItalicFontMask},
                                    {XQMarkdownDoubleUnderscoreMarker, EmphasisFormat::TraitPerRun, BoldFontMask},
                                    {XQMarkdownUnderscoreMarker, EmphasisFormat::TraitPerRun, ItalicFontMask, true},
                                });
    replaceEscapedAsterisks(text);
}

void convertMMDRange(MutableAttributedString& text, Range range, unsigned fontTrait)
{
    range = intersectionRange(range, Range{0, text.length()});
    EditingBatch batch(text);
    qsizetype position = range.location;
    while (position < range.end()) {
        Range run;
        const QVariant value =
            text.attribute(FontAttributeName, position, &run, Range::fromBounds(position, range.end()));
        const Font font = value.metaType() == QMetaType::fromType<Font>() ? value.value<Font>() : Font::userFont();
        if (const std::optional<Font> converted = markdown::fontWithTrait(font, fontTrait))
            text.addAttribute(FontAttributeName, QVariant::fromValue(*converted), run);
        position = std::max(run.end(), position + 1);
    }
}

} // namespace qly
