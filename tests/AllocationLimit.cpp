#include "AllocationLimit.h"

#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t g_nLimit = SIZE_MAX;

}  // namespace

CAllocationLimit::CAllocationLimit(std::size_t nBytes) {
    g_nLimit = nBytes;
}

CAllocationLimit::~CAllocationLimit() {
    g_nLimit = SIZE_MAX;
}

void* operator new(std::size_t nSize) {
    void* const pMemory = nSize < g_nLimit ? std::malloc(nSize) : nullptr;
    if (!pMemory) throw std::bad_alloc();
    return pMemory;
}

void operator delete(void* pMemory) noexcept {
    std::free(pMemory);
}

void operator delete(void* pMemory, std::size_t) noexcept {
    std::free(pMemory);
}
