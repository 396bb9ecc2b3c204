#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

/// How long a script has been running by itself; what the host does for it does not count.
///
/// `IsStuck` may be asked on any thread, everything else belongs to the one that runs the script.
/// A script whose time is over can still make the interpreter busy in one step that nothing
/// interrupts. When that has taken as long again, the script is stuck: no function of the host is
/// under way, and none can begin, since each begins by asking whether time is left.
class CScriptClock {
public:
    void Start(std::chrono::milliseconds limit) noexcept;
    void Stop() noexcept;

    bool IsOver() const noexcept { return Now() >= m_nEnd; }
    bool IsStuck() const noexcept;

    /// The time in which the host works for the script.
    class CPause {
    public:
        explicit CPause(CScriptClock& clock) noexcept;
        ~CPause();
        CPause(CPause const&) = delete;
        CPause& operator=(CPause const&) = delete;

        bool IsTooLate() const noexcept { return m_nStart >= m_Clock.m_nEnd; }

    private:
        CScriptClock& m_Clock;
        std::int64_t m_nStart;
    };

private:
    static std::int64_t Now() noexcept;

    std::int64_t m_nLimit = 0;
    std::atomic<std::int64_t> m_nEnd{INT64_MAX};
    std::atomic<std::int64_t> m_nStuckFrom{INT64_MAX};
    std::atomic<bool> m_fPaused = false;
};
