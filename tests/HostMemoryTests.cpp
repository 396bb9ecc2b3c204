// A host that cannot have the memory, the segment or the thread that it needs beside a halted
// client goes on without, and leaves nothing behind.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>

#include "FailingAllocations.h"
#include "ForkedProcess.h"
#include "PeerHost.h"
#include "host/LinkServer.h"
#include "link/TANClientInterProcess.h"

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr int kHost = 1;
constexpr int kTimeout = 121;
constexpr char strSlow[] = "slow";

// Long enough for a client to be halted meanwhile.
CServerReply Answer(std::string const& request) {
    if (request == strSlow) usleep(500'000);
    return {request, "", 0};
}

int Send(std::string strRequest, int nTimeoutMs) {
    CTANClientInterProcess client;
    std::string strReply;
    const int nStatus = client.SendTANMessage(kHost, strRequest, strReply, nTimeoutMs);
    return nStatus == 0 && strReply != strRequest ? -2 : nStatus;
}

// The thread of this process that was made last.
pid_t NewestThread() {
    pid_t nNewest = 0;
    for (auto const& task : fs::directory_iterator("/proc/self/task")) {
        nNewest = std::max(nNewest, static_cast<pid_t>(std::stoi(task.path().filename().string())));
    }
    return nNewest;
}

void Block(std::initializer_list<int> signals, sigset_t& set) {
    sigemptyset(&set);
    for (const int nSignal : signals) sigaddset(&set, nSignal);
    sigprocmask(SIG_BLOCK, &set, nullptr);
}

void Await(sigset_t const& set) {
    int nSignal = 0;
    sigwait(&set, &nSignal);
}

class HostMemory : public testing::Test {
protected:
    void TearDown() override {
        // Others keep things of their own there.
        for (auto const& entry : fs::directory_iterator("/dev/shm")) {
            const std::string strName = entry.path().filename();
            const bool fOurs = strName.find("TAN_") != std::string::npos;
            EXPECT_FALSE(fOurs) << strName << " was left behind";
        }
    }

    // A host, and a client that is halted while it waits for its reply.
    void StartBesideAHaltedClient(std::function<int()> const& host) {
        m_host.emplace(host);
        while (CTANClientInterProcess().GetCurrentIdFromMainDirectory() != kHost) usleep(1'000);
        m_client.emplace([] { return Send(strSlow, -1); });
        const CTestSegment segment("TAN_Host_1");
        while (segment.Get<std::uint32_t>(32) == 0) usleep(1'000);
        m_client->Halt();
    }

    bool IsAnsweredWithin(std::chrono::milliseconds limit) {
        const auto end = std::chrono::steady_clock::now() + limit;
        int nStatus = kTimeout;
        while (nStatus == kTimeout && std::chrono::steady_clock::now() < end) {
            nStatus = Send("another", 200);
        }
        EXPECT_TRUE(nStatus == 0 || nStatus == kTimeout) << nStatus;
        return nStatus == 0;
    }

    void ExpectACleanEnd() {
        m_client->Continue();
        EXPECT_EQ(m_client->Wait(60s), 0);
        m_host->Signal(SIGTERM);
        EXPECT_EQ(m_host->Wait(60s), 0);
    }

    std::optional<CForkedProcess> m_host;
    std::optional<CForkedProcess> m_client;
};

// Takes no memory itself.
bool IsAnyNameThere() {
    for (const char* szFile : {"/dev/shm/__KEL_TAN_INTERPROCESS_DIR6__", "/dev/shm/TAN_Host_1",
                               "/dev/shm/__KEL_TAN_INTERPROCESS_DIR6__.lock"}) {
        if (access(szFile, F_OK) == 0) return true;
    }
    return false;
}

TEST_F(HostMemory, HostWhoseStartLacksMemoryAnywhereLeavesNothing) {
    int nFailed = 0, nLeft = 0;
    {
        const CFailingAllocations failing(gettid());
        for (bool fStarted = false; !fStarted; nFailed = failing.Count()) {
            try {
                const CLinkServer server(kHost, true, Answer);
                fStarted = true;
            } catch (std::exception const&) {
                nLeft += IsAnyNameThere();
            }
        }
    }
    EXPECT_EQ(nLeft, 0);
    EXPECT_GT(nFailed, 5);
}

int RunWithoutMemory() {
    sigset_t end;
    Block({SIGTERM}, end);
    const CLinkServer server(kHost, true, Answer);
    const CFailingAllocations failing(NewestThread());
    Await(end);
    return failing.Count() > 1 ? 0 : 1;
}

TEST_F(HostMemory, HostGoesOnWhateverAllocationForAFreshSegmentFails) {
    StartBesideAHaltedClient(RunWithoutMemory);
    EXPECT_TRUE(IsAnsweredWithin(60s));
    ExpectACleanEnd();
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

constexpr rlim_t kMegabyte = 1 << 20;

// So much address space more than is in use; it is all to be had again after SIGUSR1.
int RunWithin(rlim_t lMore) {
    sigset_t more, end;
    Block({SIGUSR1, SIGTERM}, end);
    Block({SIGUSR1}, more);
    const CLinkServer server(kHost, true, Answer);
    rlim_t lPages = 0;
    std::ifstream("/proc/self/statm") >> lPages;
    const rlimit narrow{lPages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + lMore, RLIM_INFINITY};
    const rlimit wide{RLIM_INFINITY, RLIM_INFINITY};
    setrlimit(RLIMIT_AS, &narrow);
    Await(more);
    setrlimit(RLIMIT_AS, &wide);
    Await(end);
    return 0;
}

class HostSpace : public HostMemory, public testing::WithParamInterface<rlim_t> {};

TEST_P(HostSpace, HostGoesOnAndTriesAgain) {
    StartBesideAHaltedClient([] { return RunWithin(GetParam()); });
    EXPECT_FALSE(IsAnsweredWithin(3s));
    m_host->Signal(SIGUSR1);
    EXPECT_TRUE(IsAnsweredWithin(60s));
    ExpectACleanEnd();
}

// The first is too little for a segment, the second for a thread.
INSTANTIATE_TEST_SUITE_P(Address, HostSpace, testing::Values(kMegabyte / 2, 4 * kMegabyte));

#endif

}  // namespace
