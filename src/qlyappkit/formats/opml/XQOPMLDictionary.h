#pragma once
// A small ordered dictionary of texts, as OPML heads and outline items hold them.
#include <QHash>
#include <QList>
#include <QString>
#include <QVariantMap>

#include <memory>
#include <utility>

namespace qly {

/// Name → text pairs in the order the names first appeared. A name is held once: inserting it again
/// replaces its value in place. Lookups are linear for the few entries an element usually has and go
/// through an index once there are many, so hostile input with thousands of names stays linear.
class XQOPMLDictionary {
public:
    using Entry = std::pair<QString, QString>;

    qsizetype size() const { return m_entries.size(); }
    bool isEmpty() const { return m_entries.isEmpty(); }
    bool contains(const QString& name) const { return find(name) >= 0; }
    /// The value of name; defaultValue when there is none.
    QString value(const QString& name, const QString& defaultValue = {}) const;
    /// The entries in first-appearance order.
    const QList<Entry>& entries() const { return m_entries; }
    /// Sets name to value, replacing an earlier value of the same name.
    void insert(const QString& name, const QString& value);
    /// The entries as a plain map (sorted by name).
    QVariantMap toVariantMap() const;

    bool operator==(const XQOPMLDictionary& other) const { return m_entries == other.m_entries; }

private:
    qsizetype find(const QString& name) const;

    QList<Entry> m_entries;
    std::shared_ptr<QHash<QString, qsizetype>> m_index; // built once the entries pass a handful
};

} // namespace qly
