#pragma once

#include <atomic>
#include <cstddef>
#include <new>
#include <utility>

/// A piece of memory that many parameters stand in. It goes when the arena that fills it and the
/// last parameter in it are gone; parameters may go in any order and on any thread.
class CParameterChunk {
public:
    static CParameterChunk* Make(std::size_t capacity);

    /// Gives up `count` holds.
    void Release(std::size_t count) noexcept;

    /// Trades the arena's hold for one hold per parameter made.
    void Retire(std::size_t parametersMade) noexcept { Release(arenaHold - parametersMade); }

    unsigned char* Memory() { return reinterpret_cast<unsigned char*>(this + 1); }

private:
    static constexpr std::size_t arenaHold = ~std::size_t{0} / 2;

    std::atomic<std::size_t> m_nHolds{arenaHold};
};

/// Gathers the releases of one thread while it lives, so that a chunk is told once instead of for
/// every parameter.
class CReleaseBatch {
public:
    CReleaseBatch() noexcept;
    CReleaseBatch(CReleaseBatch const&) = delete;
    CReleaseBatch& operator=(CReleaseBatch const&) = delete;
    ~CReleaseBatch();

    static void ReleaseOne(CParameterChunk* chunk) noexcept;

private:
    static thread_local CReleaseBatch* s_pCurrent;

    CReleaseBatch* m_pOuter;
    CParameterChunk* m_pChunk = nullptr;
    std::size_t m_nReleases = 0;
};

/// Makes the parameters of one load or one copy next to each other. Each of them is destroyed with
/// `delete` like one from the heap.
class CParameterArena {
public:
    /// The first chunk takes about `expectedBytes`, in bounds.
    explicit CParameterArena(std::size_t expectedBytes);
    CParameterArena(CParameterArena const&) = delete;
    CParameterArena& operator=(CParameterArena const&) = delete;
    ~CParameterArena();

    template <typename Parameter, typename... Arguments>
    Parameter* Make(Arguments&&... arguments) {
        static_assert(alignof(Parameter) <= alignof(CParameterChunk*));
        constexpr std::size_t slotSize = sizeof(CParameterChunk*) + sizeof(Parameter);
        if (m_nLeft < slotSize) StartChunk(slotSize);
        ::new (m_pNext) CParameterChunk*(m_pChunk);
        auto* made = ::new (m_pNext + sizeof(CParameterChunk*))
            Parameter(std::forward<Arguments>(arguments)...);
        m_pNext += slotSize;
        m_nLeft -= slotSize;
        ++m_nMade;
        return made;
    }

private:
    void StartChunk(std::size_t slotSize);
    void RetireChunk() noexcept;

    CParameterChunk* m_pChunk = nullptr;
    unsigned char* m_pNext = nullptr;
    std::size_t m_nLeft = 0;
    std::size_t m_nMade = 0;
    std::size_t m_nChunkSize;
};
