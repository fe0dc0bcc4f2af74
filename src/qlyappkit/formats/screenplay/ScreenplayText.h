#pragma once
// Rich text from a plain-text screenplay: each element a paragraph in its type's font and paragraph
// layout, and the same text cut into pieces at one element type (scenes, for instance).
#include <qlyappkit/formats/screenplay/ScreenplayElements.h>
#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

/// Courier 12 (else Courier New, else an installed fixed-pitch font, else the user font) with each
/// type's paragraph style: lines exactly 12 points high, indents from the text container's left edge.
ScriptElementAttributes defaultPlainTextScreenplayElementAttributes();

/// The records' texts as paragraphs joined by "\n", each with its type's attributes from
/// elementAttributes, or from the defaults for a type it lacks. Records without a text are skipped.
AttributedString attributedStringFromScreenplayLinesAndTypes(const ScreenplayRecords& records,
                                                             const ScriptElementAttributes& elementAttributes);
/// Typing and building in one.
AttributedString attributedStringWithPlainTextScreenplayString(const QString& string,
                                                               const ScriptElementAttributes& elementAttributes);
inline AttributedString initWithPlainTextScreenplayString(const QString& string,
                                                          const ScriptElementAttributes& elementAttributes)
{
    return attributedStringWithPlainTextScreenplayString(string, elementAttributes);
}

/// The screenplay cut into rich-text pieces, each new piece starting at a line of elementType; text
/// before the first such line is the first piece. Empty pieces are left out.
QList<AttributedString> scriptComponentTextsFromPlainTextScreenplayString(
    const QString& string, const ScriptElementAttributes& elementAttributes, const QString& elementType);

} // namespace qly
