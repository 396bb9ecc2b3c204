#pragma once

#include <cstddef>

/// Memory for parameters and their lists: from the heap, or from the piece that a load or a copy on
/// this thread is filling. Either is given back alike, on any thread.
void* AllocateParameterMemory(std::size_t size);

/// Gives such memory back; null is ignored.
void ReleaseParameterMemory(void* memory) noexcept;

/// The allocator of a block's list.
template <typename Value>
struct CParameterMemory {
    using value_type = Value;  ///< What the list holds.

    /// All such allocators are alike.
    CParameterMemory() = default;

    /// Also those for other values.
    template <typename Other>
    CParameterMemory(CParameterMemory<Other> const&) {}

    /// Room for `count` values.
    Value* allocate(std::size_t count) {
        return static_cast<Value*>(AllocateParameterMemory(count * sizeof(Value)));
    }

    /// Gives that room back.
    void deallocate(Value* memory, std::size_t) noexcept { ReleaseParameterMemory(memory); }

    /// True: any of them can give back what another one gave.
    friend bool operator==(CParameterMemory const&, CParameterMemory const&) { return true; }
};
