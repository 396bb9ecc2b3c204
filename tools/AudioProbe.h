#pragma once

#include <cstdint>
#include <string>

/// Length of an audio file in samples per channel. Throws `std::runtime_error`, naming the file and
/// the reason, when it is missing or no audio.
std::int64_t ProbeAudioFrames(std::string const& strPath);
