#pragma once
// The XML elements of the framework's stored values: fonts, the expanded items of an outline, print
// settings, and text attributes and paragraph styles (through the rich-text element, RichTextElement.h,
// or as hexadecimal RTF data). Each writer appends its element to a parent (a null node when the parent
// cannot hold one) under the default name unless given another; each reader takes an element (possibly
// null) and never fails: missing or unusable values give the fallbacks documented per function.
#include <QList>
#include <QString>
#include <optional>
#include <pugixml.hpp>

#include <qlyappkit/platform/text/Attributes.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>
#include <qlyappkit/platform/values/PrintInfo.h>

namespace qly {

// Element and attribute names.
inline const QString XQFontElementName = QStringLiteral("Font");
inline const QString XQFontNameAttributeName = QStringLiteral("Name");
inline const QString XQFontSizeAttributeName = QStringLiteral("Size");
inline const QString XQExpandedStateElementName = QStringLiteral("ExpandedState");
inline const QString XQExpandedStateItemElementName = QStringLiteral("ItemID");
inline const QString XQPrintSettingsElementName = QStringLiteral("PrintSettings");
inline const QString XQTextAttributesElementName = QStringLiteral("RTFTextAttributes");
inline const QString XQTextFormatDataElementName = QStringLiteral("TextFormatData");
inline const QString XQParagraphStyleElementName = QStringLiteral("RTFParagraphStyle");
/// The text that carries stored attributes.
inline const QString XQTextAttributesCarrierString = QStringLiteral("Attributes");

/// Written for a missing font.
inline const QString XQDefaultXMLFontName = QStringLiteral("Helvetica");
inline constexpr double XQDefaultXMLFontSize = 12;

/// "Name" (the face name) and "Size" (float form); "Helvetica" and 12 for no font.
pugi::xml_node XQXMLElementFromFont(pugi::xml_node parent, const std::optional<Font>& font,
                                    const QString& name = XQFontElementName);
/// The font named at that size (a size of 0 or less, or none, is 12); the user's font at that size when
/// no such font is installed or the element has no name.
Font XQFontFromXMLElement(pugi::xml_node element);

/// One "ItemID" child per expanded item, holding its identifier.
pugi::xml_node XQXMLElementFromOutlineExpandedState(pugi::xml_node parent, const QList<qint64>& itemIDs,
                                                    const QString& name = XQExpandedStateElementName);
/// Each child element's text as an integer, in order (a child that is no number reads as 0); empty for a
/// missing element.
QList<qint64> XQOutlineExpandedStateFromXMLElement(pugi::xml_node element);

/// Every field of the print settings as an attribute.
pugi::xml_node XQXMLElementFromPrintInfo(pugi::xml_node parent, const PrintInfo& printInfo,
                                         const QString& name = XQPrintSettingsElementName);
/// The print settings stored; each attribute that is missing or unusable keeps the default of PrintInfo:
/// a paper size that is not two positive numbers is the named paper's size (when the name is known),
/// margins must be finite and not negative, the scale finite and positive, pages across and down at least
/// 1, orientation and paginations one of their names exactly. A missing element gives the defaults.
PrintInfo XQPrintInfoFromXMLElement(pugi::xml_node element);

/// The attributes carried by the text "Attributes", stored as a rich-text element (package RTF).
pugi::xml_node XQXMLElementFromTextAttributes(pugi::xml_node parent, const Attributes& attributes,
                                              const QString& name = XQTextAttributesElementName);
/// The attributes at the start of the stored text; nothing when the element holds no text.
std::optional<Attributes> XQTextAttributesFromXMLElement(pugi::xml_node element);

/// The same attributes as the platform's RTF, stored as hexadecimal text.
pugi::xml_node XQXMLElementWithHexadecimalDataFromTextAttributes(pugi::xml_node parent, const Attributes& attributes,
                                                                 const QString& name = XQTextFormatDataElementName);
/// The attributes at the start of the RTF that the hexadecimal text holds; nothing when the text is empty,
/// not hexadecimal or not RTF.
std::optional<Attributes> XQTextAttributesFromHexadecimalDataInXMLElement(pugi::xml_node element);

/// A text-attributes element holding only the paragraph style.
pugi::xml_node XQXMLElementFromParagraphStyle(pugi::xml_node parent, const ParagraphStyle& style,
                                              const QString& name = XQParagraphStyleElementName);
/// The stored paragraph style; the default paragraph style when there is none.
ParagraphStyle XQParagraphStyleFromXMLElement(pugi::xml_node element);

} // namespace qly
