#pragma once

#include <fcntl.h>
#include <sys/stat.h>

#include <cstdio>

/// \file
/// What Linux and macOS have under different names. Internal to this folder.

namespace FileSystem {

/// When an item was last modified.
inline timespec ModificationTime(struct stat const& status) {
#ifdef __APPLE__
    return status.st_mtimespec;
#else
    return status.st_mtim;
#endif
}

/// Renames as rename does, but fails with EEXIST where an item has the new name already.
inline int RenameToFreeName(const char* from, const char* to) {
#ifdef __APPLE__
    return renameatx_np(AT_FDCWD, from, AT_FDCWD, to, RENAME_EXCL);
#else
    return renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE);
#endif
}

}  // namespace FileSystem
