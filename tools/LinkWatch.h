#pragma once

#include "tools/LinkSession.h"

/// Shows host, session, tracks and what happens to them until the process is interrupted: on a
/// terminal as a view that stays in place, with the heartbeat; elsewhere as text whenever something
/// changes; with `--json` as one object a line.
void WatchLink(CLinkOptions const& options);
