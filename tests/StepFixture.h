#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "ExchangeSteps.h"
#include "ForkedProcess.h"
#include "PeerHost.h"
#include "SteppedThread.h"
#include "host/LinkServer.h"
#include "link/TANClientInterProcess.h"

inline constexpr int kHost = 3;
inline constexpr int kTimeout = 121;
inline constexpr int kWrong = 99;
inline constexpr int kHostEnded = 98;
inline constexpr int kVictimTimeoutMs = 1500;
inline constexpr auto kSoon = std::chrono::seconds(5);
inline constexpr auto kLong = std::chrono::seconds(60);
inline constexpr char szMessageFile[] = "/dev/shm/TAN_Host_3";
inline constexpr char szSpareFile[] = "/dev/shm/TAN_Host_3.spare";
inline constexpr char szDirectoryFile[] = "/dev/shm/__KEL_TAN_INTERPROCESS_DIR6__";
inline constexpr char strVictimRequest[] = "request of the victim";
inline constexpr char strVictimReply[] = "reply to request of the victim";

/// The exit status of a process that sends one request: 0 for its own reply, `kHostEnded` for none
/// and a text that says why, the exchange's status otherwise.
inline int SendOnce(std::string strRequest, int nTimeoutMs) {
    CTANClientInterProcess client;
    std::string strReply;
    const std::string strExpected = "reply to " + strRequest;
    const int nStatus = client.SendTANMessage(kHost, strRequest, strReply, nTimeoutMs);
    if (nStatus != 0) return nStatus;
    if (strReply.empty() && !client.m_strLastError.empty()) return kHostEnded;
    return strReply == strExpected ? 0 : kWrong;
}

inline CServerReply Reply(std::string const& request) {
    return {"reply to " + request, "", 0};
}

/// Runs the reference host's link until SIGTERM; it is refused while another looks alive.
inline int RunServer() {
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

/// A victim that waits for a byte before it sends, so that it can be taken hold of.
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

/// A host process, and clients that a test takes through an exchange step by step. Skips its tests
/// where the system does not let a process step its child.
class CStepTest : public testing::Test {
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
            EXPECT_FALSE(std::filesystem::remove(szFile)) << szFile << " was left behind";
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

inline std::string StepName(std::vector<ExchangeStep> const& steps, std::size_t nStep) {
    std::string strName = std::to_string(nStep) + "_";
    for (const char* pText = steps[nStep].szName; *pText; ++pText) {
        if (std::isalnum(static_cast<unsigned char>(*pText))) strName += *pText;
    }
    return strName;
}

/// The thread that answers requests is the first one that the host starts.
inline pid_t AnsweringThread(pid_t nProcess) {
    std::vector<pid_t> threads;
    for (auto const& entry :
         std::filesystem::directory_iterator("/proc/" + std::to_string(nProcess) + "/task")) {
        threads.push_back(std::stoi(entry.path().filename().string()));
    }
    std::sort(threads.begin(), threads.end());
    return threads.at(1);
}
