#pragma once

#include <cstdint>

/// \file
/// Link time: microseconds in UTC, counted as Boost.Date_Time counts a `ptime` of microsecond
/// resolution. That is the Julian day number times 86,400,000,000 plus the microseconds since UTC
/// midnight; heartbeats and deadlines are such counts.

/// The deadline that never comes (Boost's positive infinity).
inline constexpr std::int64_t kNoDeadline = INT64_MAX;

/// The unit of link time, in a second.
inline constexpr std::int64_t kMicrosecondsPerSecond = 1'000'000;

/// The current link time, from the system's UTC clock.
std::int64_t LinkTimeNow() noexcept;

/// The deadline of a wait that starts now and may take `nTimeoutMs` milliseconds; -1 never ends,
/// any other negative time-out has already passed.
std::int64_t DeadlineFromTimeout(int nTimeoutMs) noexcept;

/// True when a host that last refreshed its heartbeat at `lHeartbeat` counts as gone at `lNow`: it
/// has been silent for 1 second or longer.
bool IsHeartbeatStale(std::int64_t lHeartbeat, std::int64_t lNow) noexcept;
