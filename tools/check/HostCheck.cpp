#include "tools/check/HostCheck.h"

#include <algorithm>
#include <array>
#include <exception>
#include <future>
#include <map>
#include <set>
#include <stdexcept>
#include <thread>

namespace {

std::array<RuleGroup, 4> AllRules() {
    return {{{"Finding the host", DiscoveryRules()},
             {"The message segment", SegmentRules()},
             {"Exchanges", ExchangeRules()},
             {"Commands", CommandRules()}}};
}

Finding TryGuarded(Rule const& rule, CCheckedHost& host) {
    try {
        return rule.pTry(host);
    } catch (std::exception const& failure) {
        return Failed(failure.what());
    }
}

// The client's own commands wait for ever, so a rule runs on a thread that can be left behind.
Finding TryWithPatience(Rule const& rule, std::shared_ptr<CCheckedHost> const& pHost,
                        int nPatienceMs, bool& fHangs) {
    std::packaged_task<Finding()> task([&rule, pHost] { return TryGuarded(rule, *pHost); });
    std::future<Finding> finding = task.get_future();
    std::thread(std::move(task)).detach();
    if (finding.wait_for(std::chrono::milliseconds(nPatienceMs)) == std::future_status::ready) {
        return finding.get();
    }
    fHangs = true;
    return Failed("no answer after " + std::to_string(nPatienceMs) + " ms");
}

std::map<std::string, Rule const*> RulesByName() {
    std::map<std::string, Rule const*> rules;
    for (RuleGroup const& group : AllRules())
        for (Rule const& rule : group.rules) rules[rule.szName] = &rule;
    return rules;
}

void RequireNames(std::vector<std::string> const& names,
                  std::map<std::string, Rule const*> const& rules) {
    for (std::string const& strName : names)
        if (!rules.contains(strName))
            throw std::invalid_argument("there is no rule \"" + strName + "\"");
}

// The rule and its forerunners, the rule first.
std::vector<std::string> WithForerunners(std::string const& strName,
                                         std::map<std::string, Rule const*> const& rules) {
    std::vector<std::string> names{strName};
    while (const char* const szNeeds = rules.at(names.back())->szNeeds) names.emplace_back(szNeeds);
    return names;
}

std::set<std::string> ChosenRules(HostCheckOptions const& options) {
    const auto rules = RulesByName();
    RequireNames(options.only, rules);
    RequireNames(options.skip, rules);
    std::set<std::string> chosen;
    for (auto const& [strName, pRule] : rules)
        if (options.only.empty()) chosen.insert(strName);
    for (std::string const& strName : options.only)
        chosen.merge([&] {
            const auto names = WithForerunners(strName, rules);
            return std::set<std::string>(names.begin(), names.end());
        }());
    std::erase_if(chosen, [&](std::string const& strName) {
        const auto names = WithForerunners(strName, rules);
        return std::find_first_of(names.begin(), names.end(), options.skip.begin(),
                                  options.skip.end()) != names.end();
    });
    return chosen;
}

}  // namespace

std::size_t CountRules(HostCheckOptions const& options) {
    return ChosenRules(options).size();
}

Verdict Conclusion(std::vector<RuleReport> const& reports) {
    const auto any = [&reports](auto is) {
        return std::any_of(reports.begin(), reports.end(), is);
    };
    if (any([](RuleReport const& report) { return report.finding.verdict == Verdict::Fail; }))
        return Verdict::Fail;
    const bool fTried =
        any([](RuleReport const& report) { return report.finding.verdict == Verdict::Pass; });
    const bool fMissed = any([](RuleReport const& report) { return report.fMissedForerunner; });
    return fTried && !fMissed ? Verdict::Pass : Verdict::NotTried;
}

std::vector<RuleReport> CheckHost(HostCheckOptions const& options,
                                  std::function<void(RuleReport const&)> const& onReport) {
    const std::set<std::string> chosen = ChosenRules(options);
    const auto pHost = std::make_shared<CCheckedHost>(options);
    std::vector<RuleReport> reports;
    std::set<std::string> passed;
    bool fHangs = false;
    for (RuleGroup const& group : AllRules()) {
        for (Rule const& rule : group.rules) {
            if (!chosen.contains(rule.szName)) continue;
            RuleReport report{group.szTitle, rule.szName, rule.szRule, {}, false};
            if (fHangs) {
                report.finding = NotTried("the host hangs");
            } else if (rule.szNeeds && !passed.contains(rule.szNeeds)) {
                report.finding = NotTried(std::string("needs ") + rule.szNeeds);
                report.fMissedForerunner = true;
            } else {
                report.finding = TryWithPatience(rule, pHost, options.nPatienceMs, fHangs);
            }
            if (report.finding.verdict == Verdict::Pass) passed.insert(rule.szName);
            reports.push_back(std::move(report));
            onReport(reports.back());
        }
    }
    return reports;
}
