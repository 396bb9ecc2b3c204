#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <string_view>
#include <vector>

/// A name with two overlapping words of it, quick to compare and to hash. With the length they say
/// all of a name of at most 16 bytes. The text stays where it is and must outlive the key.
class CNameKey {
public:
    CNameKey() = default;
    explicit CNameKey(std::string_view text)
        : m_pText(text.data()), m_nLength(static_cast<std::uint32_t>(text.size())) {
        if (m_nLength >= 8) {
            m_lFirst = Word<std::uint64_t>(0);
            m_lLast = Word<std::uint64_t>(m_nLength - 8);
        } else if (m_nLength >= 4) {
            m_lFirst = Word<std::uint32_t>(0);
            m_lLast = Word<std::uint32_t>(m_nLength - 4);
        } else if (m_nLength > 0) {
            m_lFirst = Word<std::uint8_t>(0);
            m_lLast = Word<std::uint8_t>(m_nLength / 2) << 8 | Word<std::uint8_t>(m_nLength - 1);
        }
    }

    /// A key that no name has.
    static CNameKey OfNoName() {
        CNameKey key;
        key.m_nLength = ~std::uint32_t{0};
        return key;
    }

    std::string_view Text() const { return {m_pText, m_nLength}; }

    bool operator==(CNameKey const& other) const {
        if (m_nLength != other.m_nLength || m_lFirst != other.m_lFirst || m_lLast != other.m_lLast)
            return false;
        return m_nLength <= 16 || std::memcmp(m_pText, other.m_pText, m_nLength) == 0;
    }

    std::uint32_t Hash() const {
        std::uint64_t hash = firstSecret ^ m_nLength;
        for (std::size_t next = 8; next + 8 < m_nLength; next += 8)
            hash = Fold(hash ^ Word<std::uint64_t>(next), secondSecret);
        return static_cast<std::uint32_t>(Fold(hash ^ m_lFirst, secondSecret ^ m_lLast));
    }

private:
    static constexpr std::uint64_t firstSecret = 0x9E3779B97F4A7C15;
    static constexpr std::uint64_t secondSecret = 0xD1B54A32D192ED03;

    template <typename Number>
    std::uint64_t Word(std::size_t at) const {
        Number word;
        std::memcpy(&word, m_pText + at, sizeof word);
        return word;
    }

    // Both halves of the product: every bit of either factor reaches the lower ones.
    static std::uint64_t Fold(std::uint64_t left, std::uint64_t right) {
        __extension__ using CProduct = unsigned __int128;
        const CProduct product = static_cast<CProduct>(left) * right;
        return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
    }

    std::uint64_t m_lFirst = 0;
    std::uint64_t m_lLast = 0;
    const char* m_pText = nullptr;
    std::uint32_t m_nLength = 0;
};

/// The different names of a tree and how often each occurs, found by hash.
///
/// The texts stay where they are: they must outlive the table. Names made to collide cost no more
/// than an ordered search each.
class CNameTable {
public:
    struct CName : CNameKey {
        std::uint32_t nCount = 0;
    };

    CNameTable();

    /// Counts one more use of a name and returns its index.
    std::uint32_t Add(CNameKey const& key) {
        const std::uint32_t hash = key.Hash();
        CSlot const& slot = m_slots[hash & m_nMask];
        if (slot.nHash == hash && slot.nIndexPlusOne != 0) {
            CName& name = m_names[slot.nIndexPlusOne - 1];
            if (name == key) {
                ++name.nCount;
                return slot.nIndexPlusOne - 1;
            }
        }
        return AddFurther(key, hash);
    }

    std::vector<CName> const& Names() const { return m_names; }

private:
    struct CSlot {
        std::uint32_t nHash;
        std::uint32_t nIndexPlusOne;
    };

    std::uint32_t AddFurther(CNameKey const& key, std::uint32_t hash);
    std::uint32_t AddNew(CNameKey const& key);
    std::uint32_t AddCrowded(CNameKey const& key);
    CSlot* FreeSlot(std::uint32_t hash);
    void Grow();

    std::vector<CSlot> m_slots;
    std::size_t m_nMask;
    std::vector<CName> m_names;
    std::map<std::string_view, std::uint32_t> m_crowded;
};
