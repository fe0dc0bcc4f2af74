#pragma once
// The rich-text XML element: an element (named "RTF" unless the caller names it) whose only child is a
// CDATA section holding the text in a lossless ASCII form.
//
// The form inside the CDATA section is private to this pair of functions: today the base64 text of
// the keyed archive of the attributed string, later the package RTF. Callers never look inside.
#include <QString>
#include <pugixml.hpp>

#include <qlyappkit/platform/AttributedString.h>

namespace qly {

/// The default name of the rich-text element.
inline const QString XQRichTextElementName = QStringLiteral("RTF");

/// Appends the rich-text element for text to parent and returns it (an empty node when parent is empty).
pugi::xml_node XQXMLElementFromAttributedString(pugi::xml_node parent, const AttributedString& text,
                                                const QString& name = XQRichTextElementName);
/// The text held by a rich-text element; an empty text for a missing element or unreadable contents.
AttributedString XQAttributedStringFromXMLElement(pugi::xml_node element);

} // namespace qly
