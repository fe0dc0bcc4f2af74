#include <qlyappkit/platform/values/ParagraphStyle.h>

namespace qly {

namespace {
constexpr int kDefaultTabStopCount = 12;
constexpr double kDefaultTabStopInterval = 28.0;
} // namespace

ParagraphStyle::ParagraphStyle()
{
    m_tabStops.reserve(kDefaultTabStopCount);
    for (int i = 1; i <= kDefaultTabStopCount; ++i)
        m_tabStops.append(TextTab{LeftTextAlignment, i * kDefaultTabStopInterval});
}

const ParagraphStyle& ParagraphStyle::defaultParagraphStyle()
{
    static const ParagraphStyle style;
    return style;
}

} // namespace qly
