#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <thread>

#include "link/LinkClock.h"
#include "link/WordProtocol.h"
#include "tools/check/CheckText.h"
#include "tools/check/CheckedHost.h"
#include "tools/check/Rule.h"
#include "tools/check/SegmentFacts.h"

namespace {

constexpr std::chrono::milliseconds kLookEvery{20};
constexpr std::int64_t kTolerated = kMicrosecondsPerSecond;

DirectoryRecord* Record(CMappedSegment const& segment) {
    return reinterpret_cast<DirectoryRecord*>(segment.Bytes());
}

Finding Exists(CCheckedHost& host) {
    return Passed(std::string(szDirectorySegment) + ", " +
                  std::to_string(host.MapDirectory().Size()) + " bytes");
}

Finding IsLargeEnough(CCheckedHost& host) {
    const std::size_t nSize = host.MapDirectory().Size();
    return PassedIf(nSize >= sizeof(DirectoryRecord), std::to_string(nSize) + " bytes");
}

Finding IsPrivate(CCheckedHost& host) {
    return PrivateToItsOwner(host.MapDirectory());
}

Finding LockIsFree(CCheckedHost& host) {
    const CMappedSegment segment = host.MapDirectory();
    const std::int64_t lStart = LinkTimeNow();
    const CWordLock lock(&Record(segment)->nLock, lStart + kMicrosecondsPerSecond);
    const double dTaken = static_cast<double>(LinkTimeNow() - lStart) / 1000;
    if (!lock.IsHeld()) return Failed("still held after one second");
    return Passed("free after " + Milliseconds(dTaken));
}

Finding HeartbeatIsFresh(CCheckedHost& host) {
    const CMappedSegment segment = host.MapDirectory();
    const std::chrono::milliseconds observed(host.Options().nHeartbeatMs);
    const auto end = std::chrono::steady_clock::now() + observed;
    std::int64_t lOldest = INT64_MIN;
    std::int64_t lYoungest = INT64_MAX;
    int nRefreshes = -1;
    std::int64_t lLast = 0;
    do {
        std::int64_t lHeartbeat = 0;
        {
            const CWordLock lock(&Record(segment)->nLock, LinkTimeNow() + kMicrosecondsPerSecond);
            lHeartbeat = Record(segment)->lHeartbeat;
        }
        const std::int64_t lAge = LinkTimeNow() - lHeartbeat;
        lOldest = std::max(lOldest, lAge);
        lYoungest = std::min(lYoungest, lAge);
        nRefreshes += lHeartbeat != lLast;
        lLast = lHeartbeat;
        std::this_thread::sleep_for(kLookEvery);
    } while (std::chrono::steady_clock::now() < end);
    const std::string strSeen = "at most " + Milliseconds(static_cast<double>(lOldest) / 1000) +
                                " old, refreshed " + std::to_string(nRefreshes) + " times in " +
                                Milliseconds(static_cast<double>(observed.count()));
    if (lYoungest < -kTolerated) return Failed("it lies in the future: is it UTC?");
    return PassedIf(lOldest < kMicrosecondsPerSecond, strSeen);
}

Finding NamesAHost(CCheckedHost& host) {
    const int nId = host.Id();
    if (nId == 0) return NotTried("id 0: no session is selected; select one and run this again");
    return PassedIf(nId > 0, "id " + std::to_string(nId));
}

constexpr Rule kRules[] = {
    {"directory-exists", "the directory segment exists", nullptr, Exists},
    {"directory-size", "it holds the whole record of 20 bytes", "directory-exists", IsLargeEnough},
    {"directory-private", "nobody but its owner can open it", "directory-exists", IsPrivate},
    {"directory-lock", "its lock word is free within a second", "directory-size", LockIsFree},
    {"heartbeat", "the heartbeat is never a second old", "directory-lock", HeartbeatIsFresh},
    {"host-id", "the selected session's host is named", "heartbeat", NamesAHost},
};

}  // namespace

std::span<const Rule> DiscoveryRules() {
    return kRules;
}
