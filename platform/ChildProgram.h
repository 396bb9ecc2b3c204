#pragma once

#include <sys/types.h>

#include <string>

#include "platform/RecordSocket.h"

/// The descriptor by which a program that was started speaks to the one that started it.
inline constexpr int kChildDescriptor = 3;

/// A program that this process started, and a socket to it. It inherits the standard streams and
/// its end of the socket and nothing else, handles no signal and blocks none.
class CChildProgram {
public:
    /// Starts it, without arguments. Throws `std::system_error` when it cannot be started.
    explicit CChildProgram(std::string const& strProgram);

    /// Ends it, however it fares.
    ~CChildProgram();
    CChildProgram(CChildProgram const&) = delete;
    CChildProgram& operator=(CChildProgram const&) = delete;

    CRecordSocket& Socket() { return m_Socket; }

    /// Whether it has ended. Never waits.
    bool HasEnded() noexcept;

private:
    CChildProgram(std::string const& strProgram, std::pair<int, int> ends);

    CRecordSocket m_Socket;
    pid_t m_nProcess = 0;  ///< 0: it has ended and was waited for
};
