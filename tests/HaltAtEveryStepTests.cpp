// Hosts that are halted at each step of an exchange and go on, with clients of every kind of
// patience behind each other. Every reply is compared with its request.

#include <deque>

#include "StepFixture.h"

namespace {

using namespace std::chrono_literals;

constexpr auto kHalt = 1500ms;

class CHaltedHost : public CStepTest, public testing::WithParamInterface<std::size_t> {
protected:
    void SetUp() override {
        CStepTest::SetUp();
        if (IsSkipped()) return;
        StartHost(RunServer);
    }

    // One client waits for its reply, the others stand behind it.
    void StartClients() {
        StartClient(strVictimRequest, -1);
        while (View().record.fPending == 0 || View().record.replyCondition.nWaiterCount == 0) {
            usleep(1000);
        }
        int nClient = 0;
        for (const int nTimeoutMs : {0, 100, 300, -1, 100, 0, 300, -1}) {
            StartClient("request of client " + std::to_string(++nClient), nTimeoutMs);
        }
    }

    void TakeHostTo(CSteppedThread& thread, std::size_t nFirst, std::size_t nLast) {
        for (std::size_t nStep = nFirst; nStep <= nLast; ++nStep) {
            ExchangeStep const& step = HostSteps()[nStep];
            ASSERT_TRUE(thread.StepUntil([&] { return step.isReached(View()); })) << step.szName;
        }
    }

    void ExpectEveryReplyToBeItsOwn() {
        for (Client& client : m_clients) {
            const std::optional<int> status = client.process.Wait(kLong);
            const bool fMayTimeOut = client.nTimeoutMs >= 0 && status == kTimeout;
            EXPECT_TRUE(status == 0 || fMayTimeOut)
                << "time-out " << client.nTimeoutMs << ", status " << status.value_or(-1);
        }
        EXPECT_EQ(SendOnce("request of a later one", -1), 0);
        ExpectHealthyWords();
        LetGo();
        StopHost();
    }

private:
    struct Client {
        Client(std::string const& strRequest, int nTimeout)
            : nTimeoutMs(nTimeout), process([=] { return SendOnce(strRequest, nTimeout); }) {}

        int nTimeoutMs;
        CForkedProcess process;
    };

    void StartClient(std::string const& strRequest, int nTimeoutMs) {
        m_clients.emplace_back(strRequest, nTimeoutMs);
    }

    void ExpectHealthyWords() const {
        const MessageRecord record = View().record;
        EXPECT_EQ(record.nRequestLock, 0u);
        EXPECT_EQ(record.replyCondition.nWaiterCount, 0u);
        EXPECT_EQ(record.replyCondition.nCommand, kCommandSleep);
        EXPECT_EQ(record.replyCondition.nEnterLock, 0u);
        EXPECT_EQ(record.requestCondition.nCommand, kCommandSleep);
    }

    std::deque<Client> m_clients;
};

TEST_P(CHaltedHost, GivesEveryClientItsOwnReplyOnceItGoesOn) {
    CSteppedThread thread(AnsweringThread(m_host->Id()));
    StartClients();
    ASSERT_NO_FATAL_FAILURE(TakeHostTo(thread, 0, GetParam()));
    thread.Detach(SIGSTOP);
    std::this_thread::sleep_for(kHalt);
    m_host->Continue();
    ExpectEveryReplyToBeItsOwn();
}

class CTwiceHaltedHost : public CHaltedHost {};

TEST_P(CTwiceHaltedHost, GivesEveryClientItsOwnReplyOnceItGoesOn) {
    CSteppedThread thread(AnsweringThread(m_host->Id()));
    StartClients();
    ASSERT_NO_FATAL_FAILURE(TakeHostTo(thread, 0, GetParam()));
    std::this_thread::sleep_for(kHalt);
    ASSERT_NO_FATAL_FAILURE(TakeHostTo(thread, GetParam() + 1, GetParam() + 1));
    std::this_thread::sleep_for(kHalt);
    thread.Detach(0);
    ExpectEveryReplyToBeItsOwn();
}

std::string HaltName(testing::TestParamInfo<std::size_t> const& info) {
    return StepName(HostSteps(), info.param);
}

INSTANTIATE_TEST_SUITE_P(AtEveryStep, CHaltedHost,
                         testing::Range<std::size_t>(0, HostSteps().size()), HaltName);
INSTANTIATE_TEST_SUITE_P(AtEveryTwoSteps, CTwiceHaltedHost,
                         testing::Range<std::size_t>(0, HostSteps().size() - 1), HaltName);

}  // namespace
