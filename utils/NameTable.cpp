#include "utils/NameTable.h"

#include <chrono>

namespace {

constexpr std::size_t firstSlots = 64;

// Both halves of the product: every bit of either factor reaches the lower ones.
std::uint64_t Fold(std::uint64_t left, std::uint64_t right) {
    __extension__ using CProduct = unsigned __int128;
    const CProduct product = static_cast<CProduct>(left) * right;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

}  // namespace

CNameTable::CNameTable()
    : CNameTable(Fold(
          static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count()),
          reinterpret_cast<std::uintptr_t>(this) | 1)) {}

CNameTable::CNameTable(std::uint64_t seed) : m_nSeed(seed), m_slots(firstSlots) {}

std::uint32_t CNameTable::Hash(std::string_view name, std::uint64_t seed) {
    constexpr std::uint64_t odd = 0xD1B54A32D192ED03;
    std::uint64_t hash = seed;
    const char* next = name.data();
    std::size_t left = name.size();
    for (; left > 8; left -= 8, next += 8)
        hash = Fold(hash ^ WordAt<std::uint64_t>(next), odd ^ seed);
    std::uint64_t last = 0;
    if (left >= 4)
        last = WordAt<std::uint32_t>(next) << 32 | WordAt<std::uint32_t>(next + left - 4);
    else if (left > 0)
        last = WordAt<std::uint8_t>(next) << 16 | WordAt<std::uint8_t>(next + left / 2) << 8 |
               WordAt<std::uint8_t>(next + left - 1);
    // The length stands apart: names of different lengths may end in the same word.
    return static_cast<std::uint32_t>(Fold(Fold(hash ^ last, odd ^ seed) ^ name.size(), odd));
}

// The slot that a name has, or the free one where it belongs.
inline std::uint32_t& CNameTable::SlotFor(std::string_view name, std::uint32_t hash) {
    for (std::size_t at = hash;; ++at) {
        std::uint32_t& slot = m_slots[at & (m_slots.size() - 1)];
        if (slot == 0) return slot;
        CName const& other = m_names[slot];
        if (other.nHash == hash && IsSame(other.text, name)) return slot;
    }
}

std::uint32_t CNameTable::Find(std::string_view name) {
    // In an image a zero byte ends a name.
    name = name.substr(0, name.find('\0'));
    if (name.empty()) return 0;
    const std::uint32_t hash = Hash(name, m_nSeed);
    std::uint32_t& slot = SlotFor(name, hash);
    if (slot != 0) return slot;
    const auto index = static_cast<std::uint32_t>(m_names.size());
    m_names.push_back({name, hash});
    slot = index;
    if (m_names.size() * 2 > m_slots.size()) Grow();
    return index;
}

void CNameTable::Grow() {
    m_slots.assign(m_slots.size() * 8, 0);
    for (std::uint32_t index = 1; index < m_names.size(); ++index)
        SlotFor(m_names[index].text, m_names[index].nHash) = index;
}
