#pragma once
// The prepared side written straight as UTF-8, the form the comparison tool reads, without building
// the intermediate text.
#include <QByteArray>
#include <QStringView>

#include <qlyappkit/formats/comparison/DiffConstants.h>

namespace qly::diffprep {

/// UTF-8 of stringSeparatedForDiffByComparisonToString(). A lone UTF-16 surrogate, which UTF-8 cannot
/// hold, is written as U+FFFD.
QByteArray utf8SeparatedForDiff(QStringView text, QStringView other, XQDiffType type);

} // namespace qly::diffprep
