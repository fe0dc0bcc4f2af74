#pragma once
// Where the inline notes of a text are: each run of an annotation, inline footnote or
// preserve-formatting block, in text order.
#include <qlyappkit/platform/text/AttributedString.h>

#include <vector>

namespace qly {

enum class InlineNoteKind { Annotation, Footnote, PreserveFormatting };

struct InlineNoteRun {
    InlineNoteKind kind;
    Range range;
};

/// The runs of the three inline note attributes, by start; runs that start together come in the
/// order annotation, footnote, preserve-formatting.
std::vector<InlineNoteRun> inlineNoteRuns(const AttributedString& text);

} // namespace qly
