#include "platform/posix/ChildCalls.h"

#include <fcntl.h>
#include <sys/socket.h>

// Local sockets with records and a beginning and an end are not known here.
int RecordSocketType() noexcept {
    return SOCK_DGRAM;
}

void KeepToOneself(int nDescriptor) noexcept {
    const int nOn = 1;
    fcntl(nDescriptor, F_SETFD, FD_CLOEXEC);
    setsockopt(nDescriptor, SOL_SOCKET, SO_NOSIGPIPE, &nOn, sizeof(nOn));
}

int SendFlags() noexcept {
    return MSG_DONTWAIT;
}

void InheritUpTo(int nLast, posix_spawn_file_actions_t* actions, short* pnFlags) noexcept {
    *pnFlags |= POSIX_SPAWN_CLOEXEC_DEFAULT;
    for (int nDescriptor = 0; nDescriptor < nLast; ++nDescriptor) {
        posix_spawn_file_actions_addinherit_np(actions, nDescriptor);
    }
}
