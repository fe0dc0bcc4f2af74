#include <qlyappkit/formats/markdown/MarkdownImport.h>

#include <qlyappkit/formats/markdown/EmphasisPass_p.h>
#include <qlyappkit/formats/markdown/MarkdownConstants.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>

namespace qly {

namespace {

using markdown::EmphasisPass;

// As convertRange() over the pair, markers included; but the markers are deleted right after, so only
// the text between them is given the font (taken, as convertRange() takes it, at the opener).
EmphasisPass traitPass(const QString& marker, unsigned trait)
{
    return {marker, false, [trait](MutableAttributedString& text, Range formatted, Range closer) {
                const Range inside = Range::fromBounds(formatted.location + closer.length, closer.location);
                if (inside.isEmpty())
                    return;
                if (const std::optional<Font> converted =
                        markdown::fontWithTrait(markdown::fontAt(text, formatted.location), trait))
                    text.addAttribute(FontAttributeName, QVariant::fromValue(*converted), inside);
            }};
}

std::vector<EmphasisPass> asteriskPasses()
{
    return {traitPass(XQMarkdownBoldMarker, BoldFontMask), traitPass(XQMarkdownItalicMarker, ItalicFontMask)};
}

std::vector<EmphasisPass> underscorePasses(bool useUnderlines)
{
    if (!useUnderlines)
        return {traitPass(XQMarkdownDoubleUnderscoreMarker, BoldFontMask),
                traitPass(XQMarkdownUnderscoreMarker, ItalicFontMask)};
    return {
        {XQMarkdownDoubleUnderscoreMarker, false,
         [](MutableAttributedString& text, Range formatted, Range) {
             text.addAttribute(UnderlineStyleAttributeName, int(UnderlineStyleDouble), formatted);
         }},
        // The single underline lands on the closing marker alone, which is then deleted: "_a_" reads
        // as a plain "a". Documents written with this rule depend on it, so it stays.
        {XQMarkdownUnderscoreMarker, false,
         [](MutableAttributedString& text, Range, Range closer) {
             text.addAttribute(UnderlineStyleAttributeName, int(UnderlineStyleSingle), Range{closer.location, 1});
         }},
    };
}

qsizetype runPasses(MutableAttributedString& text, Range range, Range* used, const std::vector<EmphasisPass>& passes)
{
    EditingBatch batch(text);
    for (const EmphasisPass& pass : passes)
        range = markdown::runEmphasisPass(text, range, pass);
    if (used)
        *used = range;
    return range.length;
}

} // namespace

AttributedString initWithMarkdownString(const QString& string, const Attributes& attributes, unsigned options)
{
    MutableAttributedString text(string, attributes);
    convertMarkdownWithOptions(text, options);
    return text.attributedString();
}

void convertMarkdownWithOptions(MutableAttributedString& text, unsigned options)
{
    EditingBatch batch(text);
    std::vector<EmphasisPass> passes = asteriskPasses();
    for (EmphasisPass& pass : underscorePasses(options & XQMarkdownUseUnderlinesOption))
        passes.push_back(std::move(pass));
    markdown::runEmphasisPasses(text, passes);
    convertEscapedMarkdownCharactersWithOptions(text, options);
}

qsizetype convertAsterisksInParagraphRange(MutableAttributedString& text, Range paragraphRange,
                                           Range* usedParagraphRange)
{
    return runPasses(text, paragraphRange, usedParagraphRange, asteriskPasses());
}

qsizetype convertUnderscoresInParagraphRange(MutableAttributedString& text, Range paragraphRange,
                                             Range* usedParagraphRange, bool useUnderlines)
{
    return runPasses(text, paragraphRange, usedParagraphRange, underscorePasses(useUnderlines));
}

void convertRange(MutableAttributedString& text, Range range, unsigned fontTrait)
{
    range = intersectionRange(range, Range{0, text.length()});
    if (range.isEmpty())
        return;
    // One font for the whole range: emphasis over mixed fonts takes the first run's font.
    if (const std::optional<Font> converted =
            markdown::fontWithTrait(markdown::fontAt(text, range.location), fontTrait))
        text.addAttribute(FontAttributeName, QVariant::fromValue(*converted), range);
}

void convertEscapedMarkdownCharactersWithOptions(MutableAttributedString& text, unsigned options)
{
    const QString& escapable = (options & XQMarkdownEscapeAllCharactersOption) ? XQMarkdownAllEscapableCharacters
                                                                               : XQMarkdownEscapableCharacters;
    const QString string = text.string();
    // Only the first backslash of the whole text is looked at; later escapes keep their backslash.
    // Texts imported before depend on this, so it is kept as it is.
    const qsizetype at = string.indexOf(XQMarkdownEscapeCharacter);
    if (at < 0 || at + 1 >= string.size() || !escapable.contains(string.at(at + 1)))
        return;
    EditingBatch batch(text);
    text.deleteCharacters(Range{at, 1});
}

} // namespace qly
