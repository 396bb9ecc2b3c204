#pragma once

#include <cstdint>
#include <string>

/// Length of an audio file.
struct CAudioLength {
    std::int64_t m_lFrames;  ///< samples per channel
    int m_nSampleRate;       ///< Hz
    int m_nChannels;
};

/// Opens an audio file and tells its length. Throws `std::runtime_error`, naming the file and the
/// reason, when it is missing or no audio.
CAudioLength ProbeAudio(std::string const& strPath);
