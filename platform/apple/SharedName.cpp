#include "platform/SharedName.h"

#include <limits.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>

#include "platform/NameLock.h"

// The system does not tell one such object from another.
bool HasSharedName(int, const char*) noexcept {
    return true;
}

void RemoveSharedName(int, const char* szName) noexcept {
    char szSlashed[NAME_MAX + 2];
    std::snprintf(szSlashed, sizeof(szSlashed), "/%s", szName);
    shm_unlink(szSlashed);
}

// The user's own directory for temporary files, whatever the environment says.
std::string NameLockDirectory() {
    char szDirectory[PATH_MAX] = "";
    confstr(_CS_DARWIN_USER_TEMP_DIR, szDirectory, sizeof(szDirectory));
    return szDirectory;
}
