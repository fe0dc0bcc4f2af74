#pragma once
// PrintInfo: the print settings a document keeps (paper, margins, orientation, pagination, scale,
// centring, collation, page order, header and footer, pages across and down), as stored in the
// "PrintSettings" XML element. Sizes and margins are in points. A default-constructed value holds the
// defaults every missing or unusable stored value falls back to: US Letter (612 × 792) in portrait with
// one-inch margins, automatic pagination both ways, scale 1, centred horizontally only, collated, in
// order, without header and footer, one page across and down.
#include <QPageLayout>
#include <QSizeF>
#include <QString>
#include <optional>

namespace qly {

enum class PrintOrientation { Portrait, Landscape };
/// How content wider (or taller) than a page is printed: cut at the page edge, scaled to fit, or spread
/// over as many pages as it takes.
enum class PrintPagination { Auto, Clip, Fit };

struct PrintInfo {
    QString paperName = QStringLiteral("Letter");
    QSizeF paperSize{612, 792};
    double leftMargin = 72, rightMargin = 72, topMargin = 72, bottomMargin = 72;
    PrintOrientation orientation = PrintOrientation::Portrait;
    PrintPagination horizontalPagination = PrintPagination::Auto;
    PrintPagination verticalPagination = PrintPagination::Auto;
    double scaleFactor = 1.0;
    bool horizontallyCentered = true;
    bool verticallyCentered = false;
    bool collates = true;
    bool reverseOrder = false;
    bool printsHeaderAndFooter = false;
    int pagesAcross = 1;
    int pagesDown = 1;

    /// The page layout Qt prints with: the paper (by size), orientation and margins.
    QPageLayout pageLayout() const;

    friend bool operator==(const PrintInfo&, const PrintInfo&) = default;
};

/// The size in points of a paper named as print settings name it ("Letter", "A4", "Legal" …, any letter
/// case); nothing for a name Qt does not know.
std::optional<QSizeF> paperSizeNamed(const QString& name);

/// The stored names of the orientations and paginations, and back; nothing for an unknown name.
QString printOrientationName(PrintOrientation orientation);
std::optional<PrintOrientation> printOrientationNamed(const QString& name);
QString printPaginationName(PrintPagination pagination);
std::optional<PrintPagination> printPaginationNamed(const QString& name);

inline const QString PrintOrientationPortraitName = QStringLiteral("Portrait");
inline const QString PrintOrientationLandscapeName = QStringLiteral("Landscape");
inline const QString PrintPaginationAutoName = QStringLiteral("Auto");
inline const QString PrintPaginationClipName = QStringLiteral("Clip");
inline const QString PrintPaginationFitName = QStringLiteral("Fit");

} // namespace qly
