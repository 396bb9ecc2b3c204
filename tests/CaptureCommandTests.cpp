#include <gtest/gtest.h>

#include <limits>

#include "FileIO/FileName.h"
#include "PeerHost.h"
#include "link/TANClientInterProcess.h"

namespace {

using Tracks = std::vector<std::string>;

constexpr char strNoSession[] = "No Tavarin Pro session has been selected.";

class CaptureCommands : public testing::Test {
protected:
    CPeerHost m_host;
    CTANClientInterProcess m_client;
    CFileName m_file{"/takes/a.wav"};

    // The last request from the first line that holds `start`.
    std::string LineWith(std::string const& start) {
        const std::string strRequest = m_host.LastRequest();
        const std::size_t nStart = strRequest.find(start);
        if (nStart == std::string::npos) return "";
        return strRequest.substr(nStart, strRequest.find('\n', nStart) - nStart);
    }

    void Send(double first, double second, double third, int mask = 0) {
        EXPECT_EQ(m_client.SendFile(false, 0, &m_file, first, second, third, mask), 0);
    }
};

using CaptureCommandsWithoutHost = testing::Test;

TEST_F(CaptureCommandsWithoutHost, SayThatNoHostIsRunning) {
    CTANClientInterProcess client;
    CFileName file("/takes/a.wav");
    Tracks tracks{"kept"};
    std::int64_t lStart = 1, lEnd = 2;
    client.m_strRegionInfo = client.m_strFileInfo = "old";

    EXPECT_EQ(client.ListTracksWithTimeout(false, &tracks, 1000), -1);
    EXPECT_EQ(client.SendFile(false, 0, &file, 0, 0, 1, 0), -1);
    EXPECT_FALSE(client.CheckDuplicateRegion(false, 0, &file, 0, 0, 1));
    EXPECT_FALSE(client.RenderSelectedRegion(false, -1, &lStart, &lEnd));
    EXPECT_EQ(client.m_strRegionInfo, "old");
    EXPECT_FALSE(client.ExportSelectedRegion(false, 0, &file));
    EXPECT_EQ(client.m_strRegionInfo + client.m_strFileInfo, "");

    EXPECT_EQ(tracks, Tracks{"kept"});
    EXPECT_EQ(lStart, 1);
    EXPECT_EQ(lEnd, 2);
    EXPECT_EQ(file.GetFullPath(), "/takes/a.wav");
    EXPECT_EQ(client.m_strLastError, "Error - Tavarin Pro is not running.");
    EXPECT_EQ(client.m_strAdvice, "Locate and launch Tavarin Pro.");
}

TEST_F(CaptureCommands, SendNothingWithoutASession) {
    m_host.Directory().SetCurrentHost(0);
    Tracks tracks;
    std::int64_t lStart = 0, lEnd = 0;
    EXPECT_EQ(m_client.ListTracksWithTimeout(false, &tracks, 1000), -1);
    EXPECT_EQ(m_client.SendFile(false, 0, &m_file, 0, 0, 1, 0), -1);
    EXPECT_FALSE(m_client.CheckDuplicateRegion(false, 0, &m_file, 0, 0, 1));
    EXPECT_FALSE(m_client.ExportSelectedRegion(false, 0, &m_file));
    EXPECT_FALSE(m_client.RenderSelectedRegion(false, -1, &lStart, &lEnd));
    EXPECT_TRUE(m_host.Requests().empty());
    EXPECT_EQ(m_client.m_strLastError, strNoSession);
}

TEST_F(CaptureCommands, TrackNamesAreAppended) {
    m_host.AnswerWith("3\n1\nVox\nGtr\n");
    Tracks tracks{"before"};
    EXPECT_EQ(m_client.ListTracksWithTimeout(false, &tracks, 1000), 0);
    EXPECT_EQ(tracks, (Tracks{"before", "Vox", "Gtr"}));
    EXPECT_EQ(m_client.m_strLastError, "");
}

TEST_F(CaptureCommands, TrackListAsksTheChosenDocument) {
    Tracks tracks;
    m_client.ListTracksWithTimeout(true, &tracks, 1000);
    EXPECT_EQ(m_host.LastRequest().size(), 226u);
    EXPECT_EQ(LineWith("if("), "if(SelectAudioSuiteDocument(true)) then");
    m_client.ListTracksWithTimeout(false, &tracks, 1000);
    EXPECT_EQ(m_host.LastRequest().size(), 222u);
    EXPECT_EQ(LineWith("if("), "if(SelectScriptDocument(true)) then");
}

TEST_F(CaptureCommands, DocumentWithoutTracksCountsAsNoSession) {
    for (const char* szReply : {"1\n0\n", "1\n1\n", "", "7\n1\nVox\n"}) {
        m_host.AnswerWith(szReply);
        Tracks tracks{"before"};
        EXPECT_EQ(m_client.ListTracksWithTimeout(false, &tracks, 1000), 0);
        EXPECT_EQ(tracks, Tracks{"before"});
        EXPECT_EQ(m_client.m_strLastError, strNoSession) << szReply;
    }
}

TEST_F(CaptureCommands, TrackListThatTimesOutIsNotReported) {
    CTestMessageSegment silent(9);
    m_host.Directory().SetCurrentHost(9);
    Tracks tracks{"before"};
    EXPECT_EQ(m_client.ListTracksWithTimeout(false, &tracks, 20), 0);
    EXPECT_EQ(tracks, Tracks{"before"});
    EXPECT_EQ(m_client.m_strLastError, "");
}

TEST_F(CaptureCommands, TrackListLeavesTheKeepFlagAndTheOthersClearIt) {
    Tracks tracks;
    std::int64_t lStart = 0, lEnd = 0;
    const auto keptAfter = [&](auto command) {
        m_client.m_fKeepMessages = true;
        command();
        return m_client.m_fKeepMessages;
    };
    EXPECT_TRUE(keptAfter([&] { m_client.ListTracksWithTimeout(false, &tracks, 1000); }));
    EXPECT_FALSE(keptAfter([&] { m_client.CheckDuplicateRegion(false, 0, &m_file, 0, 0, 1); }));
    EXPECT_FALSE(keptAfter([&] { m_client.SendFile(false, 0, &m_file, 0, 0, 1, 0); }));
    EXPECT_FALSE(keptAfter([&] { m_client.ExportSelectedRegion(false, 0, &m_file); }));
    EXPECT_FALSE(keptAfter([&] { m_client.RenderSelectedRegion(false, -1, &lStart, &lEnd); }));
    EXPECT_FALSE(keptAfter([&] { m_client.GetUpdateCount(); }));
    EXPECT_FALSE(keptAfter([&] { m_client.GetTANProcessID(); }));
    EXPECT_FALSE(keptAfter([&] { m_client.PrintToTavarin("x"); }));
}

TEST_F(CaptureCommands, DuplicateCheckScriptIsExact) {
    m_client.CheckDuplicateRegion(true, 2, &m_file, 10.9, -0.9, 4.2);
    EXPECT_EQ(m_host.LastRequest(),
              "if SelectAudioSuiteDocument(true) then\n"
              "idTrack = GetTrackID(2)\n"
              "nDuplicate = CheckForDuplicateRegion(idTrack, \"/takes/a.wav\",10,0,4)\n"
              "print(nDuplicate)\n"
              "end\n");
    m_client.CheckDuplicateRegion(false, -1, &m_file, 0, 0, 0);
    EXPECT_EQ(LineWith("if "), "if SelectScriptDocument(true) then");
    EXPECT_EQ(LineWith("idTrack"), "idTrack = GetTrackID(-1)");
}

TEST_F(CaptureCommands, PathsAreEscapedInScripts) {
    CFileName file("C:\\a\\b\"c.wav");
    m_client.CheckDuplicateRegion(false, 0, &file, 0, 0, 0);
    EXPECT_NE(m_host.LastRequest().find("\"C:\\\\a\\\\b\"c.wav\","), std::string::npos);
    m_client.SendFile(false, 0, &file, 0, 0, 0, 0);
    EXPECT_NE(m_host.LastRequest().find("\"C:\\\\a\\\\b\"c.wav\", true"), std::string::npos);
}

TEST_F(CaptureCommands, DuplicateIsToldAndItsTextsSurviveTheNextExchange) {
    m_host.AnswerWith("1");
    EXPECT_TRUE(m_client.CheckDuplicateRegion(false, 0, &m_file, 0, 0, 1));
    EXPECT_EQ(m_client.m_strLastError, "Same audio captured previously.");
    EXPECT_EQ(m_client.m_strAdvice, "This capture has been cancelled");
    EXPECT_TRUE(m_client.m_fKeepMessages);
    std::string strRequest = "x", strReply;
    m_client.SendTANMessage(3, strRequest, strReply, 1000);
    EXPECT_EQ(m_client.m_strLastError, "Same audio captured previously.");
}

TEST_F(CaptureCommands, DuplicateMeansTheNumberOne) {
    const auto isDuplicate = [&](const char* szReply) {
        m_host.AnswerWith(szReply);
        return m_client.CheckDuplicateRegion(false, 0, &m_file, 0, 0, 1);
    };
    EXPECT_TRUE(isDuplicate("1.5"));
    EXPECT_TRUE(isDuplicate("1\n"));
    EXPECT_FALSE(isDuplicate("0"));
    EXPECT_EQ(m_client.m_strLastError, "");
    EXPECT_FALSE(isDuplicate("2"));
    EXPECT_FALSE(isDuplicate("-1"));
    EXPECT_FALSE(isDuplicate(""));
    EXPECT_FALSE(isDuplicate("yes"));
}

TEST_F(CaptureCommands, SendFileScriptIsExact) {
    EXPECT_EQ(m_client.SendFile(false, 1, &m_file, 10.9, 0.5, 100.7, 5), 0);
    EXPECT_EQ(m_host.LastRequest(),
              "if SelectScriptDocument() then\n"
              "idTrack = GetTrackID(1)\n"
              "AddAudioRegion(idTrack, \"/takes/a.wav\", true, false, 10,0,100,1,{0,2})\n"
              "MoveDisplayToPosition(10.5)\n"
              "end\n");
    m_client.SendFile(true, 1, &m_file, 0, 0, 1, 0);
    EXPECT_EQ(LineWith("if "), "if SelectAudioSuiteDocument() then");
}

TEST_F(CaptureCommands, ChannelMaskBecomesAListOfItsBits) {
    const auto channels = [&](int nMask) {
        Send(0, 0, 1, nMask);
        const std::string strLine = LineWith("AddAudioRegion");
        return strLine.substr(strLine.find(",1)") == std::string::npos ? strLine.find(",1,1,") + 5
                                                                       : strLine.size());
    };
    EXPECT_EQ(channels(0), "");
    EXPECT_EQ(channels(-1), "");
    EXPECT_EQ(channels(INT32_MIN), "");
    EXPECT_EQ(channels(1), "{0})");
    EXPECT_EQ(channels(5), "{0,2})");
    EXPECT_EQ(channels(6), "{1,2})");
    EXPECT_EQ(channels(0x40000000), "{30})");
}

TEST_F(CaptureCommands, DisplayPositionHasSixSignificantDigits) {
    Send(1234567.0, 0.0, 1.0);
    EXPECT_EQ(LineWith("Move"), "MoveDisplayToPosition(1.23457e+06)");
    Send(-3.9, 0.25, 1.0);
    EXPECT_EQ(LineWith("Move"), "MoveDisplayToPosition(-2.75)");
}

TEST_F(CaptureCommands, TimesThatAreNotNumbersAreDefined) {
    const double dNan = std::numeric_limits<double>::quiet_NaN();
    const double dInfinity = std::numeric_limits<double>::infinity();
    Send(dNan, dInfinity, -dInfinity);
    EXPECT_EQ(LineWith("Add"),
              "AddAudioRegion(idTrack, \"/takes/a.wav\", true, false, "
              "0,9223372036854775807,-9223372036854775808)");
    EXPECT_EQ(LineWith("Move"), "MoveDisplayToPosition(1.79769e+308)");
    Send(0.0, dNan, 1e300);
    EXPECT_EQ(LineWith("Move"), "MoveDisplayToPosition(0)");
}

TEST_F(CaptureCommands, SendFileReturnsTheStatusOfItsExchange) {
    m_host.Directory().SetCurrentHost(8);
    EXPECT_EQ(m_client.SendFile(false, 0, &m_file, 0, 0, 1, 0), 2);
    CTestMessageSegment closed(8);
    closed.Close();
    EXPECT_EQ(m_client.SendFile(false, 0, &m_file, 0, 0, 1, 0), -1);
}

TEST_F(CaptureCommands, ExportedFileIsTakenFromTheReply) {
    m_host.AnswerWith("2\n0\n/tmp/x.wav\n");
    CFileName exported;
    EXPECT_TRUE(m_client.ExportSelectedRegion(false, 48000, &exported));
    EXPECT_EQ(m_host.LastRequest().size(), 241u);
    EXPECT_EQ(exported.GetFullPath(), "/tmp/x.wav");
    EXPECT_EQ(m_client.m_strFileInfo, "File: /tmp/x.wav");
    m_client.ExportSelectedRegion(true, 48000, &exported);
    EXPECT_EQ(m_host.LastRequest().size(), 486u);
}

TEST_F(CaptureCommands, FileInformationShowsTheEscapedPath) {
    m_host.AnswerWith("2\n0\n/tmp/a\\b.wav\n");
    CFileName exported;
    m_client.ExportSelectedRegion(false, 0, &exported);
    EXPECT_EQ(m_client.m_strFileInfo, "File: /tmp/a\\\\b.wav");
}

TEST_F(CaptureCommands, ReasonCodesBecomeTexts) {
    const auto reason = [&](const char* szReply) {
        m_host.AnswerWith(szReply);
        CFileName exported("/old/file.wav");
        EXPECT_FALSE(m_client.ExportSelectedRegion(false, 0, &exported));
        EXPECT_EQ(exported.GetFullPath(), "/old/file.wav");
        const std::string strFromExport = m_client.m_strLastError;
        std::int64_t lStart = 1, lEnd = 2;
        EXPECT_FALSE(m_client.RenderSelectedRegion(false, -1, &lStart, &lEnd));
        EXPECT_EQ(lStart + lEnd, 3);
        EXPECT_EQ(m_client.m_strLastError, strFromExport);
        return strFromExport;
    };
    EXPECT_EQ(reason("1\n2\n"), "No Tavarin Pro Process exists");
    EXPECT_EQ(reason("1\n1\n"), "No Tavarin Pro region is selected");
    EXPECT_EQ(reason("1\n0\n"), "No Tavarin Pro session is selected");
    EXPECT_EQ(reason("1\nword\n"), "No Tavarin Pro session is selected");
    EXPECT_EQ(reason("1\n3\n"), "");
    EXPECT_EQ(reason("1\n-1\n"), "");
    EXPECT_EQ(reason("3\n1\n2\n3\n"), "");
    EXPECT_EQ(reason(""), "");
}

TEST_F(CaptureCommands, RenderedRegionIsTakenFromTheReply) {
    m_host.AnswerWith("4\n0\n48000\n100\n200\n");
    std::int64_t lStart = 0, lEnd = 0;
    m_client.m_strFileInfo = "old";
    EXPECT_TRUE(m_client.RenderSelectedRegion(false, 44100, &lStart, &lEnd));
    EXPECT_EQ(m_host.LastRequest().size(), 383u);
    EXPECT_EQ(lStart, 100);
    EXPECT_EQ(lEnd, 200);
    EXPECT_EQ(m_client.m_strRegionInfo, "Start: 100 End: 200 Sample Rate: 48000");
    EXPECT_EQ(m_client.m_strFileInfo, "");
    EXPECT_EQ(m_client.m_strLastError,
              "Warning - Session Sample Rate is: 44100 Tavarin Pro Sample rate is: 48000");
}

TEST_F(CaptureCommands, RenderWarnsOnlyAboutADifferentRate) {
    m_host.AnswerWith("4\n0\n48000.0\n100.9\n-200\n");
    std::int64_t lStart = 0, lEnd = 0;
    EXPECT_TRUE(m_client.RenderSelectedRegion(true, -1, &lStart, &lEnd));
    EXPECT_EQ(m_host.LastRequest().size(), 673u);
    EXPECT_EQ(m_client.m_strLastError, "");
    EXPECT_TRUE(m_client.RenderSelectedRegion(true, 48000, &lStart, &lEnd));
    EXPECT_EQ(m_client.m_strLastError, "");
    EXPECT_EQ(lStart, 100);
    EXPECT_EQ(lEnd, -200);
}

TEST_F(CaptureCommands, FailedRenderTakesTheSessionRateForTheHosts) {
    m_host.AnswerWith("1\n1\n");
    std::int64_t lStart = 0, lEnd = 0;
    EXPECT_FALSE(m_client.RenderSelectedRegion(false, 44100, &lStart, &lEnd));
    EXPECT_EQ(m_client.m_strLastError, "No Tavarin Pro region is selected");
}

TEST_F(CaptureCommands, RenderClearsTheInformationTextsWhenTheExchangeFails) {
    CTestMessageSegment closed(8);
    closed.Close();
    m_host.Directory().SetCurrentHost(8);
    m_client.m_strRegionInfo = m_client.m_strFileInfo = "old";
    std::int64_t lStart = 0, lEnd = 0;
    EXPECT_FALSE(m_client.RenderSelectedRegion(false, 44100, &lStart, &lEnd));
    EXPECT_EQ(m_client.m_strRegionInfo + m_client.m_strFileInfo, "");
    EXPECT_EQ(m_client.m_strLastError, "");
}

TEST_F(CaptureCommands, ScriptErrorStaysForTheViewToShow) {
    m_host.AnswerWith("", "script:3: no such track");
    m_client.SendFile(false, 99, &m_file, 0, 0, 1, 0);
    EXPECT_EQ(m_client.m_strLastError, "script:3: no such track");
}

}  // namespace
