// What the host concludes about the client that has the request lock.

#include "host/HolderWatch.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
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

TEST_F(CHolderWatchTest, DoesNotTakeAClientForDeadThatHasJustWokenUp) {
    const CForkedProcess client(RunForEver);
    client.Halt();
    CHolderWatch watch(m_nDescriptor, &Record());
    EXPECT_EQ(NextVerdict(watch), Holder::Halted);
    client.Continue();
    EXPECT_EQ(NextVerdict(watch), Holder::Halted);
    AwaitGone(watch);
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
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    while (std::chrono::steady_clock::now() < end) {
        if (watch.IsSuspicious()) {
            ASSERT_NE(watch.Judge(), Holder::Gone);
        }
        usleep(kMomentUs);
    }
}

TEST_F(CHolderWatchTest, SuspectsNobodyWhileTheLockIsFree) {
    Record().nRequestLock = 0;
    CHolderWatch watch(m_nDescriptor, &Record());
    EXPECT_FALSE(watch.IsSuspicious());
    usleep(250'000);
    EXPECT_FALSE(watch.IsSuspicious());
}

}  // namespace
