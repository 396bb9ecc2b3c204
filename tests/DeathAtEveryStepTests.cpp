// Clients and hosts that die or halt at each step of an exchange. The client is the product's own,
// stepped by the instruction; nothing in it knows that it is being tested.

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <memory>
#include <optional>

#include "ExchangeSteps.h"
#include "ForkedProcess.h"
#include "PeerHost.h"
#include "SteppedThread.h"
#include "host/LinkServer.h"
#include "link/LinkClock.h"
#include "link/TANClientInterProcess.h"

namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

constexpr int kHost = 3;
constexpr int kTimeout = 121;
constexpr int kWrong = 99;
constexpr int kVictimTimeoutMs = 1500;
constexpr auto kSoon = 5s;
// What a loaded machine may add to a wait.
constexpr std::int64_t kSlackUs = 300'000;
constexpr auto kLong = 60s;
constexpr char szMessageFile[] = "/dev/shm/TAN_Host_3";
constexpr char szSpareFile[] = "/dev/shm/TAN_Host_3.spare";
constexpr char szDirectoryFile[] = "/dev/shm/__KEL_TAN_INTERPROCESS_DIR6__";
constexpr char strVictimRequest[] = "request of the victim";
constexpr char strVictimReply[] = "reply to request of the victim";

// The exit status of a process that sends one request: 0 for its own reply, the exchange's status
// otherwise.
int SendOnce(std::string strRequest, int nTimeoutMs) {
    CTANClientInterProcess client;
    std::string strReply;
    const std::string strExpected = "reply to " + strRequest;
    const int nStatus = client.SendTANMessage(kHost, strRequest, strReply, nTimeoutMs);
    if (nStatus != 0) return nStatus;
    return strReply == strExpected ? 0 : kWrong;
}

CServerReply Reply(std::string const& request) {
    return {"reply to " + request, "", 0};
}

// Runs the reference host's link until SIGTERM; it is refused while another looks alive.
int RunServer() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    try {
        const CLinkServer server(kHost, true, Reply);
        int nSignal = 0;
        sigwait(&signals, &nSignal);
        return 0;
    } catch (CHostSegmentError const&) {
        return kWrong;
    }
}

// Runs a host that mends nothing until it is killed.
int RunPeer() {
    CPeerHost host(kHost);
    host.AnswerWith([](std::string const& request) {
        return CPeerHost::Answer{"reply to " + request, ""};
    });
    for (;;) pause();
}

// A victim that waits for a byte before it sends, so that it can be taken hold of.
class CVictim {
public:
    explicit CVictim(int nTimeoutMs) {
        if (pipe(m_pipe) != 0) throw std::runtime_error("no pipe");
        m_process.emplace([this, nTimeoutMs] {
            char cStart = 0;
            if (read(m_pipe[0], &cStart, 1) != 1) return kWrong;
            return SendOnce(strVictimRequest, nTimeoutMs);
        });
    }
    ~CVictim() {
        close(m_pipe[0]);
        close(m_pipe[1]);
    }
    void Start() const { EXPECT_EQ(write(m_pipe[1], "s", 1), 1); }
    CForkedProcess& Process() { return *m_process; }

private:
    int m_pipe[2] = {};
    std::optional<CForkedProcess> m_process;
};

class CDeathTest : public testing::Test {
protected:
    void SetUp() override {
        try {
            CForkedProcess child([] { return pause(); });
            CSteppedThread(child.Id()).Detach(0);
        } catch (std::runtime_error const& refusal) {
            GTEST_SKIP() << refusal.what();
        }
    }

    void TearDown() override {
        m_host.reset();
        for (const char* szFile : {szMessageFile, szSpareFile, szDirectoryFile}) {
            EXPECT_FALSE(fs::remove(szFile)) << szFile << " was left behind";
        }
    }

