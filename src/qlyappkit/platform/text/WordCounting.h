#pragma once
// Counting words: a word is a word-boundary segment holding at least one letter or digit, and a
// segment cut by the range counts when the part inside holds one. This equals stepping
// nextWordFromIndex(forward) across the range and counting the stretches that hold a letter or
// digit, but reads the text in large chunks, so whole documents count quickly.
//
// Independent word boundaries. Unicode's word-boundary rules look across a position in several ways:
// a combining mark belongs to the character before it, regional indicators pair up counting from the
// start of their run, a ZWJ joins an emoji to the one before it, "e.g" and "3.5" look one character
// past the full stop. So the segments of a piece of text can differ from those the whole text has
// there. An independent word boundary is a position where they cannot: the text's ends, a line break
// (never between CR and LF), or an ASCII space or other punctuation that no rule joins to anything
// (such as "(", "-", "/", "!"), or a CJK ideograph or ideographic full stop or comma, next to an
// ordinary character (not a space, a combining mark, a format character, an emoji modifier or half
// of a surrogate pair). The segments of the text before it and of the text after it, each taken
// alone, are exactly the segments of the whole text. Chunked counting cuts only there, and a running
// count recounts between two of them (wordCountingRangeForEdit).
#include <QStringView>

#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

/// Words in range (0 for an empty range or one that runs past the end).
qsizetype wordCount(const AttributedString& text, Range range);
/// Words in a plain text.
qsizetype wordCount(QStringView text);

/// True when position (0 … text.size()) is an independent word boundary of text.
bool isIndependentWordBoundary(QStringView text, qsizetype position);
/// The nearest independent word boundary at or before position (0 at worst).
qsizetype independentWordBoundaryAtOrBefore(const AttributedString& text, qsizetype position);
/// The nearest independent word boundary at or after position (the length at worst).
qsizetype independentWordBoundaryAtOrAfter(const AttributedString& text, qsizetype position);
/// The stretch to recount when range is replaced: it holds range and is bounded by independent word
/// boundaries that stay independent whatever replaces range (the characters on both sides that decide
/// it lie outside range). So words(whole text) = words(outside) + words(stretch) before and after the
/// edit, with the stretch's end moved by the change in length.
Range wordCountingRangeForEdit(const AttributedString& text, Range range);

namespace word_detail {
/// isIndependentWordBoundary() on a piece of a text: position's neighbours are read from piece, whose
/// start and end are the text's own only when startIsText / endIsText (otherwise a position too close
/// to them to be judged is not independent).
bool independentAt(QStringView piece, qsizetype position, bool startIsText, bool endIsText);
} // namespace word_detail

} // namespace qly
