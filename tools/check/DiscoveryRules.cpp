#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <optional>
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

using Clock = std::chrono::steady_clock;
// A host may free a lock word that it does not get for a tenth of a second.
constexpr std::chrono::milliseconds kHold{50}, kDrawnOut{80};
constexpr std::chrono::seconds kLongestLockWatch{8};
constexpr int kLockWaits = 3;

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

std::int64_t ReadHeartbeat(DirectoryRecord const& record) {
    std::int64_t lHeartbeat = 0;
    __builtin_memcpy(&lHeartbeat, &record.lHeartbeat, sizeof(lHeartbeat));
    return lHeartbeat;
}

// When the host has next refreshed its heartbeat; no value when it has not by then.
std::optional<Clock::time_point> AwaitRefresh(DirectoryRecord const& record,
                                              Clock::time_point latest) {
    const std::int64_t lBefore = ReadHeartbeat(record);
    while (ReadHeartbeat(record) == lBefore) {
        if (Clock::now() >= latest) return std::nullopt;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return Clock::now();
}

// What a host does while somebody else has the lock.
enum class UnderLock { Nothing, Waited, Wrote };

// Holds the lock for as long as a host waits in any case, across the moment at which its next
// refresh is due. A stay that this machine has drawn out says nothing: the host may have given up.
UnderLock HoldLockAcross(DirectoryRecord& record, Clock::time_point due) {
    std::this_thread::sleep_until(due - kHold / 2);
    const std::int64_t lBefore = ReadHeartbeat(record);
    const Clock::time_point begin = Clock::now();
    bool fWrote = false;
    {
        const CWordLock lock(&record.nLock, LinkTimeNow() + kMicrosecondsPerSecond);
        if (!lock.IsHeld()) return UnderLock::Nothing;
        const std::int64_t lHeld = ReadHeartbeat(record);
        if (lHeld != lBefore) return UnderLock::Nothing;
        std::this_thread::sleep_for(kHold);
        fWrote = ReadHeartbeat(record) != lHeld;
    }
    if (Clock::now() - begin > kDrawnOut) return UnderLock::Nothing;
    if (fWrote) return UnderLock::Wrote;
    return AwaitRefresh(record, Clock::now() + kHold / 2) ? UnderLock::Waited : UnderLock::Nothing;
}

Finding LocksToWrite(CCheckedHost& host) {
    const CMappedSegment segment = host.MapDirectory();
    DirectoryRecord& record = *Record(segment);
    const Clock::time_point end = Clock::now() + kLongestLockWatch;
    int nWaited = 0;
    auto last = AwaitRefresh(record, end);
    while (last && Clock::now() < end) {
        const auto next = AwaitRefresh(record, end);
        if (!next) break;
        switch (HoldLockAcross(record, *next + (*next - *last))) {
            case UnderLock::Wrote:
                return Failed("the heartbeat changed while the lock was held elsewhere");
            case UnderLock::Waited:
                ++nWaited;
                break;
            case UnderLock::Nothing:
                break;
        }
        if (nWaited == kLockWaits)
            return Passed("it waited for the lock " + std::to_string(nWaited) + " times");
        last = AwaitRefresh(record, end);
    }
    return NotTried("no refresh fell into a moment at which the lock was held elsewhere");
}

Finding NamesAHost(CCheckedHost& host) {
    const int nId = host.Id();
    if (nId == 0) return NotTried("id 0: no session is selected; select one and run this again");
    return PassedIf(nId > 0, "id " + std::to_string(nId));
}

constexpr Rule kRules[] = {
    {"directory-exists", "the directory segment exists", nullptr, Exists,
     "no host runs as this user, or its segment has another name", Place::szDirectory},
    {"directory-size", "it holds the whole record of 20 bytes", "directory-exists", IsLargeEnough,
     "the segment is announced before it has its size", Place::szDirectory},
    {"directory-private", "nobody but its owner can open it", "directory-exists", IsPrivate,
     "it is made with the mode that the umask leaves, instead of 0600", Place::szOwners},
    {"directory-lock", "its lock word is free within a second", "directory-size", LockIsFree,
     "the word is kept for longer than it takes to write two values, or never freed",
     Place::szDirectory},
    {"heartbeat", "the heartbeat is never a second old", "directory-lock", HeartbeatIsFresh,
     "it is refreshed too seldom, on a thread that scripts keep busy, or not in UTC",
     Place::szDirectory},
    {"heartbeat-locked", "it is written with the lock word held", "heartbeat", LocksToWrite,
     "id and heartbeat are written without the lock word", Place::szDirectory},
    {"host-id", "the selected session's host is named", "heartbeat", NamesAHost,
     "the id is negative, or not the one in the name of the message segment", Place::szDirectory},
};

}  // namespace

std::span<const Rule> DiscoveryRules() {
    return kRules;
}
