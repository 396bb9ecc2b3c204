// What the host concludes about the client that has the request lock.

#include "host/HolderWatch.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <unistd.h>

#include "ForkedProcess.h"
#include "PeerHost.h"

namespace {

constexpr int kHost = 3;
constexpr useconds_t kMomentUs = 2'000;

class CHolderWatchTest : public testing::Test {
protected:
    void SetUp() override {
        m_nDescriptor = shm_open("/TAN_Host_3", O_RDWR, 0);
        ASSERT_GE(m_nDescriptor, 0);
        Record().nRequestLock = 1;
    }
    void TearDown() override { close(m_nDescriptor); }

    MessageRecord& Record() { return *reinterpret_cast<MessageRecord*>(m_segment.Bytes()); }

    // What the watch says when it says something again.
    Holder NextVerdict(CHolderWatch& watch) {
        for (;;) {
            if (watch.IsSuspicious()) {
                const Holder holder = watch.Judge();
                if (holder != Holder::Fine) return holder;
            }
            usleep(kMomentUs);
        }
    }

    // A machine that is far too busy may make a client look halted now and then.
    void AwaitGone(CHolderWatch& watch) {
        while (NextVerdict(watch) != Holder::Gone) {
        }
    }

    void ExpectNoDeathFor(CHolderWatch& watch, std::chrono::milliseconds time) {
        const auto end = std::chrono::steady_clock::now() + time;
        while (std::chrono::steady_clock::now() < end) {
            if (watch.IsSuspicious()) {
                ASSERT_NE(watch.Judge(), Holder::Gone);
            }
            usleep(kMomentUs);
        }
    }

    CTestMessageSegment m_segment{kHost};
    int m_nDescriptor = -1;
};

// A client that waits, looking every now and then.
int RunForEver() {
    for (;;) usleep(kMomentUs);
}

TEST_F(CHolderWatchTest, TakesTheHolderForDeadWhenAllRunInVain) {
    const CForkedProcess client(RunForEver);
    CHolderWatch watch(m_nDescriptor, &Record());
    AwaitGone(watch);
}

TEST_F(CHolderWatchTest, TakesThreeWholeWindowsForTheProof) {
    const CForkedProcess client(RunForEver);
    CHolderWatch watch(m_nDescriptor, &Record());
    const auto start = std::chrono::steady_clock::now();
    AwaitGone(watch);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(400 + 3 * 150));
}

TEST_F(CHolderWatchTest, ThreadThatSleepsAllTheTimeIsNoHolder) {
    const CForkedProcess client([] { return pause(); });
    CHolderWatch watch(m_nDescriptor, &Record());
    AwaitGone(watch);
}

TEST_F(CHolderWatchTest, DoubtsAClientThatIsHaltedAndNeedsEveryWindowAfterItHasWokenUp) {
    const CForkedProcess client(RunForEver);
    client.Halt();
    CHolderWatch watch(m_nDescriptor, &Record());
    EXPECT_EQ(NextVerdict(watch), Holder::Doubtful);
    EXPECT_EQ(NextVerdict(watch), Holder::Doubtful);
    const auto start = std::chrono::steady_clock::now();
    client.Continue();
    AwaitGone(watch);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(3 * 150));
}

TEST_F(CHolderWatchTest, DoubtsAClientInTheHandsOfADebugger) {
    const CForkedProcess client(RunForEver);
    if (ptrace(PTRACE_SEIZE, client.Id(), nullptr, nullptr) != 0) {
        GTEST_SKIP() << "this system does not let a test trace its child";
    }
    CHolderWatch watch(m_nDescriptor, &Record());
    EXPECT_EQ(NextVerdict(watch), Holder::Doubtful);
    EXPECT_EQ(NextVerdict(watch), Holder::Doubtful);
}

TEST_F(CHolderWatchTest, DoubtsAHolderThatMayWaitForANotification) {
    const CForkedProcess client(RunForEver);
    Record().replyCondition.nWaiterCount = 1;
    CHolderWatch watch(m_nDescriptor, &Record());
    EXPECT_EQ(NextVerdict(watch), Holder::Doubtful);
    EXPECT_EQ(NextVerdict(watch), Holder::Doubtful);
    Record().replyCondition.nEnterLock = 1;
    Record().replyCondition.nCommand = kCommandNotifyOne;
    AwaitGone(watch);
}

TEST_F(CHolderWatchTest, DoubtsAHolderThatMayWaitForTheHostToTakeItsCommand) {
    const CForkedProcess client(RunForEver);
    Record().requestCondition.nCommand = kCommandNotifyOne;
    CHolderWatch watch(m_nDescriptor, &Record());
    EXPECT_EQ(NextVerdict(watch), Holder::Doubtful);
    Record().requestCondition.nCommand = kCommandSleep;
    AwaitGone(watch);
}

TEST_F(CHolderWatchTest, RequestThatIsSentDuringTheProofIsSeenThoughAllWordsAreTheSameAgain) {
    const CForkedProcess client([this] {
        for (;;) {
            usleep(kMomentUs);
            __atomic_store_n(&Record().fPending, std::uint8_t{1}, __ATOMIC_SEQ_CST);
        }
        return 0;
    });
    Record().fPending = 1;
    CHolderWatch watch(m_nDescriptor, &Record());
    ExpectNoDeathFor(watch, std::chrono::seconds(2));
}

TEST_F(CHolderWatchTest, ExchangeThatGetsOnBeginsTheProofAnew) {
    const CForkedProcess client(RunForEver);
    CHolderWatch watch(m_nDescriptor, &Record());
    for (int nRound = 0; nRound < 2; ++nRound) {
        ExpectNoDeathFor(watch, std::chrono::milliseconds(600));
        watch.NoteProgress();
    }
}

TEST_F(CHolderWatchTest, TakesNobodyForDeadWhileTheWordsChange) {
    const CForkedProcess client([this] {
        for (std::uint32_t nTurn = 0;; ++nTurn) {
            usleep(kMomentUs);
            __atomic_store_n(&Record().replyCondition.nCommand, nTurn, __ATOMIC_SEQ_CST);
        }
        return 0;
    });
    CHolderWatch watch(m_nDescriptor, &Record());
    ExpectNoDeathFor(watch, std::chrono::seconds(2));
}

TEST_F(CHolderWatchTest, SuspectsNobodyWhileTheLockIsFree) {
    Record().nRequestLock = 0;
    CHolderWatch watch(m_nDescriptor, &Record());
    EXPECT_FALSE(watch.IsSuspicious());
    usleep(250'000);
    EXPECT_FALSE(watch.IsSuspicious());
}

}  // namespace
