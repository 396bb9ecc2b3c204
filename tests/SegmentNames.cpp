#include "SegmentNames.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>

#include "link/LinkClock.h"

namespace {

constexpr char szDirectory[] = "/__KEL_TAN_INTERPROCESS_DIR6__";
constexpr int kRecordSize = 20;

// Blocks until no other test program holds the segment names. The lock goes with the process.
void WaitForOtherTests() {
    const int nFile = open("/dev/shm", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (nFile >= 0) flock(nFile, LOCK_EX);
}

// A heartbeat far in the future is what a test's own peer writes, and therefore a leftover.
bool IsHeartbeatFresh() {
    const int nFile = shm_open(szDirectory, O_RDONLY, 0);
    if (nFile < 0) return false;
    // Mapped, because not every system reads from such an object.
    struct stat status {};
    const bool fWhole = fstat(nFile, &status) == 0 && status.st_size >= kRecordSize;
    void* const pRecord =
        fWhole ? mmap(nullptr, kRecordSize, PROT_READ, MAP_SHARED, nFile, 0) : MAP_FAILED;
    close(nFile);
    if (pRecord == MAP_FAILED) return false;
    std::int64_t lHeartbeat = 0;
    std::memcpy(&lHeartbeat, static_cast<const char*>(pRecord) + 12, sizeof(lHeartbeat));
    munmap(pRecord, kRecordSize);
    const std::int64_t lNow = LinkTimeNow();
    return !IsHeartbeatStale(lHeartbeat, lNow) && lHeartbeat < lNow + 2 * kMicrosecondsPerSecond;
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
