#pragma once
// Cutting text into the units the comparison works with. Each chunk of a separated text is followed
// by XQDiffChunkSeparatorString, whose line feed makes the chunk one line for the line-based tool.
// The cost of each function is linear in the text.
#include <QString>
#include <QStringList>

namespace qly {

/// The text cut after each punctuation character (Unicode P*), each clause followed by the separator;
/// the rest after the last punctuation is the last clause. Empty for an empty text.
QString stringWithClausesSeparatedForDiff(const QString& text);
/// The text cut at word boundaries (the segments a double click selects: words, runs of spaces,
/// punctuation marks), each segment followed by the separator.
QString stringWithWordsSeparatedForDiff(const QString& text);
/// The clauses of stringWithClausesSeparatedForDiff(), without separators.
QStringList clausesForDiff(const QString& text);
/// The paragraphs, each with its line break (LF, CR, CR LF or U+2029).
QStringList paragraphsForDiff(const QString& text);

} // namespace qly
