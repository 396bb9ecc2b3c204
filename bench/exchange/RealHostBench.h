#pragma once

#include <string>

#include "bench/exchange/BenchProcess.h"

/// Times commands of the link against the program `szHostProgram` and, by turns with it, an
/// exchange with an empty handler and the same script through a socket kept open, to a server that
/// makes a Lua interpreter for it. Prints a series for each.
void MeasureRealHost(std::string const& work, char const* szHostProgram, EPlacement placement,
                     int nTurns);
