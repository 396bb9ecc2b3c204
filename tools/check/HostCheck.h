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
    std::string strRule;   ///< what was expected
    std::string strCause;  ///< the likely cause of a failure
    std::string strPlace;  ///< what to read: a file of the documentation and a heading in it
    Finding finding;
    bool fMissedForerunner = false;  ///< not tried because another rule was not
};

/// How many rules are to be tried. Throws `std::invalid_argument` for a name that no rule has.
std::size_t CountRules(HostCheckOptions const& options);

/// What the whole report says: a failure is a failure, and without one the host is good only if no
/// rule had to be left untried because another one was.
Verdict Conclusion(std::vector<RuleReport> const& reports);

/// Tries the rules that the options choose on whatever host is running, in order. A rule whose
/// forerunner did not pass is not tried. When one takes longer than the patience the host counts as
/// hanging: the rest is not tried, and a thread stays behind that still waits for the host. When
/// the host's process ends meanwhile, the rule under way fails and the rest is not tried either.
/// `onReport` is told of each rule at once.
std::vector<RuleReport> CheckHost(
    HostCheckOptions const& options,
    std::function<void(RuleReport const&)> const& onReport = [](RuleReport const&) {});
