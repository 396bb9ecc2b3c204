#include "platform/WordWait.h"

#include <unistd.h>

void SleepOnWord(const std::uint32_t* pWord, std::uint32_t nExpected, int nMicroseconds) noexcept {
    if (__atomic_load_n(pWord, __ATOMIC_ACQUIRE) != nExpected) return;
    usleep(static_cast<useconds_t>(nMicroseconds));
}

void WakeWord(const std::uint32_t*) noexcept {}

void RelaxProcessor() noexcept {
#if defined(__x86_64__)
    __builtin_ia32_pause();
#elif defined(__aarch64__)
    asm volatile("yield");
#endif
}
