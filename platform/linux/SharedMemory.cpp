#include "platform/SharedMemory.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

namespace {

constexpr char szSharedMemoryDirectory[] = "/dev/shm";

// The numbers that name a directory's entries, in ascending order; other entries are left out.
std::vector<int> NumberedEntries(std::string const& strDirectory) {
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir(strDirectory.c_str()), closedir);
    std::vector<int> numbers;
    if (!directory) return numbers;
    while (const dirent* const pEntry = readdir(directory.get())) {
        const int nNumber = std::atoi(pEntry->d_name);
        if (nNumber > 0) numbers.push_back(nNumber);
    }
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

bool BelongsToThisUser(std::string const& strProcess) {
    struct stat status {};
    return stat(strProcess.c_str(), &status) == 0 && status.st_uid == geteuid();
}

// How many mappings of an object a process has.
int CountMappings(std::string const& strProcess, struct stat const& object) {
    std::ifstream maps(strProcess + "/maps");
    int nCount = 0;
    for (std::string strLine; std::getline(maps, strLine);) {
        unsigned nMajor = 0, nMinor = 0;
        unsigned long lInode = 0;
        std::sscanf(strLine.c_str(), "%*s %*s %*s %x:%x %lu", &nMajor, &nMinor, &lInode);
        nCount += lInode == object.st_ino && nMajor == major(object.st_dev) &&
                  nMinor == minor(object.st_dev);
    }
    return nCount;
}

ThreadState StateOf(char cState) {
    if (cState == 'R') return ThreadState::Running;
    if (cState == 'S' || cState == 'I') return ThreadState::Waiting;
    return ThreadState::Halted;
}

// No value for a thread that has ended.
std::optional<MappingThread> ReadThread(int nProcess, std::string const& strProcess, int nThread) {
    std::ifstream status(strProcess + "/task/" + std::to_string(nThread) + "/status");
    char cState = 0;
    int nTracer = 0;
    std::uint64_t lTurns = 0;
    for (std::string strLine; std::getline(status, strLine);) {
        std::istringstream line(strLine);
        std::string strKey;
        line >> strKey;
        if (strKey == "State:") line >> cState;
        if (strKey == "TracerPid:") line >> nTracer;
        if (strKey == "voluntary_ctxt_switches:") line >> lTurns;
    }
    if (cState == 0 || cState == 'Z' || cState == 'X') return std::nullopt;
    const ThreadState nState = nTracer != 0 ? ThreadState::Halted : StateOf(cState);
    return MappingThread{nProcess, nThread, nState, lTurns};
}

}  // namespace

// The kernel grants a write lease only to the single open description of a file, and a mapping
// keeps its description open.
CExclusiveUse::CExclusiveUse(int nDescriptor) noexcept
    : m_nDescriptor(nDescriptor), m_others(OtherUsers::Unknown) {
    // An opener that comes during the lease has a signal sent: one that is ignored unless somebody
    // wants it.
    if (fcntl(nDescriptor, F_SETSIG, SIGURG) != 0) return;
    if (fcntl(nDescriptor, F_SETLEASE, F_WRLCK) == 0) {
        m_others = OtherUsers::None;
    } else if (errno == EAGAIN) {
        m_others = OtherUsers::Some;
    }
}

CExclusiveUse::~CExclusiveUse() {
    if (m_others == OtherUsers::None) fcntl(m_nDescriptor, F_SETLEASE, F_UNLCK);
}

std::optional<std::vector<MappingThread>> ThreadsThatMap(int nDescriptor) {
    struct stat object {};
    if (fstat(nDescriptor, &object) != 0 || access("/proc/self/maps", R_OK) != 0) {
        return std::nullopt;
    }
    std::vector<MappingThread> threads;
    for (const int nProcess : NumberedEntries("/proc")) {
        const std::string strProcess = "/proc/" + std::to_string(nProcess);
        const int nOwn = nProcess == getpid() ? 1 : 0;
        if (!BelongsToThisUser(strProcess) || CountMappings(strProcess, object) <= nOwn) continue;
        for (const int nThread : NumberedEntries(strProcess + "/task")) {
            if (const auto thread = ReadThread(nProcess, strProcess, nThread)) {
                threads.push_back(*thread);
            }
        }
    }
    return threads;
}

int ReserveSharedMemory(int nDescriptor, std::size_t nSize) noexcept {
    return posix_fallocate(nDescriptor, 0, static_cast<off_t>(nSize));
}

bool RenameSharedMemory(const char* szFrom, const char* szTo) noexcept {
    const int nDirectory = open(szSharedMemoryDirectory, O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (nDirectory < 0) return false;
    const bool fRenamed = renameat(nDirectory, szFrom, nDirectory, szTo) == 0;
    close(nDirectory);
    return fRenamed;
}
