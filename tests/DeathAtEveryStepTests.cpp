// Clients and hosts that die or halt at each step of an exchange. The client is the product's own,
// stepped by the instruction; nothing in it knows that it is being tested.

#include "StepFixture.h"
#include "link/LinkClock.h"

namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

// What a loaded machine may add to a wait.
constexpr std::int64_t kSlackUs = 300'000;

// Runs a host that mends nothing until it is killed.
int RunPeer() {
    CPeerHost host(kHost);
    host.AnswerWith([](std::string const& request) {
        return CPeerHost::Answer{"reply to " + request, ""};
    });
    for (;;) pause();
}

class CAnsweredClient : public CStepTest, public testing::WithParamInterface<std::size_t> {};

std::string AnsweredName(testing::TestParamInfo<std::size_t> const& info) {
    return StepName(AnsweredClientSteps(), info.param);
}

TEST_P(CAnsweredClient, LeavesThoseBehindItInPeaceWhenKilled) {
    StartHost(RunServer);
    CVictim victim(-1);
    CSteppedThread thread(victim.Process().Id());
    victim.Start();
    ASSERT_NO_FATAL_FAILURE(StepTo(thread, AnsweredClientSteps(), GetParam()));
    LetGo();
    CForkedProcess first([] { return SendOnce("first behind", -1); });
    CForkedProcess second([] { return SendOnce("second behind", -1); });
    usleep(50'000);
    victim.Process().Kill();
    m_host->Continue();
    const auto end = std::chrono::steady_clock::now() + kSoon;
    EXPECT_EQ(first.Wait(kSoon), 0);
    EXPECT_EQ(second.Wait(std::chrono::duration_cast<std::chrono::microseconds>(
                  end - std::chrono::steady_clock::now())),
              0);
    ExpectAnswerSoon();
    StopHost();
}

TEST_P(CAnsweredClient, GetsItsReplyAfterAHaltAndHarmsNobody) {
    StartHost(RunServer);
    CVictim victim(-1);
    CSteppedThread thread(victim.Process().Id());
    victim.Start();
    ASSERT_NO_FATAL_FAILURE(StepTo(thread, AnsweredClientSteps(), GetParam()));
    LetGo();
    thread.Detach(SIGSTOP);
    m_host->Continue();
    ExpectAnswerSoon();
    CForkedProcess busy([] {
        int nWrong = 0;
        for (int nRound = 0; nRound < 300; ++nRound) {
            nWrong += SendOnce("round " + std::to_string(nRound), 5000) != 0;
        }
        return nWrong;
    });
    usleep(5'000);
    victim.Process().Continue();
    EXPECT_EQ(victim.Process().Wait(kSoon), 0);
    EXPECT_EQ(busy.Wait(kLong), 0);
    StopHost();
}

TEST_P(CAnsweredClient, EndsWithItsOwnReplyOrNoneWhenTheHostHasStoppedDuringItsHalt) {
    StartHost(RunServer);
    CVictim victim(-1);
    CSteppedThread thread(victim.Process().Id());
    victim.Start();
    ASSERT_NO_FATAL_FAILURE(StepTo(thread, AnsweredClientSteps(), GetParam()));
    LetGo();
    thread.Detach(SIGSTOP);
    m_host->Continue();
    StopHost();
    victim.Process().Continue();
    const std::optional<int> status = victim.Process().Wait(kSoon);
    ASSERT_NE(status, std::nullopt);
    EXPECT_NE(status, kWrong);
}

TEST_P(CAnsweredClient, OfAHostThatMendsNothingCostsTheNextItsTimeout) {
    constexpr int kTimeoutMs = 150;
    StartHost(RunPeer);
    CVictim victim(-1);
    CSteppedThread thread(victim.Process().Id());
    victim.Start();
    ASSERT_NO_FATAL_FAILURE(StepTo(thread, AnsweredClientSteps(), GetParam()));
    LetGo();
    victim.Process().Kill();
    m_host->Continue();
    const std::int64_t lStart = LinkTimeNow();
    const int nStatus = SendOnce("request of another", kTimeoutMs);
    const std::int64_t lTookUs = LinkTimeNow() - lStart;
    EXPECT_TRUE(nStatus == 0 || nStatus == kTimeout) << nStatus;
    EXPECT_LT(lTookUs, kTimeoutMs * 1000 + kSlackUs);
    m_host->Kill();
    fs::remove(szMessageFile);
    fs::remove(szDirectoryFile);
}

TEST_F(CStepTest, WordsAreMendedBeforeAnybodyComes) {
    StartHost(RunServer);
    CVictim victim(-1);
    CSteppedThread thread(victim.Process().Id());
    victim.Start();
    ASSERT_NO_FATAL_FAILURE(StepTo(thread, AnsweredClientSteps(), 2));
    victim.Process().Kill();
    LetGo();
    m_host->Continue();
    // Looking only now and then, so that the host finds itself alone.
    for (auto const end = std::chrono::steady_clock::now() + kSoon;;) {
        usleep(400'000);
        const CTestSegment segment("TAN_Host_3");
        if (segment.Get<std::uint32_t>(4) == 0) break;
        ASSERT_LT(std::chrono::steady_clock::now(), end);
    }
    StopHost();
}

INSTANTIATE_TEST_SUITE_P(AtEveryStep, CAnsweredClient,
                         testing::Range<std::size_t>(0, AnsweredClientSteps().size()),
                         AnsweredName);

class CTimedOutClient : public CStepTest, public testing::WithParamInterface<std::size_t> {};

std::string TimedOutName(testing::TestParamInfo<std::size_t> const& info) {
    return StepName(TimedOutClientSteps(), info.param);
}

TEST_P(CTimedOutClient, LeavesThoseBehindItInPeaceWhenKilled) {
    StartHost(RunServer);
    CVictim victim(kVictimTimeoutMs);
    CSteppedThread thread(victim.Process().Id());
    victim.Start();
    ASSERT_NO_FATAL_FAILURE(StepTo(thread, TimedOutClientSteps(), GetParam()));
    LetGo();
    CForkedProcess behind([] { return SendOnce("behind", -1); });
    usleep(50'000);
    victim.Process().Kill();
    m_host->Continue();
    EXPECT_EQ(behind.Wait(kSoon), 0);
    ExpectAnswerSoon();
    StopHost();
}

TEST_P(CTimedOutClient, HarmsNobodyAfterAHalt) {
    StartHost(RunServer);
    CVictim victim(kVictimTimeoutMs);
    CSteppedThread thread(victim.Process().Id());
    victim.Start();
    ASSERT_NO_FATAL_FAILURE(StepTo(thread, TimedOutClientSteps(), GetParam()));
    LetGo();
    thread.Detach(SIGSTOP);
    m_host->Continue();
    ExpectAnswerSoon();
    victim.Process().Continue();
    const std::optional<int> status = victim.Process().Wait(kSoon);
    EXPECT_TRUE(status == 0 || status == kTimeout) << status.value_or(-1);
    ExpectAnswerSoon();
    StopHost();
}

INSTANTIATE_TEST_SUITE_P(AtEveryStep, CTimedOutClient,
                         testing::Range<std::size_t>(0, TimedOutClientSteps().size()),
                         TimedOutName);

class CHostAtWork : public CStepTest, public testing::WithParamInterface<std::size_t> {
protected:
    // Waits until the client waits for its reply, and halts it there.
    void HaltWaiting(CForkedProcess& client) const {
        for (;;) {
            const ExchangeView view = View();
            if (view.record.fPending == 1 && view.record.replyCondition.nWaiterCount == 1 &&
                view.record.replyCondition.nEnterLock == 0) {
                break;
            }
            usleep(1000);
        }
        client.Halt();
    }

    // A host is refused as long as the dead one's heartbeat is fresh.
    void RestartHost() {
        const auto end = std::chrono::steady_clock::now() + kSoon;
        do {
            m_host.emplace(RunServer);
        } while (m_host->Wait(500ms).has_value() && std::chrono::steady_clock::now() < end);
        EXPECT_EQ(SendOnce("request of another", 5000), 0);
    }
};

std::string HostStepName(testing::TestParamInfo<std::size_t> const& info) {
    return StepName(HostSteps(), info.param);
}

// A dead host that holds the mutex, or the enter lock of the reply, keeps its client until another
// comes, as the protocol has no deadline there.
TEST_P(CHostAtWork, KeepsAClientBeyondItsTimeoutOnlyWithAWordThatItHoldsAndCanBeStartedAgain) {
    constexpr int kTimeoutMs = 400;
    StartHost(RunServer);
    CSteppedThread thread(AnsweringThread(m_host->Id()));
    CForkedProcess client([] { return SendOnce(strVictimRequest, kTimeoutMs); });
    HaltWaiting(client);
    for (std::size_t nStep = 0; nStep <= GetParam(); ++nStep) {
        ExchangeStep const& step = HostSteps()[nStep];
        ASSERT_TRUE(thread.StepUntil([&] { return step.isReached(View()); })) << step.szName;
    }
    m_host->Signal(SIGKILL);
    thread.AwaitEnd();
    EXPECT_EQ(m_host->Wait(kLong), -1);
    const MessageRecord left = View().record;
    const bool fNotified = left.replyCondition.nCommand == kCommandNotifyOne;
    const bool fKept =
        left.nExchangeMutex == 1 || (left.replyCondition.nEnterLock == 1 && !fNotified);
    LetGo();
    client.Continue();
    const auto status = client.Wait(1ms * kTimeoutMs + std::chrono::microseconds(kSlackUs));
    if (fKept) {
        EXPECT_EQ(status, std::nullopt);
    } else {
        EXPECT_TRUE(status == 0 || status == kTimeout) << status.value_or(-1);
    }
    RestartHost();
    EXPECT_NE(client.Wait(kSoon), std::nullopt);
    StopHost();
}

TEST_P(CHostAtWork, LetsEveryPatientClientGoWhenItIsStartedAgain) {
    StartHost(RunServer);
    CSteppedThread thread(AnsweringThread(m_host->Id()));
    CForkedProcess client([] { return SendOnce(strVictimRequest, -1); });
    HaltWaiting(client);
    for (std::size_t nStep = 0; nStep <= GetParam(); ++nStep) {
        ExchangeStep const& step = HostSteps()[nStep];
        ASSERT_TRUE(thread.StepUntil([&] { return step.isReached(View()); })) << step.szName;
    }
    LetGo();
    CForkedProcess behind([] { return SendOnce("behind", -1); });
    usleep(20'000);
    m_host->Signal(SIGKILL);
    thread.AwaitEnd();
    EXPECT_EQ(m_host->Wait(kLong), -1);
    client.Continue();
    RestartHost();
    for (CForkedProcess* const pClient : {&client, &behind}) {
        const std::optional<int> status = pClient->Wait(kSoon);
        ASSERT_NE(status, std::nullopt);
        EXPECT_NE(status, kWrong);
    }
    StopHost();
}

INSTANTIATE_TEST_SUITE_P(AtEveryStep, CHostAtWork,
                         testing::Range<std::size_t>(0, HostSteps().size()), HostStepName);

}  // namespace
