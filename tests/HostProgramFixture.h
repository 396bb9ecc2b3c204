#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "ChildProcess.h"
#include "TemporaryDirectory.h"
#include "TestTone.h"
#include "link/TANClientInterProcess.h"

namespace fs = std::filesystem;
using nlohmann::json;

inline constexpr int kRate = 8000;
inline constexpr int kFrames = 3 * kRate;

/// The programs tavarin-host and tavarin, as a user runs them.
class HostProgram : public testing::Test {
protected:
    void SetUp() override {
        // As a terminal leaves them, whoever runs the tests.
        std::signal(SIGHUP, SIG_DFL);
        std::signal(SIGPIPE, SIG_DFL);
        WriteTestTone(m_directory.File("guide.wav"), kRate, kFrames);
        WriteTestTone(m_directory.File("dub.wav"), kRate, kFrames, kRate / 4);
    }

    void TearDown() override {
        if (m_host) StopHost();
        for (const char* szLeft : {"TAN_Host_1", "__KEL_TAN_INTERPROCESS_DIR6__",
                                   "__KEL_TAN_INTERPROCESS_DIR6__.lock"}) {
            if (m_fKilled) fs::remove(std::string("/dev/shm/") + szLeft);
        }
    }

    // What it leaves goes at the end of the test.
    void KillHost() {
        StopHost(SIGKILL);
        m_host.reset();
        m_fKilled = true;
    }

    void StartHost(std::vector<std::string> arguments = {},
                   std::vector<std::string> const& starter = {}) {
        arguments.insert(arguments.begin(), {TAVARIN_HOST_PROGRAM, "--sample-rate", "8000",
                                             "--tracks", "Guide,Dub,Out,Double"});
        arguments.insert(arguments.begin(), starter.begin(), starter.end());
        m_host.emplace(arguments, m_directory.File("host.out"), m_directory.File("host.err"));
        for (int nTry = 0; nTry < 500; ++nTry) {
            if (m_client.GetCurrentIdFromMainDirectory() >= 0) return;
            usleep(10'000);
        }
        FAIL() << "the host did not start: " << m_directory.Read("host.err");
    }

    int StopHost(int nSignal = SIGTERM) {
        m_host->Signal(nSignal);
        return m_host->Wait();
    }

    int CountErrors(std::string const& strText) const {
        const std::string strErrors = m_directory.Read("host.err");
        int nCount = 0;
        for (std::size_t n = 0; (n = strErrors.find(strText, n)) != std::string::npos; ++n) {
            ++nCount;
        }
        return nCount;
    }

    bool WaitForError(std::string const& strText) const {
        for (int nTry = 0; nTry < 1000; ++nTry) {
            if (CountErrors(strText) > 0) return true;
            usleep(10'000);
        }
        return false;
    }

    // Until the host has written its files for the first time; what it says then.
    std::string AwaitReady() const {
        for (int nTry = 0; nTry < 1000; ++nTry) {
            const std::string strOutput = m_directory.Read("host.out");
            if (strOutput.ends_with('\n')) return strOutput;
            usleep(10'000);
        }
        return {};
    }

    std::string AudioDirectory() const {
        const std::string strBefore = "audio in ", strReady = AwaitReady();
        const std::size_t nAt = strReady.find(strBefore) + strBefore.size();
        return strReady.substr(nAt, strReady.size() - 1 - nAt);
    }

    // Runs the tool; its output is in Output() and Errors() afterwards.
    int Tool(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), TAVARIN_TOOL_PROGRAM);
        return CChildProcess(arguments, m_directory.File("tool.out"), m_directory.File("tool.err"))
            .Wait();
    }
    std::string Output() const { return m_directory.Read("tool.out"); }
    std::string Errors() const { return m_directory.Read("tool.err"); }
    json OutputAsJson() const { return json::parse(Output()); }

    std::string Guide() const { return m_directory.File("guide.wav"); }
    std::string Dub() const { return m_directory.File("dub.wav"); }

    CTemporaryDirectory m_directory;
    CTANClientInterProcess m_client;
    std::optional<CChildProcess> m_host;
    bool m_fKilled = false;
};
