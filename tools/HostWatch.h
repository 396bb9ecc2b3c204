#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

/// How long a host that does not refresh its heartbeat is waited for.
inline constexpr std::chrono::seconds kSilence{3};

/// "Host 1 (process 4711)": the process where the host has left its id in the directory.
std::string NameOfHost(int nHost);

/// Looks after somebody who waits for a host: has the time come to give up?
class CHostWatch {
public:
    using Clock = std::chrono::steady_clock;

    /// `patience` for all waits together; none: for ever.
    explicit CHostWatch(std::optional<Clock::duration> patience);

    /// Waits until `isDone`, which may take a tenth of a second to find out, says so. Answers an
    /// empty text then, or else why it makes no sense to wait any longer. The host is looked at
    /// without a lock and may be in any state.
    std::string Await(int nHost, std::function<bool(std::chrono::milliseconds)> const& isDone);

private:
    bool IsSilent();

    std::optional<Clock::duration> m_patience;
    Clock::time_point m_begun = Clock::now();
    std::optional<std::int64_t> m_lHeartbeat;
    Clock::time_point m_moved = Clock::now();
};
