#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>

#include "utils/ParameterMemory.h"

class CParameterChunk;

/// Stands in front of everything from here: the chunk it is in, or none for what is from the heap,
/// and whether it is known to be a parameter of exactly the class that its type tells.
class CParameterOrigin {
public:
    CParameterOrigin(CParameterChunk* chunk, bool exact)
        : m_lWord(reinterpret_cast<std::uintptr_t>(chunk) | (exact ? exactBit : 0)) {}

    static CParameterOrigin Of(void const* memory) {
        return static_cast<CParameterOrigin const*>(memory)[-1];
    }

    CParameterChunk* Chunk() const {
        return reinterpret_cast<CParameterChunk*>(m_lWord & ~exactBit);
    }
    bool IsExact() const { return (m_lWord & exactBit) != 0; }

private:
    static constexpr std::uintptr_t exactBit = 1;

    std::uintptr_t m_lWord;
};

/// A piece of memory that many parameters stand in. It goes when the arena that fills it and the
/// last parameter in it are gone; parameters may go in any order and on any thread.
class CParameterChunk {
public:
    static CParameterChunk* Make(std::size_t capacity);

    /// Gives up `count` holds.
    void Release(std::size_t count) noexcept;

    /// Trades the arena's hold for one hold per slot handed out.
    void Retire(std::size_t slots) noexcept { Release(arenaHold - slots); }

    unsigned char* Memory() { return reinterpret_cast<unsigned char*>(this + 1); }

private:
    static constexpr std::size_t arenaHold = ~std::size_t{0} / 2;

    std::atomic<std::size_t> m_nHolds{arenaHold};
};

/// Gathers the releases of one thread while it lives, so that a chunk is told once instead of for
/// every parameter.
class CReleaseBatch {
public:
    CReleaseBatch() noexcept : m_pOuter(std::exchange(s_pCurrent, this)) {}
    CReleaseBatch(CReleaseBatch const&) = delete;
    CReleaseBatch& operator=(CReleaseBatch const&) = delete;
    ~CReleaseBatch() {
        s_pCurrent = m_pOuter;
        Flush();
    }

    static CReleaseBatch* Current() { return s_pCurrent; }

    void Release(CParameterChunk* chunk) noexcept {
        if (m_pChunk != chunk) {
            Flush();
            m_pChunk = chunk;
            m_nReleases = 0;
        }
        ++m_nReleases;
    }

private:
    void Flush() noexcept {
        if (m_pChunk != nullptr) m_pChunk->Release(m_nReleases);
    }

    static inline constinit thread_local CReleaseBatch* s_pCurrent = nullptr;

    CReleaseBatch* m_pOuter;
    CParameterChunk* m_pChunk = nullptr;
    std::size_t m_nReleases = 0;
};

/// Hands out the memory of one load or one copy piece by piece. While it lives it also serves the
/// lists that grow on its thread. Everything in it is given back on its own, like from the heap.
class CParameterArena {
public:
    /// The first chunk takes about `expectedBytes`, in bounds.
    explicit CParameterArena(std::size_t expectedBytes);
    CParameterArena(CParameterArena const&) = delete;
    CParameterArena& operator=(CParameterArena const&) = delete;
    ~CParameterArena();

    static CParameterArena* Current() { return s_pCurrent; }

    /// Memory aligned for anything; null for more than should stand in a chunk.
    void* Allocate(std::size_t size, bool exact = false) {
        const std::size_t slotSize = SlotSize(size);
        if (static_cast<std::size_t>(m_pEnd - m_pNext) < slotSize && !StartChunk(slotSize))
            return nullptr;
        unsigned char* const slot = m_pNext;
        ::new (slot) CParameterOrigin(m_pChunk, exact);
        m_pNext += slotSize;
        ++m_nSlots;
        return slot + sizeof(CParameterOrigin);
    }

    /// A parameter to be destroyed with `delete`.
    template <typename Parameter, typename... Arguments>
    Parameter* Make(Arguments&&... arguments) {
        static_assert(sizeof(Parameter) <= largestPiece);
        void* const memory = Allocate(sizeof(Parameter), true);
        try {
            return ::new (memory) Parameter(std::forward<Arguments>(arguments)...);
        } catch (...) {
            ReleaseParameterMemory(memory);
            throw;
        }
    }

private:
    static constexpr std::size_t largestPiece = 1024;

    // Slots begin and end one pointer before a multiple of the alignment: in front of what they
    // hold stands their chunk.
    static constexpr std::size_t SlotSize(std::size_t size) {
        constexpr std::size_t unit = alignof(std::max_align_t);
        return (size + sizeof(CParameterOrigin) + unit - 1) / unit * unit;
    }

    bool StartChunk(std::size_t slotSize);
    void RetireChunk() noexcept;

    static inline constinit thread_local CParameterArena* s_pCurrent = nullptr;

    CParameterArena* m_pOuter;
    CParameterChunk* m_pChunk = nullptr;
    unsigned char* m_pNext = nullptr;
    unsigned char* m_pEnd = nullptr;
    std::size_t m_nSlots = 0;
    std::size_t m_nChunkSize;
};
