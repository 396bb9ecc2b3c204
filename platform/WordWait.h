#pragma once

#include <cstdint>

/// Sleeping on a 32-bit word that several processes share, and waking whoever sleeps on it.
///
/// Both are hints for the scheduler and carry no meaning of their own: a sleeper may wake at any
/// time and must look at the word again, and a platform without such a call sleeps for the given
/// time instead.

/// Sleeps for at most `nMicroseconds` while `*pWord` is `nExpected`. Returns at once when it is
/// not.
void SleepOnWord(const std::uint32_t* pWord, std::uint32_t nExpected, int nMicroseconds) noexcept;

/// Wakes every thread of any process that sleeps on `pWord`.
void WakeWord(const std::uint32_t* pWord) noexcept;

/// Tells the processor that this thread is polling.
void RelaxProcessor() noexcept;
