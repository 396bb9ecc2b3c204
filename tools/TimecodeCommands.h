#pragma once

namespace CLI {
class App;
}

/// Adds `timecode`: one position as samples, frames and SMPTE time code.
void AddTimecodeCommands(CLI::App& app);
