#include "tools/check/CheckCommand.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>

#include "host/XmlText.h"
#include "tools/InputOutput.h"
#include "tools/ProgressBar.h"
#include "tools/ToolFailure.h"
#include "tools/WaitNotice.h"
#include "tools/check/HostCheck.h"

namespace {

using nlohmann::json;

constexpr char szSuite[] = "tavarin check-host";
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
        const std::string strGap = fFits ? " " : szBelow;
        std::printf("%s%s%s\n", strLine.c_str(), strGap.c_str(), strSeen.c_str());
        if (report.finding.verdict == Verdict::Fail)
            std::printf("%s%s\n", Wrapped("likely: " + report.strCause).c_str(),
                        (szBelow + ("see " + report.strPlace)).c_str());
        std::fflush(stdout);
    }

private:
    static constexpr char szBelow[] = "\n             ";
    static_assert(sizeof(szBelow) == kRuleColumn + 2);

    // Without the line feed in front of the first line.
    static std::string Wrapped(std::string const& strText) {
        std::string strLines = szBelow + 1;
        std::size_t nColumn = kRuleColumn;
        std::istringstream words(strText);
        for (std::string strWord; words >> strWord;) {
            const bool fFirst = nColumn == kRuleColumn;
            const bool fFits = nColumn + !fFirst + strWord.size() <= kLineWidth;
            strLines += fFirst ? "" : fFits ? " " : szBelow;
            nColumn = (fFits ? nColumn + !fFirst : kRuleColumn) + strWord.size();
            strLines += strWord;
        }
        return strLines;
    }

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

json AsJson(RuleReport const& report) {
    const bool fFailed = report.finding.verdict == Verdict::Fail;
    json rule{{"group", report.strGroup}, {"name", report.strName},
              {"rule", report.strRule},   {"verdict", NameOf(report.finding.verdict)},
              {"place", report.strPlace}, {"seen", report.finding.strSeen}};
    if (!fFailed) return rule;
    rule["verdict"] = "fail";
    rule["cause"] = report.strCause;
    return rule;
}

void PrintJson(std::vector<RuleReport> const& reports) {
    json rules = json::array();
    for (RuleReport const& report : reports) rules.push_back(AsJson(report));
    std::map<Verdict, int> counts = CountVerdicts(reports);
    const json all{{"rules", rules},
                   {"passed", counts[Verdict::Pass]},
                   {"failed", counts[Verdict::Fail]},
                   {"not_tried", counts[Verdict::NotTried]}};
    std::printf("%s\n", all.dump(2, ' ', false, json::error_handler_t::replace).c_str());
}

// What became of a rule, as an element inside its test case.
std::string JUnitOutcome(RuleReport const& report) {
    const std::string strSeen = XmlText(report.finding.strSeen);
    switch (report.finding.verdict) {
        case Verdict::Pass:
            return "<system-out>" + strSeen + "</system-out>";
        case Verdict::Fail:
            return "<failure message=\"" + strSeen + "\">expected: " + XmlText(report.strRule) +
                   "\nlikely: " + XmlText(report.strCause) + "\nsee " + XmlText(report.strPlace) +
                   "</failure>";
        case Verdict::NotTried:
            return "<skipped message=\"" + strSeen + "\"/>";
    }
    return "";
}

std::string AsJUnit(std::vector<RuleReport> const& reports) {
    std::map<Verdict, int> counts = CountVerdicts(reports);
    std::string strXml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuite name=\"" +
                         std::string(szSuite) + "\" tests=\"" + std::to_string(reports.size()) +
                         "\" failures=\"" + std::to_string(counts[Verdict::Fail]) +
                         "\" errors=\"0\" skipped=\"" + std::to_string(counts[Verdict::NotTried]) +
                         "\">\n";
    for (RuleReport const& report : reports)
        strXml += "  <testcase classname=\"" + XmlText(report.strGroup) + "\" name=\"" +
                  XmlText(report.strName) + "\">" + JUnitOutcome(report) + "</testcase>\n";
    return strXml + "</testsuite>\n";
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

struct CheckArguments {
    HostCheckOptions options;
    bool fJson = false;
    bool fForce = false;
    std::string strJUnit;
};

void Check(CheckArguments const& arguments) {
    const Replace replace = arguments.fForce ? Replace::Yes : Replace::No;
    if (!arguments.strJUnit.empty()) RequireRoomFor(arguments.strJUnit, replace);
    try {
        CountRules(arguments.options);
    } catch (std::invalid_argument const& unknown) {
        throw CToolFailure(exitTrouble, unknown.what(), "A report names every rule.", "usage");
    }
    const std::vector<RuleReport> reports =
        arguments.fJson ? CheckWithNotice(arguments.options, [](RuleReport const&) {})
                        : CheckWithNotice(arguments.options, CTextReport());
    arguments.fJson ? PrintJson(reports) : PrintTotal(reports);
    // Somebody may have made the file meanwhile, but was asked before.
    if (!arguments.strJUnit.empty())
        WriteOutput(arguments.strJUnit, AsJUnit(reports), Replace::Yes);
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
    const auto pArguments = std::make_shared<CheckArguments>();
    HostCheckOptions& options = pArguments->options;
    pCommand->add_flag("--json", pArguments->fJson, "print JSON");
    pCommand->add_option("--junit", pArguments->strJUnit,
                         "write the report into this file too, as JUnit's XML");
    pCommand->add_flag("--force", pArguments->fForce, "replace that file if it is there");
    pCommand
        ->add_option("--tracks", options.tracks,
                     "three empty tracks of the AudioSuite document to try the commands on; they "
                     "are cleared at the end")
        ->delimiter(',')
        ->capture_default_str();
    pCommand
        ->add_option("--timeout", options.nPatienceMs, "longest time for one rule, milliseconds")
        ->check(CLI::Range(100, 3'600'000))
        ->capture_default_str();
    pCommand->add_option("--only", options.only, "try these rules, and those that they need")
        ->delimiter(',');
    pCommand->add_option("--skip", options.skip, "leave out these rules, and those that need them")
        ->delimiter(',');
    pCommand->callback([pArguments] { Check(*pArguments); });
}
