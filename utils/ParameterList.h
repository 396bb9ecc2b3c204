#pragma once

#include <cstddef>
#include <memory>
#include <vector>

class CParameter;

/// Gives the entries of a list their place: at first the room that was lent to it, if that is
/// enough and only once, else the heap.
class CListMemory {
public:
    using value_type = CParameter*;  ///< As an allocator has to say.

    /// There is one kind of entry.
    template <typename>
    struct rebind {
        using other = CListMemory;  ///< As an allocator has to say.
    };

    CListMemory() = default;

    /// Lends room for so many entries, which must outlive the list.
    CListMemory(void* room, std::size_t entries)
        : m_pRoom(static_cast<CParameter**>(room)), m_nFree(entries) {}

    /// Throws std::bad_alloc when there is no memory.
    CParameter** allocate(std::size_t entries) {
        if (entries > m_nFree) return std::allocator<CParameter*>().allocate(entries);
        m_nFree = 0;
        return m_pRoom;
    }

    /// Gives back what `allocate` gave.
    void deallocate(CParameter** place, std::size_t entries) noexcept {
        if (place != m_pRoom) std::allocator<CParameter*>().deallocate(place, entries);
    }

    /// A copy of a list stands in the heap.
    CListMemory select_on_container_copy_construction() const { return {}; }

    /// Whether one may give back what the other gave.
    friend bool operator==(CListMemory const& left, CListMemory const& right) {
        return left.m_pRoom == right.m_pRoom;
    }

private:
    CParameter** m_pRoom = nullptr;
    std::size_t m_nFree = 0;
};

/// The parameters of a block, in order: a vector of pointers. It does not destroy what it points
/// at. Its room may be lent, so it is always copied and never moved or swapped.
class CParameterList : public std::vector<CParameter*, CListMemory> {
public:
    using vector::vector;
    CParameterList() = default;

    /// The same entries.
    CParameterList(CParameterList const&) = default;

    /// The same entries as the other.
    CParameterList& operator=(CParameterList const&) = default;

    void swap(CParameterList&) = delete;
};
