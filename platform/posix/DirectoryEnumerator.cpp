#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string_view>
#include <utility>
#include <vector>

#include "platform/FileSystem.h"

namespace FileSystem {
namespace {

struct Close {
    void operator()(DIR* directory) const { closedir(directory); }
};

using DirectoryStream = std::unique_ptr<DIR, Close>;

DirectoryStream OpenBelow(DIR* root, const char* relativePath) {
    const int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    const int descriptor = openat(dirfd(root), relativePath, flags);
    if (descriptor < 0) return nullptr;
    DirectoryStream directory(fdopendir(descriptor));
    if (directory == nullptr) close(descriptor);
    return directory;
}

bool IsDirectory(DIR* parent, const dirent& entry) {
    if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;
    struct stat status;
    return fstatat(dirfd(parent), entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISDIR(status.st_mode);
}

const dirent* ReadEntry(DIR* directory) {
    const dirent* entry = readdir(directory);
    while (entry != nullptr) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") return entry;
        entry = readdir(directory);
    }
    return nullptr;
}

}  // namespace

/// Reads one directory to its end and then takes up one of those found and not yet read, so that
/// the number of open descriptors does not grow with the depth of the tree.
struct CDirectoryEnumerator::State {
    DirectoryStream root;
    DirectoryStream subdirectory;
    std::string prefix;
    std::vector<std::string> pending;

    bool Next(std::string* item) {
        if (root == nullptr) return false;
        do {
            DIR* directory = subdirectory != nullptr ? subdirectory.get() : root.get();
            if (const dirent* entry = ReadEntry(directory)) {
                item->assign(prefix).append(entry->d_name);
                if (IsDirectory(directory, *entry)) pending.push_back(*item);
                return true;
            }
        } while (OpenPending());
        return false;
    }

    bool OpenPending() {
        subdirectory.reset();
        while (subdirectory == nullptr && !pending.empty()) {
            prefix = std::move(pending.back());
            pending.pop_back();
            subdirectory = OpenBelow(root.get(), prefix.c_str());
            prefix += '/';
        }
        return subdirectory != nullptr;
    }
};

CDirectoryEnumerator::CDirectoryEnumerator(const std::string& path)
    : m_pState(std::make_unique<State>()) {
    m_pState->root.reset(opendir(path.c_str()));
}

CDirectoryEnumerator::~CDirectoryEnumerator() = default;

bool CDirectoryEnumerator::Next(std::string* item) {
    return m_pState->Next(item);
}

}  // namespace FileSystem
