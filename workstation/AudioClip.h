#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// What is shown of a sound file: its length and how loud it is where. The samples themselves are
/// not kept.
struct CAudioClip {
    std::string strPath;
    std::int64_t lFrames = 0;
    int nSampleRate = 0;
    int nChannels = 0;
    std::vector<float> peaks;  ///< the greatest value in each of at most kColumns equal parts

    static constexpr int kColumns = 400;

    double Seconds() const {
        return nSampleRate > 0 ? static_cast<double>(lFrames) / nSampleRate : 0;
    }
};

/// Throws `std::runtime_error`, naming the file and the reason, when it is missing or no audio.
CAudioClip ReadAudioClip(std::string const& strPath);

/// Writes one of the takes that are built in, "guide" or "dub", as a WAV file: three seconds of
/// something that is sung in six syllables, the dub a little higher and unevenly late.
void WriteBuiltInTake(std::string const& strName, std::string const& strPath);

/// Whether a take of this name is built in.
bool IsBuiltInTake(std::string const& strName);
