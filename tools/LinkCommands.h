#pragma once

#include <CLI/CLI.hpp>

/// Adds `tavarin link …`: the link client's commands, one subcommand each.
void AddLinkCommands(CLI::App& app);
