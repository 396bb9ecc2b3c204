#include "utils/NameTable.h"

namespace {

constexpr std::size_t firstSlots = 64;
constexpr std::size_t longestProbe = 32;

}  // namespace

CNameTable::CNameTable() : m_slots(firstSlots), m_nMask(firstSlots - 1) {}

std::uint32_t CNameTable::AddFurther(CNameKey const& key, std::uint32_t hash) {
    for (std::size_t probe = 0; probe < longestProbe; ++probe) {
        CSlot& slot = m_slots[(hash + probe) & m_nMask];
        if (slot.nIndexPlusOne == 0) {
            // The table may have grown since the name was crowded out.
            if (!m_crowded.empty() && m_crowded.count(key.Text()) != 0) break;
            const std::uint32_t index = AddNew(key);
            slot = {hash, index + 1};
            if (m_names.size() * 2 > m_slots.size()) Grow();
            return index;
        }
        if (slot.nHash != hash) continue;
        CName& name = m_names[slot.nIndexPlusOne - 1];
        if (name != key) continue;
        ++name.nCount;
        return slot.nIndexPlusOne - 1;
    }
    return AddCrowded(key);
}

std::uint32_t CNameTable::AddNew(CNameKey const& key) {
    m_names.push_back({key, 1});
    return static_cast<std::uint32_t>(m_names.size() - 1);
}

// Names for which a whole run of slots is taken by others stand in an ordered map.
std::uint32_t CNameTable::AddCrowded(CNameKey const& key) {
    const auto [found, isNew] = m_crowded.try_emplace(key.Text(), 0);
    if (isNew)
        found->second = AddNew(key);
    else
        ++m_names[found->second].nCount;
    return found->second;
}

CNameTable::CSlot* CNameTable::FreeSlot(std::uint32_t hash) {
    for (std::size_t probe = 0; probe < longestProbe; ++probe) {
        CSlot& slot = m_slots[(hash + probe) & m_nMask];
        if (slot.nIndexPlusOne == 0) return &slot;
    }
    return nullptr;
}

void CNameTable::Grow() {
    std::vector<CSlot> old(m_slots.size() * 4);
    old.swap(m_slots);
    m_nMask = m_slots.size() - 1;
    for (CSlot const& slot : old) {
        if (slot.nIndexPlusOne == 0) continue;
        if (CSlot* free = FreeSlot(slot.nHash))
            *free = slot;
        else
            m_crowded.emplace(m_names[slot.nIndexPlusOne - 1].Text(), slot.nIndexPlusOne - 1);
    }
}
