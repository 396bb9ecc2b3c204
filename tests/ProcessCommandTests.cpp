#include <gtest/gtest.h>

#include "PeerHost.h"
#include "link/TANClientInterProcess.h"

namespace {

class ProcessCommands : public testing::Test {
protected:
    CPeerHost m_host;
    CTANClientInterProcess m_client;
};

TEST_F(ProcessCommands, AptScriptIsExact) {
    EXPECT_TRUE(m_client.CreateAPT(true, 0, 1000, 5000, 1, 0, 4000, 2));
    EXPECT_EQ(m_host.LastRequest(),
              "if SelectAudioSuiteDocument() then\n"
              "idGuide = GetTrackID(0)\n"
              "idDub = GetTrackID(1)\n"
              "idAligned = GetTrackID(2)\n"
              "Guide = { IOType=1, Track=idGuide, Start=1000, End=5000}\n"
              "Dub = { IOType=2, Track=idDub, Start=0, End=4000}\n"
              "Inputs = { Guide, Dub }\n"
              "Aligned = { Track=idAligned }\n"
              "Outputs = { Aligned }\n"
              "idProcess = CreateProcess(\"APT\", \"PT\", Inputs, Outputs)\n"
              "MoveDisplayToPosition(1000)\n"
              "end\n");
}

TEST_F(ProcessCommands, AptScriptHoldsNegativePositionsOfTheScriptDocument) {
    EXPECT_TRUE(m_client.CreateAPT(false, 3, -48000, INT64_MAX, 4, INT64_MIN, -1, 5));
    const std::string strRequest = m_host.LastRequest();
    EXPECT_EQ(strRequest.find("if SelectScriptDocument() then\n"), 0u);
    EXPECT_NE(strRequest.find("Start=-48000, End=9223372036854775807}"), std::string::npos);
    EXPECT_NE(strRequest.find("Start=-9223372036854775808, End=-1}"), std::string::npos);
    EXPECT_NE(strRequest.find("MoveDisplayToPosition(-48000)\n"), std::string::npos);
}

TEST_F(ProcessCommands, DoublerScriptIsExactAndIgnoresTheFifthArgument) {
    EXPECT_TRUE(m_client.CreateDoubler(false, 0, 100, 200, 77, 1));
    EXPECT_EQ(m_host.LastRequest(),
              "if SelectScriptDocument() then\n"
              "idInput = GetTrackID(0)\n"
              "idOutput = GetTrackID(1)\n"
              "Input = { IOType=1, Track=idInput, Start=100, End=200}\n"
              "Inputs = { Input }\n"
              "Output = { Track=idOutput }\n"
              "Outputs = { Output }\n"
              "idProcess = CreateProcess(\"Doubler\", \"PT\", Inputs, Outputs)\n"
              "MoveDisplayToPosition(100)\n"
              "end\n");
    m_client.CreateDoubler(true, 0, 100, 200, 77, 1);
    EXPECT_EQ(m_host.LastRequest().find("if SelectAudioSuiteDocument() then\n"), 0u);
}

TEST_F(ProcessCommands, ClearTrackScriptIsExact) {
    m_client.ClearTrack(true, 2);
    EXPECT_EQ(m_host.LastRequest(),
              "if SelectAudioSuiteDocument() then\n"
              "idTrack = GetTrackID(2)\n"
              "idMarker = GetMarkerTrackID(idTrack, 0)\n"
              "while CountMarkerAreas(idMarker) > 0 do\n"
              "idSrcArea = GetMarkerAreaID(idMarker, 0)\n"
              "DeleteMarkerArea(idSrcArea)\n"
              "end\n"
              "while GetRegionCount(idTrack) > 0 do\n"
              "idRegion = GetRegionID(idTrack, 0)\n"
              "DeleteRegion(idRegion)\n"
              "end\n"
              "end\n");
    m_client.ClearTrack(false, 2);
    EXPECT_EQ(m_host.LastRequest().find("if SelectScriptDocument() then\n"), 0u);
}

TEST_F(ProcessCommands, LinkOffsetIsReadFromTheReply) {
    const auto offset = [&](const char* szReply, bool fAudioSuite = false) {
        m_host.AnswerWith(szReply);
        return m_client.GetLinkSMPTEOffset(fAudioSuite);
    };
    EXPECT_EQ(offset("3600.5\n"), 3600.5);
    EXPECT_EQ(m_host.LastRequest(),
              "if SelectScriptDocument(true) then\nprint(GetLinkSMPTEOffset())\nend\n");
    EXPECT_EQ(offset("-1e2 samples", true), -100.0);
    EXPECT_EQ(m_host.LastRequest().find("if SelectAudioSuiteDocument(true) then\n"), 0u);
    EXPECT_EQ(offset(""), 0.0);
    EXPECT_EQ(offset("none"), 0.0);
}

TEST_F(ProcessCommands, HostNumbersAreReadFromTheReply) {
    m_host.AnswerWith("42\n");
    EXPECT_EQ(m_client.GetUpdateCount(), 42);
    EXPECT_EQ(m_host.LastRequest(), "print(GetUpdateCount())\n");
    m_host.AnswerWith("4294967295\n");
    EXPECT_EQ(m_client.GetUpdateCount(), -1);
    EXPECT_EQ(m_client.GetTANProcessID(), 4294967295);
    EXPECT_EQ(m_host.LastRequest(), "print(GetProcessID())\n");
    m_host.AnswerWith("none");
    EXPECT_EQ(m_client.GetUpdateCount(), 0);
    EXPECT_EQ(m_client.GetTANProcessID(), 0);
}

TEST_F(ProcessCommands, PrintedTextStandsUnescapedWithoutALineFeed) {
    m_client.PrintToTavarin("a \"quoted\" \\ text");
    EXPECT_EQ(m_host.LastRequest(), "print(\"a \"quoted\" \\ text\")");
}

TEST_F(ProcessCommands, FailedExchangesAreReported) {
    CTestMessageSegment closed(8);
    closed.Close();
    m_host.Directory().SetCurrentHost(8);
    EXPECT_FALSE(m_client.CreateAPT(true, 0, 0, 1, 1, 0, 1, 2));
    EXPECT_FALSE(m_client.CreateDoubler(true, 0, 0, 1, 1, 1));
    EXPECT_EQ(m_client.GetLinkSMPTEOffset(true), 0.0);
    EXPECT_EQ(m_client.GetUpdateCount(), 0);
    EXPECT_EQ(m_client.GetTANProcessID(), 0);
}

TEST_F(ProcessCommands, SendNothingWithoutASession) {
    m_host.Directory().SetCurrentHost(0);
    EXPECT_FALSE(m_client.CreateAPT(true, 0, 0, 1, 1, 0, 1, 2));
    EXPECT_FALSE(m_client.CreateDoubler(true, 0, 0, 1, 1, 1));
    m_client.ClearTrack(true, 0);
    EXPECT_EQ(m_client.GetLinkSMPTEOffset(true), 0.0);
    EXPECT_EQ(m_client.GetUpdateCount(), 0);
    EXPECT_EQ(m_client.GetTANProcessID(), 0);
    m_client.PrintToTavarin("x");
    EXPECT_TRUE(m_host.Requests().empty());
    EXPECT_EQ(m_client.m_strLastError, "No Tavarin Pro session has been selected.");
}

}  // namespace
