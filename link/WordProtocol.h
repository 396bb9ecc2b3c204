#pragma once

#include <cstdint>

#include "link/LinkClock.h"
#include "link/SharedSegments.h"

/// \file
/// The lock words and conditions of the shared segments, written directly as the word protocol of
/// Boost.Interprocess's spin mutex and spin condition, so that both sides meet on any platform.
///
/// Words live in shared memory and may be changed by other processes at any time. All functions
/// are safe on any thread and throw nothing. Deadlines are link times (LinkClock.h).

/// One attempt at a lock word: true when this caller now holds it.
bool TryAcquireWord(std::uint32_t* pWord) noexcept;

/// Attempts every 2 milliseconds until the word is held (true) or, after a failed attempt, the
/// deadline has come (false: not held). With `kNoDeadline` it waits for ever.
bool AcquireWord(std::uint32_t* pWord, std::int64_t lDeadline) noexcept;

/// The same, looking much more often than every 2 milliseconds. For the host's side, which must not
/// make a client wait for its own naps.
bool AcquireWordEagerly(std::uint32_t* pWord, std::int64_t lDeadline = kNoDeadline) noexcept;

/// Frees a held lock word; a word that is already free stays so.
void ReleaseWord(std::uint32_t* pWord) noexcept;

/// Wakes one waiter of a condition, if there is one.
///
/// Waits for the enter lock, and for an earlier notification to be taken, without limit. When there
/// was a waiter the enter lock stays held on return, and the woken waiter frees it; the result then
/// is true.
bool NotifyOne(ConditionWords* pCondition) noexcept;

/// The same for a caller that holds the enter lock already.
bool NotifyOneEntered(ConditionWords* pCondition) noexcept;

/// How a waiter spends its time between two looks at the command word, and how it takes the mutex
/// back. The other side sees nothing of it.
struct WaitPace {
    int nSpinUs;          ///< how long it spins before the first sleep, where that pays; 0: never
    int nFirstSleepUs;    ///< first sleep between two looks, in microseconds; the next ones grow
    int nLongestSleepUs;  ///< longest sleep between two looks, in microseconds
    bool fEagerMutex;     ///< take the mutex back eagerly instead of every 2 milliseconds
};

/// The pace of a client that waits for its reply.
inline constexpr WaitPace kClientPace{120, 100, 1000, false};
/// The pace of a host that has just answered and may be asked again at once.
inline constexpr WaitPace kHostPace{60, 100, 10'000, true};
/// The pace of a host that has waited in vain for a while: it costs next to nothing, and whoever
/// gives no hint waits a little longer.
inline constexpr WaitPace kIdleHostPace{0, 20'000, 20'000, true};

/// Waits on a condition with `*pMutex` held: frees the mutex while waiting and holds it again on
/// return, however long that takes. True when notified, false when the deadline came first.
///
/// The waiter polls the command word, spinning at first and then sleeping on the word in growing
/// steps, so that a long wait costs next to nothing.
///
/// With `pWordToWake`, whoever sleeps on that word is woken once the mutex is free: one that wakes
/// on this core and needs the mutex then finds it so.
bool WaitOnCondition(ConditionWords* pCondition, std::uint32_t* pMutex, std::int64_t lDeadline,
                     WaitPace const& pace = kClientPace,
                     const std::uint32_t* pWordToWake = nullptr) noexcept;

/// The first step of such a wait, for a side that has other things to look after meanwhile: joins
/// the waiters and frees the mutex. False, with the mutex held as before, when the enter lock was
/// not to be had by the deadline.
bool JoinWaiters(ConditionWords* pCondition, std::uint32_t* pMutex,
                 std::int64_t lDeadline) noexcept;

/// The second: true when a command came, and the caller is no waiter any more; false when it is
/// `lUntil`, and the caller still is one.
bool AwaitCommand(ConditionWords* pCondition, std::int64_t lUntil, WaitPace const& pace) noexcept;

/// Holds a lock word for a scope.
class CWordLock {
public:
    /// Tries to take the word until the deadline; ask `IsHeld` whether it worked.
    CWordLock(std::uint32_t* pWord, std::int64_t lDeadline) noexcept
        : m_pWord(AcquireWord(pWord, lDeadline) ? pWord : nullptr) {}

    /// Frees the word when it is held.
    ~CWordLock() {
        if (m_pWord) ReleaseWord(m_pWord);
    }
    CWordLock(CWordLock const&) = delete;
    CWordLock& operator=(CWordLock const&) = delete;

    /// Whether the word is held.
    bool IsHeld() const noexcept { return m_pWord != nullptr; }

private:
    std::uint32_t* m_pWord;
};
