#pragma once
// Repairs made on text read from word-processor RTF: comments put on the ranges the RTF gave them,
// and the period that one word processor puts at the start of each footnote.
#include <QStringList>

#include <qlyappkit/platform/text/MutableAttributedString.h>

namespace qly {

/// The ids a word processor wrote for its comment ranges and comments, in document order: each range
/// start and end group's id, and each annotation's reference to its range. Empty lists when unknown.
struct CommentRangeIds {
    QStringList rangeStarts, rangeEnds, annotationRefs;
};

/// Comment ranges from the import markers: each "<<<<START_QLRY_CMMT>>>>" is paired with the next
/// "<<<<END_QLRY_CMMT>>>>" after it; when an annotation begins right where that end marker stood and
/// the range between the markers holds text, the annotation's trimmed text becomes a comment on that
/// range and leaves the text. Every marker goes; the annotations left are converted to margin comments
/// (anchored on a word where they stood).
void convertInlineAnnotationsToMarginCommentsApplyingRangesUsingImportTags(MutableAttributedString& text);
/// As above, pairing markers and annotations by the ids the word processor wrote, so that nested
/// ranges and comments written away from their range keep their own range. Falls back to the pairing
/// above when the ids do not describe the markers and annotations found in the text.
void convertInlineAnnotationsToMarginCommentsApplyingRangesUsingImportTags(MutableAttributedString& text,
                                                                           const CommentRangeIds& ids);

/// Every footnote run of four or more characters that begins with a blank, a period and a no-break
/// space loses the period and the no-break space (the blank stays).
void deletePeriodsFromStartOfImportedNisusFootnotes(MutableAttributedString& text);

} // namespace qly
