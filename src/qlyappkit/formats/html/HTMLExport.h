#pragma once
// Writing rich text as an HTML page: through the platform HTML writer, with the text's images written
// as JPEG or PNG files into an images folder and shown by "img" tags of a chosen size, the body
// optionally centred in a column, and nested lists repaired.
//
// Document attributes read (besides those the platform writer reads, which are passed on):
// XQHTMLImagesFolderDocumentAttribute and XQHTMLImagesFolderSubpathDocumentAttribute (both needed
// for images to be written), XQHTMLCenteredBodyTableWidthAttribute (0: no column, no largest image
// width), XQHTMLStripWhitespaceFromImageFilenamesAttribute and ExcludedElementsDocumentAttribute
// (given without "XML", image tags end with " />").
#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <qlyappkit/platform/services/Error.h>
#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

/// The page of range as UTF-8 bytes. With an images folder and subpath, each image is written into
/// the folder (see HTMLImageFiles.h for the names; an image that cannot be written is left out) and
/// shown by an "img" tag with src, width and height (capped at the column width, keeping its
/// proportions) and alt, in that order; imagesSubpaths receives the relative paths of the files this
/// call wrote. Without them, images are left out. Empty when the page cannot be made.
QByteArray HTMLDataFromRange(const AttributedString& text, Range range, const QVariantMap& documentAttributes,
                             QStringList* imagesSubpaths = nullptr);

/// The page of the whole text written atomically at path.
bool writeHTMLToFile(const AttributedString& text, const QString& path, const QVariantMap& documentAttributes,
                     QStringList* imagesSubpaths = nullptr, Error* error = nullptr);

/// Writes the text at path: as a single page when it holds no image; otherwise as a folder at path
/// holding the page (under path's own last name) and an "Images" folder beside it. The folder is
/// written aside first and takes path's place when complete, so a failed export leaves the earlier
/// one. Only a file, a symbolic link (replaced, not followed) or the folder of an earlier export of
/// the same page is replaced: a folder holding anything else is refused with an error and left alone.
/// When the folder cannot be written, a single page without the images is written instead.
bool writeHTMLToFileAsDirectoryIfNecessary(const AttributedString& text, const QString& path,
                                           const QVariantMap& documentAttributes, Error* error = nullptr);

/// True when the text holds an image attachment: it is then written as a folder.
bool textNeedsImagesFolder(const AttributedString& text);

} // namespace qly
