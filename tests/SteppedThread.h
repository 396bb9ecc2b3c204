#pragma once

#include <sched.h>
#include <signal.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <stdexcept>

/// Keeps two threads on one processor core for a scope: handing over between them then costs a
/// fraction of what it costs between two cores.
class CSharedCore {
public:
    explicit CSharedCore(pid_t nOther) : m_nOther(nOther) {
        sched_getaffinity(0, sizeof(m_own), &m_own);
        sched_getaffinity(nOther, sizeof(m_others), &m_others);
        cpu_set_t core;
        CPU_ZERO(&core);
        CPU_SET(sched_getcpu(), &core);
        sched_setaffinity(0, sizeof(core), &core);
        sched_setaffinity(nOther, sizeof(core), &core);
    }
    ~CSharedCore() {
        sched_setaffinity(0, sizeof(m_own), &m_own);
        sched_setaffinity(m_nOther, sizeof(m_others), &m_others);
    }
    CSharedCore(CSharedCore const&) = delete;
    CSharedCore& operator=(CSharedCore const&) = delete;

private:
    const pid_t m_nOther;
    cpu_set_t m_own;
    cpu_set_t m_others;
};

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
        const CSharedCore core(m_nThread);
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
