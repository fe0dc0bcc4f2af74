#include <qlyappkit/corkboard/XQIndexSet.h>

#include <algorithm>
#include <iterator>

namespace qly {

XQIndexSet::XQIndexSet(std::initializer_list<qsizetype> indexes) : XQIndexSet(std::vector<qsizetype>(indexes)) { }

XQIndexSet::XQIndexSet(std::vector<qsizetype> indexes) : m_indexes(std::move(indexes))
{
    std::sort(m_indexes.begin(), m_indexes.end());
    m_indexes.erase(std::unique(m_indexes.begin(), m_indexes.end()), m_indexes.end());
}

XQIndexSet XQIndexSet::range(qsizetype first, qsizetype last)
{
    XQIndexSet set;
    if (last >= first) {
        set.m_indexes.reserve(size_t(last - first + 1));
        for (qsizetype i = first; i <= last; ++i)
            set.m_indexes.push_back(i);
    }
    return set;
}

bool XQIndexSet::contains(qsizetype index) const
{
    return std::binary_search(m_indexes.begin(), m_indexes.end(), index);
}

XQIndexSet XQIndexSet::unitedWith(const XQIndexSet& other) const
{
    XQIndexSet set;
    set.m_indexes.reserve(m_indexes.size() + other.m_indexes.size());
    std::set_union(m_indexes.begin(), m_indexes.end(), other.m_indexes.begin(), other.m_indexes.end(),
                   std::back_inserter(set.m_indexes));
    return set;
}

XQIndexSet XQIndexSet::minus(const XQIndexSet& other) const
{
    XQIndexSet set;
    std::set_difference(m_indexes.begin(), m_indexes.end(), other.m_indexes.begin(), other.m_indexes.end(),
                        std::back_inserter(set.m_indexes));
    return set;
}

XQIndexSet XQIndexSet::below(qsizetype limit) const
{
    XQIndexSet set;
    set.m_indexes.assign(m_indexes.begin(), std::lower_bound(m_indexes.begin(), m_indexes.end(), limit));
    return set;
}

} // namespace qly
