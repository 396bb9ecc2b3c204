#include "link/LinkClock.h"

#include <chrono>

namespace {

constexpr std::int64_t kJulianDayOfUnixEpoch = 2'440'588;
constexpr std::int64_t kMicrosecondsPerDay = 86'400 * kMicrosecondsPerSecond;

}  // namespace

std::int64_t LinkTimeNow() noexcept {
    using namespace std::chrono;
    const auto sinceEpoch = system_clock::now().time_since_epoch();
    return kJulianDayOfUnixEpoch * kMicrosecondsPerDay +
           duration_cast<microseconds>(sinceEpoch).count();
}

std::int64_t DeadlineFromTimeout(int nTimeoutMs) noexcept {
    if (nTimeoutMs == -1) return kNoDeadline;
    return LinkTimeNow() + std::int64_t{nTimeoutMs} * 1000;
}

bool IsHeartbeatStale(std::int64_t lHeartbeat, std::int64_t lNow) noexcept {
    return lNow - kMicrosecondsPerSecond >= lHeartbeat;
}
