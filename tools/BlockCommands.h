#pragma once

namespace CLI {
class App;
}

/// Adds `block dump`, `block pack` and `block diff`: session files and bare images for people to
/// read, edit and compare.
void AddBlockCommands(CLI::App& app);
