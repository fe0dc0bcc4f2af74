#pragma once
// The prepared side written straight as UTF-8, the form the comparison tool reads, without building
// the intermediate text.
#include <QByteArray>
#include <QIODevice>
#include <QStringView>

#include <qlyappkit/formats/comparison/DiffConstants.h>

namespace qly::diffprep {

/// UTF-8 of stringSeparatedForDiffByComparisonToString(). A lone UTF-16 surrogate, which UTF-8 cannot
/// hold, is written as U+FFFD.
QByteArray utf8SeparatedForDiff(QStringView text, QStringView other, XQDiffType type);

/// The same written to a device block by block, for the tool's files. When the last line would lack
/// its line feed a separator completes it: the tool prints such a line with a line feed added, which
/// would put a character into the merged text that neither version has, while the separator is
/// deleted with the others. False when a write failed.
bool writeSeparatedForDiff(QIODevice& device, QStringView text, QStringView other, XQDiffType type);

} // namespace qly::diffprep
