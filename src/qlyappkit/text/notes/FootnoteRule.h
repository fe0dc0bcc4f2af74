#pragma once
// The short rule drawn between a text and the notes collected after it.
#include <qlyappkit/platform/values/TextAttachment.h>

namespace qly {

/// Width of the rule in points.
inline constexpr double XQFootnoteRuleWidth = 150.0;

/// A transparent PNG picture XQFootnoteRuleWidth points wide and `height` points tall (one pixel per
/// point; at least one) with a black rule one point thick across it at half its height, rounded.
TextAttachment footnoteSeparatorRuleAttachment(double height);

} // namespace qly
