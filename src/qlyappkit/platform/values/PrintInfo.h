#pragma once
// PrintInfo: the print settings a document keeps (paper, margins, orientation, pagination, scale,
// centring, collation, page order, header and footer, pages across and down), as stored in the
// "PrintSettings" XML element; the page layout view lays text out on its paper and margins. Sizes and
// margins are in points. A default-constructed value holds the defaults every missing or unusable stored
// value falls back to: US Letter (612 × 792) in portrait with one-inch margins, automatic pagination
// both ways, scale 1, centred horizontally only, collated, in order, without header and footer, one page
// across and down.
#include <QPageLayout>
#include <QSizeF>
#include <QString>
#include <optional>

namespace qly {

enum class PrintOrientation { Portrait, Landscape };
/// How content wider (or taller) than a page is printed: cut at the page edge, scaled to fit, or spread
/// over as many pages as it takes.
enum class PrintPagination { Auto, Clip, Fit };

class PrintInfo {
public:
    /// US letter, one-inch margins, and the defaults above.
    PrintInfo() = default;

    QSizeF paperSize() const { return m_paperSize; }
    void setPaperSize(QSizeF size) { m_paperSize = size; }
    double leftMargin() const { return m_leftMargin; }
    void setLeftMargin(double margin) { m_leftMargin = margin; }
    double rightMargin() const { return m_rightMargin; }
    void setRightMargin(double margin) { m_rightMargin = margin; }
    double topMargin() const { return m_topMargin; }
    void setTopMargin(double margin) { m_topMargin = margin; }
    double bottomMargin() const { return m_bottomMargin; }
    void setBottomMargin(double margin) { m_bottomMargin = margin; }

    QString paperName() const { return m_paperName; }
    void setPaperName(const QString& name) { m_paperName = name; }
    PrintOrientation orientation() const { return m_orientation; }
    void setOrientation(PrintOrientation orientation) { m_orientation = orientation; }
    PrintPagination horizontalPagination() const { return m_horizontalPagination; }
    void setHorizontalPagination(PrintPagination pagination) { m_horizontalPagination = pagination; }
    PrintPagination verticalPagination() const { return m_verticalPagination; }
    void setVerticalPagination(PrintPagination pagination) { m_verticalPagination = pagination; }
    double scaleFactor() const { return m_scaleFactor; }
    void setScaleFactor(double scale) { m_scaleFactor = scale; }
    bool isHorizontallyCentered() const { return m_horizontallyCentered; }
    void setHorizontallyCentered(bool centered) { m_horizontallyCentered = centered; }
    bool isVerticallyCentered() const { return m_verticallyCentered; }
    void setVerticallyCentered(bool centered) { m_verticallyCentered = centered; }
    bool collates() const { return m_collates; }
    void setCollates(bool collates) { m_collates = collates; }
    bool reverseOrder() const { return m_reverseOrder; }
    void setReverseOrder(bool reverse) { m_reverseOrder = reverse; }
    bool printsHeaderAndFooter() const { return m_printsHeaderAndFooter; }
    void setPrintsHeaderAndFooter(bool prints) { m_printsHeaderAndFooter = prints; }
    int pagesAcross() const { return m_pagesAcross; }
    void setPagesAcross(int pages) { m_pagesAcross = pages; }
    int pagesDown() const { return m_pagesDown; }
    void setPagesDown(int pages) { m_pagesDown = pages; }

    /// The page layout Qt prints with: the paper (by size), orientation and margins.
    QPageLayout pageLayout() const;

    friend bool operator==(const PrintInfo&, const PrintInfo&) = default;

private:
    QSizeF m_paperSize{612, 792};
    double m_leftMargin = 72;
    double m_rightMargin = 72;
    double m_topMargin = 72;
    double m_bottomMargin = 72;
    QString m_paperName = QStringLiteral("Letter");
    PrintOrientation m_orientation = PrintOrientation::Portrait;
    PrintPagination m_horizontalPagination = PrintPagination::Auto;
    PrintPagination m_verticalPagination = PrintPagination::Auto;
    double m_scaleFactor = 1.0;
    bool m_horizontallyCentered = true;
    bool m_verticallyCentered = false;
    bool m_collates = true;
    bool m_reverseOrder = false;
    bool m_printsHeaderAndFooter = false;
    int m_pagesAcross = 1;
    int m_pagesDown = 1;
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
