#include "SegmentNames.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>

#include "link/LinkClock.h"

namespace {

constexpr char szDirectory[] = "/__KEL_TAN_INTERPROCESS_DIR6__";

// Blocks until no other test program holds the segment names. The lock goes with the process.
void WaitForOtherTests() {
    const int nFile = open("/dev/shm", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (nFile >= 0) flock(nFile, LOCK_EX);
}

// A heartbeat far in the future is what a test's own peer writes, and therefore a leftover.
bool IsHeartbeatFresh() {
    const int nFile = shm_open(szDirectory, O_RDONLY, 0);
    if (nFile < 0) return false;
    unsigned char record[20] = {};
    const bool fRead = pread(nFile, record, sizeof(record), 0) == sizeof(record);
    close(nFile);
    std::int64_t lHeartbeat = 0;
    std::memcpy(&lHeartbeat, record + 12, sizeof(lHeartbeat));
    const std::int64_t lNow = LinkTimeNow();
    return fRead && !IsHeartbeatStale(lHeartbeat, lNow) &&
           lHeartbeat < lNow + 2 * kMicrosecondsPerSecond;
}

// What a host that was killed left behind goes stale; a live host keeps its heartbeat fresh.
bool IsHostLiveForLong() {
    constexpr useconds_t kLookUs = 100'000;
    constexpr int kLooks = 15;
    for (int nLook = 0; nLook < kLooks; ++nLook) {
        if (!IsHeartbeatFresh()) return false;
        usleep(kLookUs);
    }
    return true;
}

}  // namespace

bool ClaimSegmentNames() {
    WaitForOtherTests();
    return !IsHostLiveForLong();
}
