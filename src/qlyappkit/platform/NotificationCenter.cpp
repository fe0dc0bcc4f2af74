#include <qlyappkit/platform/NotificationCenter.h>

#include <algorithm>

namespace qly {

NotificationCenter& NotificationCenter::defaultCenter()
{
    static NotificationCenter center;
    return center;
}

NotificationCenter::Token NotificationCenter::addObserver(const QString& name, const void* sender, Handler handler)
{
    const Token token = m_nextToken++;
    m_entries.push_back(Entry{token, name, sender, std::make_shared<Observer>(Observer{std::move(handler)})});
    return token;
}

void NotificationCenter::removeObserver(Token token)
{
    auto it = std::find_if(m_entries.begin(), m_entries.end(), [token](const Entry& e) { return e.token == token; });
    if (it != m_entries.end()) {
        // Not reset: the handler may be the one running now. A delivery in progress holds its own
        // reference and skips it.
        it->observer->removed = true;
        m_entries.erase(it);
    }
}

void NotificationCenter::post(const QString& name, const void* object, const QVariantMap& userInfo)
{
    std::vector<std::shared_ptr<Observer>> targets;
    for (const Entry& e : m_entries) {
        if ((e.name.isEmpty() || e.name == name) && (!e.sender || e.sender == object))
            targets.push_back(e.observer);
    }
    if (targets.empty())
        return;
    const Notification note{name, object, userInfo};
    for (const auto& observer : targets) {
        if (!observer->removed && observer->handler)
            observer->handler(note);
    }
}

ScopedObserver::ScopedObserver(const QString& name, const void* sender, NotificationCenter::Handler handler,
                               NotificationCenter& center)
    : m_center(&center), m_token(center.addObserver(name, sender, std::move(handler)))
{
}

ScopedObserver& ScopedObserver::operator=(ScopedObserver&& other) noexcept
{
    if (this != &other) {
        reset();
        m_center = other.m_center;
        m_token = other.m_token;
        other.m_token = 0;
    }
    return *this;
}

void ScopedObserver::reset()
{
    if (m_center && m_token)
        m_center->removeObserver(m_token);
    m_token = 0;
}

} // namespace qly
