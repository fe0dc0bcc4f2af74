#include <qlyappkit/interchange/xml/RichTextElement.h>

#include <QByteArray>

#include <qlyappkit/interchange/package/PackageRTFReader.h>
#include <qlyappkit/interchange/package/PackageRTFWriter.h>
#include <qlyappkit/platform/xml/XMLElement.h>

namespace qly {

pugi::xml_node XQXMLElementFromAttributedString(pugi::xml_node parent, const AttributedString& text,
                                                const QString& name)
{
    if (!parent)
        return {};
    // The RTF is 7-bit printable text with line feeds, which a CDATA section holds as it is.
    const QByteArray rtf = quilleryPackageRTFFromRange(text, Range{0, text.length()}, {}, true);
    return appendElementWithCDATA(parent, name, QString::fromLatin1(rtf));
}

AttributedString XQAttributedStringFromXMLElement(pugi::xml_node element)
{
    if (!element)
        return {};
    // Written as ASCII; anything else another program put there is taken as UTF-8.
    const QByteArray stored = stringValueOfNode(element).toUtf8();
    if (!stored.trimmed().startsWith("{\\rtf"))
        return {}; // the element holds RTF; other text is not ours
    return initWithQuilleryPackageRTF(stored, nullptr, true).value_or(AttributedString());
}

} // namespace qly
