#pragma once

#include "link/MappedSegment.h"

/// Throws `CHostSegmentError`, with the process's id where it can be known, when the directory
/// belongs to a host of another kind that lives: its heartbeat moves, or a process keeps the
/// segment mapped, as a host does even when it is halted. A client has it mapped for moments. What
/// the heartbeat says by itself proves nothing, because a clock may have been set back.
///
/// Looks for up to a second and a half, and touches nothing.
void RefuseForeignHost(CMappedSegment const& directory);
