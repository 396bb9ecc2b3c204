#pragma once

#include <string>
#include <vector>

#include "tools/LinkMonitor.h"

/// Draws what a monitor knows as lines for a terminal: host, heartbeat, tracks, the last
/// events of the session, the newest first.
///
/// No line is longer than `nColumns` characters and there are at most `nRows` of them; what does
/// not fit is counted. Names are safe for a terminal.
std::vector<std::string> DrawLinkScreen(CLinkMonitor const& monitor, std::size_t nColumns,
                                        std::size_t nRows);
