#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

/// Looks after the host of the link as long as it lives, on a thread of its own: a host that has
/// fallen silent and is proven dead has those who wait for it sent away, once. Whoever waits in
/// this process is among them.
class CDeadHostWatch {
public:
    CDeadHostWatch();
    /// Ends the thread, which may take as long as `RescueFromDeadHost`.
    ~CDeadHostWatch();
    CDeadHostWatch(CDeadHostWatch const&) = delete;
    CDeadHostWatch& operator=(CDeadHostWatch const&) = delete;

    /// How many dead hosts were found so far. From any thread.
    int Found() const { return m_nFound; }

private:
    void Watch();

    std::mutex m_lock;
    std::condition_variable m_changed;
    bool m_fQuit = false;
    std::atomic<int> m_nFound{0};
    std::thread m_thread;
};
