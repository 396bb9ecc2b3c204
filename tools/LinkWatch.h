#pragma once

#include "tools/LinkSession.h"

/// Shows host, session and tracks, and shows them again whenever they change, until the process is
/// interrupted. With `--json` one object a line.
void WatchLink(CLinkOptions const& options);
