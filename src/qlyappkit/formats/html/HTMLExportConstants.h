#pragma once
// The names and texts of the HTML export: its document attributes (each value equals its name), the
// file-name prefix of equation images, and the placeholder that stands for an image until the page is
// written.
#include <QString>

namespace qly {

/// Path: the folder into which image files are written.
inline const QString XQHTMLImagesFolderDocumentAttribute = QStringLiteral("XQHTMLImagesFolderDocumentAttribute");
/// Text: the same folder as the page refers to it (the relative path in "src").
inline const QString XQHTMLImagesFolderSubpathDocumentAttribute =
    QStringLiteral("XQHTMLImagesFolderSubpathDocumentAttribute");
/// Integer: the width in pixels of the centred body column, also the largest image width.
inline const QString XQHTMLCenteredBodyTableWidthAttribute = QStringLiteral("XQHTMLCenteredBodyTableWidthAttribute");
/// Boolean: white space is removed from image file names.
inline const QString XQHTMLStripWhitespaceFromImageFilenamesAttribute =
    QStringLiteral("XQHTMLStripWhitespaceFromImageFilenamesAttribute");

/// File names of images made by an outside equation editor begin with this.
inline const QString XQMathTypeImageNamePrefix = QStringLiteral("MathTypeEdEq24373");

/// The placeholder written in place of an image: its relative path, width and height.
inline const QString XQHTMLImagePlaceholderFormat =
    QStringLiteral("{\\XQIMG_REF::\"%1\" width=\"%2\" height=\"%3\"\\END_XQIMG_REF}");
/// The placeholder's opening and closing parts.
inline const QString XQHTMLImagePlaceholderStart = QStringLiteral("{\\XQIMG_REF::");
inline const QString XQHTMLImagePlaceholderEnd = QStringLiteral("\\END_XQIMG_REF}");
/// What the opening part becomes in the page, and the closing part (alternative text, tag ending).
inline const QString XQHTMLImageTagStart = QStringLiteral("<img src=");
inline const QString XQHTMLImageTagEndFormat = QStringLiteral(" alt=\"%1\"%2>");

/// The English keys of the localised texts the export uses.
inline constexpr const char* XQHTMLImagesFolderName = "Images";
inline constexpr const char* XQHTMLDefaultImageName = "img";
inline constexpr const char* XQHTMLEquationImageName = "MathTypeEquation";
inline constexpr const char* XQHTMLImageAlternativeText = "Image";

/// What an equation image's number slot holds while no equation image has been numbered.
inline const QString XQHTMLAbsentNumberText = QStringLiteral("(null)");

/// The keys of an entry of HTMLCharacterEntityReferences().
inline const QString XQHTMLEntityCharacterKey = QStringLiteral("Character");
inline const QString XQHTMLEntityReferenceKey = QStringLiteral("HTML");

/// The error domain of writing pages, and its codes.
inline const QString XQHTMLExportErrorDomain = QStringLiteral("QlyAppKitHTMLExportErrorDomain");
enum XQHTMLExportErrorCode {
    XQHTMLExportNoDataError = 1, ///< the text could not be converted
    XQHTMLExportTargetInUseError = 2, ///< a folder at the path holds more than an earlier export of the page
    XQHTMLExportWriteError = 3, ///< the page or its folder could not be written
};

} // namespace qly
