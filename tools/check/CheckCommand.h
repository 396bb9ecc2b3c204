#pragma once

#include <CLI/CLI.hpp>

/// Adds `tavarin check-host`: the whole conversation with the running host, rule by rule.
void AddCheckCommand(CLI::App& app);
