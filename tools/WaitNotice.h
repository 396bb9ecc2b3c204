#pragma once

#include <thread>

/// Tells a person at a terminal that a command is still waiting for the host, and for how long:
/// from the first second on, on a line of standard error that is gone with this object. Silent
/// where standard error is no terminal.
class CWaitNotice {
public:
    CWaitNotice();
    ~CWaitNotice();
    CWaitNotice(CWaitNotice const&) = delete;
    CWaitNotice& operator=(CWaitNotice const&) = delete;

    /// Takes the line away for good, so that something else can be printed.
    void End();

private:
    std::jthread m_thread;
};
