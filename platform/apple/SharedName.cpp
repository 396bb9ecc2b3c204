#include "platform/SharedName.h"

#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/NameLock.h"
#include "platform/apple/SharedFile.h"

bool HasSharedName(int nDescriptor, const char* szName) noexcept {
    struct stat opened {
    }, named{};
    return fstat(nDescriptor, &opened) == 0 && lstat(SharedFileOf(szName).c_str(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

void RemoveSharedName(int nDescriptor, const char* szName) noexcept {
    if (HasSharedName(nDescriptor, szName)) unlink(SharedFileOf(szName).c_str());
}

// The user's own directory for temporary files, whatever the environment says.
std::string NameLockDirectory() {
    char szDirectory[PATH_MAX] = "";
    confstr(_CS_DARWIN_USER_TEMP_DIR, szDirectory, sizeof(szDirectory));
    return szDirectory;
}
