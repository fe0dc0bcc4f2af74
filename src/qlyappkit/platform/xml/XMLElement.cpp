#include <qlyappkit/platform/xml/XMLElement.h>

namespace qly {
namespace {

bool isXMLCharacter(char32_t c)
{
    return c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c <= 0xD7FF) || (c >= 0xE000 && c <= 0xFFFD)
        || (c >= 0x10000 && c <= 0x10FFFF);
}

bool canHoldElements(const pugi::xml_node& node)
{
    return node.type() == pugi::node_element || node.type() == pugi::node_document;
}

// Walks the subtree in document order through parent links rather than by recursion: a hostile
// file can nest elements as deep as it is long.
void appendStringValue(const pugi::xml_node& root, std::string& out)
{
    for (pugi::xml_node node = root.first_child(); node;) {
        if (node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata)
            out += node.value();
        if (node.type() == pugi::node_element && node.first_child()) {
            node = node.first_child();
            continue;
        }
        while (!node.next_sibling()) {
            node = node.parent();
            if (node == root)
                return;
        }
        node = node.next_sibling();
    }
}

} // namespace

std::string toPugiString(const QString& text) { return text.toStdString(); }

QString fromPugiString(const pugi::char_t* text) { return text ? QString::fromUtf8(text) : QString(); }

QString xmlValidString(const QString& text)
{
    const qsizetype n = text.size();
    qsizetype i = 0;
    // Fast path: most texts hold nothing to drop.
    for (; i < n; ++i) {
        const char16_t c = text[i].unicode();
        if (QChar::isHighSurrogate(c) && i + 1 < n && QChar::isLowSurrogate(text[i + 1].unicode())) {
            ++i;
            continue;
        }
        if (!isXMLCharacter(c) || QChar::isSurrogate(c))
            break;
    }
    if (i == n)
        return text;

    QString result;
    result.reserve(n);
    result.append(QStringView(text).left(i));
    for (; i < n; ++i) {
        const char16_t c = text[i].unicode();
        if (QChar::isHighSurrogate(c) && i + 1 < n && QChar::isLowSurrogate(text[i + 1].unicode())) {
            result.append(text[i]);
            result.append(text[++i]);
        } else if (isXMLCharacter(c) && !QChar::isSurrogate(c)) {
            result.append(text[i]);
        }
    }
    return result;
}

QString stringValueOfNode(const pugi::xml_node& node)
{
    if (node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata)
        return fromPugiString(node.value());
    std::string value;
    appendStringValue(node, value);
    return QString::fromStdString(value);
}

pugi::xml_node firstChildElementWithName(const pugi::xml_node& parent, const QString& name)
{
    const std::string wanted = toPugiString(name);
    for (pugi::xml_node child = parent.first_child(); child; child = child.next_sibling()) {
        if (child.type() == pugi::node_element && wanted == child.name())
            return child;
    }
    return {};
}

std::optional<QString> stringValueOfFirstChildElementWithName(const pugi::xml_node& parent, const QString& name)
{
    const pugi::xml_node element = firstChildElementWithName(parent, name);
    if (!element)
        return std::nullopt;
    return stringValueOfNode(element);
}

pugi::xml_node addChildElementWithName(pugi::xml_node parent, const QString& name, const QString& stringValue)
{
    if (!canHoldElements(parent))
        return {};
    pugi::xml_node element = parent.append_child(toPugiString(name).c_str());
    if (element && !stringValue.isEmpty())
        element.append_child(pugi::node_pcdata).set_value(toPugiString(stringValue).c_str());
    return element;
}

pugi::xml_attribute addAttributeWithName(pugi::xml_node element, const QString& name, const QString& value)
{
    if (element.type() != pugi::node_element)
        return {};
    const std::string key = toPugiString(name);
    pugi::xml_attribute attribute = element.attribute(key.c_str());
    if (!attribute)
        attribute = element.append_attribute(key.c_str());
    attribute.set_value(toPugiString(value).c_str());
    return attribute;
}

pugi::xml_node appendElementWithCDATA(pugi::xml_node parent, const QString& name, const QString& text)
{
    if (!canHoldElements(parent))
        return {};
    pugi::xml_node element = parent.append_child(toPugiString(name).c_str());
    if (element)
        element.append_child(pugi::node_cdata).set_value(toPugiString(text).c_str());
    return element;
}

} // namespace qly
