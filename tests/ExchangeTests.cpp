#include <gtest/gtest.h>

#include <filesystem>
#include <new>
#include <thread>

#include "AllocationLimit.h"
#include "ForkedProcess.h"
#include "PeerHost.h"
#include "link/LinkClock.h"
#include "link/TANClientInterProcess.h"

namespace {

constexpr int kHost = 3;
constexpr int kTimeout = 121;
constexpr int kInvalidArgument = 22;

struct Exchange {
    CTANClientInterProcess client;
    std::string strReply = "untouched";

    int Send(std::string request, int nTimeoutMs = 1000, int nHost = kHost) {
        return client.SendTANMessage(nHost, request, strReply, nTimeoutMs);
    }
};

void ExpectAtRest(CTestMessageSegment const& segment) {
    EXPECT_EQ(segment.RequestLock(), 0u);
    EXPECT_EQ(segment.ExchangeMutex(), 0u);
    EXPECT_EQ(segment.ReplyWaiters(), 0u);
}

std::size_t CountEntries(const char* szDirectory) {
    std::size_t nCount = 0;
    for (auto const& entry : std::filesystem::directory_iterator(szDirectory)) {
        nCount += !entry.path().empty();
    }
    return nCount;
}

TEST(Exchange, ReplyOfTheHostComesBack) {
    CPeerHost host;
    host.AnswerWith("hello\n");
    Exchange exchange;
    EXPECT_EQ(exchange.Send("print('hello')\n"), 0);
    EXPECT_EQ(exchange.strReply, "hello\n");
    EXPECT_EQ(host.LastRequest(), "print('hello')\n");
}

TEST(Exchange, ManyExchangesInARowKeepTheirOrder) {
    CPeerHost host;
    host.AnswerWith([](std::string const& request) { return CPeerHost::Answer{request, ""}; });
    Exchange exchange;
    for (int nRound = 0; nRound < 300; ++nRound) {
        const std::string strRequest = "round " + std::to_string(nRound);
        ASSERT_EQ(exchange.Send(strRequest), 0);
        ASSERT_EQ(exchange.strReply, strRequest);
    }
}

TEST(Exchange, MissingHostGivesTheSystemsError) {
    Exchange exchange;
    EXPECT_EQ(exchange.Send("x", 1000, 7), 2);
    EXPECT_EQ(exchange.strReply, "untouched");
}

TEST(Exchange, ClearsTheTextsUnlessTheyAreKept) {
    Exchange exchange;
    exchange.client.m_strLastError = exchange.client.m_strAdvice = "old";
    exchange.client.m_fKeepMessages = true;
    exchange.Send("x", 0, 7);
    EXPECT_EQ(exchange.client.m_strLastError, "old");
    EXPECT_EQ(exchange.client.m_strAdvice, "old");
    exchange.client.m_fKeepMessages = false;
    exchange.Send("x", 0, 7);
    EXPECT_EQ(exchange.client.m_strLastError, "");
    EXPECT_EQ(exchange.client.m_strAdvice, "");
}

TEST(Exchange, ClosedHostGetsNothing) {
    CTestMessageSegment segment(kHost);
    segment.Close();
    Exchange exchange;
    EXPECT_EQ(exchange.Send("x"), -1);
    EXPECT_EQ(segment.Buffer(), "");
    EXPECT_FALSE(segment.IsPending());
    EXPECT_EQ(exchange.strReply, "untouched");
    ExpectAtRest(segment);
}

TEST(Exchange, TimesOutWhenNobodyAnswersAndLeavesTheRequest) {
    CTestMessageSegment segment(kHost);
    Exchange exchange;
    EXPECT_EQ(exchange.Send("late", 20), kTimeout);
    EXPECT_EQ(segment.Buffer(), "late");
    EXPECT_TRUE(segment.IsPending());
    EXPECT_EQ(exchange.strReply, "untouched");
    ExpectAtRest(segment);
}

TEST(Exchange, TimesOutAtTheRequestLock) {
    CTestMessageSegment segment(kHost);
    segment.Put<std::uint32_t>(4, 1);
    Exchange exchange;
    EXPECT_EQ(exchange.Send("x", 20), kTimeout);
    EXPECT_EQ(segment.RequestLock(), 1u);
    EXPECT_EQ(segment.ExchangeMutex(), 0u);
    EXPECT_EQ(segment.Buffer(), "");
}

TEST(Exchange, TimesOutAtTheExchangeMutex) {
    CTestMessageSegment segment(kHost);
    segment.Put<std::uint32_t>(8, 1);
    Exchange exchange;
    EXPECT_EQ(exchange.Send("x", 20), kTimeout);
    EXPECT_EQ(segment.RequestLock(), 0u);
    EXPECT_EQ(segment.ExchangeMutex(), 1u);
    EXPECT_EQ(segment.Buffer(), "");
}

TEST(Exchange, HostThatClosedWhileHoldingTheMutexIsClosed) {
    CTestMessageSegment segment(kHost);
    segment.Put<std::uint32_t>(8, 1);
    segment.Close();
    Exchange exchange;
    EXPECT_EQ(exchange.Send("x", 20), -1);
    EXPECT_EQ(segment.RequestLock(), 0u);
}

TEST(Exchange, NegativeTimeoutIsADeadlineInThePast) {
    CTestMessageSegment segment(kHost);
    Exchange exchange;
    for (const int nTimeoutMs : {0, -2, -1000, INT32_MIN}) {
        EXPECT_EQ(exchange.Send("x", nTimeoutMs), kTimeout) << nTimeoutMs;
        ExpectAtRest(segment);
    }
}

TEST(Exchange, EachWaitGetsTheWholeTimeout) {
    CTestMessageSegment segment(kHost);
    segment.Put<std::uint32_t>(4, 1);
    const std::int64_t lStart = LinkTimeNow();
    std::thread release([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(60));
        segment.Put<std::uint32_t>(4, 0);
    });
    Exchange exchange;
    EXPECT_EQ(exchange.Send("x", 500), kTimeout);
    EXPECT_GE(LinkTimeNow() - lStart, 560'000);
    release.join();
}

TEST(Exchange, OneNotificationCountsAsTheAnswer) {
    CTestMessageSegment segment(kHost);
    Exchange exchange;
    std::thread notifier([&] {
        for (;;) {
            const boost::interprocess::scoped_lock lock(segment.Mutex());
            if (segment.ReplyWaiters() == 1) break;
        }
        segment.ReplyCondition().notify_one();
    });
    EXPECT_EQ(exchange.Send("still pending"), 0);
    notifier.join();
    EXPECT_TRUE(segment.IsPending());
    EXPECT_EQ(exchange.strReply, "still pending");
}

// Puts a word into the segment after a while; joined at the end of the scope.
class CLatePut {
public:
    CLatePut(CTestMessageSegment& segment, std::size_t nOffset, std::uint32_t nValue,
             std::chrono::milliseconds delay)
        : m_thread([=, &segment] {
              std::this_thread::sleep_for(delay);
              segment.Put<std::uint32_t>(nOffset, nValue);
          }) {}
    ~CLatePut() { m_thread.join(); }

private:
    std::thread m_thread;
};

constexpr std::size_t kMutexOffset = 8;
constexpr std::size_t kRequestEnterOffset = 12;
constexpr std::size_t kRequestCommandOffset = 16;
constexpr std::size_t kRequestWaitersOffset = 20;
constexpr std::size_t kReplyEnterOffset = 24;
constexpr std::size_t kReplyCommandOffset = 28;
constexpr int kShortMs = 50;
// Longer than everything that an exchange with that time-out may wait for with a deadline.
constexpr auto kLongAfterwards = std::chrono::milliseconds(6 * kShortMs);
constexpr std::int64_t kLongAfterwardsUs = 1000 * kLongAfterwards.count();

TEST(Exchange, NotificationWaitsForTheEnterLockWithoutADeadline) {
    CTestMessageSegment segment(kHost);
    segment.Put<std::uint32_t>(kRequestEnterOffset, 1);
    const std::int64_t lStart = LinkTimeNow();
    const CLatePut release(segment, kRequestEnterOffset, 0, kLongAfterwards);
    Exchange exchange;
    EXPECT_EQ(exchange.Send("x", kShortMs), kTimeout);
    EXPECT_GE(LinkTimeNow() - lStart, kLongAfterwardsUs + kShortMs * 1000);
    EXPECT_TRUE(segment.IsPending());
    ExpectAtRest(segment);
}

TEST(Exchange, RequestIsCopiedBeforeTheNotificationAndPendingAfterIt) {
    CTestMessageSegment segment(kHost);
    segment.Put<std::uint32_t>(kRequestEnterOffset, 1);
    std::thread host([&] {
        while (segment.Buffer() != "x") std::this_thread::yield();
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        EXPECT_FALSE(segment.IsPending());
        segment.Put<std::uint32_t>(kRequestEnterOffset, 0);
    });
    Exchange exchange;
    EXPECT_EQ(exchange.Send("x", kShortMs), kTimeout);
    host.join();
    EXPECT_TRUE(segment.IsPending());
}

TEST(Exchange, HostThatClosesDuringTheNotificationIsClosed) {
    CTestMessageSegment segment(kHost);
    segment.Put<std::uint32_t>(kRequestEnterOffset, 1);
    std::thread host([&] {
        while (segment.Buffer() != "x") std::this_thread::yield();
        segment.Close();
        segment.Put<std::uint32_t>(kRequestEnterOffset, 0);
    });
    Exchange exchange;
    EXPECT_EQ(exchange.Send("x", -1), -1);
    host.join();
    EXPECT_EQ(exchange.strReply, "untouched");
    ExpectAtRest(segment);
}

TEST(Exchange, NotificationWaitsForTheCommandWordWithoutADeadline) {
    CTestMessageSegment segment(kHost);
    segment.Put<std::uint32_t>(kRequestCommandOffset, 1);
    segment.Put<std::uint32_t>(kRequestWaitersOffset, 1);
    {
        const std::int64_t lStart = LinkTimeNow();
        const CLatePut takeCommand(segment, kRequestCommandOffset, 0, kLongAfterwards);
        Exchange exchange;
        EXPECT_EQ(exchange.Send("x", kShortMs), kTimeout);
        EXPECT_GE(LinkTimeNow() - lStart, kLongAfterwardsUs + kShortMs * 1000);
    }
    EXPECT_EQ(segment.Get<std::uint32_t>(kRequestCommandOffset), 1u);
    EXPECT_EQ(segment.Get<std::uint32_t>(kRequestEnterOffset), 1u);
    ExpectAtRest(segment);
}

TEST(Exchange, ClientThatCannotJoinTheWaitersTimesOutWithoutHavingJoined) {
    CTestMessageSegment segment(kHost);
    segment.Put<std::uint32_t>(kReplyEnterOffset, 1);
    Exchange exchange;
    EXPECT_EQ(exchange.Send("x", kShortMs), kTimeout);
    EXPECT_EQ(segment.Get<std::uint32_t>(kReplyEnterOffset), 1u);
    ExpectAtRest(segment);
}

TEST(Exchange, NotificationUnderWayAtTheDeadlineIsWaitedForAndCounts) {
    CTestMessageSegment segment(kHost);
    std::thread notifier([&] {
        while (segment.ReplyWaiters() == 0 || segment.Get<std::uint32_t>(kReplyEnterOffset) != 0) {
            std::this_thread::yield();
        }
        segment.Put<std::uint32_t>(kReplyEnterOffset, 1);
        std::this_thread::sleep_for(kLongAfterwards);
        segment.Put<std::uint32_t>(kReplyCommandOffset, 1);
    });
    Exchange exchange;
    const std::int64_t lStart = LinkTimeNow();
    EXPECT_EQ(exchange.Send("x", kShortMs), 0);
    EXPECT_GE(LinkTimeNow() - lStart, kLongAfterwardsUs);
    notifier.join();
    EXPECT_EQ(exchange.strReply, "x");
    EXPECT_EQ(segment.Get<std::uint32_t>(kReplyEnterOffset), 0u);
    EXPECT_EQ(segment.Get<std::uint32_t>(kReplyCommandOffset), 0u);
    ExpectAtRest(segment);
    EXPECT_EQ(exchange.Send("y", 0), kTimeout);
}

TEST(Exchange, MutexIsTakenBackAfterTheDeadlineHoweverLongThatLasts) {
    CTestMessageSegment segment(kHost);
    std::thread host([&] {
        while (segment.ReplyWaiters() == 0 || segment.ExchangeMutex() != 0) {
            std::this_thread::yield();
        }
        segment.Put<std::uint32_t>(kMutexOffset, 1);
        std::this_thread::sleep_for(kLongAfterwards);
        segment.Put<std::uint32_t>(kMutexOffset, 0);
    });
    Exchange exchange;
    const std::int64_t lStart = LinkTimeNow();
    EXPECT_EQ(exchange.Send("x", kShortMs), kTimeout);
    EXPECT_GE(LinkTimeNow() - lStart, kLongAfterwardsUs);
    host.join();
    ExpectAtRest(segment);
}

TEST(Exchange, ClientThatWasHaltedInItsFirstWaitHasTheWholeTimeoutForTheOthers) {
    CTestMessageSegment segment(kHost);
    segment.Put<std::uint32_t>(4, 1);
    CForkedProcess client([] {
        Exchange exchange;
        return exchange.Send("x", 1000);
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    client.Halt();
    std::this_thread::sleep_for(std::chrono::milliseconds(3200));
    segment.Put<std::uint32_t>(4, 0);
    client.Continue();
    while (segment.ReplyWaiters() == 0 && !client.Wait(std::chrono::milliseconds(1))) {
    }
    segment.ReplyCondition().notify_one();
    EXPECT_EQ(client.Wait(std::chrono::seconds(60)), 0);
}

TEST(Exchange, ErrorTextOfTheScriptBecomesTheLastError) {
    CPeerHost host;
    host.AnswerWith("printed before\n", "oops");
    Exchange exchange;
    exchange.client.m_fKeepMessages = true;
    EXPECT_EQ(exchange.Send("x"), 0);
    EXPECT_EQ(exchange.strReply, "printed before\n");
    EXPECT_EQ(exchange.client.m_strLastError, "oops");
    EXPECT_FALSE(exchange.client.m_fKeepMessages);
}

TEST(Exchange, KeepFlagStaysWithoutAScriptError) {
    CPeerHost host;
    Exchange exchange;
    exchange.client.m_fKeepMessages = true;
    EXPECT_EQ(exchange.Send("x"), 0);
    EXPECT_TRUE(exchange.client.m_fKeepMessages);
}

TEST(Exchange, RequestOfCapacityBytesLosesItsLast) {
    CTestMessageSegment segment(kHost, 16);
    Exchange exchange;
    exchange.Send("0123456789abcdef", 0);
    EXPECT_EQ(segment.Buffer(), "0123456789abcde");
    exchange.Send("0123456789abcde", 0);
    EXPECT_EQ(segment.Buffer(), "0123456789abcde");
    exchange.Send(std::string(100'000, 'x'), 0);
    EXPECT_EQ(segment.Buffer(), std::string(15, 'x'));
}

TEST(Exchange, ShortRequestClearsTheRestOfTheCapacityAndNoMore) {
    constexpr int kCapacity = 16;
    CTestMessageSegment segment(kHost, kCapacity);
    unsigned char* const pBuffer = segment.Bytes() + CTestMessageSegment::kBufferOffset;
    std::fill_n(pBuffer, kCapacity + 1, 0xEE);
    Exchange exchange;
    exchange.Send(std::string("ab\0cd", 5), 0);
    EXPECT_EQ(segment.Buffer(), "ab");
    EXPECT_TRUE(std::all_of(pBuffer + 2, pBuffer + kCapacity, [](auto b) { return b == 0; }));
    EXPECT_EQ(pBuffer[kCapacity], 0xEE);
}

struct BadLayout {
    const char* szWhat;
    std::int32_t nCapacity, nBuffer, nError;
};

TEST(Exchange, UnbelievableLayoutIsRefusedUntouched) {
    constexpr std::int32_t kSize = 4096;
    const BadLayout layouts[] = {
        {"no capacity", 0, 1024, 64},
        {"negative capacity", -1, 1024, 64},
        {"capacity beyond the end", kSize, 1024, 64},
        {"capacity one beyond the end", kSize - 1024 + 1, 1024, 64},
        {"huge capacity", INT32_MAX, 1024, 64},
        {"negative buffer", 64, -64, 64},
        {"buffer over the header", 64, 55, 64},
        {"buffer at the end", 1, kSize, 64},
        {"huge buffer offset", INT32_MAX, INT32_MAX, 64},
        {"negative error text", 64, 1024, -1},
        {"error text over the header", 64, 1024, 0},
        {"error text at the end", 64, 1024, kSize},
        {"huge error offset", 64, 1024, INT32_MAX},
    };
    for (BadLayout const& layout : layouts) {
        CTestMessageSegment segment(kHost, layout.nCapacity, kSize);
        segment.Put(48, layout.nBuffer);
        segment.Put(52, layout.nError);
        const std::vector<unsigned char> before(segment.Bytes(), segment.Bytes() + kSize);
        Exchange exchange;
        exchange.client.m_strLastError = "kept";
        exchange.client.m_fKeepMessages = true;
        EXPECT_EQ(exchange.Send("request"), kInvalidArgument) << layout.szWhat;
        EXPECT_EQ(exchange.client.m_strLastError, "kept") << layout.szWhat;
        EXPECT_EQ(exchange.strReply, "untouched") << layout.szWhat;
        EXPECT_TRUE(std::equal(before.begin(), before.end(), segment.Bytes())) << layout.szWhat;
    }
}

TEST(Exchange, SegmentShorterThanItsHeaderIsRefused) {
    for (std::size_t nSize = 0; nSize <= 56; ++nSize) {
        const CTestSegment segment("TAN_Host_3", nSize);
        Exchange exchange;
        EXPECT_EQ(exchange.Send("request"), kInvalidArgument) << nSize;
    }
}

TEST(Exchange, LayoutThatJustFitsIsUsed) {
    CTestMessageSegment segment(kHost, 8, 65);
    segment.Put<std::int32_t>(48, 56);
    segment.Put<std::int32_t>(52, 64);
    Exchange exchange;
    EXPECT_EQ(exchange.Send("1234567890", 0), kTimeout);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(segment.Bytes() + 56), 8),
              std::string("1234567\0", 8));
}

TEST(Exchange, TextsWithoutTerminatorEndWithTheSegment) {
    constexpr std::size_t kSize = 2048;
    CTestMessageSegment segment(kHost, 64, kSize);
    Exchange exchange;
    std::thread host([&] {
        for (;;) {
            const boost::interprocess::scoped_lock lock(segment.Mutex());
            if (segment.ReplyWaiters() == 1) break;
        }
        std::fill(segment.Bytes() + CTestMessageSegment::kErrorOffset, segment.Bytes() + kSize,
                  'r');
        segment.ReplyCondition().notify_one();
    });
    EXPECT_EQ(exchange.Send("x"), 0);
    host.join();
    EXPECT_EQ(exchange.strReply, std::string(kSize - CTestMessageSegment::kBufferOffset, 'r'));
    EXPECT_EQ(exchange.client.m_strLastError,
              std::string(kSize - CTestMessageSegment::kErrorOffset, 'r'));
}

TEST(Exchange, LeavesNoDescriptorAndNoMappingBehind) {
    if (!std::filesystem::is_directory("/proc/self/fd"))
        GTEST_SKIP() << "nothing here tells what is open";
    CPeerHost host;
    CTestMessageSegment closed(4);
    closed.Close();
    Exchange exchange;
    const auto runEveryOutcome = [&] {
        exchange.Send("x");
        exchange.Send("x", 0, 4);
        exchange.Send("x", 0, 5);
        exchange.client.GetCurrentTANHost();
        exchange.client.NeedsUpdate();
    };
    runEveryOutcome();
    const std::size_t nDescriptors = CountEntries("/proc/self/fd");
    const std::size_t nMappings = CountEntries("/proc/self/map_files");
    for (int nRound = 0; nRound < 50; ++nRound) runEveryOutcome();
    EXPECT_EQ(CountEntries("/proc/self/fd"), nDescriptors);
    EXPECT_LE(CountEntries("/proc/self/map_files"), nMappings + 5);
}

TEST(Exchange, LocksAreGivenBackWhenMemoryRunsOut) {
    CPeerHost host;
    host.AnswerWith(std::string(20'000, 'r'));
    Exchange exchange;
    {
        const CAllocationLimit limit(20'000);
        EXPECT_THROW(exchange.Send("x"), std::bad_alloc);
    }
    ExpectAtRest(host.Segment());
    EXPECT_EQ(exchange.strReply, "untouched");
    EXPECT_EQ(exchange.Send("x"), 0);
}

TEST(Exchange, KeptOperationsDoNothing) {
    CTANClientInterProcess client;
    EXPECT_EQ(client.ReceiveMessage(), 0);
    client.TidyUp();
    EXPECT_EQ(client.m_strLastError, "");
}

}  // namespace
