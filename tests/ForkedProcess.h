#pragma once

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <optional>
#include <thread>
#include <utility>

/// A copy of the test process that runs one function; its result is the exit status. Killed with
/// this object if it still runs. To be made while the test process has a single thread.
class CForkedProcess {
public:
    explicit CForkedProcess(std::function<int()> const& run) : m_nProcess(fork()) {
        if (m_nProcess == 0) _exit(Run(run));
    }
    ~CForkedProcess() {
        if (m_nProcess <= 0) return;
        kill(m_nProcess, SIGKILL);
        waitpid(m_nProcess, nullptr, 0);
    }
    CForkedProcess(CForkedProcess const&) = delete;
    CForkedProcess& operator=(CForkedProcess const&) = delete;

    pid_t Id() const { return m_nProcess; }
    void Signal(int nSignal) const {
        if (m_nProcess > 0) kill(m_nProcess, nSignal);
    }
    /// Ends it at once and waits for that.
    void Kill() {
        Signal(SIGKILL);
        Wait(std::chrono::seconds(60));
    }
    /// Stops it, or lets it go on, and waits until the system has done so.
    void Halt() const {
        Signal(SIGSTOP);
        waitpid(m_nProcess, nullptr, WUNTRACED);
    }
    void Continue() const { Signal(SIGCONT); }

    /// The exit status, -1 after a signal; no value when it still runs after `limit`.
    std::optional<int> Wait(std::chrono::microseconds limit) {
        const auto end = std::chrono::steady_clock::now() + limit;
        while (m_nProcess > 0) {
            int nStatus = 0;
            if (waitpid(m_nProcess, &nStatus, WNOHANG) == m_nProcess) {
                m_nProcess = 0;
                m_nStatus = WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : -1;
            } else if (std::chrono::steady_clock::now() >= end) {
                return std::nullopt;
            } else {
                std::this_thread::sleep_for(std::chrono::milliseconds(2));
            }
        }
        return m_nStatus;
    }

private:
    // Nothing that is thrown may reach the frames of the test that was copied.
    static int Run(std::function<int()> const& run) noexcept { return run(); }

    pid_t m_nProcess;
    int m_nStatus = -1;
};
