#pragma once
// What the extended RTF reader writes into word-processor RTF before the platform reads it: RTF that
// reads as the inline note tags of NoteTags.h (so footnotes and annotations come back as attributes),
// the markers of comment ranges, and the placeholders of pictures.
#include <QString>

#include <qlyappkit/text/notes/InlineNotes.h> // XQRTFFootnoteMarker, the option naming the footnote marker

namespace qly {

/// Replaces the opening "{\*\footnote" of a footnote group; reads as "{\QLRY_FN=".
inline const QString XQRTFImportFootnoteStartTag = QStringLiteral("{\\pard\\plain \\{\\\\QLRY_FN={");
/// Follows a footnote group; reads as "\END_QLRY_FN}".
inline const QString XQRTFImportFootnoteEndTag = QStringLiteral("\\pard\\plain \\\\END_QLRY_FN\\}}");
/// Replaces the opening of an annotation group; reads as a line feed and a red inline annotation's opening.
inline const QString XQRTFImportAnnotationStartTag =
    QStringLiteral("{\\\n\\pard\\plain \\{\\\\QLRY_ANNOT \\\\COLOR=\\{\\\\R=1.0\\\\G=0.0\\\\B=0.0\\} \\\\TEXT={");
/// Follows an annotation group; reads as the annotation's closing and a line feed.
inline const QString XQRTFImportAnnotationEndTag = QStringLiteral("\\pard\\plain \\\\END_QLRY_ANNOT\\}\\\n}");
/// Replace the groups that start and end a comment's range.
inline const QString XQRTFImportCommentStartTag = QStringLiteral("<<<<START_QLRY_CMMT>>>>");
inline const QString XQRTFImportCommentEndTag = QStringLiteral("<<<<END_QLRY_CMMT>>>>");
/// Put between two annotations that follow each other, which would otherwise read as one; it goes
/// once their runs are known. A noncharacter: text never holds it.
inline constexpr char16_t XQRTFImportAnnotationSeparator = 0xFDD0;
/// A picture's placeholder, numbered from 1 in document order ("%1" is the number).
inline const QString XQRTFImportPicturePlaceholderFormat = QStringLiteral("<IMG%1_QLRY_TAG>");
inline const QString XQRTFImportPicturePlaceholderPrefix = QStringLiteral("<IMG");
inline const QString XQRTFImportPicturePlaceholderSuffix = QStringLiteral("_QLRY_TAG>");
/// A symbol-font bullet, and what replaces it. The replacement is a skip-count control, not a bullet
/// character; it is kept so because documents read by earlier versions depend on it.
inline const QString XQRTFSymbolBulletControl = QStringLiteral("\\u-3913");
inline const QString XQRTFSymbolBulletReplacement = QStringLiteral("\\uc2022");
/// A picture's file name when the RTF names none ("%1" is its number).
inline const QString XQRTFImportPictureNameFormat = QStringLiteral("Image%1");
/// What begins an imported footnote written by one word processor: a blank, a period, a no-break space.
inline const QString XQImportedFootnotePeriodPrefix = QStringLiteral(" .\u00A0");

// ---- user defaults and options of the import
/// bool: annotations stay inline annotations instead of becoming margin comments.
inline const QString XQRTFImportCommentsInline = QStringLiteral("XQRTFImportCommentsInline");
/// bool: footnotes stay inline instead of becoming margin footnotes.
inline const QString XQRTFImportFootnotesInline = QStringLiteral("XQRTFImportFootnotesInline");

} // namespace qly
