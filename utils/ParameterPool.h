#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <iterator>
#include <memory>
#include <new>
#include <typeinfo>

#include "utils/ParameterBlockCodec.h"

/// A piece of memory that many parameters stand in. It goes when the pool that fills it and the
/// last parameter in it are gone; parameters may go in any order and on any thread.
class CParameterChunk {
public:
    /// Trades the pool's hold for one of every parameter in it.
    void Retire(std::size_t parameters) noexcept { Release(poolHold - parameters); }

    void Release(std::size_t holds) noexcept {
        if (m_nHolds.fetch_sub(holds, std::memory_order_acq_rel) == holds) ::operator delete(this);
    }

private:
    static constexpr std::size_t poolHold = ~std::size_t{0} / 2;

    std::atomic<std::size_t> m_nHolds{poolHold};
};

/// A parameter in a chunk. Whoever deletes it need not know: the class says how that is done.
template <typename Class>
struct CPooled final : Class {
    explicit CPooled(CParameterChunk* chunk) : pChunk(chunk) {}

    static void operator delete(CPooled* parameter, std::destroying_delete_t) {
        CParameterChunk* const chunk = parameter->pChunk;
        parameter->~CPooled();
        chunk->Release(1);
    }

    CParameterChunk* const pChunk;
};

/// Whether a parameter is of this very class, so that what it does is known.
template <typename Class>
bool IsExactly(CParameter const& parameter) {
    std::type_info const* const actual = &typeid(parameter);
    return actual == &typeid(Class) || actual == &typeid(CPooled<Class>);
}

/// Makes the parameters of one load or one copy, close together.
class CParameterPool {
public:
    CParameterPool() = default;
    CParameterPool(CParameterPool const&) = delete;
    CParameterPool& operator=(CParameterPool const&) = delete;
    ~CParameterPool() { RetireChunk(); }

    template <typename Class>
    std::unique_ptr<Class> Make() {
        return std::unique_ptr<Class>(Place<Class>(0));
    }

    /// A block whose list has room for so many entries, beside the block itself if they are few.
    std::unique_ptr<CParameterBlock> MakeBlock(std::size_t entries) {
        if (entries > mostEntriesBeside) {
            auto block = Make<CParameterBlock>();
            block->parameters.reserve(entries);
            return block;
        }
        auto* const block = Place<CParameterBlock>(entries * sizeof(CParameter*));
        std::destroy_at(&block->parameters);
        std::construct_at(&block->parameters, CListMemory(block + 1, entries));
        return std::unique_ptr<CParameterBlock>(block);
    }

private:
    static constexpr std::size_t smallestChunk = 1024;
    static constexpr std::size_t largestChunk = 32 * 1024;
    static constexpr std::size_t mostEntriesBeside = 64;

    template <typename Class>
    CPooled<Class>* Place(std::size_t bytesBehind) {
        using Pooled = CPooled<Class>;
        static_assert(alignof(Pooled) == alignof(void*) &&
                      sizeof(CParameterChunk) == alignof(void*));
        const std::size_t size = sizeof(Pooled) + bytesBehind;
        if (static_cast<std::size_t>(m_pEnd - m_pNext) < size) StartChunk();
        auto* const parameter = ::new (m_pNext) Pooled(m_pChunk);
        m_pNext += size;
        ++m_nParameters;
        return parameter;
    }

    void StartChunk() {
        void* const memory = ::operator new(m_nNextSize);
        RetireChunk();
        m_pChunk = ::new (memory) CParameterChunk;
        m_pNext = reinterpret_cast<unsigned char*>(m_pChunk + 1);
        m_pEnd = static_cast<unsigned char*>(memory) + m_nNextSize;
        m_nParameters = 0;
        m_nNextSize = std::min(m_nNextSize * 2, largestChunk);
    }

    void RetireChunk() noexcept {
        if (m_pChunk != nullptr) m_pChunk->Retire(m_nParameters);
    }

    CParameterChunk* m_pChunk = nullptr;
    unsigned char* m_pNext = nullptr;
    unsigned char* m_pEnd = nullptr;
    std::size_t m_nParameters = 0;
    std::size_t m_nNextSize = smallestChunk;
};
