#include "platform/SharedMemory.h"

#include <fcntl.h>
#include <libproc.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "platform/apple/SharedFile.h"

// What is known here is what the system tells of files.

namespace {

std::vector<pid_t> ProcessesOfThisUser() {
    const int nBytes = proc_listpids(PROC_UID_ONLY, geteuid(), nullptr, 0);
    std::vector<pid_t> processes(nBytes > 0 ? nBytes / sizeof(pid_t) : 0);
    const int nFilled = proc_listpids(PROC_UID_ONLY, geteuid(), processes.data(),
                                      static_cast<int>(processes.size() * sizeof(pid_t)));
    processes.resize(nFilled > 0 ? nFilled / sizeof(pid_t) : 0);
    return processes;
}

// Goes from one region of a process's memory to the next.
bool Maps(pid_t nProcess, struct stat const& object) {
    proc_regionwithpathinfo region{};
    std::uint64_t lAddress = 0;
    while (proc_pidinfo(nProcess, PROC_PIDREGIONPATHINFO, lAddress, &region, sizeof region) ==
           static_cast<int>(sizeof region)) {
        vinfo_stat const& file = region.prp_vip.vip_vi.vi_stat;
        if (file.vst_ino == object.st_ino &&
            file.vst_dev == static_cast<std::uint32_t>(object.st_dev)) {
            return true;
        }
        const std::uint64_t lNext = region.prp_prinfo.pri_address + region.prp_prinfo.pri_size;
        if (lNext <= lAddress) return false;
        lAddress = lNext;
    }
    return false;
}

// A process may keep its regions to itself, so that nobody found is nothing known.
OtherUsers OthersThatMap(int nDescriptor) {
    struct stat object {};
    if (fstat(nDescriptor, &object) != 0) return OtherUsers::Unknown;
    for (const pid_t nProcess : ProcessesOfThisUser()) {
        if (nProcess != getpid() && Maps(nProcess, object)) return OtherUsers::Some;
    }
    return OtherUsers::Unknown;
}

}  // namespace

CExclusiveUse::CExclusiveUse(int nDescriptor) noexcept
    : m_nDescriptor(nDescriptor), m_others(OthersThatMap(m_nDescriptor)) {}

CExclusiveUse::~CExclusiveUse() = default;

std::optional<std::vector<MappingThread>> ThreadsThatMap(int) {
    return std::nullopt;
}

// Nothing but a full disk is a reason to do without: not every file system takes reservations.
int ReserveSharedMemory(int nDescriptor, std::size_t nSize) noexcept {
    fstore_t space{};
    space.fst_flags = F_ALLOCATEALL;
    space.fst_posmode = F_PEOFPOSMODE;
    space.fst_length = static_cast<off_t>(nSize);
    return fcntl(nDescriptor, F_PREALLOCATE, &space) != 0 && errno == ENOSPC ? ENOSPC : 0;
}

bool RenameSharedMemory(const char* szFrom, const char* szTo) noexcept {
    return std::rename(SharedFileOf(szFrom).c_str(), SharedFileOf(szTo).c_str()) == 0;
}
