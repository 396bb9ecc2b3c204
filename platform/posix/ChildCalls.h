#pragma once

#include <spawn.h>

/// \file
/// What the kernels do differently for a program that is started with a socket.

/// The type of socket whose records keep their bounds.
int RecordSocketType() noexcept;

/// For an end of such a pair: no program inherits it, and sending to nobody raises no signal.
void KeepToOneself(int nDescriptor) noexcept;

/// The flags of `send` that go with it.
int SendFlags() noexcept;

/// Has a program that is started inherit the descriptors up to this one and none beyond.
void InheritUpTo(int nLast, posix_spawn_file_actions_t* actions, short* pnFlags) noexcept;
