#include "host/ScriptMemory.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

// An interpreter with the libraries and functions of a host takes a tenth of it.
constexpr std::size_t kKeptBytes = std::size_t{1} << 20;

constexpr std::size_t Aligned(std::size_t nSize) {
    return (nSize + alignof(std::max_align_t) - 1) & ~(alignof(std::max_align_t) - 1);
}

}  // namespace

/// Stands in front of every block on the heap.
struct alignas(std::max_align_t) CScriptMemory::CHeapBlock {
    CHeapBlock* m_pPrevious;
    CHeapBlock* m_pNext;
};

CScriptMemory::CScriptMemory() : m_pKept(new std::byte[kKeptBytes]) {}

CScriptMemory::~CScriptMemory() {
    while (m_pFirst) Free(m_pFirst, 0);
}

bool CScriptMemory::Owns(void const* pBlock) const noexcept {
    auto const* const pByte = static_cast<std::byte const*>(pBlock);
    return pByte >= m_pKept.get() && pByte < m_pKept.get() + kKeptBytes;
}

void* CScriptMemory::AllocateKept(std::size_t nSize) noexcept {
    if (Aligned(nSize) > kKeptBytes - m_nKept) return nullptr;
    std::byte* const pBlock = m_pKept.get() + m_nKept;
    m_nKept += Aligned(nSize);
    return pBlock;
}

void* CScriptMemory::AllocateOnHeap(CHeapBlock* pOld, std::size_t nOldSize,
                                    std::size_t nNewSize) noexcept {
    if (nNewSize > nOldSize && nNewSize - nOldSize > m_nLimit - m_nTaken) return nullptr;
    auto* const pBlock =
        static_cast<CHeapBlock*>(std::realloc(pOld, sizeof(CHeapBlock) + nNewSize));
    if (!pBlock) return nullptr;
    m_nTaken += nNewSize - nOldSize;
    if (!pOld) *pBlock = {nullptr, m_pFirst};
    (pBlock->m_pPrevious ? pBlock->m_pPrevious->m_pNext : m_pFirst) = pBlock;
    if (pBlock->m_pNext) pBlock->m_pNext->m_pPrevious = pBlock;
    return pBlock + 1;
}

void CScriptMemory::Free(CHeapBlock* pBlock, std::size_t nSize) noexcept {
    (pBlock->m_pPrevious ? pBlock->m_pPrevious->m_pNext : m_pFirst) = pBlock->m_pNext;
    if (pBlock->m_pNext) pBlock->m_pNext->m_pPrevious = pBlock->m_pPrevious;
    std::free(pBlock);
    m_nTaken -= nSize;
}

void* CScriptMemory::Allocate(void* pMemory, void* pBlock, std::size_t nOldSize,
                              std::size_t nNewSize) {
    CScriptMemory& memory = *static_cast<CScriptMemory*>(pMemory);
    bool const fKept = memory.Owns(pBlock);
    auto* const pHeap = pBlock && !fKept ? static_cast<CHeapBlock*>(pBlock) - 1 : nullptr;
    if (nNewSize == 0) {
        if (pHeap) memory.Free(pHeap, nOldSize);
        return nullptr;
    }
    if (fKept && nNewSize <= nOldSize) return pBlock;
    if (pHeap) return memory.AllocateOnHeap(pHeap, nOldSize, nNewSize);
    void* const pNew = memory.m_Copy.empty() ? memory.AllocateKept(nNewSize)
                                             : memory.AllocateOnHeap(nullptr, 0, nNewSize);
    if (pNew && fKept) std::memcpy(pNew, pBlock, nOldSize);
    return pNew;
}

void CScriptMemory::Keep() {
    m_Copy.assign(m_pKept.get(), m_pKept.get() + m_nKept);
}

void CScriptMemory::PutBack() noexcept {
    while (m_pFirst) Free(m_pFirst, 0);
    m_nTaken = 0;
    std::copy(m_Copy.begin(), m_Copy.end(), m_pKept.get());
}
