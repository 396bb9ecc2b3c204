#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string_view>
#include <vector>

/// The different names of a tree and how often each occurs, found by hash.
///
/// The texts stay where they are: they must outlive the table. Names made to collide cost no more
/// than an ordered search each.
class CNameTable {
public:
    struct CName {
        std::string_view text;
        std::uint32_t nCount;
        std::uint32_t nToken;
    };

    CNameTable();

    /// Counts one more use of a name and returns its index.
    std::uint32_t Add(std::string_view text);

    /// Counts one more use of the name with this index if it is that text.
    bool AddAgain(std::uint32_t index, std::string_view text);

    std::vector<CName>& Names() { return m_names; }
    std::vector<CName> const& Names() const { return m_names; }

private:
    struct CSlot {
        std::uint32_t nHash;
        std::uint32_t nIndexPlusOne;
    };

    std::uint32_t AddNew(std::string_view text);
    std::uint32_t AddCrowded(std::string_view text);
    CSlot* FreeSlot(std::uint32_t hash);
    void Grow();

    std::vector<CSlot> m_slots;
    std::vector<CName> m_names;
    std::map<std::string_view, std::uint32_t> m_crowded;
};
