#include "platform/posix/MoveFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/posix/SystemCalls.h"

namespace FileSystem {
namespace {

std::error_code LastError() {
    return {errno, std::generic_category()};
}

std::error_code ResultOf(int status) {
    return status == 0 ? std::error_code() : LastError();
}

std::error_code RequireMissing(const char* path) {
    struct stat status;
    if (lstat(path, &status) == 0) return std::make_error_code(std::errc::file_exists);
    return errno == ENOENT ? std::error_code() : LastError();
}

std::error_code MoveByCheckedRename(const char* from, const char* to) {
    if (const auto error = RequireMissing(to)) return error;
    return ResultOf(std::rename(from, to));
}

std::error_code MoveWithinFileSystem(const char* from, const char* to) {
    const auto error = ResultOf(RenameToFreeName(from, to));
    const bool unsupported =
        error == std::errc::invalid_argument || error == std::errc::function_not_supported;
    return unsupported ? MoveFileByLink(from, to) : error;
}

/// Removes the source once its copy or second link is in place; takes that back when it must stay.
std::error_code RemoveSource(const char* from, const char* to) {
    if (unlink(from) == 0) return {};
    const auto error = LastError();
    unlink(to);
    return error;
}

std::error_code CopyWithTimes(const char* from, const char* to) {
    namespace fs = std::filesystem;
    std::error_code error;
    fs::copy_file(from, to, fs::copy_options::overwrite_existing, error);
    if (error) return error;
    const auto modified = fs::last_write_time(from, error);
    if (!error) fs::last_write_time(to, modified, error);
    return error;
}

}  // namespace

std::error_code MoveFile(const char* from, const char* to) {
    const auto error = MoveWithinFileSystem(from, to);
    return error == std::errc::cross_device_link ? MoveFileByCopy(from, to) : error;
}

std::error_code MoveFileByLink(const char* from, const char* to) {
    if (link(from, to) == 0) return RemoveSource(from, to);
    const auto error = LastError();
    const bool linkless =
        error == std::errc::operation_not_permitted || error == std::errc::operation_not_supported;
    return linkless ? MoveByCheckedRename(from, to) : error;
}

std::error_code MoveFileByCopy(const char* from, const char* to) {
    struct stat status;
    if (lstat(from, &status) != 0) return LastError();
    if (!S_ISREG(status.st_mode)) return std::make_error_code(std::errc::cross_device_link);
    if (const auto error = RequireMissing(to)) return error;

    std::string copy = std::filesystem::path(to).parent_path() / ".moving.XXXXXX";
    const int descriptor = mkstemp(copy.data());
    if (descriptor < 0) return LastError();
    close(descriptor);

    auto error = CopyWithTimes(from, copy.c_str());
    if (!error) error = MoveWithinFileSystem(copy.c_str(), to);
    if (!error) return RemoveSource(from, to);
    unlink(copy.c_str());
    return error;
}

}  // namespace FileSystem
