#pragma once

#include <string_view>

/// The part of the sandbox that is written in the script language itself: whatever calls back into
/// a script, or walks through a table, so that the limits hold at every step. It is run with the
/// table of the script's globals and a table of native helpers, before the script.
extern std::string_view const kScriptPrelude;
