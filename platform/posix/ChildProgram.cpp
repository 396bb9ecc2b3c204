#include "platform/ChildProgram.h"

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "platform/posix/ChildCalls.h"

extern char** environ;

namespace {

class CSpawnActions {
public:
    CSpawnActions() { posix_spawn_file_actions_init(&m_Actions); }
    ~CSpawnActions() { posix_spawn_file_actions_destroy(&m_Actions); }
    CSpawnActions(CSpawnActions const&) = delete;
    CSpawnActions& operator=(CSpawnActions const&) = delete;
    posix_spawn_file_actions_t* Get() { return &m_Actions; }

private:
    posix_spawn_file_actions_t m_Actions{};
};

class CSpawnAttributes {
public:
    CSpawnAttributes() { posix_spawnattr_init(&m_Attributes); }
    ~CSpawnAttributes() { posix_spawnattr_destroy(&m_Attributes); }
    CSpawnAttributes(CSpawnAttributes const&) = delete;
    CSpawnAttributes& operator=(CSpawnAttributes const&) = delete;
    posix_spawnattr_t* Get() { return &m_Attributes; }

    // As a program finds its signals when a person starts it.
    void UseFreshSignals(short nFlags) {
        sigset_t signals;
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&m_Attributes, &signals);
        sigfillset(&signals);
        posix_spawnattr_setsigdefault(&m_Attributes, &signals);
        posix_spawnattr_setflags(&m_Attributes, static_cast<short>(nFlags | POSIX_SPAWN_SETSIGMASK |
                                                                   POSIX_SPAWN_SETSIGDEF));
    }

private:
    posix_spawnattr_t m_Attributes{};
};

pid_t Start(std::string const& strProgram, int nEnd) {
    CSpawnActions actions;
    posix_spawn_file_actions_adddup2(actions.Get(), nEnd, kChildDescriptor);
    short nFlags = 0;
    InheritUpTo(kChildDescriptor, actions.Get(), &nFlags);
    CSpawnAttributes attributes;
    attributes.UseFreshSignals(nFlags);
    std::string strName = strProgram;
    char* arguments[] = {strName.data(), nullptr};
    pid_t nProcess = 0;
    const int nError = posix_spawn(&nProcess, strProgram.c_str(), actions.Get(), attributes.Get(),
                                   arguments, environ);
    if (nError != 0) throw std::system_error(nError, std::generic_category(), strProgram);
    return nProcess;
}

}  // namespace

CChildProgram::CChildProgram(std::string const& strProgram)
    : CChildProgram(strProgram, CRecordSocket::MakePair()) {}

CChildProgram::CChildProgram(std::string const& strProgram, std::pair<int, int> ends)
    : m_Socket(ends.first) {
    CRecordSocket other(ends.second);
    m_nProcess = Start(strProgram, ends.second);
}

CChildProgram::~CChildProgram() {
    if (HasEnded()) return;
    kill(m_nProcess, SIGKILL);
    while (waitpid(m_nProcess, nullptr, 0) < 0 && errno == EINTR) {
    }
}

bool CChildProgram::HasEnded() noexcept {
    if (m_nProcess == 0) return true;
    // Somebody else in the process may have waited for it already.
    const pid_t nEnded = waitpid(m_nProcess, nullptr, WNOHANG);
    if (nEnded == 0 || (nEnded < 0 && errno == EINTR)) return false;
    m_nProcess = 0;
    return true;
}
