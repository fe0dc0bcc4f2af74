#include <qlyappkit/interchange/xml/XMLElements.h>

#include <cmath>
#include <limits>

#include <qlyappkit/interchange/pictures/PictureData.h>
#include <qlyappkit/interchange/xml/RichTextElement.h>
#include <qlyappkit/interchange/xml/XMLValues.h>
#include <qlyappkit/platform/rtf/RTFReader.h>
#include <qlyappkit/platform/rtf/RTFWriter.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/xml/XMLElement.h>

namespace qly {

namespace {

// Print settings attributes.
const QString PaperSizeAttribute = QStringLiteral("PaperSize");
const QString LeftMarginAttribute = QStringLiteral("LeftMargin");
const QString RightMarginAttribute = QStringLiteral("RightMargin");
const QString TopMarginAttribute = QStringLiteral("TopMargin");
const QString BottomMarginAttribute = QStringLiteral("BottomMargin");
const QString PaperTypeAttribute = QStringLiteral("PaperType");
const QString OrientationAttribute = QStringLiteral("Orientation");
const QString HorizontalPaginationAttribute = QStringLiteral("HorizontalPagination");
const QString VerticalPaginationAttribute = QStringLiteral("VerticalPagination");
const QString ScaleFactorAttribute = QStringLiteral("ScaleFactor");
const QString HorizontallyCenteredAttribute = QStringLiteral("HorizontallyCentered");
const QString VerticallyCenteredAttribute = QStringLiteral("VerticallyCentered");
const QString CollatesAttribute = QStringLiteral("Collates");
const QString ReverseOrderAttribute = QStringLiteral("ReverseOrder");
const QString PrintHeaderAndFooterAttribute = QStringLiteral("PrintHeaderAndFooter");
const QString PagesAcrossAttribute = QStringLiteral("PagesAcross");
const QString PagesDownAttribute = QStringLiteral("PagesDown");

std::optional<QString> attributeValue(pugi::xml_node element, const QString& name)
{
    const pugi::xml_attribute attribute = element.attribute(toPugiString(name).c_str());
    if (!attribute)
        return std::nullopt;
    return fromPugiString(attribute.value());
}

// A number read strictly: the whole (trimmed) text, finite.
std::optional<double> numberValue(pugi::xml_node element, const QString& name)
{
    const std::optional<QString> text = attributeValue(element, name);
    if (!text)
        return std::nullopt;
    bool ok = false;
    const double value = text->trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(value))
        return std::nullopt;
    return value;
}

double marginValue(pugi::xml_node element, const QString& name, double fallback)
{
    const std::optional<double> value = numberValue(element, name);
    return value && *value >= 0 ? *value : fallback;
}

bool boolValue(pugi::xml_node element, const QString& name, bool fallback)
{
    const std::optional<QString> text = attributeValue(element, name);
    return text ? XQBoolFromXMLStringValue(*text) : fallback;
}

int pagesValue(pugi::xml_node element, const QString& name, int fallback)
{
    const std::optional<double> value = numberValue(element, name);
    return value && *value >= 1 && *value <= std::numeric_limits<int>::max() ? int(*value) : fallback;
}

std::optional<QSizeF> paperSizeValue(pugi::xml_node element)
{
    const std::optional<QString> text = attributeValue(element, PaperSizeAttribute);
    if (!text)
        return std::nullopt;
    const QStringList parts = text->split(QLatin1Char(','));
    if (parts.size() != 2)
        return std::nullopt;
    bool okWidth = false, okHeight = false;
    const QSizeF size(parts[0].trimmed().toDouble(&okWidth), parts[1].trimmed().toDouble(&okHeight));
    if (!okWidth || !okHeight || !std::isfinite(size.width()) || !std::isfinite(size.height()) || size.width() <= 0
        || size.height() <= 0)
        return std::nullopt;
    return size;
}

std::optional<Attributes> attributesAtStart(const std::optional<AttributedString>& text)
{
    if (!text || text->length() == 0)
        return std::nullopt;
    return text->attributes(0);
}

} // namespace

