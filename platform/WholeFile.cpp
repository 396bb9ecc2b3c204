#include "platform/WholeFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace {

namespace fs = std::filesystem;

constexpr mode_t kUsualMode = 0666;
// One that a killed process has left does not stand in the way.
constexpr int kMostBeside = 100;

[[noreturn]] void Fail() {
    throw std::system_error(errno, std::generic_category());
}

// Where a chain of links ends, also when nothing is there yet.
std::string EndOfLinks(std::string const& strPath) {
    constexpr int kMostLinks = 40;
    fs::path path = strPath;
    std::error_code none;
    for (int nLink = 0; fs::is_symlink(path, none) && nLink < kMostLinks; ++nLink) {
        path = path.parent_path() / fs::read_symlink(path, none);
    }
    return path.string();
}

}  // namespace

CWholeFile::CWholeFile(std::string const& strPath) : m_strTarget(EndOfLinks(strPath)) {
    for (int nTry = 0; m_nFile < 0 && nTry < kMostBeside; ++nTry) {
        m_strBeside = m_strTarget + "." + std::to_string(getpid()) +
                      (nTry == 0 ? "" : "." + std::to_string(nTry)) + ".part";
        m_nFile = open(m_strBeside.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kUsualMode);
        if (m_nFile < 0 && errno != EEXIST) Fail();
    }
    if (m_nFile < 0) Fail();
}

CWholeFile::~CWholeFile() {
    if (m_nFile < 0) return;
    close(m_nFile);
    unlink(m_strBeside.c_str());
}

void CWholeFile::Write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t nWritten = write(m_nFile, bytes.data(), bytes.size());
        if (nWritten < 0 && errno == EINTR) continue;
        if (nWritten < 0) Fail();
        bytes.remove_prefix(static_cast<std::size_t>(nWritten));
    }
}

void CWholeFile::Keep() {
    struct stat old {};
    const bool fReplaces = stat(m_strTarget.c_str(), &old) == 0;
    if ((fReplaces && fchmod(m_nFile, old.st_mode & 0777) != 0) || fsync(m_nFile) != 0 ||
        std::rename(m_strBeside.c_str(), m_strTarget.c_str()) != 0) {
        Fail();
    }
    close(m_nFile);
    m_nFile = -1;
}
