#include <qlyappkit/platform/services/UserDefaults.h>
#include <qlyappkit/platform/strings/NumberParsing.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSettings>

namespace qly {

namespace {
QString& isolatedDirectory()
{
    static QString dir;
    return dir;
}
} // namespace

UserDefaults::UserDefaults()
{
    const QString dir = isolatedDirectory();
    if (dir.isEmpty()) {
        m_settings = std::make_unique<QSettings>(QSettings::IniFormat, QSettings::UserScope,
                                                 QStringLiteral("QlyAppKit"), processName());
    } else {
        QDir().mkpath(dir);
        m_settings = std::make_unique<QSettings>(dir + QStringLiteral("/defaults.ini"), QSettings::IniFormat);
    }
}

UserDefaults::~UserDefaults() = default;

UserDefaults& UserDefaults::standard()
{
    static std::unique_ptr<UserDefaults> instance;
    static QString instanceDir;
    if (!instance || instanceDir != isolatedDirectory()) {
        instance.reset(new UserDefaults());
        instanceDir = isolatedDirectory();
    }
    return *instance;
}

void UserDefaults::useIsolatedStorage(const QString& directory) { isolatedDirectory() = directory; }

QString UserDefaults::processName()
{
    QString name = QCoreApplication::applicationName();
    if (name.isEmpty() && QCoreApplication::instance())
        name = QFileInfo(QCoreApplication::applicationFilePath()).fileName();
    if (name.isEmpty())
        name = QStringLiteral("QlyAppKit");
    return name;
}

QVariant UserDefaults::value(const QString& key) const
{
    const QVariant v = m_settings->value(key);
    return v.isValid() ? v : m_registered.value(key);
}

void UserDefaults::setValue(const QString& key, const QVariant& value)
{
    if (!value.isValid())
        m_settings->remove(key);
    else
        m_settings->setValue(key, value);
}

void UserDefaults::removeValue(const QString& key) { m_settings->remove(key); }

bool UserDefaults::contains(const QString& key) const
{
    return m_settings->contains(key) || m_registered.contains(key);
}

void UserDefaults::registerDefaults(const QVariantMap& defaults)
{
    for (auto it = defaults.begin(); it != defaults.end(); ++it)
        m_registered.insert(it.key(), it.value());
}

bool UserDefaults::boolForKey(const QString& key) const
{
    const QVariant v = value(key);
    // Stored texts ("true", "YES", "1", and every value read back from the settings file) are read
    // the way a string's truth value is.
    if (v.typeId() == QMetaType::QString)
        return stringBoolValue(v.toString());
    return v.toBool();
}

qint64 UserDefaults::integerForKey(const QString& key) const { return value(key).toLongLong(); }
double UserDefaults::doubleForKey(const QString& key) const { return value(key).toDouble(); }
QString UserDefaults::stringForKey(const QString& key) const { return value(key).toString(); }
QByteArray UserDefaults::dataForKey(const QString& key) const { return value(key).toByteArray(); }

} // namespace qly
