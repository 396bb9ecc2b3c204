#include "platform/NameLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace {

// Whoever removed the file, or made it anew, has left this descriptor with one that nobody else
// will find.
bool IsStillThere(int nFile, std::string const& strPath) noexcept {
    struct stat opened {
    }, named{};
    return fstat(nFile, &opened) == 0 && stat(strPath.c_str(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

}  // namespace

CNameLock::CNameLock(std::string const& strName)
    : m_strPath(NameLockDirectory() + "/" + strName + ".lock") {
    do {
        if (m_nFile >= 0) close(m_nFile);
        m_nFile = open(m_strPath.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
        if (m_nFile < 0) {
            throw std::system_error(errno, std::generic_category(), "cannot use " + m_strPath);
        }
        m_fHeld = flock(m_nFile, LOCK_EX | LOCK_NB) == 0;
    } while (!IsStillThere(m_nFile, m_strPath));
}

CNameLock::~CNameLock() {
    // Removed while it is held: the next one makes a file of its own.
    if (m_fHeld) unlink(m_strPath.c_str());
    close(m_nFile);
}
