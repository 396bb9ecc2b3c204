#include "platform/posix/ChildCalls.h"

#include <fcntl.h>
#include <sys/socket.h>

int RecordSocketType() noexcept {
    return SOCK_SEQPACKET | SOCK_CLOEXEC;
}

void KeepToOneself(int nDescriptor) noexcept {
    fcntl(nDescriptor, F_SETFD, FD_CLOEXEC);
}

int SendFlags() noexcept {
    return MSG_DONTWAIT | MSG_NOSIGNAL;
}

void InheritUpTo(int nLast, posix_spawn_file_actions_t* actions, short* /*pnFlags*/) noexcept {
    posix_spawn_file_actions_addclosefrom_np(actions, nLast + 1);
}
