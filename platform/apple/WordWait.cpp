#include "platform/WordWait.h"

#include <dlfcn.h>
#include <os/clock.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

namespace {

// The system can wait for a word from macOS 14.4 on, which is later than the oldest one that this
// is for: the calls are looked for when they are first wanted. Both sides say that processes share
// it.
constexpr std::uint32_t kShared = 1;

using WaitCall = int (*)(void* address, std::uint64_t value, std::size_t size, std::uint32_t flags,
                         std::uint32_t clock, std::uint64_t nanoseconds);
using WakeCall = int (*)(void* address, std::size_t size, std::uint32_t flags);

template <typename Call>
Call Find(const char* szName) noexcept {
    return reinterpret_cast<Call>(dlsym(RTLD_DEFAULT, szName));
}

}  // namespace

void SleepOnWord(const std::uint32_t* pWord, std::uint32_t nExpected, int nMicroseconds) noexcept {
    static const auto wait = Find<WaitCall>("os_sync_wait_on_address_with_timeout");
    if (__atomic_load_n(pWord, __ATOMIC_ACQUIRE) != nExpected || nMicroseconds <= 0) return;
    if (wait != nullptr) {
        const int nResult =
            wait(const_cast<std::uint32_t*>(pWord), nExpected, sizeof *pWord, kShared,
                 OS_CLOCK_MACH_ABSOLUTE_TIME, static_cast<std::uint64_t>(nMicroseconds) * 1000);
        if (nResult >= 0 || errno == ETIMEDOUT || errno == EINTR) return;
    }
    usleep(static_cast<useconds_t>(nMicroseconds));
}

void WakeWord(const std::uint32_t* pWord) noexcept {
    static const auto wake = Find<WakeCall>("os_sync_wake_by_address_all");
    if (wake != nullptr) wake(const_cast<std::uint32_t*>(pWord), sizeof *pWord, kShared);
}

void RelaxProcessor() noexcept {
#if defined(__x86_64__)
    __builtin_ia32_pause();
#elif defined(__aarch64__)
    asm volatile("yield");
#endif
}
