#include <qlyappkit/formats/markdown/MarkdownQueries.h>

#include <qlyappkit/formats/markdown/MarkdownConstants.h>
#include <qlyappkit/platform/strings/CharacterSets.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>

namespace qly {

namespace {

Range clipped(const AttributedString& text, Range range) { return intersectionRange(range, Range{0, text.length()}); }

} // namespace

bool containsBoldOrItalicsInParagraphRange(const AttributedString& text, Range range)
{
    bool found = false;
    text.enumerateAttribute(FontAttributeName, clipped(text, range), [&](const QVariant& value, Range) {
        if (value.metaType() == QMetaType::fromType<Font>()) {
            const Font font = value.value<Font>();
            found = font.isBold() || font.isItalic();
        }
        return !found;
    });
    return found;
}

bool containsUnderlineAttributeInParagraphRange(const AttributedString& text, Range range)
{
    bool found = false;
    text.enumerateAttribute(UnderlineStyleAttributeName, clipped(text, range), [&](const QVariant& value, Range) {
        found = value.isValid() && value.toInt() != UnderlineStyleNone;
        return !found;
    });
    return found;
}

bool markdownAtRangeIsEscaped(const AttributedString& text, Range range)
{
    return range.location > 0 && range.location <= text.length()
        && text.characterAt(range.location - 1) == XQMarkdownEscapeCharacter.at(0);
}

bool markdownAtRangeHasWhitespacePrefix(const AttributedString& text, Range range)
{
    return range.location > 0 && range.location <= text.length()
        && isWhitespaceOrNewline(text.characterAt(range.location - 1).unicode());
}

bool markdownAtRangeHasWhitespaceSuffix(const AttributedString& text, Range range)
{
    return range.end() >= 0 && range.end() < text.length()
        && isWhitespaceOrNewline(text.characterAt(range.end()).unicode());
}

Range markdownRangeByTrimmingWhitespaceFromRange(const QString& string, Range range)
{
    qsizetype start = std::max<qsizetype>(range.location, 0);
    qsizetype end = std::min<qsizetype>(range.end(), string.size());
    while (start < end && isWhitespaceOrNewline(string.at(start).unicode()))
        ++start;
    while (end > start && isWhitespaceOrNewline(string.at(end - 1).unicode()))
        --end;
    if (start >= end)
        return Range::notFound();
    return Range::fromBounds(start, end);
}

} // namespace qly