pugi::xml_node XQXMLElementFromFont(pugi::xml_node parent, const std::optional<Font>& font, const QString& name)
{
    const bool valid = font && font->isValid();
    pugi::xml_node element = parent.append_child(toPugiString(name).c_str());
    if (!element)
        return {};
    addAttributeWithName(element, XQFontNameAttributeName,
                         valid ? xmlValidString(font->fontName()) : XQDefaultXMLFontName);
    addAttributeWithName(element, XQFontSizeAttributeName,
                         XQXMLStringValueFromFloat(float(valid ? font->pointSize() : XQDefaultXMLFontSize)));
    return element;
}

Font XQFontFromXMLElement(pugi::xml_node element)
{
    double size = XQFloatFromXMLStringValue(attributeValue(element, XQFontSizeAttributeName).value_or(QString()));
    if (!(size > 0) || !std::isfinite(size))
        size = XQDefaultXMLFontSize;
    const QString fontName = attributeValue(element, XQFontNameAttributeName).value_or(QString());
    if (!fontName.isEmpty()) {
        if (const std::optional<Font> font = Font::fontWithName(fontName, size))
            return *font;
    }
    return Font::userFont(size);
}

pugi::xml_node XQXMLElementFromOutlineExpandedState(pugi::xml_node parent, const QList<qint64>& itemIDs,
                                                    const QString& name)
{
    pugi::xml_node element = parent.append_child(toPugiString(name).c_str());
    if (!element)
        return {};
    for (const qint64 id : itemIDs)
        addChildElementWithName(element, XQExpandedStateItemElementName, XQXMLStringValueFromInteger(id));
    return element;
}

QList<qint64> XQOutlineExpandedStateFromXMLElement(pugi::xml_node element)
{
    QList<qint64> ids;
    for (pugi::xml_node child = element.first_child(); child; child = child.next_sibling()) {
        if (child.type() == pugi::node_element)
            ids.append(XQIntegerFromXMLStringValue(stringValueOfNode(child).trimmed()));
    }
    return ids;
}

pugi::xml_node XQXMLElementFromPrintInfo(pugi::xml_node parent, const PrintInfo& info, const QString& name)
{
    pugi::xml_node element = parent.append_child(toPugiString(name).c_str());
    if (!element)
        return {};
    addAttributeWithName(element, PaperSizeAttribute, XQXMLStringValueFromSize(info.paperSize()));
    addAttributeWithName(element, LeftMarginAttribute, XQXMLStringValueFromFloat(float(info.leftMargin())));
    addAttributeWithName(element, RightMarginAttribute, XQXMLStringValueFromFloat(float(info.rightMargin())));
    addAttributeWithName(element, TopMarginAttribute, XQXMLStringValueFromFloat(float(info.topMargin())));
    addAttributeWithName(element, BottomMarginAttribute, XQXMLStringValueFromFloat(float(info.bottomMargin())));
    addAttributeWithName(element, PaperTypeAttribute,
                         info.paperName().isEmpty() ? PrintInfo().paperName() : xmlValidString(info.paperName()));
    addAttributeWithName(element, OrientationAttribute, printOrientationName(info.orientation()));
    addAttributeWithName(element, HorizontalPaginationAttribute, printPaginationName(info.horizontalPagination()));
    addAttributeWithName(element, VerticalPaginationAttribute, printPaginationName(info.verticalPagination()));
    addAttributeWithName(element, ScaleFactorAttribute, XQXMLStringValueFromFloat(float(info.scaleFactor())));
    addAttributeWithName(element, HorizontallyCenteredAttribute,
                         XQXMLStringValueFromBool(info.isHorizontallyCentered()));
    addAttributeWithName(element, VerticallyCenteredAttribute, XQXMLStringValueFromBool(info.isVerticallyCentered()));
    addAttributeWithName(element, CollatesAttribute, XQXMLStringValueFromBool(info.collates()));
    addAttributeWithName(element, ReverseOrderAttribute, XQXMLStringValueFromBool(info.reverseOrder()));
    addAttributeWithName(element, PrintHeaderAndFooterAttribute,
                         XQXMLStringValueFromBool(info.printsHeaderAndFooter()));
    addAttributeWithName(element, PagesAcrossAttribute, XQXMLStringValueFromInteger(info.pagesAcross()));
    addAttributeWithName(element, PagesDownAttribute, XQXMLStringValueFromInteger(info.pagesDown()));
    return element;
}

