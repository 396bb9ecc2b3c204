// What a person at a terminal is told while a command works, read from the terminal's other end.

#include "tools/WaitNotice.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <stdexcept>

#include "tools/ProgressBar.h"

namespace {

// A terminal and the end at which its person sits.
class CTerminal {
public:
    CTerminal() : m_nPerson(posix_openpt(O_RDWR | O_NOCTTY)) {
        if (m_nPerson < 0 || grantpt(m_nPerson) != 0 || unlockpt(m_nPerson) != 0)
            throw std::runtime_error("no terminal to be had");
        m_nProgram = open(ptsname(m_nPerson), O_RDWR | O_NOCTTY);
        if (m_nProgram < 0) throw std::runtime_error("cannot open the terminal");
    }
    ~CTerminal() {
        close(m_nProgram);
        close(m_nPerson);
    }
    CTerminal(CTerminal const&) = delete;
    CTerminal& operator=(CTerminal const&) = delete;

    int Program() const { return m_nProgram; }

    // Waits until `strText` has come; everything up to and with it.
    std::string ReadUpTo(std::string const& strText) const {
        std::string strRead;
        char c = 0;
        while (!strRead.ends_with(strText) && read(m_nPerson, &c, 1) == 1) strRead += c;
        return strRead;
    }

private:
    int m_nPerson;
    int m_nProgram;
};

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
