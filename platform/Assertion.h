#pragma once

/// Stops the process because of a programming error between two parts of the system.
///
/// Prints one line, "Assertion failed: <condition>, <file>:<line>", to standard error and aborts.
/// Unlike `assert` it is there in release builds too, and it never opens a panel.
[[noreturn]] void AssertionFailed(const char* condition, const char* file, int line) noexcept;

/// Continues when `condition` holds; otherwise stops the process naming the condition as written.
#define TAVARIN_REQUIRE(condition) \
    ((condition) ? static_cast<void>(0) : AssertionFailed(#condition, __FILE__, __LINE__))
