#include "NoteEdits_p.h"

#include <algorithm>

#include <qlyappkit/platform/strings/CharacterSets.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>

namespace qly::notes {

AttributedString applyingEdits(AttributedString text, std::vector<TextEdit> edits,
                               std::vector<AttributedString::Replacement>* made)
{
    if (edits.empty())
        return text;
    std::stable_sort(edits.begin(), edits.end(),
                     [](const TextEdit& a, const TextEdit& b) { return a.range.location < b.range.location; });
    // Merge overlapping neighbours; touching edits stay separate (both apply at the shared point).
    std::vector<TextEdit> merged;
    merged.reserve(edits.size());
    for (TextEdit& edit : edits) {
        if (!merged.empty() && edit.range.location < merged.back().range.end()) {
            TextEdit& last = merged.back();
            AttributedString joined = last.replacement();
            joined.append(edit.replacement());
            last = TextEdit::attributed(unionRange(last.range, edit.range), joined);
            continue;
        }
        merged.push_back(std::move(edit));
    }
    std::vector<AttributedString::Replacement> replacements;
    replacements.reserve(merged.size());
    for (const TextEdit& edit : merged)
        replacements.push_back({edit.range, edit.replacement()});
    text.replaceRanges(replacements);
    if (made)
        *made = std::move(replacements);
    return text;
}

Attributes withoutAttributes(Attributes attributes, std::initializer_list<QString> names)
{
    for (const QString& name : names)
        attributes.remove(name);
    return attributes;
}

Attributes plainAttributesAtEnd(const AttributedString& text)
{
    if (text.isEmpty())
        return {};
    return withoutAttributes(text.attributes(text.length() - 1),
                             {AttachmentAttributeName, LinkAttributeName, ToolTipAttributeName,
                              SuperscriptAttributeName, XQCommentAttributeName, XQAnnotationAttributeName,
                              XQFootnoteAttributeName, XQLinkedCommentAttributeName,
                              XQInlineFootnoteMarkerAttributeName, XQInlineFootnoteLabelAttributeName});
}

Range trimmedRange(const AttributedString& text, Range range)
{
    // Every whitespace and line-break character lies in the Basic Multilingual Plane, so UTF-16 units
    // can be tested one by one (a surrogate is never whitespace).
    const QString s = text.substring(range);
    qsizetype start = 0;
    qsizetype end = s.size();
    while (start < end && isWhitespaceOrNewline(s.at(start).unicode()))
        ++start;
    while (end > start && isWhitespaceOrNewline(s.at(end - 1).unicode()))
        --end;
    if (start == end)
        return Range{range.location + s.size(), 0};
    return Range::fromBounds(range.location + start, range.location + end);
}

} // namespace qly::notes
