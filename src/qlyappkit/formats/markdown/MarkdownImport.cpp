#include <qlyappkit/formats/markdown/MarkdownImport.h>

#include <qlyappkit/formats/markdown/EmphasisPass_p.h>
#include <qlyappkit/formats/markdown/MarkdownConstants.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>

namespace qly {

namespace {

using markdown::EmphasisFormat;
using markdown::EmphasisPass;

std::vector<EmphasisPass> asteriskPasses()
{
    return {{XQMarkdownBoldMarker, EmphasisFormat::TraitFromOpener, BoldFontMask},
            {XQMarkdownItalicMarker, EmphasisFormat::TraitFromOpener, ItalicFontMask}};
}

std::vector<EmphasisPass> underscorePasses(bool useUnderlines)
{
    if (!useUnderlines)
        return {{XQMarkdownDoubleUnderscoreMarker, EmphasisFormat::TraitFromOpener, BoldFontMask},
                {XQMarkdownUnderscoreMarker, EmphasisFormat::TraitFromOpener, ItalicFontMask}};
    // With underlines a "_" pair leaves no underline: see EmphasisFormat::UnderlineOnCloser.
    return {{XQMarkdownDoubleUnderscoreMarker, EmphasisFormat::DoubleUnderline},
            {XQMarkdownUnderscoreMarker, EmphasisFormat::UnderlineOnCloser}};
}

qsizetype runPasses(MutableAttributedString& text, Range range, Range* used, const std::vector<EmphasisPass>& passes)
{
    range = markdown::runEmphasisPasses(text, range, passes);
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
