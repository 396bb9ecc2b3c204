#include "utils/ParameterArena.h"

#include <algorithm>

namespace {

// Under a sanitizer everything gets a chunk of its own, so that the bounds are watched.
#ifdef TAVARIN_SINGLE_PARAMETER_CHUNKS
constexpr std::size_t smallestChunk = 0;
constexpr std::size_t largestChunk = 0;
#else
constexpr std::size_t smallestChunk = 256;
constexpr std::size_t largestChunk = 32 * 1024 - sizeof(CParameterChunk);
#endif

// On the heap the room in front is rounded up so that the alignment stays.
constexpr std::size_t heapPrefix = alignof(std::max_align_t);
static_assert(heapPrefix >= sizeof(CParameterOrigin));
static_assert((sizeof(CParameterChunk) + sizeof(CParameterOrigin)) % heapPrefix == 0);

}  // namespace

CParameterChunk* CParameterChunk::Make(std::size_t capacity) {
    return ::new (::operator new(sizeof(CParameterChunk) + capacity)) CParameterChunk;
}

void CParameterChunk::Release(std::size_t count) noexcept {
    if (m_nHolds.fetch_sub(count, std::memory_order_acq_rel) == count) ::operator delete(this);
}

CParameterArena::CParameterArena(std::size_t expectedBytes)
    : m_pOuter(std::exchange(s_pCurrent, this)),
      m_nChunkSize(std::clamp(expectedBytes, smallestChunk, largestChunk)) {}

CParameterArena::~CParameterArena() {
    s_pCurrent = m_pOuter;
    RetireChunk();
}

bool CParameterArena::StartChunk(std::size_t slotSize) {
    if (slotSize > SlotSize(largestPiece)) return false;
    const std::size_t capacity = std::max(m_nChunkSize, slotSize);
    CParameterChunk* chunk = CParameterChunk::Make(capacity);
    RetireChunk();
    m_pChunk = chunk;
    m_pNext = chunk->Memory();
    m_pEnd = m_pNext + capacity;
    m_nSlots = 0;
    m_nChunkSize = std::min(m_nChunkSize * 2, largestChunk);
    return true;
}

void CParameterArena::RetireChunk() noexcept {
    if (m_pChunk != nullptr) m_pChunk->Retire(m_nSlots);
}

void* AllocateParameterMemory(std::size_t size) {
    if (CParameterArena* arena = CParameterArena::Current())
        if (void* memory = arena->Allocate(size)) return memory;
    auto* memory = static_cast<unsigned char*>(::operator new(heapPrefix + size)) + heapPrefix;
    ::new (memory - sizeof(CParameterOrigin)) CParameterOrigin(nullptr, false);
    return memory;
}

void ReleaseParameterMemory(void* memory) noexcept {
    if (memory == nullptr) return;
    CParameterChunk* const chunk = CParameterOrigin::Of(memory).Chunk();
    if (chunk == nullptr)
        ::operator delete(static_cast<unsigned char*>(memory) - heapPrefix);
    else if (CReleaseBatch* batch = CReleaseBatch::Current())
        batch->Release(chunk);
    else
        chunk->Release(1);
}
