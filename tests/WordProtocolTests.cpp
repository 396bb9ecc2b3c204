// The product's word protocol against Boost's own spin mutex and spin condition on the same bytes.

#include "link/WordProtocol.h"

#include <gtest/gtest.h>

#include <boost/date_time/posix_time/posix_time.hpp>
#include <boost/interprocess/sync/scoped_lock.hpp>
#include <boost/interprocess/sync/spin/condition.hpp>
#include <boost/interprocess/sync/spin/mutex.hpp>
#include <thread>

#include "link/LinkClock.h"

namespace {

using boost::interprocess::scoped_lock;
using boost::interprocess::ipcdetail::spin_condition;
using boost::interprocess::ipcdetail::spin_mutex;
using boost::posix_time::microsec_clock;
using boost::posix_time::milliseconds;

static_assert(sizeof(spin_mutex) == sizeof(std::uint32_t));
static_assert(sizeof(spin_condition) == sizeof(ConditionWords));

constexpr std::int64_t kPast = 0;

// Boost's locks are machine code in which the thread sanitizer sees no order, and so it takes what
// they guard for unguarded.
#if defined(__SANITIZE_THREAD__)
constexpr bool kBoostsLocksAreUnseen = true;
#else
constexpr bool kBoostsLocksAreUnseen = false;
#endif

// One mutex word and one condition as plain bytes, seen by both implementations.
class CSharedWords {
public:
    std::uint32_t* Mutex() { return reinterpret_cast<std::uint32_t*>(m_bytes); }
    ConditionWords* Condition() { return reinterpret_cast<ConditionWords*>(m_bytes + 4); }
    spin_mutex& BoostMutex() { return *reinterpret_cast<spin_mutex*>(m_bytes); }
    spin_condition& BoostCondition() { return *reinterpret_cast<spin_condition*>(m_bytes + 4); }

