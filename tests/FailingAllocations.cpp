#include "FailingAllocations.h"

#include <unistd.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

constexpr pid_t kNoThread = 0;

std::atomic<pid_t> g_nThread = kNoThread;
std::atomic<int> g_nFailed = 0;
std::atomic<int> g_nSinceFailure = 0;

bool HasToFail() {
    if (g_nThread == kNoThread || g_nThread != gettid()) return false;
    if (g_nSinceFailure++ < g_nFailed) return false;
    g_nSinceFailure = 0;
    ++g_nFailed;
    return true;
}

}  // namespace

CFailingAllocations::CFailingAllocations(pid_t nThread) {
    g_nFailed = 0;
    g_nSinceFailure = 0;
    g_nThread = nThread;
}

CFailingAllocations::~CFailingAllocations() {
    g_nThread = kNoThread;
}

int CFailingAllocations::Count() const {
    return g_nFailed;
}

void* operator new(std::size_t nSize) {
    void* const pMemory = HasToFail() ? nullptr : std::malloc(nSize);
    if (!pMemory) throw std::bad_alloc();
    return pMemory;
}

void operator delete(void* pMemory) noexcept {
    std::free(pMemory);
}

void operator delete(void* pMemory, std::size_t) noexcept {
    std::free(pMemory);
}
