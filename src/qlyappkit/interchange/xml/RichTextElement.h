#pragma once
// The rich-text XML element: an element (named "RTF" unless the caller names it) whose only child is a
// CDATA section holding the package RTF of the text as main text (PackageRTFWriter.h: 7-bit, notes as
// tags, pictures embedded), read back with the package RTF reader. Elements written with plain RTF by
// earlier versions read the same way. Comment objects are not kept (their anchors stay links).
#include <QString>
#include <pugixml.hpp>

#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

/// The default name of the rich-text element.
inline const QString XQRichTextElementName = QStringLiteral("RTF");

/// Appends the rich-text element for text to parent and returns it (an empty node when parent is empty).
pugi::xml_node XQXMLElementFromAttributedString(pugi::xml_node parent, const AttributedString& text,
                                                const QString& name = XQRichTextElementName);
/// The text held by a rich-text element; an empty text for a missing element or contents that are not
/// RTF. RTF cut short gives the text read up to the cut.
AttributedString XQAttributedStringFromXMLElement(pugi::xml_node element);

} // namespace qly
