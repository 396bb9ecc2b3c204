#include "platform/RecordSocket.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "platform/posix/ChildCalls.h"

CRecordSocket::CRecordSocket(int nDescriptor) noexcept : m_nDescriptor(nDescriptor) {
    struct stat status {};
    if (fstat(nDescriptor, &status) != 0 || !S_ISSOCK(status.st_mode)) {
        m_nDescriptor = -1;
        return;
    }
    m_nDevice = status.st_dev;
    m_nNode = status.st_ino;
    KeepToOneself(nDescriptor);
}

CRecordSocket::~CRecordSocket() {
    Close();
}

std::pair<int, int> CRecordSocket::MakePair() {
    int ends[2];
    if (socketpair(AF_UNIX, RecordSocketType(), 0, ends) != 0) {
        throw std::system_error(errno, std::generic_category(), "no pair of sockets");
    }
    for (const int nEnd : ends) KeepToOneself(nEnd);
    return {ends[0], ends[1]};
}

// The process belongs to somebody else, who may close every descriptor that he finds. What has the
// number then is his.
bool CRecordSocket::IsOurs() const noexcept {
    struct stat status {};
    return m_nDescriptor >= 0 && fstat(m_nDescriptor, &status) == 0 && status.st_dev == m_nDevice &&
           status.st_ino == m_nNode;
}

bool CRecordSocket::Send(void const* record, std::size_t nSize) noexcept {
    if (IsOurs() && send(m_nDescriptor, record, nSize, SendFlags()) == static_cast<ssize_t>(nSize))
        return true;
    Close();
    return false;
}

std::optional<std::size_t> CRecordSocket::Receive(void* record, std::size_t nRoom) noexcept {
    if (IsOurs()) {
        const ssize_t nReceived = recv(m_nDescriptor, record, nRoom, MSG_DONTWAIT);
        if (nReceived > 0) return static_cast<std::size_t>(nReceived);
        if (nReceived < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR)) {
            return std::nullopt;
        }
    }
    Close();
    return std::nullopt;
}

bool CRecordSocket::WaitFor(int nMilliseconds) const noexcept {
    pollfd waited{m_nDescriptor, POLLIN, 0};
    return poll(&waited, 1, nMilliseconds) > 0;
}

void CRecordSocket::Close() noexcept {
    if (IsOurs()) close(m_nDescriptor);
    m_nDescriptor = -1;
}
