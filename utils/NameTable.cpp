#include "utils/NameTable.h"

#include <cstring>

namespace {

constexpr std::size_t firstSlots = 64;
constexpr std::size_t longestProbe = 32;

std::uint64_t Word(const char* text, std::size_t bytes) {
    std::uint64_t word = 0;
    std::memcpy(&word, text, bytes);
    return word;
}

std::uint64_t Mix(std::uint64_t hash, std::uint64_t word) {
    constexpr std::uint64_t oddConstant = 0x9E3779B97F4A7C15;
    hash = (hash ^ word) * oddConstant;
    return hash ^ hash >> 32;
}

std::uint32_t Hash(std::string_view text) {
    std::uint64_t hash = text.size();
    const char* next = text.data();
    std::size_t left = text.size();
    for (; left >= sizeof hash; left -= sizeof hash, next += sizeof hash)
        hash = Mix(hash, Word(next, sizeof hash));
    // Fixed widths, overlapping where need be, spare a copy of variable length.
    if (left >= 4)
        hash = Mix(hash, Word(next, 4) << 32 | Word(next + left - 4, 4));
    else if (left > 0)
        hash = Mix(hash,
                   Word(next, 1) << 16 | Word(next + left / 2, 1) << 8 | Word(next + left - 1, 1));
    return static_cast<std::uint32_t>(hash);
}

}  // namespace

CNameTable::CNameTable() : m_slots(firstSlots) {}

std::uint32_t CNameTable::Add(std::string_view text) {
    const std::uint32_t hash = Hash(text);
    const std::size_t mask = m_slots.size() - 1;
    for (std::size_t probe = 0; probe < longestProbe; ++probe) {
        CSlot& slot = m_slots[(hash + probe) & mask];
        if (slot.nIndexPlusOne == 0) {
            // The table may have grown since the name was crowded out.
            if (m_crowded.count(text) != 0) break;
            const std::uint32_t index = AddNew(text);
            slot = {hash, index + 1};
            if (m_names.size() * 2 > m_slots.size()) Grow();
            return index;
        }
        if (slot.nHash != hash) continue;
        CName& name = m_names[slot.nIndexPlusOne - 1];
        if (name.text != text) continue;
        ++name.nCount;
        return slot.nIndexPlusOne - 1;
    }
    return AddCrowded(text);
}

std::uint32_t CNameTable::AddNew(std::string_view text) {
    m_names.push_back({text, 1, 0});
    return static_cast<std::uint32_t>(m_names.size() - 1);
}

// Names for which a whole run of slots is taken by others stand in an ordered map.
std::uint32_t CNameTable::AddCrowded(std::string_view text) {
    const auto [found, isNew] = m_crowded.try_emplace(text, 0);
    if (isNew)
        found->second = AddNew(text);
    else
        ++m_names[found->second].nCount;
    return found->second;
}

CNameTable::CSlot* CNameTable::FreeSlot(std::uint32_t hash) {
    const std::size_t mask = m_slots.size() - 1;
    for (std::size_t probe = 0; probe < longestProbe; ++probe) {
        CSlot& slot = m_slots[(hash + probe) & mask];
        if (slot.nIndexPlusOne == 0) return &slot;
    }
    return nullptr;
}

void CNameTable::Grow() {
    std::vector<CSlot> old(m_slots.size() * 2);
    old.swap(m_slots);
    for (CSlot const& slot : old) {
        if (slot.nIndexPlusOne == 0) continue;
        if (CSlot* free = FreeSlot(slot.nHash))
            *free = slot;
        else
            m_crowded.emplace(m_names[slot.nIndexPlusOne - 1].text, slot.nIndexPlusOne - 1);
    }
}
