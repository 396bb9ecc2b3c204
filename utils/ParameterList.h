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
    iterator begin() { return m_pEntries; }                            ///< The first place.
    iterator end() { return m_pEntries + m_nSize; }                    ///< Behind the last one.
    const_iterator begin() const { return m_pEntries; }                ///< The first place.
    const_iterator end() const { return m_pEntries + m_nSize; }        ///< Behind the last one.
    auto rbegin() const { return std::make_reverse_iterator(end()); }  ///< The last entry.
    auto rend() const { return std::make_reverse_iterator(begin()); }  ///< Before the first one.
    std::size_t size() const { return m_nSize; }          ///< How many entries there are.
    std::size_t capacity() const { return m_nCapacity; }  ///< How many there is room for.
    bool empty() const { return m_nSize == 0; }           ///< Whether there is none.
    CParameter*& operator[](std::size_t at) { return m_pEntries[at]; }       ///< One of them.
    CParameter* operator[](std::size_t at) const { return m_pEntries[at]; }  ///< One of them.
    CParameter*& front() { return *begin(); }                                ///< The first entry.
    CParameter* front() const { return *begin(); }                           ///< The first entry.
    CParameter*& back() { return end()[-1]; }                                ///< The last entry.
    CParameter* back() const { return end()[-1]; }                           ///< The last entry.
    void clear() { m_nSize = 0; }                                            ///< Leaves no entry.
    void pop_back() { --m_nSize; }  ///< Takes the last entry out.
    /// Appends an entry.
    void push_back(CParameter* entry) {
        if (m_nSize == m_nCapacity) reserve(std::max<std::size_t>(8, m_nCapacity * 2));
        m_pEntries[m_nSize++] = entry;
    }
    void reserve(std::size_t room);  ///< Makes room for so many entries in all.
    void assign(const_iterator first, const_iterator last);     ///< Takes over these entries alone.
    iterator insert(const_iterator before, CParameter* entry);  ///< Puts one entry in.
    iterator erase(const_iterator at) { return erase(at, at + 1); }  ///< Takes one entry out.
    iterator erase(const_iterator first, const_iterator last);       ///< Takes these entries out.
    /// Whether both have the same entries.
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
