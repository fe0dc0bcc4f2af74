#pragma once
// Counting words: a word is a word-boundary segment holding at least one letter or digit, and a
// segment cut by the range counts when the part inside holds one. This equals stepping
// nextWordFromIndex(forward) across the range and counting the stretches that hold a letter or
// digit, but reads the text in large chunks, so whole documents count quickly.
#include <QStringView>

#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

/// Words in range (0 for an empty range or one that runs past the end).
qsizetype wordCount(const AttributedString& text, Range range);
/// Words in a plain text.
qsizetype wordCount(QStringView text);

} // namespace qly
