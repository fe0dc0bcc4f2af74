#include <qlyappkit/text/attributes/LinkValues.h>

#include <QUrl>
#include <QVariantMap>

#include <qlyappkit/text/attributes/XQAttributeNames.h>

namespace qly {

namespace {
std::optional<QString> identifierAfterScheme(const QVariant& link, const QString& scheme)
{
    const std::optional<QString> text = linkString(link);
    if (!text || !text->startsWith(scheme))
        return std::nullopt;
    return text->mid(XQLinkSchemePrefixLength);
}
} // namespace

std::optional<QString> linkString(const QVariant& link)
{
    if (link.typeId() == QMetaType::QString)
        return link.toString();
    if (link.typeId() == QMetaType::QUrl)
        return link.toUrl().toString();
    return std::nullopt;
}

QString commentLinkString(const QString& uniqueID) { return XQCommentLinkScheme + uniqueID; }

QString documentLinkString(const QString& identifier) { return XQDocumentLinkScheme + identifier; }

std::optional<QString> commentIDFromLink(const QVariant& link)
{
    return identifierAfterScheme(link, XQCommentLinkScheme);
}

std::optional<QString> documentIdentifierFromLink(const QVariant& link)
{
    return identifierAfterScheme(link, XQDocumentLinkScheme);
}

std::optional<QString> documentIdentifierFromDictionary(const QVariant& link)
{
    if (link.typeId() != QMetaType::QVariantMap)
        return std::nullopt;
    const QVariantMap map = link.toMap();
    const auto it = map.constFind(XQQuilleryLinkKey);
    if (it == map.constEnd())
        return std::nullopt;
    return it->toString();
}

QVariantMap documentLinkDictionary(const QString& identifier) { return QVariantMap{{XQQuilleryLinkKey, identifier}}; }

} // namespace qly
