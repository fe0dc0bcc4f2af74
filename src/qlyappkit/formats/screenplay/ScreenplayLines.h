#pragma once
// Reading a screenplay typed in a plain-text editor: lines grouped into elements by indentation and
// blank lines, then typed by level and capitals.
#include <qlyappkit/formats/screenplay/ScreenplayElements.h>

namespace qly {

/// One line-info record per element: hard-wrapped lines at one level with no blank line between them
/// are joined by a space. Level is the count of leading spaces and tabs of the element's first line.
/// leftMostLevel and rightMostLevel receive the smallest (1000 without content) and largest level.
ScreenplayRecords screenplayLinesInfoFromString(const QString& string, int* leftMostLevel = nullptr,
                                                int* rightMostLevel = nullptr);

/// One typed line record per element: at the smallest level Action, SceneHeading or Shot; indented,
/// Transition, Character, Parenthetical or Dialogue.
ScreenplayRecords screenplayLinesAndElementTypesFromString(const QString& string);

/// The element type of an element's text at level, given the smallest level of the text.
QString screenplayElementType(const QString& text, int level, int leftMostLevel);

} // namespace qly
