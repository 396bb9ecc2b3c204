#pragma once

#include <CLI/CLI.hpp>
#include <string>

/// Adds `tavarin scheme …`, which hands its arguments to the program tavarin-scheme: that one needs
/// AppKit, and this one does not. `strProgram` is how this program was called; the other is looked
/// for beside it and then on the search path.
void AddSchemeCommand(CLI::App& app, std::string const& strProgram);
