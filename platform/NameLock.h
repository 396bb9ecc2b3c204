#pragma once

#include <string>

/// The right to be the only one of a name among the processes of this user, held from construction
/// until destruction or until the process ends, however it ends: the system then frees it.
///
/// The lock lies on a file of the name's own. A clean end removes the file; what a killed process
/// left is taken over.
class CNameLock {
public:
    /// Takes the lock unless somebody has it; never waits. Throws `std::system_error` when the
    /// system refuses the file.
    explicit CNameLock(std::string const& strName);
    ~CNameLock();
    CNameLock(CNameLock const&) = delete;
    CNameLock& operator=(CNameLock const&) = delete;

    /// False when somebody else has the lock.
    bool IsHeld() const noexcept { return m_fHeld; }

private:
    std::string m_strPath;
    int m_nFile = -1;
    bool m_fHeld = false;
};

/// Where the files of such locks are, without a separator at the end: wherever those who could meet
/// each other all look.
std::string NameLockDirectory();
