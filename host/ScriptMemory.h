#pragma once

#include <cstddef>
#include <memory>
#include <vector>

/// The memory of an interpreter, which can be put back to how it was.
///
/// What is allocated first lies in one block. `Keep` copies that block; from then on everything new
/// comes from the heap and is counted, and `PutBack` frees it and writes the copy over the block.
/// The interpreter is then, byte for byte, the one that was kept: it has no other memory, and what
/// it allocated is neither moved nor told.
class CScriptMemory {
public:
    CScriptMemory();
    ~CScriptMemory();
    CScriptMemory(CScriptMemory const&) = delete;
    CScriptMemory& operator=(CScriptMemory const&) = delete;

    /// A `lua_Alloc` whose context is a `CScriptMemory`. Null when there is no memory, or no more
    /// is allowed.
    static void* Allocate(void* pMemory, void* pBlock, std::size_t nOldSize, std::size_t nNewSize);

    void Keep();
    void PutBack() noexcept;

    /// How many bytes may be taken beyond what is kept.
    void SetLimit(std::size_t nBytes) { m_nLimit = nBytes; }

private:
    struct CHeapBlock;

    bool Owns(void const* pBlock) const noexcept;
    void* AllocateKept(std::size_t nSize) noexcept;
    void* AllocateOnHeap(CHeapBlock* pOld, std::size_t nOldSize, std::size_t nNewSize) noexcept;
    void Free(CHeapBlock* pBlock, std::size_t nSize) noexcept;

    std::unique_ptr<std::byte[]> m_pKept;
    std::size_t m_nKept = 0;  ///< bytes of it in use
    std::vector<std::byte> m_Copy;
    std::size_t m_nLimit = 0;
    std::size_t m_nTaken = 0;
    CHeapBlock* m_pFirst = nullptr;  ///< of all blocks on the heap
};
