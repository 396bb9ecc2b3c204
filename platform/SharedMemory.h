#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

/// Shared-memory objects of this process: what the operating system knows about who else uses them,
/// and what it does with them beyond opening and mapping.

/// Whether anybody but the caller has the object open or mapped.
enum class OtherUsers {
    None,    ///< certainly nobody
    Some,    ///< somebody
    Unknown  ///< the platform does not tell
};

/// Tries to have an object of this process's user to itself for a scope: while there are no others,
/// whoever opens the object waits for the end of the scope, which should be a matter of
/// microseconds.
class CExclusiveUse {
public:
    /// `nDescriptor` was opened for writing; mappings made through the same open description are
    /// the caller's own.
    explicit CExclusiveUse(int nDescriptor) noexcept;
    ~CExclusiveUse();
    CExclusiveUse(CExclusiveUse const&) = delete;
    CExclusiveUse& operator=(CExclusiveUse const&) = delete;

    OtherUsers Others() const noexcept { return m_others; }

private:
    int m_nDescriptor;
    OtherUsers m_others;
};

/// What a thread is doing.
enum class ThreadState {
    Running,  ///< on a processor or waiting for one
    Waiting,  ///< asleep in a system call
    Halted    ///< stopped by a signal, in the hands of a debugger, or waiting for a device
};

/// One thread of a process that has the object mapped.
struct MappingThread {
    int nProcess;
    int nThread;
    ThreadState nState;
    std::uint64_t lTurns;  ///< how often it has left the processor by itself so far
};

/// Every thread of every process of this user that has the object mapped, in the order of process
/// and thread ids. This process counts only when it has mapped the object more than once. No value
/// when the platform does not tell.
std::optional<std::vector<MappingThread>> ThreadsThatMap(int nDescriptor);

/// Makes sure that the first `nSize` bytes of an object, to which it has been sized, can be
/// written: an object without memory behind it kills the process at the first write. 0 or an error
/// number.
int ReserveSharedMemory(int nDescriptor, std::size_t nSize) noexcept;

/// Gives a shared-memory object the name of another, which loses it; what is mapped of either
/// stays. Names without a leading slash. False when that did not work or the platform cannot do it.
bool RenameSharedMemory(const char* szFrom, const char* szTo) noexcept;
