#pragma once
// Taking notes out of a text: the characters of inline notes, or the links of linked ones.
#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

/// A copy without the characters of inline annotations and/or inline footnotes. With linked notes
/// included, the anchors of linked comments (when annotations go) or linked footnotes (when footnotes
/// go) also lose their comment, link and tool tip, keeping their text.
AttributedString attributedStringByStrippingAnnotations(const AttributedString& text, bool annotations, bool footnotes,
                                                        bool includingLinkedNotes);

/// A copy in which the anchors of linked comments and/or linked footnotes lose their comment
/// attribute (nothing else changes).
AttributedString attributedStringByStrippingLinkedComments(const AttributedString& text, bool comments, bool footnotes);

/// True when the text has at least one inline footnote and nothing but whitespace and line breaks is
/// left once the inline footnotes are taken out.
bool containsFootnotesAndWhitespaceOnly(const AttributedString& text);

} // namespace qly
