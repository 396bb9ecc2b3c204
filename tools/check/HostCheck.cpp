#include "tools/check/HostCheck.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <exception>
#include <future>
#include <map>
#include <set>
#include <stdexcept>
#include <thread>

#include "tools/LinkRescue.h"
#include "tools/check/HostProcess.h"

namespace {

constexpr char szPage[] = "docs/link-protocol.md#";

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

// Tries rules on a host until that hangs or has crashed.
class CTrial {
public:
    explicit CTrial(HostCheckOptions const& options)
        : m_pHost(std::make_shared<CCheckedHost>(options)), m_patience(options.nPatienceMs) {}

    // Why no rule can be tried any more; empty: they can.
    std::string const& End() const { return m_strEnd; }

    // The client's own commands wait for ever, so a rule runs on a thread that can be left behind.
    Finding Try(Rule const& rule) {
        std::packaged_task<Finding()> task(
            [&rule, pHost = m_pHost] { return TryGuarded(rule, *pHost); });
        std::future<Finding> finding = task.get_future();
        std::thread(std::move(task)).detach();
        const auto end = std::chrono::steady_clock::now() + m_patience;
        while (finding.wait_for(kBetweenLooks) != std::future_status::ready) {
            if (m_process.HasEnded()) return NameCrash(finding);
            if (std::chrono::steady_clock::now() >= end) return NameHang();
        }
        return m_process.HasEnded() ? NameCrash(finding) : finding.get();
    }

private:
    // Whoever waits for the host, the rule's thread above all, is sent away as soon as its death is
    // proven, for which its heartbeat has to be a second old.
    Finding NameCrash(std::future<Finding> const& finding) {
        m_strEnd = "the host has crashed";
        for (int nTry = 0; nTry < kTriesToLeave && m_pHost->Id() > 0; ++nTry)
            std::this_thread::sleep_for(kBetweenLooks);
        if (m_nHost > 0) RescueFromDeadHost(m_nHost);
        finding.wait_for(kTriesToLeave * kBetweenLooks);
        return Failed("the host crashed: its " + m_process.Text() + " has ended");
    }

    Finding NameHang() {
        m_strEnd = "the host hangs";
        return Failed("no answer after " + std::to_string(m_patience.count()) + " ms");
    }

    static constexpr std::chrono::milliseconds kBetweenLooks{50};
    static constexpr int kTriesToLeave = 40;

    const std::shared_ptr<CCheckedHost> m_pHost;
    const std::chrono::milliseconds m_patience;
    const CHostProcess m_process;
    const int m_nHost = m_pHost->Id();
    std::string m_strEnd;
};

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
    CTrial trial(options);
    std::vector<RuleReport> reports;
    std::set<std::string> passed;
    for (RuleGroup const& group : AllRules()) {
        for (Rule const& rule : group.rules) {
            if (!chosen.contains(rule.szName)) continue;
            RuleReport report{group.szTitle,
                              rule.szName,
                              rule.szRule,
                              rule.szCause,
                              szPage + std::string(rule.szPlace),
                              {},
                              false};
            if (!trial.End().empty()) {
                report.finding = NotTried(trial.End());
            } else if (rule.szNeeds && !passed.contains(rule.szNeeds)) {
                report.finding = NotTried(std::string("needs ") + rule.szNeeds);
                report.fMissedForerunner = true;
            } else {
                report.finding = trial.Try(rule);
            }
            if (report.finding.verdict == Verdict::Pass) passed.insert(rule.szName);
            reports.push_back(std::move(report));
            onReport(reports.back());
        }
    }
    return reports;
}
