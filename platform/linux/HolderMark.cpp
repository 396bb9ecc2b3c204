#include "platform/HolderMark.h"

#include <sys/file.h>

#include <cerrno>

// The kernel locks shared-memory objects as it locks files.

CHolderMark::CHolderMark(const char*, int nDescriptor) noexcept : m_nLocked(nDescriptor) {
    flock(m_nLocked, LOCK_EX | LOCK_NB);
}

CHolderMark::~CHolderMark() {
    flock(m_nLocked, LOCK_UN);
}

bool IsHeldByAProcess(const char*, int nDescriptor) noexcept {
    if (flock(nDescriptor, LOCK_EX | LOCK_NB) == 0) {
        flock(nDescriptor, LOCK_UN);
        return false;
    }
    return errno == EWOULDBLOCK;
}
