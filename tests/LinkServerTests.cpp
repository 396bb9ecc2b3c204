#include "host/LinkServer.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <boost/interprocess/sync/scoped_lock.hpp>
#include <cstring>
#include <filesystem>
#include <future>
#include <optional>

#include "PeerHost.h"
#include "link/LinkClock.h"
#include "link/TANClientInterProcess.h"

namespace {

namespace fs = std::filesystem;

constexpr int kHost = 1;
constexpr char szDirectoryFile[] = "/dev/shm/__KEL_TAN_INTERPROCESS_DIR6__";
constexpr char szMessageFile[] = "/dev/shm/TAN_Host_1";

CServerReply Echo(std::string const& request) {
    return {request, "", 0};
}

struct Client {
    CTANClientInterProcess client;
    std::string strReply;

    int Send(std::string request, int nTimeoutMs = 5000) {
        return client.SendTANMessage(kHost, request, strReply, nTimeoutMs);
    }
};

// Lets the handler of a server wait until the test says so.
class CGate {
public:
    void Wait() { m_open.get_future().wait(); }
    void Open() { m_open.set_value(); }

private:
    std::promise<void> m_open;
};

TEST(LinkServer, AnswersAClient) {
    const CLinkServer server(kHost, true, Echo);
    Client client;
    EXPECT_EQ(client.client.GetCurrentTANHost(), kHost);
    EXPECT_EQ(client.Send("hello"), 0);
    EXPECT_EQ(client.strReply, "hello");
}

TEST(LinkServer, SegmentsArePrivateAndGoWithTheServer) {
    if (!fs::is_directory("/dev/shm")) GTEST_SKIP() << "segments are no files here";
    std::optional<CLinkServer> server;
    server.emplace(kHost, true, Echo);
    for (const char* szFile : {szDirectoryFile, szMessageFile}) {
        struct stat status {};
        ASSERT_EQ(stat(szFile, &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0600u);
    }
    server.reset();
    EXPECT_FALSE(fs::exists(szDirectoryFile));
    EXPECT_FALSE(fs::exists(szMessageFile));
}

TEST(LinkServer, WritesItsIdOnlyWhileASessionIsSelected) {
    CLinkServer server(kHost, false, Echo);
    CTANClientInterProcess client;
    EXPECT_EQ(client.GetCurrentIdFromMainDirectory(), 0);
    server.SelectSession(true);
    EXPECT_EQ(client.GetCurrentIdFromMainDirectory(), kHost);
    server.SelectSession(false);
    EXPECT_EQ(client.GetCurrentIdFromMainDirectory(), 0);
}

TEST(LinkServer, KeepsItsHeartbeatWhileAScriptRuns) {
    CGate gate;
    const CLinkServer server(kHost, true, [&](std::string const&) {
        gate.Wait();
        return CServerReply{"done", "", 0};
    });
    Client client;
    auto status = std::async(std::launch::async, [&] { return client.Send("slow", -1); });
    CTANClientInterProcess other;
    for (int nLook = 0; nLook < 15; ++nLook) {
        usleep(100'000);
        EXPECT_EQ(other.GetCurrentIdFromMainDirectory(), kHost);
    }
    gate.Open();
    EXPECT_EQ(status.get(), 0);
    EXPECT_EQ(client.strReply, "done");
}

TEST(LinkServer, ShowsItsUpdateCounter) {
    CLinkServer server(kHost, true, Echo, 5);
    CTANClientInterProcess client;
    client.NeedsUpdate();
    EXPECT_EQ(client.m_nUpdateCount, 5);
    server.SetUpdateCount(17);
    EXPECT_TRUE(client.NeedsUpdate());
    EXPECT_EQ(client.m_nUpdateCount, 17);
    EXPECT_FALSE(client.NeedsUpdate());
}

TEST(LinkServer, ReplyCarriesTheUpdateCounter) {
    const CLinkServer server(kHost, true, [](std::string const&) {
        return CServerReply{"", "", 23};
    });
    Client client;
    EXPECT_EQ(client.Send("x"), 0);
    EXPECT_TRUE(client.client.NeedsUpdate());
    EXPECT_EQ(client.client.m_nUpdateCount, 23);
}

TEST(LinkServer, LiveHostIsRefused) {
    const CLinkServer server(kHost, true, Echo);
    try {
        const CLinkServer second(2, true, Echo);
        FAIL() << "a second host started";
    } catch (CHostSegmentError const& refusal) {
        EXPECT_EQ(refusal.what(), "a host application is already running (process " +
                                      std::to_string(getpid()) + "); quit it first");
    }
    Client client;
    EXPECT_EQ(client.Send("still there"), 0);
}

TEST(LinkServer, LivePeerOfAnotherMakerIsRefusedToo) {
    CTestDirectory directory(9);
    directory.SetHeartbeat(LinkTimeNow());
    EXPECT_THROW(CLinkServer(kHost, true, Echo), CHostSegmentError);
    EXPECT_EQ(directory.Get<std::int32_t>(8), 9);
}

TEST(LinkServer, LeftoverOfACrashIsTakenOver) {
    if (!fs::is_directory("/dev/shm")) GTEST_SKIP() << "segments are no files here";
    const pid_t nProcess = fork();
    if (nProcess == 0) {
        const CLinkServer server(kHost, true, Echo);
        abort();
    }
    waitpid(nProcess, nullptr, 0);
    ASSERT_TRUE(fs::exists(szMessageFile));
    const CLinkServer server(kHost, true, Echo);
    Client client;
    EXPECT_EQ(client.Send("hello"), 0);
    EXPECT_EQ(client.strReply, "hello");
}

TEST(LinkServer, ScriptErrorAndPrintedTextBothArrive) {
    const CLinkServer server(kHost, true, [](std::string const&) {
        return CServerReply{"printed\n", "script:1: oops", 0};
    });
    Client client;
    EXPECT_EQ(client.Send("x"), 0);
    EXPECT_EQ(client.strReply, "printed\n");
    EXPECT_EQ(client.client.m_strLastError, "script:1: oops");
}

TEST(LinkServer, ReplyThatIsTooLongIsCutAndSaysSo) {
    constexpr std::size_t kRoom = 1024 * 1024 - 1;
    const CLinkServer server(kHost, true, [](std::string const& request) {
        return CServerReply{std::string(std::stoul(request), 'r'), "first", 0};
    });
    Client client;
    EXPECT_EQ(client.Send(std::to_string(kRoom)), 0);
    EXPECT_EQ(client.strReply.size(), kRoom);
    EXPECT_EQ(client.client.m_strLastError, "first");
    EXPECT_EQ(client.Send(std::to_string(kRoom + 1)), 0);
    EXPECT_EQ(client.strReply.size(), kRoom);
    EXPECT_EQ(client.client.m_strLastError, "first; the reply was cut after 1048575 bytes");
}

TEST(LinkServer, ErrorTextThatIsTooLongIsCut) {
    const CLinkServer server(kHost, true, [](std::string const&) {
        return CServerReply{"", std::string(100'000, 'e'), 0};
    });
    Client client;
    EXPECT_EQ(client.Send("x"), 0);
    EXPECT_EQ(client.client.m_strLastError, std::string(4031, 'e'));
}

TEST(LinkServer, LongestRequestArrivesWhole) {
    const CLinkServer server(kHost, true, Echo);
    Client client;
    const std::string strRequest(16 * 1024 - 1, 'q');
    EXPECT_EQ(client.Send(strRequest), 0);
    EXPECT_EQ(client.strReply, strRequest);
    EXPECT_EQ(client.Send(strRequest + "lost"), 0);
    EXPECT_EQ(client.strReply, strRequest);
}

TEST(LinkServer, SlowReplyNeverReachesTheNextClient) {
    CGate gate;
    std::atomic<int> nRuns = 0;
    const CLinkServer server(kHost, true, [&](std::string const& request) {
        if (nRuns++ == 0) gate.Wait();
        return CServerReply{request + " run " + std::to_string(nRuns), "", 0};
    });
    Client impatient;
    EXPECT_EQ(impatient.Send("same text", 30), 121);

    Client next;
    auto status = std::async(std::launch::async, [&] { return next.Send("same text", -1); });
    usleep(50'000);
    gate.Open();
    EXPECT_EQ(status.get(), 0);
    EXPECT_EQ(next.strReply, "same text run 2");
    EXPECT_EQ(nRuns, 2);
}

TEST(LinkServer, ReplyThatNobodyWaitsForIsDropped) {
    CGate gate;
    std::atomic<bool> fFirst = true;
    const CLinkServer server(kHost, true, [&](std::string const& request) {
        if (fFirst.exchange(false)) gate.Wait();
        return CServerReply{request, "", 0};
    });
    Client impatient;
    EXPECT_EQ(impatient.Send("dropped", 30), 121);
    gate.Open();
    Client next;
    EXPECT_EQ(next.Send("next"), 0);
    EXPECT_EQ(next.strReply, "next");
}

TEST(LinkServer, ClientOfAHostThatStopsGetsItsAnswer) {
    CGate gate;
    std::optional<CLinkServer> server;
    server.emplace(kHost, true, [&](std::string const&) {
        gate.Wait();
        return CServerReply{"last words", "", 0};
    });
    Client client;
    auto status = std::async(std::launch::async, [&] { return client.Send("x", -1); });
    usleep(50'000);
    auto stop = std::async(std::launch::async, [&] { server.reset(); });
    usleep(50'000);
    gate.Open();
    stop.get();
    EXPECT_EQ(status.get(), 0);
    EXPECT_EQ(client.strReply, "last words");
    EXPECT_EQ(client.Send("x"), 2);
}

// A client that follows the word protocol with Boost's own primitives and gives no hint.
std::string AskWithBoost(CTestSegment& segment, std::string const& request) {
    using boost::interprocess::scoped_lock;
    using boost::interprocess::ipcdetail::spin_condition;
    using boost::interprocess::ipcdetail::spin_mutex;
    unsigned char* const pBytes = segment.Bytes();
    const scoped_lock<spin_mutex> requestLock(*reinterpret_cast<spin_mutex*>(pBytes + 4));
    scoped_lock<spin_mutex> mutex(*reinterpret_cast<spin_mutex*>(pBytes + 8));
    auto* const pBuffer = reinterpret_cast<char*>(pBytes + segment.Get<std::int32_t>(48));
    std::strncpy(pBuffer, request.c_str(), segment.Get<std::int32_t>(40));
    reinterpret_cast<spin_condition*>(pBytes + 12)->notify_one();
    pBytes[36] = 1;
    reinterpret_cast<spin_condition*>(pBytes + 24)->wait(mutex);
    return pBuffer;
}

TEST(LinkServer, ClientBuiltOnBoostIsAnswered) {
    const CLinkServer server(kHost, true, Echo);
    CTestSegment segment("TAN_Host_1");
    for (int nRound = 0; nRound < 200; ++nRound) {
        const std::string strRequest = "round " + std::to_string(nRound);
        ASSERT_EQ(AskWithBoost(segment, strRequest), strRequest);
        if (nRound % 50 == 0) usleep(20'000);
    }
}

// Returns the number of exchanges that went wrong, at most 255.
int ExchangeInAProcess(int nClient, int nRounds) {
    Client client;
    int nWrong = 0;
    for (int nRound = 0; nRound < nRounds; ++nRound) {
        const std::string strRequest =
            "client " + std::to_string(nClient) + " round " + std::to_string(nRound);
        const bool fRight = client.Send(strRequest, -1) == 0 && client.strReply == strRequest;
        nWrong += !fRight;
    }
    return std::min(nWrong, 255);
}

TEST(LinkServer, EightClientProcessesLoseAndMixUpNothing) {
    constexpr int kClients = 8;
    constexpr int kRounds = 1000;
    std::vector<pid_t> processes;
    for (int nClient = 0; nClient < kClients; ++nClient) {
        const pid_t nProcess = fork();
        if (nProcess == 0) {
            while (CTANClientInterProcess().GetCurrentIdFromMainDirectory() != kHost) usleep(1000);
            _exit(ExchangeInAProcess(nClient, kRounds));
        }
        processes.push_back(nProcess);
    }
    std::atomic<int> nAnswered = 0;
    {
        const CLinkServer server(kHost, true, [&](std::string const& request) {
            ++nAnswered;
            return CServerReply{request, "", 0};
        });
        for (const pid_t nProcess : processes) {
            int nStatus = -1;
            waitpid(nProcess, &nStatus, 0);
            EXPECT_TRUE(WIFEXITED(nStatus));
            EXPECT_EQ(WEXITSTATUS(nStatus), 0);
        }
    }
    EXPECT_EQ(nAnswered, kClients * kRounds);
}

}  // namespace
