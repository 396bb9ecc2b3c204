#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tools/check/CheckedHost.h"
#include "tools/check/Rule.h"

/// A rule and what became of it.
struct RuleReport {
    std::string strGroup;
    std::string strName;
    std::string strRule;
    Finding finding;
};

/// How many rules there are.
std::size_t CountRules();

/// Tries every rule on whatever host is running, in order. A rule whose forerunner did not pass is
/// not tried. When one takes longer than the patience the host counts as hanging: the rest is not
/// tried, and a thread stays behind that still waits for the host. `onReport` is
/// told of each rule at once.
std::vector<RuleReport> CheckHost(
    HostCheckOptions const& options,
    std::function<void(RuleReport const&)> const& onReport = [](RuleReport const&) {});
