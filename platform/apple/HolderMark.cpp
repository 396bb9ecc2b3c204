#include "platform/HolderMark.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <string>

namespace {

// The system locks files, not shared-memory objects: a file of the user's own stands for the
// object. Not among his temporary files, which the system tidies away below whoever has them open.
int OpenLockFile(const char* szName) {
    char szDirectory[PATH_MAX];
    const std::size_t nSize = confstr(_CS_DARWIN_USER_CACHE_DIR, szDirectory, sizeof szDirectory);
    if (nSize == 0 || nSize > sizeof szDirectory) return -1;
    const std::string strFile = std::string(szDirectory) + szName + ".lock";
    return open(strFile.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
}

}  // namespace

CHolderMark::CHolderMark(const char* szName, int) noexcept : m_nLocked(OpenLockFile(szName)) {
    flock(m_nLocked, LOCK_EX | LOCK_NB);
}

CHolderMark::~CHolderMark() {
    close(m_nLocked);
}

bool IsHeldByAProcess(const char* szName, int) noexcept {
    const int nFile = OpenLockFile(szName);
    const bool fHeld = flock(nFile, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    close(nFile);
    return fHeld;
}
