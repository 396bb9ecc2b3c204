#include "utils/ParameterList.h"

void CParameterList::reserve(std::size_t room) {
    if (room <= m_nCapacity) return;
    auto* const entries = new CParameter*[room];
    std::copy(begin(), end(), entries);
    if (!m_fLent) delete[] m_pEntries;
    m_pEntries = entries;
    m_nCapacity = room;
    m_fLent = false;
}

void CParameterList::assign(const_iterator first, const_iterator last) {
    reserve(static_cast<std::size_t>(last - first));
    m_nSize = static_cast<std::size_t>(std::copy(first, last, begin()) - begin());
}

CParameterList::iterator CParameterList::insert(const_iterator before, CParameter* entry) {
    const auto at = before - begin();
    push_back(entry);
    return std::rotate(begin() + at, end() - 1, end()) - 1;
}

CParameterList::iterator CParameterList::erase(const_iterator first, const_iterator last) {
    iterator const at = begin() + (first - begin());
    m_nSize = static_cast<std::size_t>(std::copy(last, std::as_const(*this).end(), at) - begin());
    return at;
}
