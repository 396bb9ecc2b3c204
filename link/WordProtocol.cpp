#include "link/WordProtocol.h"

#include <sched.h>
#include <unistd.h>

#include "link/WaitPacer.h"
#include "platform/WordWait.h"

namespace {

constexpr useconds_t kPollingPeriodUs = 2000;

// A mutex is freed without a hint, and soon: its waiter looks again after short sleeps.
constexpr int kEagerSpinUs = 20;
constexpr int kEagerFirstSleepUs = 100;
constexpr int kEagerLongestSleepUs = 200;
// Between two looks of a waiter whose deadline came while a notification was under way.
constexpr int kLastLooksUs = 100;

// What this thread has learnt from its waits for commands, and from those for a mutex.
thread_local CSpinHabit commandHabit;
thread_local CSpinHabit mutexHabit;

std::uint32_t ReadWord(const std::uint32_t* pWord) noexcept {
    return __atomic_load_n(pWord, __ATOMIC_SEQ_CST);
}

// Returns what the word held before; it was swapped when that is nExpected.
std::uint32_t SwapWord(std::uint32_t* pWord, std::uint32_t nExpected,
                       std::uint32_t nDesired) noexcept {
    __atomic_compare_exchange_n(pWord, &nExpected, nDesired, false, __ATOMIC_SEQ_CST,
                                __ATOMIC_SEQ_CST);
    return nExpected;
}

bool HasPassed(std::int64_t lTime) noexcept {
    return lTime != kNoDeadline && LinkTimeNow() >= lTime;
}

// Takes the command that was given; false when another waiter was faster.
bool TakeCommand(ConditionWords* pCondition) noexcept {
    const std::uint32_t nCommand =
        SwapWord(&pCondition->nCommand, kCommandNotifyOne, kCommandSleep);
    if (nCommand == kCommandSleep) return false;

    const std::uint32_t nLeft = __atomic_sub_fetch(&pCondition->nWaiterCount, 1, __ATOMIC_SEQ_CST);
    if (nCommand == kCommandNotifyOne) {
        ReleaseWord(&pCondition->nEnterLock);
    } else if (nLeft == 0) {
        SwapWord(&pCondition->nCommand, kCommandNotifyAll, kCommandSleep);
        ReleaseWord(&pCondition->nEnterLock);
    }
    return true;
}

// Leaves the waiters; false while a notification is under way, which this waiter may have to
// answer.
bool LeaveWaiters(ConditionWords* pCondition) noexcept {
    if (!TryAcquireWord(&pCondition->nEnterLock)) return false;
    __atomic_sub_fetch(&pCondition->nWaiterCount, 1, __ATOMIC_SEQ_CST);
    ReleaseWord(&pCondition->nEnterLock);
    return true;
}

}  // namespace

bool TryAcquireWord(std::uint32_t* pWord) noexcept {
    return SwapWord(pWord, 0, 1) == 0 && ReadWord(pWord) == 1;
}

bool AcquireWord(std::uint32_t* pWord, std::int64_t lDeadline) noexcept {
    while (!TryAcquireWord(pWord)) {
        if (lDeadline != kNoDeadline && LinkTimeNow() >= lDeadline) return false;
        usleep(kPollingPeriodUs);
    }
    return true;
}

bool AcquireWordEagerly(std::uint32_t* pWord, std::int64_t lDeadline) noexcept {
    CWaitPacer pacer(pWord, kEagerSpinUs, kEagerFirstSleepUs, kEagerLongestSleepUs, mutexHabit);
    while (!TryAcquireWord(pWord)) {
        if (HasPassed(lDeadline)) return false;
        pacer.Pause(1, kNoDeadline);
    }
    return true;
}

void ReleaseWord(std::uint32_t* pWord) noexcept {
    SwapWord(pWord, 1, 0);
}

bool NotifyOne(ConditionWords* pCondition) noexcept {
    AcquireWord(&pCondition->nEnterLock, kNoDeadline);
    return NotifyOneEntered(pCondition);
}

bool NotifyOneEntered(ConditionWords* pCondition) noexcept {
    if (ReadWord(&pCondition->nWaiterCount) == 0) {
        ReleaseWord(&pCondition->nEnterLock);
        return false;
    }
    while (SwapWord(&pCondition->nCommand, kCommandSleep, kCommandNotifyOne) != kCommandSleep) {
        sched_yield();
    }
    return true;
}

bool JoinWaiters(ConditionWords* pCondition, std::uint32_t* pMutex,
                 std::int64_t lDeadline) noexcept {
    const CWordLock enter(&pCondition->nEnterLock, lDeadline);
    if (!enter.IsHeld()) return false;
    __atomic_add_fetch(&pCondition->nWaiterCount, 1, __ATOMIC_SEQ_CST);
    ReleaseWord(pMutex);
    return true;
}

bool AwaitCommand(ConditionWords* pCondition, std::int64_t lUntil, WaitPace const& pace) noexcept {
    CWaitPacer pacer(&pCondition->nCommand, pace.nSpinUs, pace.nFirstSleepUs, pace.nLongestSleepUs,
                     commandHabit);
    for (;;) {
        if (ReadWord(&pCondition->nCommand) != kCommandSleep && TakeCommand(pCondition)) {
            return true;
        }
        const std::int64_t lLeftUs = lUntil == kNoDeadline ? kNoDeadline : lUntil - LinkTimeNow();
        if (lLeftUs <= 0) return false;
        pacer.Pause(kCommandSleep, lLeftUs);
    }
}

bool WaitOnCondition(ConditionWords* pCondition, std::uint32_t* pMutex, std::int64_t lDeadline,
                     WaitPace const& pace, const std::uint32_t* pWordToWake) noexcept {
    const bool fWaiting = !HasPassed(lDeadline) && JoinWaiters(pCondition, pMutex, lDeadline);
    if (pWordToWake != nullptr) WakeWord(pWordToWake);
    if (!fWaiting) return false;
    bool fNotified = AwaitCommand(pCondition, lDeadline, pace);
    while (!fNotified && !LeaveWaiters(pCondition)) {
        SleepOnWord(&pCondition->nCommand, kCommandSleep, kLastLooksUs);
        fNotified = AwaitCommand(pCondition, lDeadline, pace);
    }
    if (pace.fEagerMutex) {
        AcquireWordEagerly(pMutex);
    } else {
        AcquireWord(pMutex, kNoDeadline);
    }
    return fNotified;
}
