#include <qlyappkit/formats/opml/XQOPMLDictionary.h>

namespace qly {

namespace {

constexpr qsizetype LinearLookupLimit = 16;

} // namespace

qsizetype XQOPMLDictionary::find(const QString& name) const
{
    if (m_index)
        return m_index->value(name, -1);
    for (qsizetype i = 0; i < m_entries.size(); ++i) {
        if (m_entries[i].first == name)
            return i;
    }
    return -1;
}

QString XQOPMLDictionary::value(const QString& name, const QString& defaultValue) const
{
    const qsizetype at = find(name);
    return at >= 0 ? m_entries[at].second : defaultValue;
}

void XQOPMLDictionary::insert(const QString& name, const QString& value)
{
    const qsizetype at = find(name);
    if (at >= 0) {
        m_entries[at].second = value;
        return;
    }
    m_entries.append({name, value});
    if (m_index) {
        // The index is shared between copies; a copy that grows gets its own.
        if (m_index.use_count() > 1)
            m_index = std::make_shared<QHash<QString, qsizetype>>(*m_index);
        m_index->insert(name, m_entries.size() - 1);
    } else if (m_entries.size() > LinearLookupLimit) {
        m_index = std::make_shared<QHash<QString, qsizetype>>();
        m_index->reserve(m_entries.size() * 2);
        for (qsizetype i = 0; i < m_entries.size(); ++i)
            m_index->insert(m_entries[i].first, i);
    }
}

QVariantMap XQOPMLDictionary::toVariantMap() const
{
    QVariantMap map;
    for (const Entry& entry : m_entries)
        map.insert(entry.first, entry.second);
    return map;
}

} // namespace qly
