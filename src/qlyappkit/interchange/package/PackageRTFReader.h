#pragma once
// The package RTF reader: reads what quilleryPackageRTFFromRange() writes, and any other RTF or plain
// text. Embedded pictures come back as attachments holding their bytes (PNG, JPEG and PDF exactly as
// written), linked pictures as links, style identifiers as attributes and, in main text, tagged notes as
// note attributes. It never fails loudly: RTF the platform cannot read degrades to plain text, a picture
// that does not decode is left out, a picture group that runs past the end of the RTF ends the picture
// pass there.
#include <QByteArray>
#include <QString>
#include <QVariantMap>
#include <optional>

#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

/// The text that package RTF (or plain text) holds; nothing for no data (empty bytes).
///
/// Data that does not start with "{\rtf" (after blanks and line breaks) is plain text: UTF-8, or Latin-1
/// when it is not valid UTF-8; it comes back without attributes. Otherwise each picture group becomes an
/// attachment character (with ignoreImages, the character "?"): JPEG pictures are named "NAME.jpg", other
/// bitmaps "NAME.png" (bitmaps that are neither JPEG nor PNG are converted to PNG), PDF pictures "NAME.pdf";
/// NAME is the name stored with the picture, or "Image" and the picture's number; a stored name that
/// starts with the equation prefix gets a fresh unique ending instead of its own, so that equation
/// files never collide. A picture whose intended size differs from its natural size (pixels as points,
/// or the PDF page) keeps it as the attachment's bounds. documentAttributes receives what the RTF carried
/// (page size, margins …). With isMainText, tagged notes become note attributes. Comment links stay links
/// (the comments side file resolves them); document links become document link dictionaries.
std::optional<AttributedString> initWithQuilleryPackageRTF(const QByteArray& data, QVariantMap* documentAttributes,
                                                           bool isMainText, bool ignoreImages);
/// The same without ignoreImages.
std::optional<AttributedString> initWithQuilleryPackageRTF(const QByteArray& data, QVariantMap* documentAttributes,
                                                           bool isMainText);

/// Stored equation names start with this; the reader replaces what follows by a unique string.
inline const QString XQEquationFileNamePrefix = QStringLiteral("MathTypeEdEq24373-");
/// What an ignored picture becomes.
inline const QString XQIgnoredPictureText = QStringLiteral("?");
/// Pictures without a stored name are named this, followed by their number.
inline const QString XQUnnamedPictureNameFormat = QStringLiteral("Image%1");

} // namespace qly