PrintInfo XQPrintInfoFromXMLElement(pugi::xml_node element)
{
    PrintInfo info;
    if (!element)
        return info;
    if (const std::optional<QString> paper = attributeValue(element, PaperTypeAttribute); paper && !paper->isEmpty())
        info.setPaperName(*paper);
    if (const std::optional<QSizeF> size = paperSizeValue(element))
        info.setPaperSize(*size);
    else if (const std::optional<QSizeF> named = paperSizeNamed(info.paperName()))
        info.setPaperSize(*named);
    info.setLeftMargin(marginValue(element, LeftMarginAttribute, info.leftMargin()));
    info.setRightMargin(marginValue(element, RightMarginAttribute, info.rightMargin()));
    info.setTopMargin(marginValue(element, TopMarginAttribute, info.topMargin()));
    info.setBottomMargin(marginValue(element, BottomMarginAttribute, info.bottomMargin()));
    if (const auto orientation =
            printOrientationNamed(attributeValue(element, OrientationAttribute).value_or(QString())))
        info.setOrientation(*orientation);
    if (const auto p = printPaginationNamed(attributeValue(element, HorizontalPaginationAttribute).value_or(QString())))
        info.setHorizontalPagination(*p);
    if (const auto p = printPaginationNamed(attributeValue(element, VerticalPaginationAttribute).value_or(QString())))
        info.setVerticalPagination(*p);
    if (const std::optional<double> scale = numberValue(element, ScaleFactorAttribute); scale && *scale > 0)
        info.setScaleFactor(*scale);
    info.setHorizontallyCentered(boolValue(element, HorizontallyCenteredAttribute, info.isHorizontallyCentered()));
    info.setVerticallyCentered(boolValue(element, VerticallyCenteredAttribute, info.isVerticallyCentered()));
    info.setCollates(boolValue(element, CollatesAttribute, info.collates()));
    info.setReverseOrder(boolValue(element, ReverseOrderAttribute, info.reverseOrder()));
    info.setPrintsHeaderAndFooter(boolValue(element, PrintHeaderAndFooterAttribute, info.printsHeaderAndFooter()));
    info.setPagesAcross(pagesValue(element, PagesAcrossAttribute, info.pagesAcross()));
    info.setPagesDown(pagesValue(element, PagesDownAttribute, info.pagesDown()));
    return info;
}

pugi::xml_node XQXMLElementFromTextAttributes(pugi::xml_node parent, const Attributes& attributes, const QString& name)
{
    return XQXMLElementFromAttributedString(parent, AttributedString(XQTextAttributesCarrierString, attributes), name);
}

std::optional<Attributes> XQTextAttributesFromXMLElement(pugi::xml_node element)
{
    return attributesAtStart(XQAttributedStringFromXMLElement(element));
}

pugi::xml_node XQXMLElementWithHexadecimalDataFromTextAttributes(pugi::xml_node parent, const Attributes& attributes,
                                                                 const QString& name)
{
    const AttributedString carrier(XQTextAttributesCarrierString, attributes);
    QByteArray hex;
    appendHexadecimal(hex, RTFFromRange(carrier, Range{0, carrier.length()}));
    return addChildElementWithName(parent, name, QString::fromLatin1(hex));
}

std::optional<Attributes> XQTextAttributesFromHexadecimalDataInXMLElement(pugi::xml_node element)
{
    const std::optional<QByteArray> rtf = bytesFromHexadecimal(stringValueOfNode(element).toLatin1());
    if (!rtf || rtf->isEmpty())
        return std::nullopt;
    return attributesAtStart(attributedStringFromRTF(*rtf));
}

pugi::xml_node XQXMLElementFromParagraphStyle(pugi::xml_node parent, const ParagraphStyle& style, const QString& name)
{
    return XQXMLElementFromTextAttributes(parent, Attributes{{ParagraphStyleAttributeName, QVariant::fromValue(style)}},
                                          name);
}

ParagraphStyle XQParagraphStyleFromXMLElement(pugi::xml_node element)
{
    const std::optional<Attributes> attributes = XQTextAttributesFromXMLElement(element);
    if (attributes) {
        const QVariant style = attributes->value(ParagraphStyleAttributeName);
        if (style.canConvert<ParagraphStyle>() && style.metaType() == QMetaType::fromType<ParagraphStyle>())
            return style.value<ParagraphStyle>();
    }
    return ParagraphStyle::defaultParagraphStyle();
}

} // namespace qly
