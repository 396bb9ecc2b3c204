#pragma once

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

/// A terminal and the end at which its person sits.
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
    std::string Name() const { return ptsname(m_nPerson); }

    /// Waits until `strText` has come, as long as something comes every 20 seconds; everything up
    /// to and with it.
    std::string ReadUpTo(std::string const& strText) const {
        std::string strRead;
        char c = 0;
        pollfd waiting{m_nPerson, POLLIN, 0};
        while (!strRead.ends_with(strText) && poll(&waiting, 1, 20'000) == 1 &&
               read(m_nPerson, &c, 1) == 1)
            strRead += c;
        return strRead;
    }

private:
    int m_nPerson;
    int m_nProgram;
};
