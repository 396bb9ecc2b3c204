#pragma once

#include <unistd.h>

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

/// Tells a person at a terminal what a command is busy with, and for how long: from the first
/// second on, on a line of standard error that is gone with this object. Silent where standard
/// error is no terminal.
class CWaitNotice {
public:
    explicit CWaitNotice(std::string strWhat, int nTerminal = STDERR_FILENO);
    ~CWaitNotice();
    CWaitNotice(CWaitNotice const&) = delete;
    CWaitNotice& operator=(CWaitNotice const&) = delete;

    /// Says something else from now on.
    void Say(std::string strWhat);

    /// Takes the line away until the next `Say`, so that something else can be printed.
    void Hide();

    /// Takes the line away for good.
    void End();

private:
    void CountSeconds();
    void Draw() const;
    void Erase() const;

    const int m_nTerminal;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::string m_strWhat;  // empty: hidden
    int m_nSeconds = 0;
    bool m_fEnd = false;
    std::thread m_thread;
};