    void StartHost(int (*run)()) {
        m_host.emplace(run);
        for (int nTry = 0; nTry < 1000 && SendOnce("first", 1000) != 0; ++nTry) usleep(10'000);
        m_segment = std::make_unique<CTestSegment>("TAN_Host_3");
    }

    // The segment is not mapped by the test any more: the host should see its clients alone.
    void LetGo() { m_segment.reset(); }

    void StopHost() {
        m_host->Signal(SIGTERM);
        EXPECT_EQ(m_host->Wait(kLong), 0);
    }

    ExchangeView View() const { return LookAt(*m_segment, strVictimRequest, strVictimReply); }

    // Halts the host while it waits for a request, so that it holds no word meanwhile.
    void HaltHost() const {
        for (;;) {
            m_host->Halt();
            const MessageRecord record = View().record;
            if (record.nExchangeMutex == 0 && record.requestCondition.nEnterLock == 0 &&
                record.requestCondition.nWaiterCount == 1) {
                return;
            }
            m_host->Continue();
            usleep(3'000);
        }
    }

    // Takes the victim to one of the steps. The host is halted except where it has to answer.
    void StepTo(CSteppedThread& thread, std::vector<ExchangeStep> const& steps, std::size_t nLast) {
        HaltHost();
        for (std::size_t nStep = 0; nStep <= nLast; ++nStep) {
            ExchangeStep const& step = steps[nStep];
            if (step.fHostRuns) m_host->Continue();
            ASSERT_TRUE(thread.StepUntil([&] { return step.isReached(View()); })) << step.szName;
            if (step.fHostRuns) {
                usleep(20'000);
                HaltHost();
            }
        }
    }

    void ExpectAnswerSoon() {
        const auto end = std::chrono::steady_clock::now() + kSoon;
        int nStatus = -1;
        do {
            nStatus = SendOnce("request of another", 1000);
        } while (nStatus == kTimeout && std::chrono::steady_clock::now() < end);
        EXPECT_EQ(nStatus, 0);
    }

    std::optional<CForkedProcess> m_host;
    std::unique_ptr<CTestSegment> m_segment;
};

std::string StepName(std::vector<ExchangeStep> const& steps, std::size_t nStep) {
    std::string strName = std::to_string(nStep) + "_";
    for (const char* pText = steps[nStep].szName; *pText; ++pText) {
        if (std::isalnum(static_cast<unsigned char>(*pText))) strName += *pText;
    }
    return strName;
}

class CAnsweredClient : public CDeathTest, public testing::WithParamInterface<std::size_t> {};

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

TEST_P(CAnsweredClient, OfAHostThatMendsNothingCostsTheNextThreeTimeoutsAtMost) {
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
    EXPECT_LT(lTookUs, 3 * kTimeoutMs * 1000 + kSlackUs);
    m_host->Kill();
    fs::remove(szMessageFile);
    fs::remove(szDirectoryFile);
}

TEST_F(CDeathTest, WordsAreMendedBeforeAnybodyComes) {
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

class CTimedOutClient : public CDeathTest, public testing::WithParamInterface<std::size_t> {};

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

// The thread that answers requests is the first one that the host starts.
pid_t AnsweringThread(pid_t nProcess) {
    std::vector<pid_t> threads;
    for (auto const& entry :
         fs::directory_iterator("/proc/" + std::to_string(nProcess) + "/task")) {
        threads.push_back(std::stoi(entry.path().filename().string()));
    }
    std::sort(threads.begin(), threads.end());
    return threads.at(1);
}

class CHostAtWork : public CDeathTest, public testing::WithParamInterface<std::size_t> {
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
};

std::string HostStepName(testing::TestParamInfo<std::size_t> const& info) {
    return StepName(HostSteps(), info.param);
}

TEST_P(CHostAtWork, CostsItsClientThreeTimeoutsAtMostAndCanBeStartedAgain) {
    constexpr int kTimeoutMs = 400;
    StartHost(RunServer);
    {
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
        LetGo();
        client.Continue();
        const std::optional<int> status =
            client.Wait(3ms * kTimeoutMs + std::chrono::microseconds(kSlackUs));
        EXPECT_TRUE(status == 0 || status == kTimeout) << status.value_or(-1);
    }
    const auto end = std::chrono::steady_clock::now() + kSoon;
    do {
        m_host.emplace(RunServer);
        usleep(300'000);
    } while (SendOnce("request of another", 1000) != 0 && std::chrono::steady_clock::now() < end);
    EXPECT_EQ(SendOnce("request of another", 1000), 0);
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
    const auto end = std::chrono::steady_clock::now() + kSoon;
    do {
        m_host.emplace(RunServer);
        usleep(300'000);
    } while (SendOnce("request of another", 1000) != 0 && std::chrono::steady_clock::now() < end);
    EXPECT_NE(client.Wait(kSoon), std::nullopt);
    EXPECT_NE(behind.Wait(kSoon), std::nullopt);
    StopHost();
}

INSTANTIATE_TEST_SUITE_P(AtEveryStep, CHostAtWork,
                         testing::Range<std::size_t>(0, HostSteps().size()), HostStepName);

}  // namespace
