#pragma once

#include <string>

namespace CLI {
class App;
}

/// What to say of a command line that begins with a word where a command is missing: which word is
/// no command, and which command looks most like it. Empty when there is no such word.
std::string DescribeMistypedCommand(CLI::App const& app, int argc, char const* const* argv);
