#pragma once
// Comparing two versions of a rich text: one merged text shows both, unchanged text as it is, removed
// text struck through and added text underlined, each changed stretch also carrying
// XQChangedTextAttributeName. The comparison itself is the system's line-based tool (/usr/bin/diff)
// run on the two texts cut into the chosen units, one unit a line.
//
// Thread safety: comparisons may run on several threads at once; each has its own temporary files
// and its own tool process. The texts are only read (never through their cached whole string), so
// threads may even share them, as long as no thread edits them meanwhile.
#include <QVariantMap>
#include <optional>

#include <qlyappkit/formats/comparison/DiffConstants.h>
#include <qlyappkit/platform/services/Error.h>
#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

/// The merged text showing how `older` became `newer`, compared by the diff type's units. Where a
/// stretch changed, the removed text comes first, directly followed by the added text. Characters
/// come from the texts only; the formatting is the newer text's most used font and paragraph style
/// throughout (each when there is one), plus the attributes of removedTextAttributes() and
/// addedTextAttributes(). Deleting the added stretches gives the older text exactly, deleting the
/// removed ones the newer (a lone UTF-16 surrogate, which the tool's UTF-8 files cannot hold, arrives
/// as U+FFFD). Blocks until the tool has finished.
/// Nothing and *error (domain empty, code 0, localised texts) when there is no temporary folder or the
/// tool's output cannot be read; a temporary file that cannot be written gives that write's own error.
std::optional<AttributedString> attributedStringShowingDifferencesFrom(const AttributedString& newer,
                                                                       const AttributedString& older, XQDiffType type,
                                                                       const QVariantMap& diffAttributes = {},
                                                                       Error* error = nullptr);

/// What removed text gets: strikethrough; the old foreground colour as text and strikethrough colour,
/// the default removed colour when diffAttributes has neither old colour; the old background colour;
/// XQChangedTextAttributeName = "OldText". Values that are not a Color count as absent.
Attributes removedTextAttributes(const QVariantMap& diffAttributes);
/// What added text gets: with a new foreground colour (the default added colour when diffAttributes
/// has neither new colour), that colour as text and underline colour and a single underline; the new
/// background colour; XQChangedTextAttributeName = "NewText".
Attributes addedTextAttributes(const QVariantMap& diffAttributes);

} // namespace qly
