#include "tools/check/CheckCommand.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "tools/ProgressBar.h"
#include "tools/ToolFailure.h"
#include "tools/WaitNotice.h"
#include "tools/check/HostCheck.h"

namespace {

using nlohmann::json;

constexpr std::size_t kLineWidth = 79;
constexpr std::size_t kRuleColumn = 13;

const char* NameOf(Verdict verdict) {
    switch (verdict) {
        case Verdict::Pass:
            return "pass";
        case Verdict::Fail:
            return "FAIL";
        case Verdict::NotTried:
            return "not tried";
    }
    return "";
}

// Prints each rule as soon as it is judged.
class CTextReport {
public:
    void operator()(RuleReport const& report) {
        if (report.strGroup != m_strGroup) std::printf("%s\n", report.strGroup.c_str());
        m_strGroup = report.strGroup;
        std::string strLine = std::string("  ") + NameOf(report.finding.verdict);
        strLine.resize(kRuleColumn, ' ');
        strLine += report.strName + ": " + report.strRule;
        const std::string strSeen = "(" + report.finding.strSeen + ")";
        const bool fFits = strLine.size() + 1 + strSeen.size() <= kLineWidth;
        const std::string strGap = fFits ? " " : "\n" + std::string(kRuleColumn, ' ');
        std::printf("%s%s%s\n", strLine.c_str(), strGap.c_str(), strSeen.c_str());
        std::fflush(stdout);
    }

private:
    std::string m_strGroup;
};

std::map<Verdict, int> CountVerdicts(std::vector<RuleReport> const& reports) {
    std::map<Verdict, int> counts;
    for (RuleReport const& report : reports) ++counts[report.finding.verdict];
    return counts;
}

void PrintTotal(std::vector<RuleReport> const& reports) {
    std::map<Verdict, int> counts = CountVerdicts(reports);
    std::printf("%zu rules: %d passed, %d failed, %d not tried.\n", reports.size(),
                counts[Verdict::Pass], counts[Verdict::Fail], counts[Verdict::NotTried]);
}

void PrintJson(std::vector<RuleReport> const& reports) {
    json rules = json::array();
    for (RuleReport const& report : reports) {
        rules.push_back(
            {{"group", report.strGroup},
             {"name", report.strName},
             {"rule", report.strRule},
             {"verdict",
              report.finding.verdict == Verdict::Fail ? "fail" : NameOf(report.finding.verdict)},
             {"seen", report.finding.strSeen}});
    }
    std::map<Verdict, int> counts = CountVerdicts(reports);
    const json all{{"rules", rules},
                   {"passed", counts[Verdict::Pass]},
                   {"failed", counts[Verdict::Fail]},
                   {"not_tried", counts[Verdict::NotTried]}};
    std::printf("%s\n", all.dump(2, ' ', false, json::error_handler_t::replace).c_str());
}

std::string DescribeRule(std::size_t nDone, std::size_t nRules) {
    return ProgressBar(nDone, nRules) + " rule " + std::to_string(std::min(nDone + 1, nRules)) +
           " of " + std::to_string(nRules);
}

// Tells a person at a terminal which rule is being tried.
std::vector<RuleReport> CheckWithNotice(HostCheckOptions const& options,
                                        std::function<void(RuleReport const&)> const& onReport) {
    const std::size_t nRules = CountRules(options);
    CWaitNotice notice(DescribeRule(0, nRules));
    std::size_t nDone = 0;
    return CheckHost(options, [&](RuleReport const& report) {
        notice.Hide();
        onReport(report);
        notice.Say(DescribeRule(++nDone, nRules));
    });
}

// The first rule that was not tried is what kept the others from being tried.
[[noreturn]] void TellInconclusive(std::vector<RuleReport> const& reports) {
    const auto first = std::find_if(reports.begin(), reports.end(), [](RuleReport const& report) {
        return report.finding.verdict == Verdict::NotTried;
    });
    const std::string strWhy = first == reports.end()
                                   ? "no rule is left"
                                   : first->strName + " was not tried: " + first->finding.strSeen;
    throw CToolFailure(exitInconclusive, "the host was not judged: " + strWhy, "", "inconclusive");
}

void Check(HostCheckOptions const& options, bool fJson) {
    try {
        CountRules(options);
    } catch (std::invalid_argument const& unknown) {
        throw CToolFailure(exitTrouble, unknown.what(), "A report names every rule.", "usage");
    }
    const std::vector<RuleReport> reports = fJson
                                                ? CheckWithNotice(options, [](RuleReport const&) {})
                                                : CheckWithNotice(options, CTextReport());
    fJson ? PrintJson(reports) : PrintTotal(reports);
    const Verdict conclusion = Conclusion(reports);
    if (conclusion == Verdict::Fail) throw CLI::RuntimeError(exitNegative);
    if (conclusion == Verdict::NotTried) TellInconclusive(reports);
}

}  // namespace

void AddCheckCommand(CLI::App& app) {
    CLI::App* const pCommand = app.add_subcommand(
        "check-host",
        "judge the running host application, rule by rule; status 1 if one fails, 3 if "
        "the host could not be judged");
    const auto pOptions = std::make_shared<HostCheckOptions>();
    const auto pJson = std::make_shared<bool>(false);
    pCommand->add_flag("--json", *pJson, "print JSON");
    pCommand
        ->add_option("--tracks", pOptions->tracks,
                     "three empty tracks of the AudioSuite document to try the commands on; they "
                     "are cleared at the end")
        ->delimiter(',')
        ->capture_default_str();
    pCommand
        ->add_option("--timeout", pOptions->nPatienceMs, "longest time for one rule, milliseconds")
        ->check(CLI::Range(100, 3'600'000))
        ->capture_default_str();
    pCommand->add_option("--only", pOptions->only, "try these rules, and those that they need")
        ->delimiter(',');
    pCommand
        ->add_option("--skip", pOptions->skip, "leave out these rules, and those that need them")
        ->delimiter(',');
    pCommand->callback([pOptions, pJson] { Check(*pOptions, *pJson); });
}
