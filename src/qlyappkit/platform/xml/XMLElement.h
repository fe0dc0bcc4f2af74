#pragma once
// Conveniences on pugixml element nodes used by every XML writer and reader of the framework, and the
// conversions between QString and pugixml's UTF-8 text.
#include <QString>
#include <pugixml.hpp>

#include <optional>
#include <string>

namespace qly {

/// UTF-8 bytes of a text for pugixml (lone surrogates become U+FFFD).
std::string toPugiString(const QString& text);
/// A pugixml text (UTF-8, may be null) as a QString; null gives an empty text.
QString fromPugiString(const pugi::char_t* text);

/// The text without the characters XML 1.0 cannot hold: control characters other than tab, LF and CR,
/// lone surrogates, U+FFFE and U+FFFF. Returns the text itself when nothing needs dropping.
QString xmlValidString(const QString& text);

/// The concatenated text and CDATA of a node and all its descendants (an element's string value).
QString stringValueOfNode(const pugi::xml_node& node);

/// The first child element of that name; a null node when there is none.
pugi::xml_node firstChildElementWithName(const pugi::xml_node& parent, const QString& name);
/// The string value of the first child element of that name; nothing when there is no such element.
std::optional<QString> stringValueOfFirstChildElementWithName(const pugi::xml_node& parent, const QString& name);

/// Appends an element of that name holding the text as its only child (no child for an empty text);
/// returns the new element, or a null node when parent cannot hold elements.
pugi::xml_node addChildElementWithName(pugi::xml_node parent, const QString& name, const QString& stringValue);
/// Sets an attribute on the element, replacing the value of an attribute of that name already there (an
/// element never holds two of the same name). Returns the attribute; null when element is not an element.
pugi::xml_attribute addAttributeWithName(pugi::xml_node element, const QString& name, const QString& value);
/// Appends an element whose only child is a CDATA node holding the text (a null text is written as empty).
/// A "]]>" inside the text is split over two CDATA sections when saved; readers join them again.
pugi::xml_node appendElementWithCDATA(pugi::xml_node parent, const QString& name, const QString& text);

} // namespace qly
