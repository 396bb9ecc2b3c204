// The main function of every test that uses the link's fixed segment names.
//
// Only one such program may run at a time, and none while a live host application is running: the
// names are the real ones.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "link/LinkClock.h"

namespace {

constexpr char szDirectory[] = "/__KEL_TAN_INTERPROCESS_DIR6__";
constexpr int kExitHostIsLive = 3;
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

bool IsListing(int argc, char** argv) {
    for (int nArgument = 1; nArgument < argc; ++nArgument) {
        if (std::strcmp(argv[nArgument], "--gtest_list_tests") == 0) return true;
    }
    return false;
}

}  // namespace

int main(int argc, char** argv) {
    const bool fListing = IsListing(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    if (fListing) return RUN_ALL_TESTS();

    WaitForOtherTests();
    if (IsHostLiveForLong()) {
        std::fprintf(
            stderr,
            "A host application is running (its heartbeat is fresh). These tests use the "
            "same shared-memory names and refuse to touch it: quit it and run them again.\n");
        return kExitHostIsLive;
    }
    return RUN_ALL_TESTS();
}
