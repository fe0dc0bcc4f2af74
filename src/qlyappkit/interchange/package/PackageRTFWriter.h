#pragma once
// The package RTF writer: the form in which the application stores a text on disk. It is plain RTF as the
// platform writes it, made complete: in main text (the body of a document) the notes travel as text tags;
// comment anchors and document links as "quillcmt://" and "quilllnk://" links (the comments themselves go
// to the comments side file); pictures embedded as RTF picture groups (PackagePictureGroups.h); linked
// pictures as linked-image tags (LinkedImageTags.h); style identifiers as ignorable groups
// (StyleIdentifierGroups.h). Other RTF readers open it with its pictures.
#include <QByteArray>
#include <QVariantMap>

#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

/// Package RTF of the range (clipped to the text): 7-bit ASCII. documentAttributes are written as the
/// platform writer writes them (page size, margins …). With isMainText the notes (annotations, footnotes,
/// preserve-formatting blocks, keep-with-next paragraphs) are written as tags; other texts (synopses, note
/// texts) leave them out. A text without pictures, notes, keep-with-next paragraphs and style identifiers
/// is the platform's RTF with its comment and document links flattened.
QByteArray quilleryPackageRTFFromRange(const AttributedString& text, Range range, const QVariantMap& documentAttributes,
                                       bool isMainText);

} // namespace qly
