#include <qlyappkit/interchange/comments/CommentsSideFile.h>

#include <QFile>
#include <QFileInfo>

#include <qlyappkit/interchange/xml/RichTextElement.h>
#include <qlyappkit/interchange/xml/XMLValues.h>
#include <qlyappkit/platform/services/Localization.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/xml/XMLElement.h>
#include <qlyappkit/platform/xml/XMLFile.h>
#include <qlyappkit/text/attributes/LinkValues.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>

namespace qly {

namespace {

std::optional<QString> attributeValue(const pugi::xml_node& element, const QString& name)
{
    const pugi::xml_attribute attribute = element.attribute(toPugiString(name).c_str());
    if (!attribute)
        return std::nullopt;
    return fromPugiString(attribute.value());
}

void appendCommentElement(pugi::xml_node root, const XQComment& comment)
{
    pugi::xml_node element = root.append_child(toPugiString(XQCommentsXMLCommentElementName).c_str());
    addAttributeWithName(element, XQCommentsXMLIDAttributeName, xmlValidString(comment.uniqueID()));
    if (comment.isFootnote())
        addAttributeWithName(element, XQCommentsXMLFootnoteAttributeName, XQXMLStringValueFromBool(true));
    if (comment.footnoteNumber() > 0)
        addAttributeWithName(element, XQCommentsXMLNumberAttributeName,
                             XQXMLStringValueFromInteger(comment.footnoteNumber()));
    if (comment.isCollapsed())
        addAttributeWithName(element, XQCommentsXMLCollapsedAttributeName, XQXMLStringValueFromBool(true));
    if (comment.color())
        addAttributeWithName(element, XQCommentsXMLColorAttributeName, XQXMLStringValueFromColor(comment.color()));
    XQXMLElementFromAttributedString(element, comment.text());
}

} // namespace

std::unique_ptr<pugi::xml_document> commentsXMLRepresentation(const AttributedString& text)
{
    std::unique_ptr<pugi::xml_document> document;
    pugi::xml_node root;
    text.enumerateAttribute(XQCommentAttributeName, Range{0, text.length()}, [&](const QVariant& value, Range) {
        const XQCommentPtr comment = commentFromVariant(value);
        if (!comment)
            return true;
        if (!document) {
            document = std::make_unique<pugi::xml_document>();
            root = document->append_child(toPugiString(XQCommentsXMLRootElementName).c_str());
        }
        appendCommentElement(root, *comment);
        return true;
    });
    return document;
}

bool writeCommentsToURL(const AttributedString& text, const QString& path, Error* error)
{
    const std::unique_ptr<pugi::xml_document> document = commentsXMLRepresentation(text);
    if (document)
        return writeXMLDocumentAtomically(*document, path, error);

    // No comments: a side file left from an earlier save would bring them back on the next load.
    const QFileInfo info(path);
    if (!info.exists() && !info.isSymLink())
        return true;
    if (QFile::remove(path))
        return true;
    setError(error, XQCommentsFileErrorDomain, XQCommentsFileCannotRemoveError,
             localized("The comments file could not be removed."),
             localized("Check that you have permission to change the folder the document is saved in."));
    return false;
}

namespace {

std::optional<std::vector<XQCommentPtr>> commentListFromDocument(const pugi::xml_document& document)
{
    const pugi::xml_node root = document.document_element();
    if (!root || fromPugiString(root.name()) != XQCommentsXMLRootElementName)
        return std::nullopt;
    return commentListFromXMLRepresentation(root);
}

} // namespace

std::optional<XQCommentsByID> commentsFromURL(const QString& path)
{
    const std::optional<std::vector<XQCommentPtr>> list = commentListFromURL(path);
    if (!list)
        return std::nullopt;
    XQCommentsByID comments;
    for (const XQCommentPtr& comment : *list)
        comments.insert(comment->uniqueID(), comment);
    return comments;
}

std::optional<std::vector<XQCommentPtr>> commentListFromURL(const QString& path)
{
    if (!QFileInfo::exists(path))
        return std::nullopt;
    pugi::xml_document document;
    if (!loadXMLDocument(path, document, true))
        return std::nullopt;
    return commentListFromDocument(document);
}

std::optional<std::vector<XQCommentPtr>> commentListFromXMLData(const QByteArray& data)
{
    pugi::xml_document document;
    if (!loadXMLDocumentFromData(data, document, true))
        return std::nullopt;
    return commentListFromDocument(document);
}

XQCommentsByID commentsInfoFromXMLRepresentation(pugi::xml_node element)
{
    XQCommentsByID comments;
    for (const XQCommentPtr& comment : commentListFromXMLRepresentation(element))
        comments.insert(comment->uniqueID(), comment);
    return comments;
}

std::vector<XQCommentPtr> commentListFromXMLRepresentation(pugi::xml_node element)
{
    std::vector<XQCommentPtr> comments;
    for (pugi::xml_node child = element.first_child(); child; child = child.next_sibling()) {
        if (child.type() != pugi::node_element)
            continue;
        const std::optional<QString> uniqueID = attributeValue(child, XQCommentsXMLIDAttributeName);
        if (!uniqueID)
            continue;
        XQCommentPtr comment = XQComment::create();
        comment->setUniqueID(*uniqueID);
        if (const auto footnote = attributeValue(child, XQCommentsXMLFootnoteAttributeName))
            comment->setFootnote(XQBoolFromXMLStringValue(*footnote));
        if (const auto number = attributeValue(child, XQCommentsXMLNumberAttributeName))
            comment->setFootnoteNumber(XQIntegerFromXMLStringValue(*number));
        if (const auto collapsed = attributeValue(child, XQCommentsXMLCollapsedAttributeName))
            comment->setCollapsed(XQBoolFromXMLStringValue(*collapsed));
        if (const auto color = attributeValue(child, XQCommentsXMLColorAttributeName))
            comment->setColor(XQColorFromXMLStringValue(*color));
        if (const pugi::xml_node richText = firstChildElementWithName(child, XQRichTextElementName))
            comment->setText(XQAttributedStringFromXMLElement(richText));
        comments.push_back(comment);
    }
    return comments;
}

void loadCommentsFromURL(MutableAttributedString& text, const QString& path)
{
    if (const std::optional<XQCommentsByID> comments = commentsFromURL(path))
        loadCommentsFromDictionary(text, *comments);
}

} // namespace qly
