#include "tools/NewFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iostream>

#include "tools/InputOutput.h"
#include "tools/ToolFailure.h"

namespace {

namespace fs = std::filesystem;

constexpr mode_t kUsualMode = 0666;

bool PersonAgrees(std::string const& strPath) {
    if (!isatty(STDIN_FILENO) || !isatty(STDERR_FILENO)) return false;
    std::cerr << Quoted(strPath) << " is there already. Replace it? [y/N] ";
    std::string strAnswer;
    return std::getline(std::cin, strAnswer) && (strAnswer == "y" || strAnswer == "yes");
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

void RequireRoomFor(std::string const& strPath, Replace replace) {
    std::error_code none;
    if (replace == Replace::Yes || !fs::is_regular_file(strPath, none)) return;
    if (PersonAgrees(strPath)) return;
    throw CToolFailure(exitTrouble, Quoted(strPath) + " is there already",
                       "Say --force to replace it, or give another name.", "exists");
}

CNewFile::CNewFile(std::string const& strPath)
    : m_strPath(strPath),
      m_strTarget(EndOfLinks(strPath)),
      m_strBeside(m_strTarget + "." + std::to_string(getpid()) + ".part"),
      m_nFile(open(m_strBeside.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kUsualMode)) {
    if (m_nFile < 0) Fail();
}

CNewFile::~CNewFile() {
    if (m_nFile < 0) return;
    close(m_nFile);
    unlink(m_strBeside.c_str());
}

void CNewFile::Write(std::string const& bytes) {
    for (std::size_t nDone = 0; nDone < bytes.size();) {
        const ssize_t nWritten = write(m_nFile, bytes.data() + nDone, bytes.size() - nDone);
        if (nWritten < 0 && errno == EINTR) continue;
        if (nWritten < 0) Fail();
        nDone += static_cast<std::size_t>(nWritten);
    }
}

void CNewFile::Keep() {
    struct stat old {};
    const bool fReplaces = stat(m_strTarget.c_str(), &old) == 0;
    if ((fReplaces && fchmod(m_nFile, old.st_mode & 0777) != 0) || fsync(m_nFile) != 0 ||
        rename(m_strBeside.c_str(), m_strTarget.c_str()) != 0) {
        Fail();
    }
    close(m_nFile);
    m_nFile = -1;
}

void CNewFile::Fail() const {
    throw CToolFailure(exitTrouble,
                       "cannot write " + Quoted(m_strPath) + ": " + std::strerror(errno),
                       "Check the path, its permissions and the space left.", "unwritable");
}
