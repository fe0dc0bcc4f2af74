#include <qlyappkit/text/comments/XQComment.h>

#include <QCborMap>
#include <QColor>
#include <QLocale>
#include <QUuid>
#include <mutex>

#include <qlyappkit/platform/services/KeyedArchiver.h>
#include <qlyappkit/platform/services/Localization.h>
#include <qlyappkit/platform/services/NamedException.h>
#include <qlyappkit/platform/services/NotificationCenter.h>
#include <qlyappkit/platform/services/UserDefaults.h>

namespace qly {

namespace {

const QString TextKey = QStringLiteral("text");
const QString UniqueIDKey = QStringLiteral("uniqueID");
const QString IsFootnoteKey = QStringLiteral("isFootnote");
const QString ColorKey = QStringLiteral("color");
const QString FootnoteNumberKey = QStringLiteral("footnoteNumber");
const QString IsCollapsedKey = QStringLiteral("isCollapsed");

const QString ArchivedClassName = QStringLiteral("XQComment");
const QString DefaultCommentColorKeySuffix = QStringLiteral(".XQDefaultCommentColor");
const QString UnknownKeyExceptionName = QStringLiteral("NSUnknownKeyException");
const QString InvalidArgumentExceptionName = QStringLiteral("NSInvalidArgumentException");

std::function<QString()>& userFullNameProvider()
{
    static std::function<QString()> provider;
    return provider;
}

bool isNumber(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Double:
    case QMetaType::Float:
        return true;
    default:
        return false;
    }
}

[[noreturn]] void throwUnknownKey(const QString& key)
{
    throw NamedException(UnknownKeyExceptionName,
                         QStringLiteral("[<XQComment> valueForUndefinedKey:]: this class is not key value "
                                        "coding-compliant for the key %1.")
                             .arg(key));
}

void warnWrongType(const QString& key, const QVariant& value)
{
    qWarning("XQComment: ignoring a value of type %s for the key %s", value.typeName() ? value.typeName() : "?",
             qPrintable(key));
}

} // namespace

XQComment::XQComment() : XQComment(std::nullopt, false) { }

XQComment::XQComment(const std::optional<AttributedString>& text, bool isFootnote)
    : m_text(text ? *text : AttributedString(isFootnote ? defaultFootnoteString() : defaultCommentString())),
      m_uniqueID(uniqueIDString()), m_isFootnote(isFootnote),
      m_color(isFootnote ? defaultFootnoteColor() : defaultCommentColor())
{
    registerArchivingType();
}

std::shared_ptr<XQComment> XQComment::create(const std::optional<AttributedString>& text, bool isFootnote)
{
    return std::make_shared<XQComment>(text, isFootnote);
}

void XQComment::post(const QString& name) { NotificationCenter::defaultCenter().post(name, this); }

void XQComment::setText(const AttributedString& text)
{
    if (&text == &m_text)
        return;
    m_text = text;
    post(XQCommentTextDidChangeNotification);
}

QString XQComment::string() const { return m_text.string(); }

void XQComment::setFootnote(bool isFootnote)
{
    m_isFootnote = isFootnote;
    post(XQCommentIsFootnoteDidChangeNotification);
}

void XQComment::setColor(const std::optional<Color>& color)
{
    m_color = color;
    post(XQCommentColorDidChangeNotification);
}

void XQComment::setCollapsed(bool collapsed)
{
    m_isCollapsed = collapsed;
    post(XQCommentDidExpandOrCollapseNotification);
}

QString XQComment::tooltipString() const
{
    const QString kind = m_isFootnote ? localized("Footnote") : localized("Comment");
    return QStringLiteral("%1: %2").arg(kind, string());
}

void XQComment::convertTextToHaveAttributes(const QVariantMap& conversionAttributes,
                                            const XQAttributedStringAttributesConverter& converter)
{
    const AttributedString converted = converter ? converter(m_text, conversionAttributes) : AttributedString(m_text);
    setText(converted);
}

QString XQComment::description() const
{
    QString color = QStringLiteral("(none)");
    if (m_color) {
        color = QStringLiteral("RGBA %1 %2 %3 %4")
                    .arg(m_color->redComponent())
                    .arg(m_color->greenComponent())
                    .arg(m_color->blueComponent())
                    .arg(m_color->alphaComponent());
    }
    return QStringLiteral("XQComment:\nuniqueID: %1\ntext: %2\nisFootnote: %3\ncolor: %4\nhash: %5")
        .arg(m_uniqueID, string(), m_isFootnote ? QStringLiteral("YES") : QStringLiteral("NO"), color,
             QString::number(quintptr(this)));
}

const QStringList& XQComment::mutableKeys()
{
    static const QStringList keys{TextKey, UniqueIDKey, IsFootnoteKey, ColorKey, FootnoteNumberKey, IsCollapsedKey};
    return keys;
}

QVariant XQComment::valueForKey(const QString& key) const
{
    if (key == TextKey)
        return QVariant::fromValue(m_text);
    if (key == UniqueIDKey)
        return m_uniqueID;
    if (key == IsFootnoteKey)
        return m_isFootnote;
    if (key == ColorKey)
        return m_color ? QVariant::fromValue(*m_color) : QVariant();
    if (key == FootnoteNumberKey)
        return QVariant(qlonglong(m_footnoteNumber));
    if (key == IsCollapsedKey)
        return m_isCollapsed;
    throwUnknownKey(key);
}

