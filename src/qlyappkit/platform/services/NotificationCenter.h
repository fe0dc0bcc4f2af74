#pragma once
// NotificationCenter: named notifications from a sender, delivered synchronously to observers that
// listen for one sender or for any.
#include <QHash>
#include <QString>
#include <QVariantMap>
#include <functional>
#include <memory>
#include <vector>

namespace qly {

struct Notification {
    QString name;
    const void* object = nullptr; ///< the sender, compared by identity
    QVariantMap userInfo;
};

class NotificationCenter {
public:
    using Token = quint64;
    using Handler = std::function<void(const Notification&)>;

    static NotificationCenter& defaultCenter();

    /// Observes `name` (every name when empty) from `sender` (any sender when null). Returns a token
    /// for removeObserver().
    Token addObserver(const QString& name, const void* sender, Handler handler);
    void removeObserver(Token token);
    /// Delivers to every matching observer, in registration order, before returning. Observers added
    /// during delivery hear the next post; observers removed during delivery are skipped.
    void post(const QString& name, const void* object, const QVariantMap& userInfo = {});

private:
    // Shared with deliveries in progress, so that a handler that removes its own observer keeps
    // running on a live object; `removed` tells those deliveries to skip it.
    struct Observer {
        Handler handler;
        bool removed = false;
    };
    struct Entry {
        Token token;
        QString name;
        const void* sender;
        std::shared_ptr<Observer> observer;
    };
    // Observers by the name they listen for (the empty name: every name), each list in registration
    // order, so a post looks only at the observers that can match it.
    QHash<QString, std::vector<Entry>> m_byName;
    QHash<Token, QString> m_nameOfToken;
    Token m_nextToken = 1;
};

/// Removes its observation when it goes out of scope.
class ScopedObserver {
public:
    ScopedObserver() = default;
    ScopedObserver(const QString& name, const void* sender, NotificationCenter::Handler handler,
                   NotificationCenter& center = NotificationCenter::defaultCenter());
    ~ScopedObserver() { reset(); }
    ScopedObserver(ScopedObserver&& other) noexcept : m_center(other.m_center), m_token(other.m_token)
    {
        other.m_token = 0;
    }
    ScopedObserver& operator=(ScopedObserver&& other) noexcept;
    ScopedObserver(const ScopedObserver&) = delete;
    ScopedObserver& operator=(const ScopedObserver&) = delete;
    void reset();

private:
    NotificationCenter* m_center = nullptr;
    NotificationCenter::Token m_token = 0;
};

} // namespace qly
