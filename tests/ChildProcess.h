#pragma once

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

// Not every system's headers declare it.
extern char** environ;

/// A program that a test starts. It is killed with this object if it still runs.
class CChildProcess {
public:
    /// `arguments[0]` is the program's path. Its standard output and error go to the given files.
    CChildProcess(std::vector<std::string> const& arguments, std::string const& strOutput,
                  std::string const& strErrors) {
        std::vector<char*> argv;
        for (std::string const& strArgument : arguments) {
            argv.push_back(const_cast<char*>(strArgument.c_str()));
        }
        argv.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", 0, 0);
        const int nFlags = O_WRONLY | O_CREAT | O_TRUNC;
        posix_spawn_file_actions_addopen(&actions, 1, strOutput.c_str(), nFlags, 0600);
        posix_spawn_file_actions_addopen(&actions, 2, strErrors.c_str(), nFlags, 0600);
        const int nError =
            posix_spawn(&m_nProcess, argv[0], &actions, nullptr, argv.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        if (nError != 0) throw std::runtime_error("cannot start " + arguments.at(0));
    }
    ~CChildProcess() {
        Signal(SIGKILL);
        Wait();
    }
    CChildProcess(CChildProcess const&) = delete;
    CChildProcess& operator=(CChildProcess const&) = delete;

    /// Does nothing once the program's end has been waited for.
    void Signal(int nSignal) const {
        if (m_nProcess > 0) kill(m_nProcess, nSignal);
    }
    pid_t Id() const { return m_nProcess; }

    /// Waits for the end; the exit status, or -1 when a signal ended it.
    int Wait() {
        if (m_nProcess <= 0) return m_nStatus;
        int nStatus = 0;
        waitpid(m_nProcess, &nStatus, 0);
        m_nProcess = 0;
        m_nStatus = WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : -1;
        return m_nStatus;
    }

private:
    pid_t m_nProcess = 0;
    int m_nStatus = -1;
};
