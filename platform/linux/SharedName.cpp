#include "platform/SharedName.h"

#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

#include "platform/NameLock.h"

namespace {

constexpr char szSharedMemoryDirectory[] = "/dev/shm";

/// Where a name lies. It takes no memory and no descriptor, which may be what has run out.
class CNamePath {
public:
    explicit CNamePath(const char* szName) noexcept {
        std::snprintf(m_szPath, sizeof(m_szPath), "%s/%s", szSharedMemoryDirectory, szName);
    }
    const char* Text() const noexcept { return m_szPath; }

private:
    char m_szPath[PATH_MAX];
};

}  // namespace

bool HasSharedName(int nDescriptor, const char* szName) noexcept {
    struct stat opened {
    }, named{};
    return fstat(nDescriptor, &opened) == 0 && lstat(CNamePath(szName).Text(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

void RemoveSharedName(int nDescriptor, const char* szName) noexcept {
    if (HasSharedName(nDescriptor, szName)) unlink(CNamePath(szName).Text());
}

// Beside the objects themselves: processes that see different ones do not meet.
std::string NameLockDirectory() {
    return szSharedMemoryDirectory;
}
