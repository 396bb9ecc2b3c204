#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

/// The different names of a tree in the order of their first use, and how often each occurs.
///
/// The texts stay where they are: they must outlive the table. The empty name is always the first.
/// Names are hashed with a seed that nobody knows beforehand, so that a file cannot bring names
/// made to collide.
class CNameTable {
public:
    /// One name.
    struct CName {
        std::string_view text;
        std::uint32_t nHash = 0;
        std::uint32_t nCount = 0;
        std::uint32_t nFollower = 0;  ///< The name that came after it the last time.
    };

    /// A table with a seed of its own.
    CNameTable();

    /// A table with a known seed.
    explicit CNameTable(std::uint64_t seed);

    /// Counts one more use of a name and returns its index. Names mostly come in the same order
    /// again and again: the one that came next the last time is tried before any other.
    std::uint32_t Add(std::string_view name) {
        const std::uint32_t guess = m_names[m_nLast].nFollower;
        const std::uint32_t index = IsSame(m_names[guess].text, name) ? guess : Find(name);
        m_names[m_nLast].nFollower = index;
        ++m_names[index].nCount;
        return m_nLast = index;
    }

    std::vector<CName> const& Names() const { return m_names; }

    /// What a table of that seed takes a name's place from.
    static std::uint32_t Hash(std::string_view name, std::uint64_t seed);

private:
    template <typename Number>
    static std::uint64_t WordAt(const char* text) {
        Number word;
        std::memcpy(&word, text, sizeof word);
        return word;
    }

    // Short names are compared without a call: by words that overlap.
    static bool IsSame(std::string_view left, std::string_view right) {
        const std::size_t size = left.size();
        if (size != right.size()) return false;
        if (size >= 4 && size <= 8) return AreSame<std::uint32_t>(left, right);
        if (size > 8 && size <= 16) return AreSame<std::uint64_t>(left, right);
        if (size < 4)
            return size == 0 || (left[0] == right[0] && left[size / 2] == right[size / 2] &&
                                 left[size - 1] == right[size - 1]);
        return left == right;
    }

    template <typename Number>
    static bool AreSame(std::string_view left, std::string_view right) {
        const std::size_t last = left.size() - sizeof(Number);
        return WordAt<Number>(left.data()) == WordAt<Number>(right.data()) &&
               WordAt<Number>(left.data() + last) == WordAt<Number>(right.data() + last);
    }

    std::uint32_t Find(std::string_view name);
    std::uint32_t& SlotFor(std::string_view name, std::uint32_t hash);
    void Grow();

    std::uint64_t m_nSeed;
    std::vector<CName> m_names{1};
    std::vector<std::uint32_t> m_slots;  // by hash: indices of names, 0 where there is none
    std::uint32_t m_nLast = 0;
};
