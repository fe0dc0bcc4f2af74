#pragma once
// Reading the comparison tool's output back: the chunks rejoined into running text, and the stretches
// its tags marked as removed or added.
#include <QByteArray>
#include <QString>
#include <optional>
#include <vector>

#include <qlyappkit/platform/text/Range.h>

namespace qly::diffoutput {

struct MergedText {
    QString text;
    std::vector<Range> removed; ///< ascending, in text
    std::vector<Range> added; ///< ascending, in text
};

/// The output decoded as UTF-8 with every chunk separator deleted; then, from the start, each old start
/// tag and the next old end tag after it are deleted and the text between them recorded as removed
/// (a start tag without an end tag ends that pass: it is deleted, later tags stay in the text); then
/// the same for the new tags. Nothing when the output is not UTF-8. Linear in the output.
std::optional<MergedText> mergedTextFromDiffOutput(const QByteArray& output);

} // namespace qly::diffoutput
