#pragma once
// An immutable, ordered set of card indexes, as the corkboard keeps its selection: a new set is made
// for every change, so a set handed out (in a notification, to a delegate) never changes under its
// holder.
#include <QMetaType>
#include <QtGlobal>

#include <initializer_list>
#include <vector>

namespace qly {

class XQIndexSet {
public:
    XQIndexSet() = default;
    XQIndexSet(std::initializer_list<qsizetype> indexes);
    explicit XQIndexSet(std::vector<qsizetype> indexes);
    /// The indexes first … last inclusive (empty when last < first).
    static XQIndexSet range(qsizetype first, qsizetype last);

    bool isEmpty() const { return m_indexes.empty(); }
    qsizetype count() const { return qsizetype(m_indexes.size()); }
    bool contains(qsizetype index) const;
    /// The smallest index; -1 when empty.
    qsizetype firstIndex() const { return m_indexes.empty() ? -1 : m_indexes.front(); }
    /// The largest index; -1 when empty.
    qsizetype lastIndex() const { return m_indexes.empty() ? -1 : m_indexes.back(); }

    XQIndexSet unitedWith(const XQIndexSet& other) const;
    XQIndexSet minus(const XQIndexSet& other) const;
    /// The same set without indexes at or above limit.
    XQIndexSet below(qsizetype limit) const;

    std::vector<qsizetype>::const_iterator begin() const { return m_indexes.begin(); }
    std::vector<qsizetype>::const_iterator end() const { return m_indexes.end(); }
    const std::vector<qsizetype>& indexes() const { return m_indexes; }

    friend bool operator==(const XQIndexSet&, const XQIndexSet&) = default;

private:
    std::vector<qsizetype> m_indexes; // ascending, no duplicates
};

} // namespace qly

Q_DECLARE_METATYPE(qly::XQIndexSet)
