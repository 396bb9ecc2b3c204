#include "platform/FileSystem.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "platform/posix/MoveFile.h"
#include "platform/posix/SystemCalls.h"

namespace FileSystem {
namespace {

constexpr double kNanosecondsPerSecond = 1e9;
constexpr double kLatestSecond = 0x1p62;

Failure Describe(const std::error_code& error) {
    if (!error) return std::nullopt;
    return error.message();
}

Failure DescribeErrno() {
    return Describe({errno, std::generic_category()});
}

}  // namespace

CAutoreleasePool::CAutoreleasePool() = default;

CAutoreleasePool::~CAutoreleasePool() = default;

std::optional<Attributes> GetAttributes(const std::string& path) {
    struct stat status;
    if (lstat(path.c_str(), &status) != 0) return std::nullopt;
    Attributes attributes;
    attributes.nSize = static_cast<std::uint64_t>(status.st_size);
    const timespec modified = ModificationTime(status);
    attributes.dModified = static_cast<double>(modified.tv_sec) +
                           static_cast<double>(modified.tv_nsec) / kNanosecondsPerSecond;
    return attributes;
}

Item GetItem(const std::string& path) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0) return Item::Missing;
    return S_ISDIR(status.st_mode) ? Item::Directory : Item::File;
}

Failure SetModificationTime(const std::string& path, double seconds) {
    if (!(std::fabs(seconds) < kLatestSecond)) {
        return Describe(std::make_error_code(std::errc::invalid_argument));
    }
    double dWhole = std::floor(seconds);
    double dRest = seconds - dWhole;
    // The rest of a number just below a whole one may be too close to 1 for a double.
    if (dRest >= 1) {
        dWhole += 1;
        dRest = 0;
    }
    timespec modified{};
    modified.tv_sec = static_cast<time_t>(dWhole);
    modified.tv_nsec = static_cast<long>(dRest * kNanosecondsPerSecond);
    const timespec times[] = {{0, UTIME_OMIT}, modified};
    if (utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW) != 0) return DescribeErrno();
    return std::nullopt;
}

Failure SetCreatorAndType(const std::string& path, unsigned long, unsigned long) {
    struct stat status;
    if (lstat(path.c_str(), &status) != 0) return DescribeErrno();
    return std::nullopt;
}

Failure Move(const std::string& from, const std::string& to) {
    return Describe(MoveFile(from.c_str(), to.c_str()));
}

Failure CreateDirectories(const std::string& path) {
    std::error_code error;
    std::filesystem::create_directories(path, error);
    return Describe(error);
}

std::string TemporaryDirectory() {
    const char* directory = std::getenv("TMPDIR");
    if (directory == nullptr || *directory == '\0') return "/tmp";
    return directory;
}

std::string ProgramPath() {
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    return program.string();
}

void Log(const std::string& line) {
    std::fputs((line + '\n').c_str(), stderr);
}

}  // namespace FileSystem
