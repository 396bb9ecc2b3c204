#pragma once

#include <cstddef>

/// Memory for parameters and their lists: from the heap, or from the piece that a load or a copy on
/// this thread is filling. Either is given back alike, on any thread.
void* AllocateParameterMemory(std::size_t size);
void ReleaseParameterMemory(void* memory) noexcept;

/// The allocator of a block's list.
template <typename Value>
struct CParameterMemory {
    using value_type = Value;

    CParameterMemory() = default;
    template <typename Other>
    CParameterMemory(CParameterMemory<Other> const&) {}

    Value* allocate(std::size_t count) {
        return static_cast<Value*>(AllocateParameterMemory(count * sizeof(Value)));
    }
    void deallocate(Value* memory, std::size_t) noexcept { ReleaseParameterMemory(memory); }

    friend bool operator==(CParameterMemory const&, CParameterMemory const&) { return true; }
};
