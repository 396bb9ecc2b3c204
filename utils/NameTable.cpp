#include "utils/NameTable.h"

#include <cstring>

namespace {

constexpr std::size_t firstSlots = 64;
constexpr std::size_t longestProbe = 32;

constexpr std::uint64_t oddConstant = 0x9E3779B97F4A7C15;

template <typename Number>
std::uint64_t Word(const char* text) {
    Number word;
    std::memcpy(&word, text, sizeof word);
    return word;
}

std::uint64_t Mix(std::uint64_t hash, std::uint64_t word) {
    hash = (hash ^ word) * oddConstant;
    return hash ^ hash >> 32;
}

// Fixed widths, overlapping where need be, spare a loop over single bytes and calls for short
// names.
std::uint64_t ShortWord(const char* text, std::size_t length) {
    if (length >= 4)
        return Word<std::uint32_t>(text) << 32 | Word<std::uint32_t>(text + length - 4);
    return Word<std::uint8_t>(text) << 16 | Word<std::uint8_t>(text + length / 2) << 8 |
           Word<std::uint8_t>(text + length - 1);
}

std::uint32_t Hash(std::string_view text) {
    std::uint64_t hash = text.size();
    const char* next = text.data();
    std::size_t left = text.size();
    for (; left >= 8; left -= 8, next += 8) hash = Mix(hash, Word<std::uint64_t>(next));
    if (left > 0) hash = Mix(hash, ShortWord(next, left));
    return static_cast<std::uint32_t>(hash * oddConstant >> 32);
}

bool SameText(std::string_view left, std::string_view right) {
    if (left.size() != right.size()) return false;
    if (left.empty()) return true;
    if (left.size() < 8)
        return ShortWord(left.data(), left.size()) == ShortWord(right.data(), right.size());
    if (left.size() > 16) return left == right;
    const std::size_t last = left.size() - 8;
    return Word<std::uint64_t>(left.data()) == Word<std::uint64_t>(right.data()) &&
           Word<std::uint64_t>(left.data() + last) == Word<std::uint64_t>(right.data() + last);
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
            if (!m_crowded.empty() && m_crowded.count(text) != 0) break;
            const std::uint32_t index = AddNew(text);
            slot = {hash, index + 1};
            if (m_names.size() * 2 > m_slots.size()) Grow();
            return index;
        }
        if (slot.nHash != hash) continue;
        CName& name = m_names[slot.nIndexPlusOne - 1];
        if (!SameText(name.text, text)) continue;
        ++name.nCount;
        return slot.nIndexPlusOne - 1;
    }
    return AddCrowded(text);
}

bool CNameTable::AddAgain(std::uint32_t index, std::string_view text) {
    CName& name = m_names[index];
    if (!SameText(name.text, text)) return false;
    ++name.nCount;
    return true;
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
    std::vector<CSlot> old(m_slots.size() * 4);
    old.swap(m_slots);
    for (CSlot const& slot : old) {
        if (slot.nIndexPlusOne == 0) continue;
        if (CSlot* free = FreeSlot(slot.nHash))
            *free = slot;
        else
            m_crowded.emplace(m_names[slot.nIndexPlusOne - 1].text, slot.nIndexPlusOne - 1);
    }
}
