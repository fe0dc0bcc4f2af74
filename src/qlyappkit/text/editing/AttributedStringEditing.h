#pragma once
// Editing utilities on attributed strings: trimming, splitting, and replacing all, escape-aware or
// whole-word occurrences. Characters an operation does not touch keep their attributes; replacement
// text takes the attributes of the first character it replaces.
//
// Copies (attributedStringBy…) leave the receiver alone. The in-place operations run inside one
// editing batch and return the number of replacements made. Options are the SearchOption bits of
// StringSearch.h; ranges are clipped to the text.
#include <QList>
#include <QString>

#include <qlyappkit/platform/strings/CharacterSets.h>
#include <qlyappkit/platform/strings/StringSearch.h>
#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/text/MutableAttributedString.h>

namespace qly {

// ---- trimming

/// The substring from the first to the last character outside the set (empty when none is).
AttributedString attributedStringByTrimmingCharactersInSet(const AttributedString& self, CharacterSet set);
/// Trims whitespace and line breaks at both ends.
AttributedString attributedStringByTrimmingWhitespace(const AttributedString& self);
/// Trims whitespace and line breaks at the end only.
AttributedString attributedStringByTrimmingTrailingWhitespace(const AttributedString& self);

// ---- splitting

/// The attributed pieces between literal occurrences of separator. An empty text gives no pieces;
/// adjacent separators give an empty piece, but a trailing separator gives no empty last piece.
QList<AttributedString> componentsSeparatedByString(const AttributedString& self, const QString& separator);
/// The same pieces as componentsSeparatedByString, as ranges of the receiver.
QList<Range> rangesSeparatedByString(const AttributedString& self, const QString& separator);

// ---- replacing all occurrences

/// A copy with every match of target in range replaced. Forwards, the search resumes after each
/// inserted replacement; backwards, before each match.
AttributedString attributedStringByReplacingOccurrencesOfString(const AttributedString& self, const QString& target,
                                                                const QString& replacement, unsigned options,
                                                                Range range);
/// Over the whole text, no options.
AttributedString attributedStringByReplacingOccurrencesOfString(const AttributedString& self, const QString& target,
                                                                const QString& replacement);
/// In place; returns the count.
qsizetype replaceOccurrencesOfString(MutableAttributedString& self, const QString& target, const QString& replacement,
                                     unsigned options, Range range);

/// Replaces the matches not preceded by a backslash. A match right after a backslash is left alone,
/// and with removeEscapes that backslash is deleted. Only the one character before a match is looked
/// at: a marker after two backslashes counts as escaped here, although rangeOfUnescapedString finds it.
qsizetype replaceUnescapedOccurrencesOfString(MutableAttributedString& self, const QString& target,
                                              const QString& replacement, unsigned options, Range range,
                                              bool removeEscapes);
qsizetype replaceUnescapedOccurrencesOfString(MutableAttributedString& self, const QString& target,
                                              const QString& replacement, unsigned options, Range range);

/// Deletes the backslash in front of every occurrence of target; returns how many were deleted.
qsizetype removeEscapesForString(MutableAttributedString& self, const QString& target, bool caseSensitive);

/// Replaces the matches that are whole words (the word selection at the match's start is exactly the
/// match). Then, when neither string holds whitespace, a line break or "://", links whose URL or
/// string equals target (under the options) are pointed at a URL made from the replacement.
qsizetype replaceWholeWordOccurrencesOfString(MutableAttributedString& self, const QString& target,
                                              const QString& replacement, unsigned options, Range range);
/// The same on a plain string, which is rewritten only when something was replaced.
qsizetype replaceWholeWordOccurrencesOfString(QString& self, const QString& target, const QString& replacement,
                                              unsigned options, Range range);

} // namespace qly
