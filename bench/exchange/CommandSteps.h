#pragma once

#include <string>

#include "bench/ResultLog.h"

/// Prints how long each step of a command over the link takes after a pause. A host has to run.
void MeasureCommandSteps(std::string const& work, int nRounds, double dPauseUs);
