#pragma once
// Attribute dictionaries: an ordered name→value map. Values are QVariants holding bools, numbers,
// strings, QUrl, QVariantMap/QVariantList or the framework's registered types (Color, Font,
// ParagraphStyle, TextAttachment, comment pointers).
#include <QString>
#include <QVariant>
#include <QVariantMap>

namespace qly {

using Attributes = QVariantMap;

/// Equality of two dictionaries; cheap when both share storage, which is the common case for runs
/// that were set from the same dictionary.
inline bool sameAttributes(const Attributes& a, const Attributes& b) { return a.isSharedWith(b) || a == b; }

} // namespace qly
