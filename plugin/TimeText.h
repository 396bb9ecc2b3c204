#pragma once

#include <cstdint>
#include <string>

/// A place on the timeline, or a length, in samples as minutes, seconds and tenths: "0:09.2". What
/// is less than a tenth is left out.
std::string TimeText(std::int64_t lSamples, int nSampleRate);
