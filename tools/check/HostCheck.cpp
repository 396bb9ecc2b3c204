#include "tools/check/HostCheck.h"

#include <array>
#include <exception>
#include <future>
#include <set>
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

}  // namespace

std::size_t CountRules() {
    std::size_t nRules = 0;
    for (RuleGroup const& group : AllRules()) nRules += group.rules.size();
    return nRules;
}

std::vector<RuleReport> CheckHost(HostCheckOptions const& options,
                                  std::function<void(RuleReport const&)> const& onReport) {
    const auto pHost = std::make_shared<CCheckedHost>(options);
    std::vector<RuleReport> reports;
    std::set<std::string> passed;
    bool fHangs = false;
    for (RuleGroup const& group : AllRules()) {
        for (Rule const& rule : group.rules) {
            Finding finding;
            if (fHangs) {
                finding = NotTried("the host hangs");
            } else if (rule.szNeeds && !passed.contains(rule.szNeeds)) {
                finding = NotTried(std::string("needs ") + rule.szNeeds);
            } else {
                finding = TryWithPatience(rule, pHost, options.nPatienceMs, fHangs);
            }
            if (finding.verdict == Verdict::Pass) passed.insert(rule.szName);
            reports.push_back({group.szTitle, rule.szName, rule.szRule, std::move(finding)});
            onReport(reports.back());
        }
    }
    return reports;
}
