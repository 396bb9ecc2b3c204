#include "platform/SharedMemory.h"

#include <libproc.h>
#include <unistd.h>

#include <cstring>

// The system tells who has a shared-memory object open, not who has it mapped, and renames none.

namespace {

// What a call of libproc lists. It gives a size in bytes for no buffer, and what it has put there.
template <typename Item, typename Call>
std::vector<Item> Listed(Call const& call) {
    const int nBytes = call(nullptr, 0);
    std::vector<Item> items(nBytes > 0 ? nBytes / sizeof(Item) : 0);
    const int nFilled = call(items.data(), static_cast<int>(items.size() * sizeof(Item)));
    items.resize(nFilled > 0 ? nFilled / sizeof(Item) : 0);
    return items;
}

std::vector<pid_t> ProcessesOfThisUser() {
    return Listed<pid_t>([](void* pBuffer, int nSize) {
        return proc_listpids(PROC_UID_ONLY, geteuid(), pBuffer, nSize);
    });
}

std::vector<proc_fdinfo> DescriptorsOf(pid_t nProcess) {
    return Listed<proc_fdinfo>([nProcess](void* pBuffer, int nSize) {
        return proc_pidinfo(nProcess, PROC_PIDLISTFDS, 0, pBuffer, nSize);
    });
}

// False when the descriptor is of no shared-memory object.
bool Describe(pid_t nProcess, int nDescriptor, pshm_fdinfo* pInfo) {
    return proc_pidfdinfo(nProcess, nDescriptor, PROC_PIDFDPSHMINFO, pInfo, sizeof *pInfo) ==
           static_cast<int>(sizeof *pInfo);
}

bool HasOpen(pid_t nProcess, pshm_fdinfo const& wanted) {
    for (proc_fdinfo const& descriptor : DescriptorsOf(nProcess)) {
        pshm_fdinfo found{};
        if (descriptor.proc_fdtype == PROX_FDTYPE_PSHM &&
            Describe(nProcess, descriptor.proc_fd, &found) &&
            std::strcmp(found.pshminfo.pshm_name, wanted.pshminfo.pshm_name) == 0) {
            return true;
        }
    }
    return false;
}

// Somebody may have closed what he still has mapped, so that nobody found is nothing known.
OtherUsers OthersThatHaveOpen(int nDescriptor) {
    pshm_fdinfo object{};
    if (!Describe(getpid(), nDescriptor, &object)) return OtherUsers::Unknown;
    for (const pid_t nProcess : ProcessesOfThisUser()) {
        if (nProcess != getpid() && HasOpen(nProcess, object)) return OtherUsers::Some;
    }
    return OtherUsers::Unknown;
}

}  // namespace

CExclusiveUse::CExclusiveUse(int nDescriptor) noexcept
    : m_nDescriptor(nDescriptor), m_others(OthersThatHaveOpen(m_nDescriptor)) {}

CExclusiveUse::~CExclusiveUse() = default;

std::optional<std::vector<MappingThread>> ThreadsThatMap(int) {
    return std::nullopt;
}

// Sizing an object takes its memory.
int ReserveSharedMemory(int, std::size_t) noexcept {
    return 0;
}

bool RenameSharedMemory(const char*, const char*) noexcept {
    return false;
}
