#include "FailingAllocation.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

constexpr int sizesNoted = 4096;

std::atomic<long> g_nLive{0};
thread_local bool g_fWatching = false;
thread_local long g_nUntilFailure = -1;
thread_local bool g_fFailed = false;
thread_local std::size_t g_nBytes = 0;
thread_local int g_nNoted = 0;
thread_local std::size_t g_noted[sizesNoted];

void Watch(std::size_t size) {
    if (g_nUntilFailure == 0) {
        g_nUntilFailure = -1;
        g_fFailed = true;
        throw std::bad_alloc();
    }
    if (g_nUntilFailure > 0) --g_nUntilFailure;
    g_nBytes += size;
    constexpr std::size_t worthNoting = 1024;
    if (size >= worthNoting && g_nNoted < sizesNoted) g_noted[g_nNoted++] = size;
}

}  // namespace

CFailingAllocation::CFailingAllocation(long number) {
    g_nUntilFailure = number;
    g_fFailed = false;
    g_nBytes = 0;
    g_nNoted = 0;
    g_fWatching = true;
}

CFailingAllocation::~CFailingAllocation() {
    g_fWatching = false;
    g_nUntilFailure = -1;
}

bool CFailingAllocation::HasFailed() const {
    return g_fFailed;
}

std::size_t CFailingAllocation::Bytes() const {
    return g_nBytes;
}

long CFailingAllocation::AtLeast(std::size_t size) const {
    long count = 0;
    for (int i = 0; i < g_nNoted; ++i) count += g_noted[i] >= size ? 1 : 0;
    return count;
}

long CFailingAllocation::Live() {
    return g_nLive;
}

void* operator new(std::size_t size) {
    if (g_fWatching) Watch(size);
    void* const memory = std::malloc(size);
    if (memory == nullptr) throw std::bad_alloc();
    ++g_nLive;
    return memory;
}

void operator delete(void* memory) noexcept {
    if (memory == nullptr) return;
    --g_nLive;
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    operator delete(memory);
}

// A sanitizer's own would not come here.
void* operator new[](std::size_t size) {
    return operator new(size);
}

void operator delete[](void* memory) noexcept {
    operator delete(memory);
}

void operator delete[](void* memory, std::size_t) noexcept {
    operator delete(memory);
}
