#pragma once

#include <functional>
#include <string>

namespace CLI {
class App;
}

/// The main function of a program with commands: parses its command line, carries the command out
/// and answers the exit status. Whatever is thrown is reported here, as JSON where the command line
/// says --json, and output that could not be written is a failure.
int RunTool(std::string const& strProgram, int argc, char** argv,
            std::function<void(CLI::App&)> const& addCommands);
