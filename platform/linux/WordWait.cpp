#include "platform/WordWait.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <climits>

void SleepOnWord(const std::uint32_t* pWord, std::uint32_t nExpected, int nMicroseconds) noexcept {
    const timespec timeout{nMicroseconds / 1'000'000, (nMicroseconds % 1'000'000) * 1000L};
    syscall(SYS_futex, pWord, FUTEX_WAIT, nExpected, &timeout, nullptr, 0);
}

void WakeWord(const std::uint32_t* pWord) noexcept {
    syscall(SYS_futex, pWord, FUTEX_WAKE, INT_MAX, nullptr, nullptr, 0);
}

void RelaxProcessor() noexcept {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#elif defined(__aarch64__)
    asm volatile("yield");
#endif
}
