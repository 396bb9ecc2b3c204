// What `tavarin link watch` shows on a terminal.

#include "tools/LinkScreen.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "PeerHost.h"
#include "link/LinkClock.h"

namespace {

using Strings = std::vector<std::string>;

std::string TrackReply(int nTracks) {
    std::string strReply = std::to_string(nTracks + 1) + "\n1\n";
    for (int nTrack = 0; nTrack < nTracks; ++nTrack) {
        strReply += "Track " + std::to_string(nTrack) + "\n";
    }
    return strReply;
}

bool Holds(Strings const& lines, std::string const& strPart) {
    return std::any_of(lines.begin(), lines.end(), [&](std::string const& strLine) {
        return strLine.find(strPart) != std::string::npos;
    });
}

TEST(LinkScreen, WithoutAHostSaysWhatToDo) {
    CLinkMonitor monitor(false);
    EXPECT_TRUE(monitor.Look());
    monitor.Ask();
    EXPECT_EQ(
        DrawLinkScreen(monitor, 80, 23),
        (Strings{"Tavarin Pro link    no host", "Heartbeat   none",
                 "Error - Tavarin Pro is not running.", "Locate and launch Tavarin Pro.", ""}));
}

TEST(LinkScreen, ShowsTracksAndTheEventsOfTheSession) {
    CPeerHost host;
    host.AnswerWith(TrackReply(3));
    CLinkMonitor monitor(false);
    EXPECT_TRUE(monitor.Look());
    EXPECT_FALSE(monitor.Look()) << "nothing has changed";
    host.AnswerWith("7\n42\n2\n10:00:00 captured a.wav\n10:00:01 exported b.wav\n");
    EXPECT_TRUE(monitor.Ask());
    EXPECT_EQ(monitor.NewEvents(), 2U);
    host.AnswerWith("7\n42\n2\n");
    EXPECT_FALSE(monitor.Ask()) << "nothing has happened since";
    const Strings lines = DrawLinkScreen(monitor, 80, 23);
    EXPECT_EQ(lines[0], "Tavarin Pro link    host 3, session selected, process 42");
    EXPECT_TRUE(Holds(lines, "update count 7"));
    EXPECT_TRUE(Holds(lines, "     2  Track 2"));
    ASSERT_GE(lines.size(), 3U);
    EXPECT_EQ(lines[lines.size() - 3], "Last events of the session");
    EXPECT_EQ(lines[lines.size() - 2], "  10:00:01 exported b.wav");
    EXPECT_EQ(lines.back(), "  10:00:00 captured a.wav");
    EXPECT_FALSE(Holds(lines, " ms")) << "its own traffic is nobody's business";
}

TEST(LinkScreen, StaleHostIsCalledGone) {
    CPeerHost host;
    CLinkMonitor monitor(false);
    host.Directory().SetHeartbeat(LinkTimeNow() - 90 * kMicrosecondsPerSecond);
    monitor.Look();
    EXPECT_TRUE(Holds(DrawLinkScreen(monitor, 80, 23), "90.0 s old (the host is gone)"));
}

TEST(LinkScreen, KeepsWithinTheTerminal) {
    CPeerHost host;
    host.AnswerWith("2\n1\n" + std::string(200, 'x') + "\n");
    CLinkMonitor monitor(false);
    monitor.Look();
    for (std::string const& strLine : DrawLinkScreen(monitor, 40, 23)) {
        EXPECT_LE(strLine.size(), 40U) << strLine;
    }
    host.AnswerWith(TrackReply(100));
    host.Directory().Put<std::uint32_t>(4, 9);
    EXPECT_TRUE(monitor.Look());
    const Strings lines = DrawLinkScreen(monitor, 80, 24);
    EXPECT_LE(lines.size(), 24U);
    EXPECT_TRUE(Holds(lines, "... and 91 more"));
    EXPECT_FALSE(Holds(lines, "Last events")) << "it has no journal";
    EXPECT_EQ(DrawLinkScreen(monitor, 80, 3).size(), 3U);
}

TEST(LinkScreen, NamesCannotMoveTheCursor) {
    CPeerHost host;
    host.AnswerWith("2\n1\nbad\x1b[2Jname \xC3\xA4\n");
    CLinkMonitor monitor(false);
    monitor.Look();
    const Strings lines = DrawLinkScreen(monitor, 80, 23);
    EXPECT_TRUE(Holds(lines, "bad\\x1B[2Jname \xC3\xA4"));
}

}  // namespace
