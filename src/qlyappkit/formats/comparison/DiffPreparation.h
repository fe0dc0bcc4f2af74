#pragma once
// Preparing one side of a comparison, knowing the other, so that the line-based tool compares the
// units the caller chose.
#include <QString>

#include <qlyappkit/formats/comparison/DiffConstants.h>

namespace qly {

/// The text as the comparison tool is to see it, by diff type (bits other than the three types are
/// ignored):
/// - either text empty, type 0 or paragraphs alone: the text unchanged (each paragraph one line);
/// - words alone or clauses alone: the text cut into words or clauses;
/// - any other combination, paragraph by paragraph: with the paragraphs bit, a paragraph that the other
///   text also has (same text, same line break) stays whole; otherwise the paragraph is cut into
///   clauses, or into words without the clauses bit; with both clauses and words, a clause that the
///   other text also has (its paragraphs cut into clauses the same way) stays whole and the others are
///   cut into words.
/// Linear in the two texts.
QString stringSeparatedForDiffByComparisonToString(const QString& text, const QString& other, XQDiffType type);

} // namespace qly
