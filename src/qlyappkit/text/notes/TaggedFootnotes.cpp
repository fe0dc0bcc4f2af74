#include <qlyappkit/text/notes/TaggedFootnotes.h>

#include <QHash>
#include <vector>

#include <qlyappkit/platform/strings/CharacterSets.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>

#include "NoteEdits_p.h"

namespace qly {

using notes::TextEdit;

namespace {

constexpr qsizetype MinimumTagLength = 3;

struct Footnote {
    Range range; ///< the run
    Range trimmed; ///< its text without surrounding whitespace
    QString trimmedText;
};

std::vector<Footnote> footnotesOf(const AttributedString& text)
{
    std::vector<Footnote> footnotes;
    text.enumerateAttribute(XQFootnoteAttributeName, Range{0, text.length()}, [&](const QVariant& value, Range range) {
        if (value.isValid()) {
            const Range trimmed = notes::trimmedRange(text, range);
            footnotes.push_back(Footnote{range, trimmed, text.substring(trimmed)});
        }
        return true;
    });
    return footnotes;
}

bool isReference(const QString& trimmedText)
{
    return trimmedText.size() >= MinimumTagLength && trimmedText.startsWith(u'[') && trimmedText.endsWith(u']');
}

// The body of a definition: what follows the tag, trimmed.
AttributedString bodyAfterTag(const AttributedString& text, const Footnote& definition, qsizetype tagLength)
{
    const Range afterTag = Range::fromBounds(definition.trimmed.location + tagLength, definition.trimmed.end());
    return text.attributedSubstring(notes::trimmedRange(text, afterTag));
}

} // namespace

Range rangeIncludingPreviousWhitespaceExceptingFootnotesFromRange(const AttributedString& text, Range range)
{
    qsizetype start = std::clamp<qsizetype>(range.location, 0, text.length());
    const qsizetype end = std::clamp<qsizetype>(range.end(), start, text.length());
    while (start > 0 && isWhitespaceOrNewline(text.characterAt(start - 1).unicode())
           && !text.attribute(XQFootnoteAttributeName, start - 1).isValid())
        --start;
    return Range::fromBounds(start, end);
}

std::optional<AttributedString>
attributedFootnoteInAttributedStringWithTag(const AttributedString& text, const QString& tag,
                                            Range* effectiveRangeIncludingExtraWhitespace)
{
    if (effectiveRangeIncludingExtraWhitespace)
        *effectiveRangeIncludingExtraWhitespace = Range::notFound();
    if (tag.isEmpty())
        return std::nullopt;
    for (const Footnote& footnote : footnotesOf(text)) {
        if (footnote.trimmedText.size() > tag.size() && footnote.trimmedText.startsWith(tag)) {
            if (effectiveRangeIncludingExtraWhitespace)
                *effectiveRangeIncludingExtraWhitespace =
                    rangeIncludingPreviousWhitespaceExceptingFootnotesFromRange(text, footnote.range);
            return bodyAfterTag(text, footnote, tag.size());
        }
    }
    return std::nullopt;
}

AttributedString attributedStringByConvertingTaggedFootnotesToStandardFootnotes(const AttributedString& text)
{
    const std::vector<Footnote> footnotes = footnotesOf(text);
    if (footnotes.empty())
        return text;

    // Every tag a footnote could define: each prefix of its trimmed text that starts with "[", ends
    // with "]" and leaves something after it. Lists keep text order, so the first entry still standing
    // is the definition the reference finds.
    QHash<QString, std::vector<size_t>> definitionsByTag;
    for (size_t i = 0; i < footnotes.size(); ++i) {
        const QString& t = footnotes[i].trimmedText;
        if (!t.startsWith(u'['))
            continue;
        for (qsizetype k = MinimumTagLength - 1; k + 1 < t.size(); ++k) {
            if (t.at(k) == u']')
                definitionsByTag[t.left(k + 1)].push_back(i);
        }
    }

    std::vector<bool> deleted(footnotes.size(), false);
    std::vector<bool> replaced(footnotes.size(), false);
    QHash<QString, AttributedString> bodies;
    std::vector<TextEdit> edits;
    for (size_t i = 0; i < footnotes.size(); ++i) {
        const Footnote& reference = footnotes[i];
        if (deleted[i] || !isReference(reference.trimmedText))
            continue;
        auto known = bodies.constFind(reference.trimmedText);
        AttributedString body;
        if (known != bodies.constEnd()) {
            body = *known;
        } else {
            auto candidates = definitionsByTag.constFind(reference.trimmedText);
            if (candidates == definitionsByTag.constEnd())
                continue;
            std::optional<size_t> definition;
            for (size_t j : *candidates) {
                if (j != i && !deleted[j] && !replaced[j]) {
                    definition = j;
                    break;
                }
            }
            if (!definition)
                continue;
            deleted[*definition] = true;
            body = bodyAfterTag(text, footnotes[*definition], reference.trimmedText.size());
            body.addAttribute(XQFootnoteAttributeName, true, Range{0, body.length()});
            bodies.insert(reference.trimmedText, body);
            edits.push_back(TextEdit::deletion(
                rangeIncludingPreviousWhitespaceExceptingFootnotesFromRange(text, footnotes[*definition].range)));
        }
        replaced[i] = true;
        edits.push_back(TextEdit::attributed(reference.range, body));
    }
    return notes::applyingEdits(text, std::move(edits));
}

} // namespace qly