void XQComment::setValueForKey(const QString& key, const QVariant& value)
{
    if (!mutableKeys().contains(key))
        throwUnknownKey(key);
    if (!value.isValid()) {
        if (key == TextKey)
            setText(AttributedString());
        else if (key == UniqueIDKey)
            setUniqueID(QString());
        else if (key == ColorKey)
            setColor(std::nullopt);
        else
            setNilValueForKey(key);
        return;
    }
    if (key == TextKey) {
        if (value.metaType() == QMetaType::fromType<AttributedString>())
            setText(value.value<AttributedString>());
        else if (value.typeId() == QMetaType::QString)
            setText(AttributedString(value.toString()));
        else
            warnWrongType(key, value);
    } else if (key == UniqueIDKey) {
        if (value.typeId() == QMetaType::QString)
            setUniqueID(value.toString());
        else
            warnWrongType(key, value);
    } else if (key == ColorKey) {
        if (value.metaType() == QMetaType::fromType<Color>())
            setColor(value.value<Color>());
        else if (value.typeId() == QMetaType::QColor)
            setColor(Color::fromQColor(value.value<QColor>()));
        else
            warnWrongType(key, value);
    } else if (!isNumber(value)) {
        warnWrongType(key, value);
    } else if (key == IsFootnoteKey) {
        setFootnote(value.toBool());
    } else if (key == FootnoteNumberKey) {
        setFootnoteNumber(value.toLongLong());
    } else if (key == IsCollapsedKey) {
        setCollapsed(value.toBool());
    }
}

void XQComment::setNilValueForKey(const QString& key)
{
    if (key == IsFootnoteKey)
        setFootnote(false);
    else if (key == FootnoteNumberKey)
        setFootnoteNumber(-1);
    else if (key == IsCollapsedKey)
        setCollapsed(false);
    else
        throw NamedException(InvalidArgumentExceptionName,
                             QStringLiteral("[<XQComment> setNilValueForKey]: could not set nil as the value "
                                            "for the key %1.")
                                 .arg(key));
}

std::shared_ptr<XQComment> XQComment::copy() const
{
    auto result = std::make_shared<XQComment>();
    for (const QString& key : mutableKeys()) {
        if (key == UniqueIDKey)
            result->setUniqueID(uniqueIDString());
        else
            result->setValueForKey(key, valueForKey(key));
    }
    return result;
}

QCborMap XQComment::encode() const
{
    registerArchivingType();
    QCborMap map;
    for (const QString& key : mutableKeys())
        map.insert(key, archiving::encode(valueForKey(key)));
    return map;
}

std::shared_ptr<XQComment> XQComment::decode(const QCborMap& map)
{
    registerArchivingType();
    auto result = std::make_shared<XQComment>();
    for (const QString& key : mutableKeys()) {
        result->setValueForKey(key, archiving::decode(map.value(key)));
    }
    result->setUniqueID(uniqueIDString());
    return result;
}

void XQComment::registerArchivingType()
{
    static std::once_flag once;
    std::call_once(once, [] {
        archiving::registerType(
            qMetaTypeId<std::shared_ptr<XQComment>>(), ArchivedClassName,
            [](const QVariant& value) {
                const XQCommentPtr comment = commentFromVariant(value);
                return comment ? comment->encode() : QCborMap();
            },
            [](const QCborMap& map) { return variantFromComment(XQComment::decode(map)); },
            // One comment on several runs must stay one comment through an archive.
            [](const QVariant& value) -> const void* { return commentFromVariant(value).get(); });
    });
}

QString XQComment::uniqueIDString() { return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper(); }

QString XQComment::defaultCommentString() { return defaultCommentString(QDateTime::currentDateTime()); }

QString XQComment::defaultCommentString(const QDateTime& when)
{
    const auto& provider = userFullNameProvider();
    const QString name = provider ? provider() : QString();
    const QString date = when.isValid() ? QLocale().toString(when, QLocale::ShortFormat) : QString();
    return QStringLiteral("%1, %2").arg(name, date);
}

void XQComment::setUserFullNameProvider(std::function<QString()> provider)
{
    userFullNameProvider() = std::move(provider);
}

QString XQComment::defaultCommentColorKey() { return UserDefaults::processName() + DefaultCommentColorKeySuffix; }

Color XQComment::defaultCommentColor()
{
    const QVariant stored = UserDefaults::standard().value(defaultCommentColorKey());
    if (stored.typeId() == QMetaType::QByteArray) {
        const QVariant color = archiving::unarchive(stored.toByteArray());
        if (color.metaType() == QMetaType::fromType<Color>())
            return color.value<Color>();
    }
    return defaultYellowCommentColor();
}

void XQComment::setDefaultCommentColor(const std::optional<Color>& color)
{
    const Color stored = color.value_or(defaultYellowCommentColor());
    UserDefaults::standard().setValue(defaultCommentColorKey(), archiving::archivedData(QVariant::fromValue(stored)));
}

XQCommentPtr commentFromVariant(const QVariant& value)
{
    if (value.metaType() != QMetaType::fromType<XQCommentPtr>())
        return nullptr;
    return value.value<XQCommentPtr>();
}

QVariant variantFromComment(const XQCommentPtr& comment)
{
    XQComment::registerArchivingType();
    return comment ? QVariant::fromValue(comment) : QVariant();
}

} // namespace qly
