#include <qlyappkit/platform/services/KeyedArchiver.h>
#include <qlyappkit/platform/services/KeyedArchiver_p.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>

#include <QCborArray>
#include <QCborStreamReader>
#include <QDateTime>
#include <QHash>
#include <QPointF>
#include <QReadWriteLock>
#include <QRectF>
#include <QSet>
#include <QSizeF>
#include <QUrl>

#include <limits>

namespace qly::archiving {

namespace {

const QString kClassKey = QStringLiteral("$class");
const QString kIdKey = QStringLiteral("$id");
const QString kRefKey = QStringLiteral("$ref");
const QString kItemsKey = QStringLiteral("items");

// Class names of the Qt value types the archiver writes itself.
const QString kDictionaryClass = QStringLiteral("Dictionary"); // a plain map that has its own "$class"
const QString kStringListClass = QStringLiteral("StringList");
const QString kSizeClass = QStringLiteral("Size");
const QString kPointClass = QStringLiteral("Point");
const QString kRectClass = QStringLiteral("Rect");

struct TypeEntry {
    int metaTypeId = 0;
    QString className;
    Encoder encoder;
    Decoder decoder;
    Identity identity;
};

// The registered types. Filled with the platform's own types when first used, so that they are there
// whatever the link order; other modules add theirs through registerType().
class Registry {
public:
    Registry()
    {
        detail::registerPlatformTypes([this](int id, const QString& name, Encoder e, Decoder d, Identity i) {
            add(TypeEntry{id, name, std::move(e), std::move(d), std::move(i)});
        });
    }

