#pragma once
// UserDefaults: the user's persistent preferences (QSettings), with registered fallbacks and an
// isolated scope for tests.
#include <QByteArray>
#include <QString>
#include <QVariant>
#include <QVariantMap>
#include <memory>

class QSettings;

namespace qly {

class UserDefaults {
public:
    /// The process-wide defaults (the application's own settings scope).
    static UserDefaults& standard();
    /// Points standard() at a private INI file in `directory` (tests call this before anything reads
    /// the defaults); an empty directory returns to the application's scope.
    static void useIsolatedStorage(const QString& directory);

    /// The stored value, else the registered default, else an invalid QVariant.
    QVariant value(const QString& key) const;
    void setValue(const QString& key, const QVariant& value);
    void removeValue(const QString& key);
    bool contains(const QString& key) const;
    /// Fallback values for keys that have none stored.
    void registerDefaults(const QVariantMap& defaults);

    bool boolForKey(const QString& key) const;
    qint64 integerForKey(const QString& key) const;
    double doubleForKey(const QString& key) const;
    QString stringForKey(const QString& key) const;
    QByteArray dataForKey(const QString& key) const;

    /// The running process's name, used to scope some keys ("<process>.Key").
    static QString processName();

    ~UserDefaults();

private:
    UserDefaults();
    std::unique_ptr<QSettings> m_settings;
    QVariantMap m_registered;
};

} // namespace qly
