// Who may start: one host of a user, whatever a dead one left, and none beside a live one of
// another kind.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>

#include "ForkedProcess.h"
#include "HostPairs.h"
#include "PeerHost.h"
#include "host/LinkServer.h"
#include "link/LinkClock.h"
#include "link/TANClientInterProcess.h"

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr int kHost = 1;
constexpr int kForeignHost = 3;
constexpr char szDirectory[] = "__KEL_TAN_INTERPROCESS_DIR6__";
constexpr char szSharedMemory[] = "/dev/shm/";
constexpr std::int64_t kHour = 3600 * kMicrosecondsPerSecond;
constexpr auto kSoon = 500ms;

CServerReply Echo(std::string const& request) {
    return {request, "", 0};
}

std::string Bytes(std::string const& strName) {
    std::ifstream file(szSharedMemory + strName, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

bool Has(std::string const& strName) {
    return fs::exists(szSharedMemory + strName);
}

// What a host replies.
std::string Send(std::string strRequest) {
    CTANClientInterProcess client;
    std::string strReply;
    EXPECT_EQ(client.SendTANMessage(kHost, strRequest, strReply, 10'000), 0);
    return strReply;
}

// Why a host cannot start; empty when it can.
std::string Refusal() {
    try {
        const CLinkServer server(kHost, true, Echo);
        return {};
    } catch (CHostSegmentError const& refusal) {
        return refusal.what();
    }
}

std::chrono::milliseconds TimeOf(std::function<void()> const& act) {
    const auto start = std::chrono::steady_clock::now();
    act();
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                                 start);
}

// Runs something in a process of its own until it says that it is ready.
class CReadyProcess {
public:
    explicit CReadyProcess(std::function<void(std::function<void()> const& ready)> const& run) {
        if (pipe(m_pipe) != 0) throw std::runtime_error("no pipe");
        m_process.emplace([this, &run] {
            run([this] { [[maybe_unused]] const auto nWritten = write(m_pipe[1], "r", 1); });
            return 0;
        });
        close(m_pipe[1]);
        char cReady = 0;
        EXPECT_EQ(read(m_pipe[0], &cReady, 1), 1);
    }
    ~CReadyProcess() { close(m_pipe[0]); }

    CForkedProcess& Process() { return *m_process; }

private:
    int m_pipe[2] = {};
    std::optional<CForkedProcess> m_process;
};

// Leaves the segments of a host that has been killed, with another heartbeat.
void LeaveKilledHost(std::int64_t lHeartbeat) {
    CReadyProcess host([](std::function<void()> const& ready) {
        const CLinkServer server(kHost, true, Echo);
        ready();
        pause();
    });
    host.Process().Kill();
    CTestSegment(szDirectory).Put(12, lHeartbeat);
}

// Leaves the directory of a host of another kind that has been killed.
void LeaveKilledForeignHost(std::int64_t lHeartbeat) {
    CReadyProcess host([lHeartbeat](std::function<void()> const& ready) {
        CTestDirectory directory(kForeignHost);
        directory.SetHeartbeat(lHeartbeat);
        ready();
        pause();
    });
    host.Process().Kill();
}

class HostStart : public testing::Test {
protected:
    void TearDown() override {
        for (std::string const& strName :
             {std::string(szDirectory), szDirectory + std::string(".lock"),
              std::string("TAN_Host_1"), std::string("TAN_Host_3")}) {
            EXPECT_FALSE(fs::remove(szSharedMemory + strName)) << strName << " was left behind";
        }
    }
};

TEST_F(HostStart, OfTwoAtTheSameMomentOneRuns) {
    ExpectOneHostOfEachPair(TAVARIN_HOST_PROGRAM, 200);
}

// Hosts of one session, each of which begins as soon as the last one lets it.
class CHostsOfOneSession {
public:
    explicit CHostsOfOneSession(CTemporaryDirectory const& directory) : m_directory(directory) {}

    void Stop() {
        m_pHost->Signal(SIGTERM);
        EXPECT_EQ(m_pHost->Wait(), 0);
    }
    // Tries until it is not refused.
    void Start() {
        do {
            m_strOutput = "out" + std::to_string(++m_nStarts);
            m_pHost = std::make_unique<CChildProcess>(
                std::vector<std::string>{TAVARIN_HOST_PROGRAM, "--session",
                                         m_directory.File("session.json"), "--audio",
                                         m_directory.File("audio")},
                m_directory.File(m_strOutput), m_directory.File("err"));
        } while (!IsReady());
    }
    void Restart() {
        const std::unique_ptr<CChildProcess> pLast = std::move(m_pHost);
        pLast->Signal(SIGTERM);
        Start();
        EXPECT_EQ(pLast->Wait(), 0);
    }

private:
    // False when it was refused.
    bool IsReady() const {
        for (;;) {
            if (m_directory.Read(m_strOutput).ends_with('\n')) return true;
            siginfo_t ended{};
            waitid(P_PID, static_cast<id_t>(m_pHost->Id()), &ended, WEXITED | WNOHANG | WNOWAIT);
            if (ended.si_pid != 0) return false;
        }
    }

    CTemporaryDirectory const& m_directory;
    std::unique_ptr<CChildProcess> m_pHost;
    std::string m_strOutput;
    int m_nStarts = 0;
};

TEST_F(HostStart, NextHostHasWhatTheLastOneSaved) {
    const CTemporaryDirectory directory;
    CHostsOfOneSession hosts(directory);
    hosts.Start();
    for (int nPosition = 1; nPosition <= 30; ++nPosition) {
        const std::string strPosition = std::to_string(nPosition);
        EXPECT_EQ(Send("SelectScriptDocument() MoveDisplayToPosition(" + strPosition +
                       ") print('moved')"),
                  "moved\n");
        hosts.Restart();
        EXPECT_NE(directory.Read("session.json").find("\"displayPosition\": " + strPosition + "."),
                  std::string::npos)
            << nPosition;
    }
    hosts.Stop();
}

TEST_F(HostStart, KilledHostIsReplacedAtOnceWhateverItsHeartbeatSays) {
    for (const std::int64_t lAge : {-kHour, std::int64_t{0}, kHour}) {
        LeaveKilledHost(LinkTimeNow() - lAge);
        EXPECT_LT(TimeOf([] { EXPECT_EQ(Refusal(), ""); }), kSoon) << lAge;
    }
}

TEST_F(HostStart, KilledForeignHostIsReplacedWhateverItsHeartbeatSays) {
    for (const std::int64_t lAge : {-kHour, std::int64_t{0}, kHour}) {
        LeaveKilledForeignHost(LinkTimeNow() - lAge);
        EXPECT_EQ(Refusal(), "") << lAge;
    }
}

TEST_F(HostStart, ClientsThatLookAtADeadDirectoryAreNoHost) {
    LeaveKilledForeignHost(LinkTimeNow() + kHour);
    const auto look = [] {
        CTANClientInterProcess client;
        for (;;) client.NeedsUpdate();
        return 0;
    };
    const CForkedProcess first(look), second(look);
    EXPECT_EQ(Refusal(), "");
}

TEST_F(HostStart, HaltedForeignHostIsNamedAndLeftAlone) {
    CReadyProcess host([](std::function<void()> const& ready) {
        const CPeerHost peer(kForeignHost);
        ready();
        pause();
    });
    host.Process().Halt();
    CTestSegment(szDirectory).Put(12, LinkTimeNow() - kHour);
    const std::string strDirectory = Bytes(szDirectory), strMessages = Bytes("TAN_Host_3");
    EXPECT_EQ(Refusal(),
              "a host application that does not answer has the link (host id 3, process " +
                  std::to_string(host.Process().Id()) + "); quit it first");
    EXPECT_EQ(Bytes(szDirectory), strDirectory);
    EXPECT_EQ(Bytes("TAN_Host_3"), strMessages);
    fs::remove(szSharedMemory + std::string(szDirectory));
    fs::remove(szSharedMemory + std::string("TAN_Host_3"));
}

TEST_F(HostStart, ForeignHostThatMapsItsDirectoryForMomentsOnlyIsRefused) {
    CReadyProcess host([](std::function<void()> const& ready) {
        CTestDirectory(kForeignHost).SetHeartbeat(LinkTimeNow());
        // The name goes with that object, so the directory is made anew by hand.
        const int nFile = shm_open("/__KEL_TAN_INTERPROCESS_DIR6__", O_CREAT | O_RDWR, 0600);
        if (ftruncate(nFile, 64) != 0) return;
        close(nFile);
        for (;;) {
            CTestSegment(szDirectory).Put(12, LinkTimeNow());
            ready();
            usleep(100'000);
        }
    });
    EXPECT_NE(Refusal().find("already running (host id 0"), std::string::npos);
    host.Process().Kill();
    EXPECT_TRUE(fs::remove(szSharedMemory + std::string(szDirectory)));
}

TEST_F(HostStart, HaltedHostIsNamed) {
    CReadyProcess host([](std::function<void()> const& ready) {
        const CLinkServer server(kHost, true, Echo);
        ready();
        pause();
    });
    host.Process().Halt();
    CTestSegment(szDirectory).Put(12, LinkTimeNow() - kHour);
    EXPECT_EQ(Refusal(), "a host application is already running (process " +
                             std::to_string(host.Process().Id()) + "); quit it first");
    host.Process().Kill();
    EXPECT_EQ(Refusal(), "");
}

TEST_F(HostStart, NamesThatAnotherHasTakenStayWhenTheHostEnds) {
    for (std::string const& strName : {std::string(szDirectory), std::string("TAN_Host_1")}) {
        std::optional<CLinkServer> server;
        server.emplace(kHost, true, Echo);
        const CTestSegment other(strName, 64);
        server.reset();
        EXPECT_TRUE(Has(strName));
    }
}

// Makes a segment in a process that may not have something; 0 when that failed and left no name.
int LeavesANameWithout(int nResource, rlim_t lLimit) {
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{lLimit, lLimit};
    setrlimit(static_cast<__rlimit_resource>(nResource), &limit);
    try {
        const COwnedSegment segment("tavarin-test-segment", std::size_t{1} << 32);
        return 2;
    } catch (CHostSegmentError const&) {
        return Has("tavarin-test-segment");
    }
}

TEST_F(HostStart, SegmentThatCannotBeSizedLeavesNoName) {
    CForkedProcess process([] { return LeavesANameWithout(RLIMIT_FSIZE, 4096); });
    EXPECT_EQ(process.Wait(60s), 0);
}

}  // namespace
