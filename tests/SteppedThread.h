#pragma once

#include <signal.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <stdexcept>

/// A thread of a child process that runs one machine instruction at a time, so that a test can let
/// it die or halt between any two of them. Other threads of the process run freely.
class CSteppedThread {
public:
    /// Stops the thread wherever it is. Throws when the system does not allow that.
    explicit CSteppedThread(pid_t nThread) : m_nThread(nThread) {
        if (ptrace(PTRACE_SEIZE, nThread, nullptr, nullptr) != 0 ||
            ptrace(PTRACE_INTERRUPT, nThread, nullptr, nullptr) != 0) {
            throw std::runtime_error("this system does not let a test step its child");
        }
        Await();
    }
    ~CSteppedThread() { Detach(0); }
    CSteppedThread(CSteppedThread const&) = delete;
    CSteppedThread& operator=(CSteppedThread const&) = delete;

    /// Steps until the condition, asked after every instruction, holds. False when the thread ended
    /// first.
    bool StepUntil(std::function<bool()> const& condition) {
        while (m_fStopped && !condition()) {
            ptrace(PTRACE_SINGLESTEP, m_nThread, nullptr, nullptr);
            Await();
        }
        return m_fStopped;
    }

    /// Lets the thread run again, with a signal if it is not 0.
    void Detach(int nSignal) {
        if (m_fStopped) ptrace(PTRACE_DETACH, m_nThread, nullptr, nSignal);
        m_fStopped = false;
    }

    /// Waits for the end of a thread whose process was killed.
    void AwaitEnd() {
        while (m_fStopped) Await();
    }

private:
    void Await() {
        int nStatus = 0;
        m_fStopped = waitpid(m_nThread, &nStatus, __WALL) == m_nThread && WIFSTOPPED(nStatus);
    }

    const pid_t m_nThread;
    bool m_fStopped = false;
};
