#pragma once

#include <string>

/// What the user is told when the workstation and the host run at different sample rates, in Hz.
std::string SampleRateWarning(int sessionRate, int hostRate);
