// How long the command-line tool waits for a host that does not answer, and what it says then.

#include <atomic>
#include <future>
#include <thread>

#include "FileIO/FileName.h"
#include "HostProgramFixture.h"
#include "Terminal.h"
#include "host/ReferenceHost.h"

namespace {

using LinkPatience = HostProgram;

TEST_F(LinkPatience, HostThatFallsSilentIsToldAndNotWaitedFor) {
    StartHost();
    AwaitReady();
    const std::string strName = "tavarin: Host 1 (process " + std::to_string(m_host->Id()) + ")";
    const std::string strLong = m_directory.Write("long.lua", "while true do end");
    CChildProcess working({TAVARIN_TOOL_PROGRAM, "link", "run", strLong},
                          m_directory.File("working.out"), m_directory.File("working.err"));
    usleep(300'000);
    CChildProcess asking({TAVARIN_TOOL_PROGRAM, "link", "--timeout", "60", "status"},
                         m_directory.File("asking.out"), m_directory.File("asking.err"));
    usleep(1'000'000);
    m_host->Signal(SIGSTOP);
    EXPECT_EQ(asking.Wait(), 1);
    EXPECT_EQ(working.Wait(), 1);
    for (const char* szErrors : {"asking.err", "working.err"}) {
        const std::string strErrors = m_directory.Read(szErrors);
        EXPECT_EQ(strErrors.find(strName + " does not answer since 3 s."), 0U) << strErrors;
        EXPECT_NE(strErrors.find("may still be carried out"), std::string::npos) << strErrors;
    }
    EXPECT_EQ(Tool({"link", "rescue"}), 1) << "a halted host is not dead";
    EXPECT_NE(Errors().find("is not proven dead: a host has the link's lock"), std::string::npos)
        << Errors();
    KillHost();
}

TEST_F(LinkPatience, TimeSoFarIsShownWhileTheHostWorksAfterItsQuestionsWereAnswered) {
    std::promise<void> seen;
    CReferenceHostOptions options;
    options.m_Observer = [read = seen.get_future().share()](CHostExchange const& exchange) {
        if (exchange.m_strScript.find("CreateProcess") != std::string::npos) read.wait();
    };
    const CReferenceHost host(CSession({"Guide", "Dub", "Out"}, kRate), options);
    CFileName guide(m_directory.File("guide.wav").c_str());
    CFileName dub(m_directory.File("dub.wav").c_str());
    ASSERT_EQ(m_client.SendFile(false, 0, &guide, 0, 0, kFrames, 0), 0);
    ASSERT_EQ(m_client.SendFile(false, 1, &dub, 0, 0, kFrames, 1), 0);

    const CTerminal terminal;
    CChildProcess aligning({TAVARIN_TOOL_PROGRAM, "link", "apt"}, m_directory.File("tool.out"),
                           terminal.Name());
    EXPECT_EQ(terminal.ReadUpTo(" s\x1b[K"), "\rwaiting for the host, 1 s\x1b[K");
    seen.set_value();
    EXPECT_EQ(aligning.Wait(), 0);
}

TEST_F(LinkPatience, KilledHostIsToldAndWhoWaitsForItIsSentAway) {
    StartHost();
    AwaitReady();
    const std::string strLong = m_directory.Write("long.lua", "while true do end");
    CChildProcess working({TAVARIN_TOOL_PROGRAM, "link", "run", strLong},
                          m_directory.File("working.out"), m_directory.File("working.err"));
    usleep(1'000'000);
    KillHost();
    EXPECT_EQ(working.Wait(), 1);
    const std::string strErrors = m_directory.Read("working.err");
    EXPECT_NE(strErrors.find("does not answer since 3 s."), std::string::npos) << strErrors;
    EXPECT_NE(strErrors.find("It has died."), std::string::npos) << strErrors;
}

TEST_F(LinkPatience, RescueSendsAwayWhoWaitsForADeadHost) {
    StartHost();
    AwaitReady();
    m_host->Signal(SIGSTOP);
    std::atomic<bool> fReturned{false};
    std::thread waiting([&fReturned] {
        CTANClientInterProcess client;
        std::string strScript = "print(1)", strReply;
        client.SendTANMessage(1, strScript, strReply, -1);
        fReturned = true;
    });
    usleep(200'000);
    KillHost();
    EXPECT_FALSE(fReturned);
    usleep(1'100'000);
    EXPECT_EQ(Tool({"link", "rescue", "--id", "1"}), 0) << Errors();
    waiting.join();
    EXPECT_TRUE(fReturned);
    EXPECT_EQ(Tool({"link", "rescue", "--id", "1", "--json"}), 0) << "once more does no harm";
}

TEST_F(LinkPatience, CommandsThatOnlyAskGiveUpAfterTheirTimeOut) {
    StartHost();
    const std::string strLong = m_directory.Write("long.lua", "while true do end");
    CChildProcess busy({TAVARIN_TOOL_PROGRAM, "link", "run", strLong}, m_directory.File("busy.out"),
                       m_directory.File("busy.err"));
    usleep(300'000);
    EXPECT_EQ(Tool({"link", "status", "--timeout", "0.5", "--json"}), 1);
    EXPECT_EQ(json::parse(Errors())["code"], "no_answer") << Errors();
    EXPECT_NE(Errors().find("has not answered within 0.5 s"), std::string::npos) << Errors();
    KillHost();
    EXPECT_EQ(busy.Wait(), 1);
}

}  // namespace
