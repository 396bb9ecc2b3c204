#include "host/ForeignHost.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <set>
#include <string>
#include <thread>

#include "host/HostSegments.h"
#include "link/LinkClock.h"
#include "link/SharedSegments.h"
#include "platform/SharedMemory.h"

namespace {

using Clock = std::chrono::steady_clock;
// Longer than a client waits for the directory's lock, and than a live host leaves its heartbeat.
constexpr std::chrono::milliseconds kLookFor{1500};
constexpr std::chrono::milliseconds kBetweenLooks{50};
// Who has the segment open and cannot be seen.
constexpr int kUnseen = 0;

// The processes that have the segment mapped now, in ascending order.
std::set<int> Users(CMappedSegment const& directory) {
    std::set<int> users;
    if (const auto threads = ThreadsThatMap(directory.Descriptor())) {
        for (MappingThread const& thread : *threads) users.insert(thread.nProcess);
    }
    if (users.empty() && CExclusiveUse(directory.Descriptor()).Others() == OtherUsers::Some) {
        users.insert(kUnseen);
    }
    return users;
}

std::string ProcessText(std::set<int> const& users) {
    if (users.empty() || *users.begin() == kUnseen) return {};
    return ", process " + std::to_string(*users.begin());
}

std::int64_t Heartbeat(DirectoryRecord const& record) {
    std::int64_t lHeartbeat = 0;
    __builtin_memcpy(&lHeartbeat, &record.lHeartbeat, sizeof(lHeartbeat));
    return lHeartbeat;
}

}  // namespace

void RefuseForeignHost(CMappedSegment const& directory) {
    if (directory.Size() < sizeof(DirectoryRecord)) return;
    auto const& record = *reinterpret_cast<const DirectoryRecord*>(directory.Bytes());
    const std::int64_t lHeartbeat = Heartbeat(record);
    const Clock::time_point end = Clock::now() + kLookFor;
    std::set<int> keepers = Users(directory);
    while (Clock::now() < end) {
        if (keepers.empty() && IsHeartbeatStale(lHeartbeat, LinkTimeNow())) return;
        std::this_thread::sleep_for(kBetweenLooks);
        const std::set<int> users = Users(directory);
        if (Heartbeat(record) != lHeartbeat) {
            throw CHostSegmentError("a host application is already running (host id " +
                                    std::to_string(record.nCurrentHost) + ProcessText(users) +
                                    "); quit it first");
        }
        std::erase_if(keepers, [&](int nUser) { return !users.contains(nUser); });
    }
    if (keepers.empty()) return;
    throw CHostSegmentError("a host application that does not answer has the link (host id " +
                            std::to_string(record.nCurrentHost) + ProcessText(keepers) +
                            "); quit it first");
}
