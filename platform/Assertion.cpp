#include "platform/Assertion.h"

#include <cstdio>
#include <cstdlib>

void AssertionFailed(const char* condition, const char* file, int line) noexcept {
    std::fprintf(stderr, "Assertion failed: %s, %s:%d\n", condition, file, line);
    std::fflush(stderr);
    std::abort();
}
