#pragma once

namespace CLI {
class App;
}

/// Adds `block dump`, `pack`, `diff`, `get` and `set`: session files and bare images for people to
/// read, compare and change.
void AddBlockCommands(CLI::App& app);
