// The example of a plug-in, in a window, with a host that knows the least and with one that knows
// every command.

#include <gtest/gtest.h>

#include <optional>

#include "ChildProcess.h"
#include "TemporaryDirectory.h"
#include "TestTone.h"
#include "link/TANClientInterProcess.h"

namespace {

using Strings = std::vector<std::string>;

class PluginExample : public testing::Test {
protected:
    void TearDown() override {
        if (!m_host) return;
        m_host->Signal(SIGTERM);
        EXPECT_EQ(m_host->Wait(), 0);
    }
    void StartHost(Strings const& arguments) {
        m_host.emplace(arguments, "/dev/null", "/dev/null");
        CTANClientInterProcess client;
        for (int nTry = 0; nTry < 500 && client.GetCurrentIdFromMainDirectory() < 1; ++nTry) {
            usleep(10'000);
        }
    }
    std::string Run() {
        const std::string strTake = m_directory.File("take.wav");
        WriteTestTone(strTake, 48000, 24000);
        CChildProcess example({TAVARIN_SHOW_VIEW, TAVARIN_BUNDLE, strTake, "24000", "0.2"},
                              m_directory.File("out"), m_directory.File("err"));
        EXPECT_EQ(example.Wait(), 0) << m_directory.Read("err");
        return m_directory.Read("out");
    }

    CTemporaryDirectory m_directory;
    std::optional<CChildProcess> m_host;
};

TEST_F(PluginExample, CaptureReachesAHostThatKnowsEveryCommand) {
    StartHost({TAVARIN_HOST_PROGRAM, "--quiet", "--tracks", "In,Out"});
    EXPECT_EQ(Run(), "The view says: \n");
    Strings tracks;
    CTANClientInterProcess client;
    std::string script =
        "if SelectAudioSuiteDocument() then print(GetRegionCount(GetTrackID(1))) end\n";
    std::string strReply;
    EXPECT_EQ(client.SendTANMessage(1, script, strReply, 5000), 0);
    EXPECT_EQ(strReply, "1\n") << "the Doubler view doubles what was captured";
}

TEST_F(PluginExample, ViewShowsWhatAMinimalHostSays) {
    StartHost({TAVARIN_MINIMAL_HOST});
    EXPECT_EQ(Run(), "The view says: this host does not know that script\n");
}

TEST_F(PluginExample, ViewSaysThatNoHostIsRunning) {
    EXPECT_EQ(Run(), "The view says: Error - Tavarin Pro is not running.\n");
}

}  // namespace