    bool IsMutexHeld() { return *Mutex() == 1; }
    void ExpectAtRest() {
        EXPECT_EQ(*Mutex(), 0u);
        EXPECT_EQ(Condition()->nEnterLock, 0u);
        EXPECT_EQ(Condition()->nCommand, kCommandSleep);
        EXPECT_EQ(Condition()->nWaiterCount, 0u);
    }

private:
    alignas(std::uint32_t) unsigned char m_bytes[16] = {};
};

TEST(WordProtocol, FreeWordIsTakenOnce) {
    std::uint32_t nWord = 0;
    EXPECT_TRUE(TryAcquireWord(&nWord));
    EXPECT_EQ(nWord, 1u);
    EXPECT_FALSE(TryAcquireWord(&nWord));
    ReleaseWord(&nWord);
    EXPECT_EQ(nWord, 0u);
    ReleaseWord(&nWord);
    EXPECT_EQ(nWord, 0u);
}

TEST(WordProtocol, WordWithAnyOtherValueIsNeitherTakenNorFreed) {
    std::uint32_t nWord = 7;
    EXPECT_FALSE(TryAcquireWord(&nWord));
    ReleaseWord(&nWord);
    EXPECT_EQ(nWord, 7u);
}

TEST(WordProtocol, FreeWordIsTakenEvenAfterTheDeadline) {
    std::uint32_t nWord = 0;
    EXPECT_TRUE(AcquireWord(&nWord, kPast));
}

TEST(WordProtocol, HeldWordIsGivenUpAtTheDeadline) {
    std::uint32_t nWord = 1;
    const std::int64_t lDeadline = LinkTimeNow() + 10'000;
    EXPECT_FALSE(AcquireWord(&nWord, lDeadline));
    EXPECT_GE(LinkTimeNow(), lDeadline);
    EXPECT_EQ(nWord, 1u);
}

TEST(WordProtocol, WordHeldByBoostIsNotTaken) {
    CSharedWords words;
    words.BoostMutex().lock();
    EXPECT_FALSE(TryAcquireWord(words.Mutex()));
    words.BoostMutex().unlock();
    ASSERT_TRUE(TryAcquireWord(words.Mutex()));
    EXPECT_FALSE(words.BoostMutex().try_lock());
    ReleaseWord(words.Mutex());
    EXPECT_TRUE(words.BoostMutex().try_lock());
}

TEST(WordProtocol, ExcludesBoostAndItself) {
    if (kBoostsLocksAreUnseen) GTEST_SKIP() << "the thread sanitizer does not see Boost's locks";
    CSharedWords words;
    constexpr int kRounds = 20'000;
    int nCount = 0;
    const auto countWithBoost = [&] {
        for (int nRound = 0; nRound < kRounds; ++nRound) {
            const scoped_lock<spin_mutex> lock(words.BoostMutex());
            ++nCount;
        }
    };
    const auto countWithWords = [&] {
        for (int nRound = 0; nRound < kRounds; ++nRound) {
            const CWordLock lock(words.Mutex(), kNoDeadline);
            ++nCount;
        }
    };
    std::thread first(countWithBoost), second(countWithWords), third(countWithWords);
    first.join();
    second.join();
    third.join();
    EXPECT_EQ(nCount, 3 * kRounds);
    words.ExpectAtRest();
}

TEST(WordProtocol, NotificationWithoutWaitersDoesNothing) {
    CSharedWords words;
    EXPECT_FALSE(NotifyOne(words.Condition()));
    words.ExpectAtRest();
}

TEST(WordProtocol, WaitWithAPassedDeadlineKeepsTheMutex) {
    CSharedWords words;
    ASSERT_TRUE(TryAcquireWord(words.Mutex()));
    EXPECT_FALSE(WaitOnCondition(words.Condition(), words.Mutex(), kPast));
    EXPECT_TRUE(words.IsMutexHeld());
    EXPECT_EQ(words.Condition()->nWaiterCount, 0u);
}

TEST(WordProtocol, WaitEndsAtItsDeadlineHoldingTheMutex) {
    CSharedWords words;
    ASSERT_TRUE(TryAcquireWord(words.Mutex()));
    EXPECT_FALSE(WaitOnCondition(words.Condition(), words.Mutex(), LinkTimeNow() + 20'000));
    EXPECT_TRUE(words.IsMutexHeld());
    ReleaseWord(words.Mutex());
    words.ExpectAtRest();
}

TEST(WordProtocol, WaitGivesUpWhenTheEnterLockIsHeldUntilTheDeadline) {
    CSharedWords words;
    ASSERT_TRUE(TryAcquireWord(words.Mutex()));
    ASSERT_TRUE(TryAcquireWord(&words.Condition()->nEnterLock));
    EXPECT_FALSE(WaitOnCondition(words.Condition(), words.Mutex(), LinkTimeNow() + 10'000));
    EXPECT_TRUE(words.IsMutexHeld());
    EXPECT_EQ(words.Condition()->nWaiterCount, 0u);
}

TEST(WordProtocol, NotifierLeavesTheEnterLockToTheWaiterItWakes) {
    CSharedWords words;
    words.Condition()->nWaiterCount = 1;
    EXPECT_TRUE(NotifyOne(words.Condition()));
    EXPECT_EQ(words.Condition()->nEnterLock, 1u);
    EXPECT_EQ(words.Condition()->nCommand, kCommandNotifyOne);
}

TEST(WordProtocol, NotifierThatHasEnteredLeavesTheLockOnlyToAWaiter) {
    CSharedWords words;
    ASSERT_TRUE(TryAcquireWord(&words.Condition()->nEnterLock));
    EXPECT_FALSE(NotifyOneEntered(words.Condition()));
    words.ExpectAtRest();

    ASSERT_TRUE(TryAcquireWord(&words.Condition()->nEnterLock));
    words.Condition()->nWaiterCount = 1;
    EXPECT_TRUE(NotifyOneEntered(words.Condition()));
    EXPECT_EQ(words.Condition()->nEnterLock, 1u);
    EXPECT_EQ(words.Condition()->nCommand, kCommandNotifyOne);
}

TEST(WordProtocol, WaiterThatLooksAfterOtherThingsStaysOneUntilItsCommandComes) {
    CSharedWords words;
    ASSERT_TRUE(TryAcquireWord(words.Mutex()));
    ASSERT_TRUE(JoinWaiters(words.Condition(), words.Mutex(), kNoDeadline));
    EXPECT_FALSE(words.IsMutexHeld());
    EXPECT_FALSE(AwaitCommand(words.Condition(), LinkTimeNow() + 1'000, kHostPace));
    EXPECT_EQ(words.Condition()->nWaiterCount, 1u);
    EXPECT_TRUE(NotifyOne(words.Condition()));
    EXPECT_TRUE(AwaitCommand(words.Condition(), kPast, kHostPace));
    words.ExpectAtRest();
}

// Plays ping-pong: even turns belong to the product's side, odd turns to Boost's.
class Alternation : public testing::TestWithParam<bool> {};

TEST_P(Alternation, BothSidesAnswerEachOtherInTurn) {
    if (kBoostsLocksAreUnseen) GTEST_SKIP() << "the thread sanitizer does not see Boost's locks";
    constexpr int kTurns = 2000;
    const bool fWithDeadline = GetParam();
    CSharedWords toProduct, toBoost;
    int nTurn = 0;
    // One mutex for both conditions, as in the message segment.
    CSharedWords& shared = toProduct;

    std::thread boostSide([&] {
        scoped_lock<spin_mutex> lock(shared.BoostMutex());
        while (nTurn < kTurns) {
            if (nTurn % 2 == 1) {
                ++nTurn;
                toProduct.BoostCondition().notify_one();
            } else if (fWithDeadline) {
                toBoost.BoostCondition().timed_wait(
                    lock, microsec_clock::universal_time() + milliseconds(500));
            } else {
                toBoost.BoostCondition().wait(lock);
            }
        }
        toProduct.BoostCondition().notify_one();
    });

    AcquireWord(shared.Mutex(), kNoDeadline);
    while (nTurn < kTurns) {
        if (nTurn % 2 == 0) {
            ++nTurn;
            NotifyOne(toBoost.Condition());
        } else {
            WaitOnCondition(toProduct.Condition(), shared.Mutex(),
                            fWithDeadline ? LinkTimeNow() + 500'000 : kNoDeadline);
        }
    }
    NotifyOne(toBoost.Condition());
    ReleaseWord(shared.Mutex());
    boostSide.join();
    shared.ExpectAtRest();
    toBoost.ExpectAtRest();
}

INSTANTIATE_TEST_SUITE_P(WordProtocol, Alternation, testing::Bool());

TEST(WordProtocol, WaiterAnswersBoostsNotifyAll) {
    if (kBoostsLocksAreUnseen) GTEST_SKIP() << "the thread sanitizer does not see Boost's locks";
    CSharedWords words;
    int nWoken = 0;
    const auto wait = [&] {
        AcquireWord(words.Mutex(), kNoDeadline);
        if (WaitOnCondition(words.Condition(), words.Mutex(), kNoDeadline)) ++nWoken;
        ReleaseWord(words.Mutex());
    };
    std::thread first(wait), second(wait);
    for (;;) {
        const scoped_lock<spin_mutex> lock(words.BoostMutex());
        if (__atomic_load_n(&words.Condition()->nWaiterCount, __ATOMIC_SEQ_CST) == 2) break;
    }
    words.BoostCondition().notify_all();
    first.join();
    second.join();
    EXPECT_EQ(nWoken, 2);
    words.ExpectAtRest();
}

TEST(LinkClock, CountsAsBoostDoes) {
    const auto now = microsec_clock::universal_time();
    const std::int64_t lBoost = std::int64_t{now.date().day_number()} * 86'400'000'000 +
                                now.time_of_day().total_microseconds();
    const std::int64_t lLater = LinkTimeNow();
    EXPECT_GE(lLater, lBoost);
    EXPECT_LT(lLater - lBoost, 60 * kMicrosecondsPerSecond);
}

TEST(LinkClock, OnlyMinusOneHasNoDeadline) {
    EXPECT_EQ(DeadlineFromTimeout(-1), kNoDeadline);
    const std::int64_t lBefore = LinkTimeNow();
    EXPECT_LT(DeadlineFromTimeout(-2), LinkTimeNow());
    EXPECT_GE(DeadlineFromTimeout(0), lBefore);
    EXPECT_GE(DeadlineFromTimeout(INT32_MAX), lBefore + std::int64_t{INT32_MAX} * 1000);
    EXPECT_LT(DeadlineFromTimeout(INT32_MIN), lBefore);
}

TEST(LinkClock, HeartbeatIsStaleFromExactlyOneSecondOn) {
    const std::int64_t lNow = LinkTimeNow();
    EXPECT_TRUE(IsHeartbeatStale(lNow - 1'000'000, lNow));
    EXPECT_FALSE(IsHeartbeatStale(lNow - 999'999, lNow));
    EXPECT_FALSE(IsHeartbeatStale(lNow + 5'000'000, lNow));
    EXPECT_TRUE(IsHeartbeatStale(INT64_MIN, lNow));
    EXPECT_FALSE(IsHeartbeatStale(INT64_MAX, lNow));
}

}  // namespace
