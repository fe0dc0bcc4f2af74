#pragma once
// The rich-text XML element: an element (named "RTF" unless the caller names it) whose only child is a
// CDATA section holding the RTF of the text (the platform RTF writer's 7-bit output), read back with
// the platform RTF reader. What RTF does not carry (attachments, comment objects) is not kept.
#include <QString>
#include <pugixml.hpp>

#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

/// The default name of the rich-text element.
inline const QString XQRichTextElementName = QStringLiteral("RTF");

/// Appends the rich-text element for text to parent and returns it (an empty node when parent is empty).
pugi::xml_node XQXMLElementFromAttributedString(pugi::xml_node parent, const AttributedString& text,
                                                const QString& name = XQRichTextElementName);
/// The text held by a rich-text element; an empty text for a missing element or unreadable contents.
AttributedString XQAttributedStringFromXMLElement(pugi::xml_node element);

} // namespace qly
