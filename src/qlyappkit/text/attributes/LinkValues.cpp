#include <qlyappkit/text/attributes/LinkValues.h>

#include <QUrl>
#include <QVariantMap>

#include <qlyappkit/text/attributes/XQAttributeNames.h>

namespace qly {

namespace {

/// What follows "scheme://" in a QUrl of that scheme, as near to how it was written as QUrl allows:
/// the host as a Unicode name, the rest decoded.
std::optional<QString> identifierOfUrl(const QUrl& url, const QString& scheme)
{
    const QString schemeName = scheme.left(scheme.indexOf(u':'));
    if (!url.isValid() || url.scheme().compare(schemeName, Qt::CaseInsensitive) != 0)
        return std::nullopt;
    QString text = url.toString(QUrl::PrettyDecoded | QUrl::RemoveScheme);
    if (text.startsWith(QStringLiteral("//")))
        text.remove(0, 2);
    const QString aceHost = url.host(QUrl::FullyEncoded);
    const QString host = QUrl::fromAce(aceHost.toLatin1(), QUrl::IgnoreIDNWhitelist);
    if (host != aceHost && text.startsWith(aceHost))
        text.replace(0, aceHost.size(), host);
    if (text.isEmpty())
        return std::nullopt;
    return text;
}

std::optional<QString> identifierAfterScheme(const QVariant& link, const QString& scheme)
{
    if (link.typeId() == QMetaType::QUrl)
        return identifierOfUrl(link.toUrl(), scheme);
    if (link.typeId() != QMetaType::QString)
        return std::nullopt;
    const QString text = link.toString();
    if (!text.startsWith(scheme, Qt::CaseInsensitive))
        return std::nullopt;
    return text.mid(XQLinkSchemePrefixLength);
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
