#pragma once
// Plain ASCII punctuation for manuscripts: em dashes as hyphens and ellipses as full stops.
#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

/// Em dash modes: leave them, two hyphens, three hyphens.
enum EmDashConversion : int { XQLeaveEmDashes = 0, XQEmDashesToTwoHyphens = 1, XQEmDashesToThreeHyphens = 2 };

/// A copy of text with every em dash as "---" (mode 2) or "--" (any other non-zero mode), and with
/// convertingEllipsesToPeriods every horizontal ellipsis as "...". Replacements keep the attributes
/// of the character they replace.
AttributedString attributedStringByConvertingEmDashesToHyphens(const AttributedString& text, int emDashMode,
                                                               bool convertingEllipsesToPeriods);

} // namespace qly
