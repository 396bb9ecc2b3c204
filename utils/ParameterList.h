#pragma once

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <utility>

class CParameter;

/// The parameters of a block, in order: what a vector of pointers offers. It does not destroy what
/// it points at.
class CParameterList {
public:
    using value_type = CParameter*;             ///< What it holds; may be null.
    using iterator = CParameter**;              ///< A place in it.
    using const_iterator = CParameter* const*;  ///< A place in one that is only read.
    using size_type = std::size_t;              ///< Numbers of entries.

    /// Nothing.
    CParameterList() = default;

    /// The entries given.
    CParameterList(std::initializer_list<CParameter*> entries) {
        assign(entries.begin(), entries.end());
    }

    /// The same entries.
    CParameterList(CParameterList const& other) { assign(other.begin(), other.end()); }

    /// The same entries as `other`.
    CParameterList& operator=(CParameterList const& other) {
        if (this != &other) assign(other.begin(), other.end());
        return *this;
    }

    ~CParameterList() {
        if (!m_fLent) delete[] m_pEntries;
    }

    /// \name As in a vector
    /// @{
    iterator begin() { return m_pEntries; }
    iterator end() { return m_pEntries + m_nSize; }
    const_iterator begin() const { return m_pEntries; }
    const_iterator end() const { return m_pEntries + m_nSize; }
    auto rbegin() { return std::make_reverse_iterator(end()); }
    auto rend() { return std::make_reverse_iterator(begin()); }
    auto rbegin() const { return std::make_reverse_iterator(end()); }
    auto rend() const { return std::make_reverse_iterator(begin()); }
    std::size_t size() const { return m_nSize; }
    std::size_t capacity() const { return m_nCapacity; }
    bool empty() const { return m_nSize == 0; }
    CParameter*& operator[](std::size_t at) { return m_pEntries[at]; }
    CParameter* operator[](std::size_t at) const { return m_pEntries[at]; }
    CParameter*& front() { return *begin(); }
    CParameter* front() const { return *begin(); }
    CParameter*& back() { return end()[-1]; }
    CParameter* back() const { return end()[-1]; }
    void clear() { m_nSize = 0; }
    void pop_back() { --m_nSize; }
    void push_back(CParameter* entry) {
        if (m_nSize == m_nCapacity) reserve(std::max<std::size_t>(8, m_nCapacity * 2));
        m_pEntries[m_nSize++] = entry;
    }
    void reserve(std::size_t room);
    void assign(const_iterator first, const_iterator last);
    iterator insert(const_iterator before, CParameter* entry);
    iterator erase(const_iterator at) { return erase(at, at + 1); }
    iterator erase(const_iterator first, const_iterator last);
    friend bool operator==(CParameterList const& left, CParameterList const& right) {
        return std::equal(left.begin(), left.end(), right.begin(), right.end());
    }
    /// @}

private:
    friend class CParameterPool;

    // Memory that is not the list's to free and lives as long as the list.
    void Lend(CParameter** room, std::size_t capacity) {
        m_pEntries = room;
        m_nCapacity = capacity;
        m_fLent = true;
    }

    CParameter** m_pEntries = nullptr;
    std::size_t m_nSize = 0;
    std::size_t m_nCapacity = 0;
    bool m_fLent = false;
};