    void add(TypeEntry entry)
    {
        QWriteLocker lock(&m_lock);
        // Replacing a registration must not leave the old name or type pointing at it.
        if (auto old = m_byType.constFind(entry.metaTypeId); old != m_byType.constEnd())
            m_byName.remove(old->className);
        if (auto old = m_byName.constFind(entry.className); old != m_byName.constEnd())
            m_byType.remove(old->metaTypeId);
        m_byType.insert(entry.metaTypeId, entry);
        m_byName.insert(entry.className, entry);
    }
    std::optional<TypeEntry> byType(int id) const
    {
        QReadLocker lock(&m_lock);
        auto it = m_byType.constFind(id);
        return it == m_byType.constEnd() ? std::nullopt : std::optional<TypeEntry>(*it);
    }
    std::optional<TypeEntry> byName(const QString& name) const
    {
        QReadLocker lock(&m_lock);
        auto it = m_byName.constFind(name);
        return it == m_byName.constEnd() ? std::nullopt : std::optional<TypeEntry>(*it);
    }

private:
    mutable QReadWriteLock m_lock;
    QHash<int, TypeEntry> m_byType;
    QHash<QString, TypeEntry> m_byName;
};

Registry& registry()
{
    static Registry instance;
    return instance;
}

// The state of one archive being written or read: shared objects and tables by number. Registered
// coders call encode()/decode() for nested values, which join the session of the outermost call.
struct Session {
    // writing
    QHash<const void*, qint64> objectNumbers;
    QHash<const TextTable*, qint64> tableNumbers;
    qint64 nextNumber = 1;
    // reading
    QCborValue root;
    QHash<qint64, QVariant> objects;
    QSet<qint64> objectsInProgress;
    QHash<qint64, std::shared_ptr<TextTable>> tables;
    std::optional<QHash<qint64, QCborMap>> definitions; // built when a reference comes before its object
};

thread_local Session* t_session = nullptr;

class SessionScope {
public:
    SessionScope() : m_owner(t_session == nullptr)
    {
        if (m_owner)
            t_session = &m_own;
    }
    ~SessionScope()
    {
        if (m_owner)
            t_session = nullptr;
    }
    SessionScope(const SessionScope&) = delete;
    SessionScope& operator=(const SessionScope&) = delete;
    bool isOutermost() const { return m_owner; }
    Session& session() const { return *t_session; }

private:
    Session m_own;
    bool m_owner;
};

QCborValue encodeValue(const QVariant& value, Session& session);
QVariant decodeValue(const QCborValue& value, Session& session);

QCborMap classMap(const QString& className)
{
    QCborMap map;
    map.insert(kClassKey, className);
    return map;
}

QCborValue encodeRegistered(const QVariant& value, const TypeEntry& entry, Session& session)
{
    QCborMap map = classMap(entry.className);
    if (entry.identity) {
        if (const void* object = entry.identity(value)) {
            if (auto it = session.objectNumbers.constFind(object); it != session.objectNumbers.constEnd()) {
                map.insert(kRefKey, *it);
                return map;
            }
            // Numbered before its fields are written, so an object that refers to itself ends.
            const qint64 number = session.nextNumber++;
            session.objectNumbers.insert(object, number);
            map.insert(kIdKey, number);
        }
    }
    const QCborMap fields = entry.encoder(value);
    for (auto it = fields.begin(); it != fields.end(); ++it) {
        if (it.key() != kClassKey && it.key() != kIdKey && it.key() != kRefKey)
            map.insert(it.key(), it.value());
    }
    return map;
}

QCborValue encodeValue(const QVariant& value, Session& session)
{
    switch (value.typeId()) {
    case QMetaType::UnknownType:
        return QCborValue(QCborValue::Null);
    case QMetaType::Bool:
        return value.toBool();
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::SChar:
    case QMetaType::UChar:
        return value.toLongLong();
    case QMetaType::ULong:
    case QMetaType::ULongLong: {
        const qulonglong v = value.toULongLong();
        if (v <= qulonglong(std::numeric_limits<qint64>::max()))
            return qint64(v);
        return double(v);
    }
    case QMetaType::Double:
    case QMetaType::Float:
        return value.toDouble();
    case QMetaType::QString:
        return value.toString();
    case QMetaType::QByteArray:
        return value.toByteArray();
    case QMetaType::QUrl:
        return QCborValue(value.toUrl());
    case QMetaType::QDateTime:
        return QCborValue(value.toDateTime());
    case QMetaType::QVariantMap: {
        const QVariantMap source = value.toMap();
        QCborMap map;
        for (auto it = source.begin(); it != source.end(); ++it)
            map.insert(it.key(), encodeValue(it.value(), session));
        if (!map.contains(kClassKey))
            return map;
        QCborMap wrapper = classMap(kDictionaryClass);
        wrapper.insert(kItemsKey, map);
        return wrapper;
    }
    case QMetaType::QVariantList: {
        QCborArray array;
        for (const QVariant& item : value.toList())
            array.append(encodeValue(item, session));
        return array;
    }
    case QMetaType::QStringList: {
        QCborMap map = classMap(kStringListClass);
        map.insert(kItemsKey, QCborArray::fromStringList(value.toStringList()));
        return map;
    }
    case QMetaType::QSizeF: {
        const QSizeF s = value.toSizeF();
        QCborMap map = classMap(kSizeClass);
        map.insert(QStringLiteral("width"), s.width());
        map.insert(QStringLiteral("height"), s.height());
        return map;
    }
    case QMetaType::QPointF: {
        const QPointF p = value.toPointF();
        QCborMap map = classMap(kPointClass);
        map.insert(QStringLiteral("x"), p.x());
        map.insert(QStringLiteral("y"), p.y());
        return map;
    }
    case QMetaType::QRectF: {
        const QRectF r = value.toRectF();
        QCborMap map = classMap(kRectClass);
        map.insert(QStringLiteral("x"), r.x());
        map.insert(QStringLiteral("y"), r.y());
        map.insert(QStringLiteral("width"), r.width());
        map.insert(QStringLiteral("height"), r.height());
        return map;
    }
    default:
        break;
    }
    if (const std::optional<TypeEntry> entry = registry().byType(value.typeId()))
        return encodeRegistered(value, *entry, session);
    return QCborValue(QCborValue::Undefined);
}

bool readDouble(const QCborMap& map, const QString& key, double* out)
{
    const QCborValue v = map.value(key);
    if (!v.isDouble() && !v.isInteger())
        return false;
    *out = v.toDouble();
    return true;
}

void collectDefinitions(const QCborValue& value, QHash<qint64, QCborMap>& out)
{
    if (value.isArray()) {
        for (const QCborValue& item : value.toArray())
            collectDefinitions(item, out);
    } else if (value.isMap()) {
        const QCborMap map = value.toMap();
        if (map.value(kIdKey).isInteger() && map.value(kClassKey).isString())
            out.insert(map.value(kIdKey).toInteger(), map);
        for (auto it = map.begin(); it != map.end(); ++it)
            collectDefinitions(it.value(), out);
    }
}

QVariant decodeRegistered(const QCborMap& map, const TypeEntry& entry, Session& session)
{
    const QCborValue ref = map.value(kRefKey);
    const QCborValue id = map.value(kIdKey);
    if (ref.isUndefined() && id.isUndefined())
        return entry.decoder(map);
    if (!ref.isUndefined() && !ref.isInteger())
        return {};
    if (!id.isUndefined() && !id.isInteger())
        return {};
    const qint64 number = ref.isInteger() ? ref.toInteger() : id.toInteger();
    if (auto it = session.objects.constFind(number); it != session.objects.constEnd())
        return *it;
    if (session.objectsInProgress.contains(number))
        return {}; // a cycle: the object is still being read

    QCborMap definition = map;
    if (ref.isInteger()) {
        // A reference read before its object (coders need not read fields in the order they wrote them).
        if (!session.definitions) {
            session.definitions.emplace();
            collectDefinitions(session.root, *session.definitions);
        }
        auto def = session.definitions->constFind(number);
        if (def == session.definitions->constEnd() || def->value(kClassKey) != QCborValue(entry.className))
            return {};
        definition = *def;
    }
    session.objectsInProgress.insert(number);
    const QVariant result = entry.decoder(definition);
    session.objectsInProgress.remove(number);
    if (result.isValid())
        session.objects.insert(number, result);
    return result;
}

QVariant decodeClass(const QString& className, const QCborMap& map, Session& session)
{
    if (className == kDictionaryClass) {
        const QCborValue items = map.value(kItemsKey);
        if (!items.isMap())
            return {};
        QVariantMap result;
        const QCborMap m = items.toMap();
        for (auto it = m.begin(); it != m.end(); ++it) {
            if (!it.key().isString())
                return {};
            result.insert(it.key().toString(), decodeValue(it.value(), session));
        }
        return result;
    }
    if (className == kStringListClass) {
        const QCborValue items = map.value(kItemsKey);
        if (!items.isArray())
            return {};
        QStringList result;
        for (const QCborValue& item : items.toArray()) {
            if (!item.isString())
                return {};
            result.append(item.toString());
        }
        return result;
    }
    if (className == kSizeClass) {
        double w, h;
        if (!readDouble(map, QStringLiteral("width"), &w) || !readDouble(map, QStringLiteral("height"), &h))
            return {};
        return QSizeF(w, h);
    }
    if (className == kPointClass) {
        double x, y;
        if (!readDouble(map, QStringLiteral("x"), &x) || !readDouble(map, QStringLiteral("y"), &y))
            return {};
        return QPointF(x, y);
    }
    if (className == kRectClass) {
        double x, y, w, h;
        if (!readDouble(map, QStringLiteral("x"), &x) || !readDouble(map, QStringLiteral("y"), &y)
            || !readDouble(map, QStringLiteral("width"), &w) || !readDouble(map, QStringLiteral("height"), &h))
            return {};
        return QRectF(x, y, w, h);
    }
    if (const std::optional<TypeEntry> entry = registry().byName(className))
        return decodeRegistered(map, *entry, session);
    return {};
}

QVariant decodeValue(const QCborValue& value, Session& session)
{
    switch (value.type()) {
    case QCborValue::Integer: {
        const qint64 v = value.toInteger();
        if (v >= std::numeric_limits<int>::min() && v <= std::numeric_limits<int>::max())
            return int(v);
        return qlonglong(v);
    }
    case QCborValue::Double:
        return value.toDouble();
    case QCborValue::True:
        return true;
    case QCborValue::False:
        return false;
    case QCborValue::String:
        return value.toString();
    case QCborValue::ByteArray:
        return value.toByteArray();
    case QCborValue::Url:
        return value.toUrl();
    case QCborValue::DateTime:
        return value.toDateTime();
    case QCborValue::Array: {
        QVariantList list;
        const QCborArray array = value.toArray();
        list.reserve(array.size());
        for (const QCborValue& item : array)
            list.append(decodeValue(item, session));
        return list;
    }
    case QCborValue::Map: {
        const QCborMap map = value.toMap();
        const QCborValue className = map.value(kClassKey);
        if (className.isString())
            return decodeClass(className.toString(), map, session);
        if (!className.isUndefined())
            return {};
        QVariantMap result;
        for (auto it = map.begin(); it != map.end(); ++it) {
            if (!it.key().isString())
                return {};
            result.insert(it.key().toString(), decodeValue(it.value(), session));
        }
        return result;
    }
    default: // null, undefined, other simple types and unknown tags
        return {};
    }
}

} // namespace

QCborValue encode(const QVariant& value)
{
    SessionScope scope;
    return encodeValue(value, scope.session());
}

QVariant decode(const QCborValue& value)
{
    SessionScope scope;
    if (scope.isOutermost())
        scope.session().root = value;
    return decodeValue(value, scope.session());
}

QByteArray archivedData(const QVariant& value) { return encode(value).toCbor(); }

QVariant unarchive(const QByteArray& data)
{
    QCborStreamReader reader(data);
    const QCborValue value = QCborValue::fromCbor(reader);
    // Anything left after the one top-level value means the data is not what archivedData() wrote.
    if (reader.lastError() != QCborError::NoError || reader.currentOffset() != data.size())
        return {};
    return decode(value);
}

QVariant deepCopy(const QVariant& value) { return decode(encode(value)); }

void registerType(int metaTypeId, const QString& className, Encoder encoder, Decoder decoder, Identity identity)
{
    registry().add(TypeEntry{metaTypeId, className, std::move(encoder), std::move(decoder), std::move(identity)});
}

namespace detail {

qint64 tableNumber(const TextTable* table)
{
    Session* session = t_session;
    if (!session)
        return 0;
    auto it = session->tableNumbers.constFind(table);
    if (it != session->tableNumbers.constEnd())
        return *it;
    const qint64 number = session->nextNumber++;
    session->tableNumbers.insert(table, number);
    return number;
}

std::shared_ptr<TextTable> tableForNumber(qint64 number, int columns)
{
    Session* session = t_session;
    if (session) {
        if (auto it = session->tables.constFind(number); it != session->tables.constEnd())
            return *it;
    }
    auto table = std::make_shared<TextTable>(TextTable{columns});
    if (session)
        session->tables.insert(number, table);
    return table;
}

} // namespace detail

} // namespace qly::archiving
