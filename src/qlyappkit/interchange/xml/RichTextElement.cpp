#include <qlyappkit/interchange/xml/RichTextElement.h>

#include <QByteArray>

#include <qlyappkit/platform/rtf/RTFReader.h>
#include <qlyappkit/platform/rtf/RTFWriter.h>
#include <qlyappkit/platform/xml/XMLElement.h>

namespace qly {

pugi::xml_node XQXMLElementFromAttributedString(pugi::xml_node parent, const AttributedString& text,
                                                const QString& name)
{
    if (!parent)
        return {};
    // The RTF is 7-bit printable text with line feeds, which a CDATA section holds as it is.
    const QByteArray rtf = RTFFromRange(text, Range{0, text.length()});
    return appendElementWithCDATA(parent, name, QString::fromLatin1(rtf));
}

AttributedString XQAttributedStringFromXMLElement(pugi::xml_node element)
{
    if (!element)
        return {};
    // Written as ASCII; anything else another program put there is taken as UTF-8.
    const QByteArray stored = stringValueOfNode(element).toUtf8();
    RTFParseResult result;
    const std::optional<AttributedString> text = attributedStringFromRTF(stored, nullptr, &result);
    if (!text || !result)
        return {}; // not RTF, or cut short
    return *text;
}

} // namespace qly
