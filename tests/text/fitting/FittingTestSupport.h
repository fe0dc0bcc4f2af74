#pragma once
// Shared by the fitting tests: a serif body font and its line height.
#include <qlyappkit/platform/layout/LayoutManager.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>

namespace qly::fittingtest {

inline Attributes body()
{
    return Attributes{{FontAttributeName, QVariant::fromValue(Font(QStringLiteral("Times"), 12))}};
}

inline double line() { return LayoutManager::defaultLineHeightForFont(Font(QStringLiteral("Times"), 12)); }

inline Attributes withStyle(Attributes attributes, const ParagraphStyle& style)
{
    attributes.insert(ParagraphStyleAttributeName, QVariant::fromValue(style));
    return attributes;
}

/// Words enough to wrap at most widths.
inline QString longParagraph(int words) { return QStringLiteral("many words ").repeated(words / 2).trimmed(); }

} // namespace qly::fittingtest
