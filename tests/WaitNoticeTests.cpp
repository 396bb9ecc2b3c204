// What a person at a terminal is told while a command works, read from the terminal's other end.

#include "tools/WaitNotice.h"

#include <gtest/gtest.h>

#include "Terminal.h"
#include "tools/ProgressBar.h"

namespace {

TEST(WaitNotice, SecondsAreCountedAndTheLineGoesInTheEnd) {
    const CTerminal terminal;
    CWaitNotice notice("waiting", terminal.Program());
    EXPECT_EQ(terminal.ReadUpTo("\x1b[K"), "\rwaiting, 1 s\x1b[K");
    EXPECT_EQ(terminal.ReadUpTo("\x1b[K"), "\rwaiting, 2 s\x1b[K");
    notice.End();
    EXPECT_EQ(terminal.ReadUpTo("\x1b[K"), "\r\x1b[K");
}

TEST(WaitNotice, AnotherTextTakesTheLine) {
    const CTerminal terminal;
    CWaitNotice notice("first", terminal.Program());
    terminal.ReadUpTo("first, 1 s\x1b[K");
    notice.Say("second");
    EXPECT_TRUE(terminal.ReadUpTo("second").ends_with("\rsecond"));
}

TEST(WaitNotice, HiddenLineMakesRoomUntilSomethingIsSaid) {
    const CTerminal terminal;
    CWaitNotice notice("working", terminal.Program());
    terminal.ReadUpTo("working, 1 s\x1b[K");
    notice.Hide();
    terminal.ReadUpTo("\r\x1b[K");
    dprintf(terminal.Program(), "a report;");
    EXPECT_EQ(terminal.ReadUpTo("report;"), "a report;");
    notice.Say("more");
    EXPECT_EQ(terminal.ReadUpTo("more").substr(0, 1), "\r");
}

TEST(WaitNotice, WithoutATerminalNothingIsWritten) {
    int pipeEnds[2];
    ASSERT_EQ(pipe(pipeEnds), 0);
    {
        CWaitNotice notice("working", pipeEnds[1]);
        std::this_thread::sleep_for(std::chrono::milliseconds(1200));
        notice.Say("more");
    }
    close(pipeEnds[1]);
    char c = 0;
    EXPECT_EQ(read(pipeEnds[0], &c, 1), 0);
    close(pipeEnds[0]);
}

TEST(ProgressBar, FillsFromEmptyToFull) {
    EXPECT_EQ(ProgressBar(0, 47), "[                    ]");
    EXPECT_EQ(ProgressBar(1, 2), "[==========          ]");
    EXPECT_EQ(ProgressBar(46, 47), "[=================== ]");
    EXPECT_EQ(ProgressBar(47, 47), "[====================]");
    EXPECT_EQ(ProgressBar(48, 47), "[====================]");
    EXPECT_EQ(ProgressBar(0, 0), "[====================]");
}

}  // namespace
