// The main function of every test that uses the link's fixed segment names.
//
// Only one such program may run at a time, and none while a live host application is running: the
// names are the real ones.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>

#include "SegmentNames.h"

namespace {

constexpr int kExitHostIsLive = 3;

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

    if (!ClaimSegmentNames()) {
        std::fprintf(
            stderr,
            "A host application is running (its heartbeat is fresh). These tests use the "
            "same shared-memory names and refuse to touch it: quit it and run them again.\n");
        return kExitHostIsLive;
    }
    return RUN_ALL_TESTS();
}
