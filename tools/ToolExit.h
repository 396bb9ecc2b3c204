#pragma once

#include <CLI/CLI.hpp>
#include <cstdio>
#include <string>

/// Exit status of the command-line tools.
enum ToolStatus : int {
    kToolDone = 0,    ///< the command did what it was asked for
    kToolFailed = 1,  ///< it could not; standard error says why and what to do next
    kToolUsage = 2,   ///< the command line itself is wrong
};

/// Ends the command with `nStatus` after telling the user why, and what to do next when `strAdvice`
/// is not empty.
[[noreturn]] inline void EndTool(int nStatus, std::string const& strError,
                                 std::string const& strAdvice = {}) {
    std::fprintf(stderr, "tavarin: %s\n", strError.c_str());
    if (!strAdvice.empty()) std::fprintf(stderr, "         %s\n", strAdvice.c_str());
    throw CLI::RuntimeError(nStatus);
}
