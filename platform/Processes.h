#pragma once

#include <sys/types.h>

/// What one process can know of others and say of itself, as far as the platform lets it. For
/// programs that measure and judge.

/// Keeps the calling thread, and what it starts, on one processor core (counted from 0, beyond the
/// last one from the start again) or, for -1, lets it run on every one. Without effect where the
/// platform has no such thing.
void RunOnCore(int nCore) noexcept;

/// Ends this process when the one that started it does. Without effect where the platform has no
/// such thing.
void EndWithParent() noexcept;

/// The processor time in seconds that a process has used; 0 where that cannot be told.
double ProcessorSecondsOf(pid_t nProcess) noexcept;

/// Whether a process of this id runs. One that has ended runs no more, also while nobody has asked
/// for its exit status, where the platform tells.
bool ProcessRuns(pid_t nProcess) noexcept;
