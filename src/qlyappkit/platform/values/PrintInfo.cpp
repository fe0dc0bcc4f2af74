#include <qlyappkit/platform/values/PrintInfo.h>

#include <QPageSize>

namespace qly {

QPageLayout PrintInfo::pageLayout() const
{
    // QPageSize is always portrait; the orientation turns it.
    const QSizeF portrait = m_paperSize.width() > m_paperSize.height() ? m_paperSize.transposed() : m_paperSize;
    const QPageSize size(portrait, QPageSize::Point, m_paperName, QPageSize::FuzzyMatch);
    return QPageLayout(size,
                       m_orientation == PrintOrientation::Landscape ? QPageLayout::Landscape : QPageLayout::Portrait,
                       QMarginsF(m_leftMargin, m_topMargin, m_rightMargin, m_bottomMargin), QPageLayout::Point);
}

std::optional<QSizeF> paperSizeNamed(const QString& name)
{
    const QString wanted = name.trimmed();
    if (wanted.isEmpty())
        return std::nullopt;
    for (int id = 0; id <= int(QPageSize::LastPageSize); ++id) {
        const auto pageId = QPageSize::PageSizeId(id);
        if (pageId == QPageSize::Custom)
            continue;
        if (QPageSize::name(pageId).compare(wanted, Qt::CaseInsensitive) == 0
            || QPageSize::key(pageId).compare(wanted, Qt::CaseInsensitive) == 0)
            return QPageSize::size(pageId, QPageSize::Point);
    }
    return std::nullopt;
}

QString printOrientationName(PrintOrientation orientation)
{
    return orientation == PrintOrientation::Landscape ? PrintOrientationLandscapeName : PrintOrientationPortraitName;
}

std::optional<PrintOrientation> printOrientationNamed(const QString& name)
{
    if (name == PrintOrientationPortraitName)
        return PrintOrientation::Portrait;
    if (name == PrintOrientationLandscapeName)
        return PrintOrientation::Landscape;
    return std::nullopt;
}

QString printPaginationName(PrintPagination pagination)
{
    switch (pagination) {
    case PrintPagination::Clip:
        return PrintPaginationClipName;
    case PrintPagination::Fit:
        return PrintPaginationFitName;
    case PrintPagination::Auto:
        break;
    }
    return PrintPaginationAutoName;
}

std::optional<PrintPagination> printPaginationNamed(const QString& name)
{
    for (const PrintPagination p : {PrintPagination::Auto, PrintPagination::Clip, PrintPagination::Fit}) {
        if (name == printPaginationName(p))
            return p;
    }
    return std::nullopt;
}

} // namespace qly
