#include <qlyappkit/platform/services/NotificationCenter.h>

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
    m_byName[name].push_back(Entry{token, name, sender, std::make_shared<Observer>(Observer{std::move(handler)})});
    m_nameOfToken.insert(token, name);
    return token;
}

void NotificationCenter::removeObserver(Token token)
{
    auto nameIt = m_nameOfToken.find(token);
    if (nameIt == m_nameOfToken.end())
        return;
    auto listIt = m_byName.find(nameIt.value());
    m_nameOfToken.erase(nameIt);
    if (listIt == m_byName.end())
        return;
    std::vector<Entry>& list = listIt.value();
    auto it = std::lower_bound(list.begin(), list.end(), token, [](const Entry& e, Token t) { return e.token < t; });
    if (it != list.end() && it->token == token) {
        // Not reset: the handler may be the one running now. A delivery in progress holds its own
        // reference and skips it.
        it->observer->removed = true;
        list.erase(it);
    }
    if (list.empty())
        m_byName.erase(listIt);
}

void NotificationCenter::post(const QString& name, const void* object, const QVariantMap& userInfo)
{
    static const std::vector<Entry> none;
    auto named = m_byName.constFind(name);
    auto any = name.isEmpty() ? m_byName.constEnd() : m_byName.constFind(QString());
    const std::vector<Entry>& a = named == m_byName.constEnd() ? none : named.value();
    const std::vector<Entry>& b = any == m_byName.constEnd() ? none : any.value();
    if (a.empty() && b.empty())
        return;
    // Merge the two lists by registration order.
    std::vector<std::shared_ptr<Observer>> targets;
    size_t i = 0, j = 0;
    while (i < a.size() || j < b.size()) {
        const Entry& e = (j >= b.size() || (i < a.size() && a[i].token < b[j].token)) ? a[i++] : b[j++];
        if (!e.sender || e.sender == object)
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
