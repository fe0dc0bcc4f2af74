#include <qlyappkit/interchange/RichTextElement.h>

#include <QByteArray>

#include <qlyappkit/interchange/XMLElement.h>
#include <qlyappkit/platform/KeyedArchiver.h>

namespace qly {

pugi::xml_node XQXMLElementFromAttributedString(pugi::xml_node parent, const AttributedString& text,
                                                const QString& name)
{
    if (!parent)
        return {};
    // Base64 holds only characters XML allows, so the section needs no further care.
    const QByteArray encoded = archiving::archivedData(QVariant::fromValue(text)).toBase64();
    return appendElementWithCDATA(parent, name, QString::fromLatin1(encoded));
}

AttributedString XQAttributedStringFromXMLElement(pugi::xml_node element)
{
    if (!element)
        return {};
    const QByteArray stored = stringValueOfNode(element).trimmed().toLatin1();
    if (stored.isEmpty())
        return {};
    const auto decoded = QByteArray::fromBase64Encoding(stored, QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded)
        return {};
    const QVariant value = archiving::unarchive(decoded.decoded);
    if (value.metaType() != QMetaType::fromType<AttributedString>())
        return {};
    return value.value<AttributedString>();
}

} // namespace qly
