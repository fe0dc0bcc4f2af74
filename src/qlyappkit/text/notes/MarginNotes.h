#pragma once
// In-place conversions between the margin form of notes (linked comments and footnotes on an anchor)
// and their inline form (annotations and inline footnotes), each inside one editing batch. The forms
// without a range work on the whole text.
#include <QString>

#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/text/MutableAttributedString.h>

namespace qly {

/// Every linked comment (not footnote) with text anchored in range is written after its anchor as an
/// annotation: a space and the comment's text, in the comment's colour blended 50% toward black (the
/// standard annotation red when it has none). Anchor and annotation lose comment, link and tool tip.
void convertMarginCommentsToInlineAnnotations(MutableAttributedString& text);
void convertMarginCommentsToInlineAnnotationsInRange(MutableAttributedString& text, Range range);

/// Every annotation in range becomes a linked comment (its trimmed text in the default paragraph style,
/// coloured with the annotation colour blended 50% toward white) anchored on the word chosen by
/// attributeRangeForCommentToBePlacedAtIndex() where the annotation stood, or on the inserted text
/// "(Linked Comment)" when there is no such word.
void convertInlineAnnotationsToMarginComments(MutableAttributedString& text);
void convertInlineAnnotationsToMarginCommentsInRange(MutableAttributedString& text, Range range);

/// Every linked footnote with text anchored in range becomes an inline footnote after its anchor (a
/// space and the footnote's text); an anchor that is exactly `marker` is replaced by it.
void convertMarginFootnotesToInlineFootnotesWithMarker(MutableAttributedString& text, const QString& marker);
void convertMarginFootnotesToInlineFootnotesInRange(MutableAttributedString& text, Range range, const QString& marker);

/// Every inline footnote in range becomes a linked footnote of its trimmed text. With a marker, the
/// marker is inserted where the footnote stood as its anchor; without one the anchor is chosen as for
/// annotations.
void convertInlineFootnotesToMarginFootnotesWithMarker(MutableAttributedString& text, const QString& marker);
void convertInlineFootnotesToMarginFootnotesInRange(MutableAttributedString& text, Range range, const QString& marker);

/// Which word an inline note becomes anchored on when no marker takes its place.
enum class InlineNoteAnchor {
    FollowingWord, ///< the word where the note stood, or the next free one
    PrecedingWord, ///< the word the note follows (as word processors place reference marks), else as above
};
/// Every inline footnote becomes a linked footnote of its trimmed text, anchored by the rule given.
void convertInlineFootnotesToMarginFootnotes(MutableAttributedString& text, InlineNoteAnchor anchor);

/// Where a comment made at index should be anchored: the word there (as a double click selects it,
/// trimmed, holding a letter or digit) if no comment, annotation or footnote lies on it, else the next
/// such word after it. Not found when there is none.
Range attributeRangeForCommentToBePlacedAtIndex(const AttributedString& text, qsizetype index);
Range attributeRangeForCommentToBePlacedAtIndex(const MutableAttributedString& text, qsizetype index);

} // namespace qly
