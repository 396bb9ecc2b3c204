#include "utils/ParameterArena.h"

#include <algorithm>

#include "utils/ParameterBlockValues.h"

namespace {

// Under a sanitizer each parameter gets a chunk of its own, so that the bounds are watched.
#ifdef TAVARIN_SINGLE_PARAMETER_CHUNKS
constexpr std::size_t smallestChunk = 0;
constexpr std::size_t largestChunk = 0;
#else
constexpr std::size_t smallestChunk = 256;
constexpr std::size_t largestChunk = 64 * 1024 - sizeof(CParameterChunk);
#endif

// In front of a parameter stands the chunk it lives in, or null for one from the heap. On the heap
// the room for it is rounded up so that the parameter keeps the allocation's alignment.
constexpr std::size_t heapPrefix = alignof(std::max_align_t);
static_assert(heapPrefix >= sizeof(CParameterChunk*));

CParameterChunk*& ChunkOf(void* parameter) {
    return static_cast<CParameterChunk**>(parameter)[-1];
}

}  // namespace

thread_local CReleaseBatch* CReleaseBatch::s_pCurrent = nullptr;

CParameterChunk* CParameterChunk::Make(std::size_t capacity) {
    return ::new (::operator new(sizeof(CParameterChunk) + capacity)) CParameterChunk;
}

void CParameterChunk::Release(std::size_t count) noexcept {
    if (m_nHolds.fetch_sub(count, std::memory_order_acq_rel) == count) ::operator delete(this);
}

CReleaseBatch::CReleaseBatch() noexcept : m_pOuter(std::exchange(s_pCurrent, this)) {}

CReleaseBatch::~CReleaseBatch() {
    s_pCurrent = m_pOuter;
    if (m_pChunk != nullptr) m_pChunk->Release(m_nReleases);
}

void CReleaseBatch::ReleaseOne(CParameterChunk* chunk) noexcept {
    CReleaseBatch* const batch = s_pCurrent;
    if (batch == nullptr) {
        chunk->Release(1);
        return;
    }
    if (batch->m_pChunk != chunk) {
        if (batch->m_pChunk != nullptr) batch->m_pChunk->Release(batch->m_nReleases);
        batch->m_pChunk = chunk;
        batch->m_nReleases = 0;
    }
    ++batch->m_nReleases;
}

CParameterArena::CParameterArena(std::size_t expectedBytes)
    : m_nChunkSize(std::clamp(expectedBytes, smallestChunk, largestChunk)) {}

CParameterArena::~CParameterArena() {
    RetireChunk();
}

void CParameterArena::StartChunk(std::size_t slotSize) {
    const std::size_t capacity = std::max(m_nChunkSize, slotSize);
    CParameterChunk* chunk = CParameterChunk::Make(capacity);
    RetireChunk();
    m_pChunk = chunk;
    m_pNext = chunk->Memory();
    m_nLeft = capacity;
    m_nMade = 0;
    m_nChunkSize = std::min(m_nChunkSize * 2, largestChunk);
}

void CParameterArena::RetireChunk() noexcept {
    if (m_pChunk != nullptr) m_pChunk->Retire(m_nMade);
}

void* CParameter::operator new(std::size_t size) {
    auto* memory = static_cast<unsigned char*>(::operator new(heapPrefix + size)) + heapPrefix;
    ::new (memory - sizeof(CParameterChunk*)) CParameterChunk*(nullptr);
    return memory;
}

void CParameter::operator delete(void* memory) noexcept {
    if (memory == nullptr) return;
    if (CParameterChunk* chunk = ChunkOf(memory)) {
        CReleaseBatch::ReleaseOne(chunk);
        return;
    }
    ::operator delete(static_cast<unsigned char*>(memory) - heapPrefix);
}
