// The judgement of hosts, by good ones, minimal ones and ones that are wrong in one way each.

#include "tools/check/HostCheck.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <fstream>
#include <future>
#include <map>
#include <optional>
#include <set>
#include <thread>

#include "ChildProcess.h"
#include "ForkedProcess.h"
#include "PeerHost.h"
#include "TemporaryDirectory.h"
#include "link/LinkClock.h"
#include "link/WordProtocol.h"

namespace {

using Strings = std::vector<std::string>;

HostCheckOptions QuickOptions() {
    HostCheckOptions options;
    options.nHeartbeatMs = 300;
    return options;
}

Strings Named(std::vector<RuleReport> const& reports, Verdict verdict) {
    Strings names;
    for (RuleReport const& report : reports) {
        if (report.finding.verdict == verdict) names.push_back(report.strName);
    }
    return names;
}

std::string Seen(std::vector<RuleReport> const& reports) {
    std::string strAll;
    for (RuleReport const& report : reports) {
        strAll += report.strName + ": " + report.finding.strSeen + "\n";
    }
    return strAll;
}

Finding FindingOf(std::string const& strName, std::vector<RuleReport> const& reports) {
    const auto report = std::find_if(reports.begin(), reports.end(),
                                     [&](auto const& each) { return each.strName == strName; });
    return report == reports.end() ? Failed("no such rule") : report->finding;
}

// As a link to a heading of a page is written.
std::string Anchor(std::string const& strHeading) {
    std::string strAnchor;
    for (const char c : strHeading) {
        if (c == ' ') strAnchor += '-';
        if (std::isalnum(static_cast<unsigned char>(c)))
            strAnchor += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return strAnchor;
}

TEST(HostCheckReport, EveryRuleHasItsPlaceInThePageAndACause) {
    std::set<std::string> headings;
    std::ifstream page(TAVARIN_PROTOCOL_PAGE);
    for (std::string strLine; std::getline(page, strLine);)
        if (strLine.starts_with("## "))
            headings.insert("docs/link-protocol.md#" + Anchor(strLine.substr(3)));
    const std::vector<RuleReport> reports = CheckHost(QuickOptions());
    EXPECT_EQ(reports.size(), 49u);
    for (RuleReport const& report : reports) {
        EXPECT_TRUE(headings.contains(report.strPlace)) << report.strName << report.strPlace;
        EXPECT_FALSE(report.strCause.empty()) << report.strName;
    }
}

// Programs that play the host.
class HostCheck : public testing::Test {
protected:
    void TearDown() override {
        if (!m_host) return;
        m_host->Signal(SIGTERM);
        EXPECT_EQ(m_host->Wait(), 0) << m_directory.Read("host.err");
    }
    void Start(Strings const& arguments) {
        m_host.emplace(arguments, m_directory.File("host.out"), m_directory.File("host.err"));
        CTANClientInterProcess client;
        for (int nTry = 0; nTry < 500; ++nTry) {
            if (client.GetCurrentIdFromMainDirectory() >= 0) return;
            usleep(10'000);
        }
        FAIL() << "the host did not start: " << m_directory.Read("host.err");
    }
    // What the example hosts leave out, and nothing else.
    void ExpectOnlyCommandsAreMissing(Strings const& failures) {
        const std::vector<RuleReport> reports = CheckHost(QuickOptions());
        EXPECT_EQ(Named(reports, Verdict::Fail), failures) << Seen(reports);
        EXPECT_EQ(FindingOf("offset", reports).strSeen,
                  "0, \"this host does not know that script\"");
        EXPECT_EQ(FindingOf("clients", reports).strSeen, "100 of 100 from 4 clients");
        EXPECT_EQ(FindingOf("list-script", reports).verdict, Verdict::Pass);
        EXPECT_EQ(FindingOf("capture", reports).strSeen, "needs not-duplicate");
    }

    CTemporaryDirectory m_directory;
    std::optional<CChildProcess> m_host;
};

TEST_F(HostCheck, NothingIsTriedWithoutAHost) {
    const std::vector<RuleReport> reports = CheckHost(QuickOptions());
    EXPECT_EQ(Named(reports, Verdict::Fail), Strings{"directory-exists"});
    EXPECT_TRUE(Named(reports, Verdict::Pass).empty());
}

TEST_F(HostCheck, ReferenceHostPassesEveryRuleAndIsLeftAsItWas) {
    Start({TAVARIN_HOST_PROGRAM, "--quiet", "--tracks", "In use,A,B,C"});
    HostCheckOptions options = QuickOptions();
    options.tracks = {1, 2, 3};
    for (int nTurn = 0; nTurn < 2; ++nTurn) {
        const std::vector<RuleReport> reports = CheckHost(options);
        EXPECT_EQ(Named(reports, Verdict::Fail), Strings{}) << Seen(reports);
        EXPECT_EQ(FindingOf("export", reports).verdict, Verdict::Pass);
        EXPECT_EQ(Conclusion(reports), Verdict::Pass);
        EXPECT_EQ(FindingOf("clear", reports).strSeen, "regions left: 0 0 0");
    }
}

TEST_F(HostCheck, TracksInUseAreLeftAlone) {
    Start({TAVARIN_HOST_PROGRAM, "--quiet", "--tracks", "A,B"});
    const std::vector<RuleReport> reports = CheckHost(QuickOptions());
    EXPECT_EQ(FindingOf("scratch", reports).verdict, Verdict::Fail) << "there is no third track";
    EXPECT_EQ(FindingOf("capture", reports).verdict, Verdict::NotTried);
    EXPECT_EQ(FindingOf("clear", reports).verdict, Verdict::NotTried);
}

TEST_F(HostCheck, WithoutASessionOnlyTheDirectoryIsJudged) {
    Start({TAVARIN_HOST_PROGRAM, "--quiet", "--no-session"});
    const std::vector<RuleReport> reports = CheckHost(QuickOptions());
    EXPECT_EQ(Named(reports, Verdict::Fail), Strings{});
    EXPECT_EQ(FindingOf("host-id", reports).strSeen,
              "id 0: no session is selected; select one and run this again");
    EXPECT_EQ(Conclusion(reports), Verdict::NotTried) << "nothing was found out";
    CChildProcess tool({TAVARIN_TOOL_PROGRAM, "check-host"}, m_directory.File("out"),
                       m_directory.File("err"));
    EXPECT_EQ(tool.Wait(), 3);
    EXPECT_EQ(m_directory.Read("err"),
              "tavarin: the host was not judged: host-id was not tried: id 0: no session is "
              "selected; select one and run this again\n");
}

TEST_F(HostCheck, ChosenRulesBringThoseThatTheyNeed) {
    Start({TAVARIN_HOST_PROGRAM, "--quiet"});
    HostCheckOptions options = QuickOptions();
    options.only = {"host-id"};
    const Strings few = Named(CheckHost(options), Verdict::Pass);
    EXPECT_EQ(few.front(), "directory-exists");
    EXPECT_EQ(few.back(), "host-id");
    EXPECT_EQ(few.size(), CountRules(options));
    options.only.clear();
    options.skip = {"host-id"};
    const std::vector<RuleReport> without = CheckHost(options);
    EXPECT_EQ(FindingOf("host-id", without).strSeen, "no such rule");
    EXPECT_EQ(FindingOf("capture", without).strSeen, "no such rule") << "it needs the host's id";
    EXPECT_EQ(Conclusion(without), Verdict::Pass);
    options.skip = {"nonsense"};
    EXPECT_THROW(CheckHost(options), std::invalid_argument);
}

// A host that answers everything with nothing, and dies of a script that is wrong.
int RunHostThatCrashes() {
    CPeerHost host(1);
    host.AnswerWith([](std::string const& strScript) {
        if (strScript.find("NoFunctionHasThisName") != std::string::npos) raise(SIGKILL);
        const std::size_t nStart = strScript.find('"') + 1;
        return CPeerHost::Answer{strScript.substr(nStart, strScript.find('"', nStart) - nStart),
                                 ""};
    });
    for (;;) {
        host.Directory().SetHeartbeat(LinkTimeNow());
        usleep(20'000);
    }
}

TEST_F(HostCheck, HostThatCrashesIsNamedWithTheRuleThatItDiedOf) {
    CForkedProcess host(RunHostThatCrashes);
    CTANClientInterProcess client;
    while (client.GetCurrentIdFromMainDirectory() < 1) usleep(10'000);
    HostCheckOptions options = QuickOptions();
    options.skip = {"heartbeat-locked"};
    const std::vector<RuleReport> reports = CheckHost(options);
    const std::string strProcess = "process " + std::to_string(host.Id());
    EXPECT_EQ(FindingOf("answer", reports).verdict, Verdict::Pass) << Seen(reports);
    EXPECT_EQ(FindingOf("script-error", reports).verdict, Verdict::Fail);
    EXPECT_EQ(FindingOf("script-error", reports).strSeen,
              "the host crashed: its " + strProcess + " has ended");
    EXPECT_EQ(FindingOf("sequence", reports).strSeen, "the host has crashed");
    EXPECT_EQ(Conclusion(reports), Verdict::Fail);
    for (const char* szLeft :
         {"/TAN_Host_1", "/__KEL_TAN_INTERPROCESS_DIR6__", "/__KEL_TAN_INTERPROCESS_DIR6__.lock"})
        shm_unlink(szLeft);
}

TEST_F(HostCheck, FailureIsExplainedAndReportedAsXml) {
    Start({TAVARIN_MINIMAL_HOST});
    const std::string strReport = m_directory.Write("report.xml", "mine");
    const auto run = [&](Strings const& options) {
        Strings arguments{
            TAVARIN_TOOL_PROGRAM, "check-host", "--only", "offset", "--junit", strReport};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return CChildProcess(arguments, m_directory.File("out"), m_directory.File("err")).Wait();
    };
    EXPECT_EQ(run({}), 2);
    EXPECT_NE(m_directory.Read("err").find("is there already"), std::string::npos);
    EXPECT_EQ(m_directory.Read("report.xml"), "mine");
    EXPECT_EQ(run({"--force"}), 1) << m_directory.Read("err");
    EXPECT_NE(m_directory.Read("out").find(
                  "  FAIL       offset: the SMPTE offset is told\n"
                  "             (0, \"this host does not know that script\")\n"
                  "             likely: GetLinkSMPTEOffset is missing or prints no number\n"
                  "             see docs/link-protocol.md#the-commands\n"),
              std::string::npos)
        << m_directory.Read("out");
    const std::string strXml = m_directory.Read("report.xml");
    EXPECT_NE(strXml.find("tests=\"9\" failures=\"1\" errors=\"0\" skipped=\"0\""),
              std::string::npos)
        << strXml;
    EXPECT_NE(strXml.find("<testcase classname=\"Commands\" name=\"offset\"><failure "
                          "message=\"0, &quot;this host does not know"),
              std::string::npos)
        << strXml;
}

TEST_F(HostCheck, MinimalHostLacksOnlyCommands) {
    Start({TAVARIN_MINIMAL_HOST});
    ExpectOnlyCommandsAreMissing({"offset", "scratch"});
}

TEST_F(HostCheck, MinimalHostInPythonLacksCommandsAndALock) {
    // What was found when this was configured may be another user's own.
    if (access(TAVARIN_PYTHON, X_OK) != 0) GTEST_SKIP() << "no Python 3";
    Start({TAVARIN_PYTHON, TAVARIN_MINIMAL_HOST_SCRIPT});
    ExpectOnlyCommandsAreMissing({"heartbeat-locked", "offset", "scratch"});
}

// A host of the test's own, wrong in one way.
class WrongHost : public testing::Test {
protected:
    WrongHost() {
        m_host.AnswerWith([this](std::string const& strScript) { return Answer(strScript); });
    }

    // Runs scripts that print texts one after the other.
    static CPeerHost::Answer Echo(std::string const& strScript) {
        static const std::string strPrint = "print(\"";
        CPeerHost::Answer answer;
        std::size_t nPlace = strScript.find_first_not_of(" \n");
        while (nPlace != std::string::npos) {
            const std::size_t nEnd = strScript.find("\")", nPlace);
            if (strScript.compare(nPlace, strPrint.size(), strPrint) != 0 ||
                nEnd == std::string::npos) {
                answer.strError = "unknown script";
                return answer;
            }
            nPlace += strPrint.size();
            answer.strReply += strScript.substr(nPlace, nEnd - nPlace) + "\n";
            nPlace = strScript.find_first_not_of(" \n", nEnd + 2);
        }
        return answer;
    }
    CPeerHost::Answer Answer(std::string const& strScript) {
        CPeerHost::Answer answer = Echo(strScript);
        if (m_spoil) m_spoil(answer);
        return answer;
    }
    std::vector<RuleReport> Check(HostCheckOptions const& options = QuickOptions()) {
        auto check = std::async(std::launch::async, [&options] { return CheckHost(options); });
        do {
            Refresh();
        } while (check.wait_for(std::chrono::milliseconds(20)) != std::future_status::ready);
        return check.get();
    }
    // As the protocol has it, unless a test keeps the lock.
    void Refresh() {
        if (!m_fAlive) return;
        auto* const pLock = reinterpret_cast<std::uint32_t*>(m_host.Directory().Bytes());
        std::uint32_t nOther = 0;
        const CWordLock lock(m_fLocks ? pLock : &nOther, LinkTimeNow() + 100'000);
        m_host.Directory().SetHeartbeat(LinkTimeNow());
    }
    Verdict Of(std::string const& strName, std::vector<RuleReport> const& reports) {
        return FindingOf(strName, reports).verdict;
    }

    CPeerHost m_host{1};
    std::function<void(CPeerHost::Answer&)> m_spoil;
    bool m_fAlive = true;
    bool m_fLocks = true;
};

TEST_F(WrongHost, UnspoiledOnePassesEveryExchangeRule) {
    const std::vector<RuleReport> reports = Check();
    for (const char* szName :
         {"heartbeat", "heartbeat-locked", "host-waits", "request-lock", "answer", "line-ends",
          "order", "release", "script-error", "error-print", "error-cleared", "sequence", "clients",
          "capacity", "cut", "long-reply"}) {
        EXPECT_EQ(Of(szName, reports), Verdict::Pass) << szName << "\n" << Seen(reports);
    }
}

TEST_F(WrongHost, StaleHeartbeatFails) {
    m_fAlive = false;
    m_host.Directory().SetHeartbeat(LinkTimeNow() - 2 * kMicrosecondsPerSecond);
    EXPECT_EQ(Of("heartbeat", Check()), Verdict::Fail);
}

TEST_F(WrongHost, HeartbeatInTheFutureFails) {
    m_fAlive = false;
    EXPECT_EQ(FindingOf("heartbeat", Check()).strSeen, "it lies in the future: is it UTC?");
}

TEST_F(WrongHost, HeartbeatWrittenWithoutTheLockFails) {
    m_fLocks = false;
    const std::vector<RuleReport> reports = Check();
    EXPECT_EQ(FindingOf("heartbeat-locked", reports).strSeen,
              "the heartbeat changed while the lock was held elsewhere")
        << Seen(reports);
    EXPECT_EQ(Of("heartbeat", reports), Verdict::Pass);
}

TEST_F(WrongHost, RequestLockSetByTheHostFails) {
    m_spoil = [this](auto&) { m_host.Segment().template Put<std::uint32_t>(4, 1); };
    const std::vector<RuleReport> reports = Check();
    EXPECT_EQ(FindingOf("request-lock", reports).strSeen, "it was set while a client held it")
        << Seen(reports);
    m_spoil = [this](auto&) { m_host.Segment().template Put<std::uint32_t>(4, 0); };
    EXPECT_EQ(FindingOf("request-lock", Check()).strSeen, "it was freed while a client held it");
}

TEST_F(WrongHost, RequestLockTakenByTheHostFails) {
    std::atomic<bool> fStop = false;
    std::thread taker([&] {
        auto* const pLock = reinterpret_cast<std::uint32_t*>(m_host.Segment().Bytes() + 4);
        while (!fStop) {
            AcquireWord(pLock, kNoDeadline);
            usleep(60'000);
            ReleaseWord(pLock);
            usleep(20'000);
        }
    });
    HostCheckOptions options = QuickOptions();
    options.only = {"request-lock"};
    const std::vector<RuleReport> reports = Check(options);
    fStop = true;
    taker.join();
    EXPECT_EQ(FindingOf("request-lock", reports).strSeen, "it is held, and there is no client")
        << Seen(reports);
}

TEST_F(WrongHost, HeldDirectoryLockFails) {
    m_host.Directory().Put<std::uint32_t>(0, 1);
    EXPECT_EQ(Of("directory-lock", Check()), Verdict::Fail);
}

TEST_F(WrongHost, IdWithoutASegmentFails) {
    m_host.Directory().SetCurrentHost(77);
    EXPECT_EQ(Of("segment-exists", Check()), Verdict::Fail);
}

TEST_F(WrongHost, UnbelievableLayoutFails) {
    m_host.Segment().Put<std::int32_t>(40, -5);
    const std::vector<RuleReport> reports = Check();
    EXPECT_EQ(Of("segment-layout", reports), Verdict::Fail);
    EXPECT_EQ(Of("answer", reports), Verdict::NotTried);
}

TEST_F(WrongHost, SmallCapacityAndOverlappingTextsFail) {
    m_host.Segment().Put<std::int32_t>(40, 600);
    m_host.Segment().Put<std::int32_t>(52, CTestMessageSegment::kBufferOffset + 10);
    const std::vector<RuleReport> reports = Check();
    EXPECT_EQ(Of("segment-capacity", reports), Verdict::Fail);
    EXPECT_EQ(Of("segment-texts", reports), Verdict::Fail);
}

TEST_F(WrongHost, ClosedHostIsSeen) {
    m_host.Segment().Close();
    const std::vector<RuleReport> reports = Check();
    EXPECT_EQ(FindingOf("segment-rest", reports).strSeen, "closed flag set");
    EXPECT_EQ(FindingOf("answer", reports).strSeen, "status -1");
}

TEST_F(WrongHost, EveryWrongAnswerBreaksItsRule) {
    const struct {
        const char* szRule;
        std::function<void(CPeerHost::Answer&)> spoil;
    } cases[] = {
        {"line-ends", [](auto& answer) { std::erase(answer.strReply, '\n'); }},
        {"script-error", [](auto& answer) { answer.strError.clear(); }},
        {"error-print",
         [](auto& answer) {
             if (!answer.strError.empty()) answer.strReply.clear();
         }},
        {"sequence",
         [strKept = std::string()](auto& answer) mutable {
             if (answer.strReply.find(" of 1") == std::string::npos) return;
             if (strKept.empty()) strKept = answer.strReply;
             answer.strReply = strKept;
         }},
        {"error-cleared",
         [strKept = std::string()](auto& answer) mutable {
             if (strKept.empty()) strKept = answer.strError;
             if (answer.strReply.find("again") != std::string::npos) answer.strError = strKept;
         }},
        {"capacity",
         [](auto& answer) {
             if (answer.strReply == "end\n") answer.strReply = "cut";
         }},
        {"answer", [](auto& answer) { answer.strReply.clear(); }},
        {"list-audiosuite", [](auto&) {}},
        {"update-count", [](auto&) {}},
    };
    for (auto const& wrong : cases) {
        m_spoil = wrong.spoil;
        const std::vector<RuleReport> reports = Check();
        EXPECT_EQ(Of(wrong.szRule, reports), Verdict::Fail) << wrong.szRule << "\n"
                                                            << Seen(reports);
    }
}

TEST_F(WrongHost, HangingOneEndsTheCheckWithTheNameOfItsRule) {
    HostCheckOptions options = QuickOptions();
    options.nPatienceMs = 1000;
    m_spoil = [](CPeerHost::Answer&) { usleep(2'500'000); };
    const std::vector<RuleReport> reports = Check(options);
    EXPECT_EQ(FindingOf("answer", reports).strSeen, "no answer after 1000 ms");
    EXPECT_EQ(FindingOf("line-ends", reports).strSeen, "the host hangs");
}

}  // namespace
