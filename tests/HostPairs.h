#pragma once

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>

#include "ChildProcess.h"
#include "TemporaryDirectory.h"
#include "link/TANClientInterProcess.h"

/// Two hosts started at the same moment. One of them has to end by itself, saying why; a client has
/// to find the other.
class CHostPair {
public:
    CHostPair(std::string const& strProgram, CTemporaryDirectory const& directory)
        : m_directory(directory),
          m_first({strProgram, "--quiet", "--id", "1"}, directory.File("1.out"),
                  directory.File("1.err")),
          m_second({strProgram, "--quiet", "--id", "2"}, directory.File("2.out"),
                   directory.File("2.err")) {}

    void ExpectThatOneRunsAndIsFound() {
        ASSERT_NO_FATAL_FAILURE(ExpectThatOneEnds());
        const bool fFirstEnded = HasEnded(m_first);
        CChildProcess& ended = fFirstEnded ? m_first : m_second;
        CChildProcess& running = fFirstEnded ? m_second : m_first;
        EXPECT_EQ(ended.Wait(), 1);
        EXPECT_NE(m_directory.Read(fFirstEnded ? "1.err" : "2.err").find("already running"),
                  std::string::npos);
        CTANClientInterProcess client;
        ASSERT_TRUE(WaitFor([&] { return client.GetCurrentIdFromMainDirectory() > 0; }));
        EXPECT_EQ(client.GetCurrentIdFromMainDirectory(), fFirstEnded ? 2 : 1);
        EXPECT_EQ(client.GetTANProcessID(), running.Id());
        running.Signal(SIGTERM);
        EXPECT_EQ(running.Wait(), 0);
    }

private:
    template <typename Condition>
    static bool WaitFor(Condition condition) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (!condition()) {
            if (std::chrono::steady_clock::now() > end) return false;
            usleep(1'000);
        }
        return true;
    }

    // Without waiting for it, so that its id stays its own.
    static bool HasEnded(CChildProcess const& process) {
        siginfo_t ended{};
        waitid(P_PID, static_cast<id_t>(process.Id()), &ended, WEXITED | WNOHANG | WNOWAIT);
        return ended.si_pid != 0;
    }

    void ExpectThatOneEnds() {
        ASSERT_TRUE(WaitFor([&] { return HasEnded(m_first) || HasEnded(m_second); }));
        EXPECT_FALSE(HasEnded(m_first) && HasEnded(m_second));
    }

    CTemporaryDirectory const& m_directory;
    CChildProcess m_first;
    CChildProcess m_second;
};

/// Starts so many pairs behind each other.
inline void ExpectOneHostOfEachPair(std::string const& strProgram, int nPairs) {
    const CTemporaryDirectory directory;
    for (int nPair = 0; nPair < nPairs; ++nPair) {
        SCOPED_TRACE("pair " + std::to_string(nPair));
        CHostPair pair(strProgram, directory);
        ASSERT_NO_FATAL_FAILURE(pair.ExpectThatOneRunsAndIsFound());
    }
}
