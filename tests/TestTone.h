#pragma once

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include "SoundFile.h"

/// Writes a mono WAV file (16 bit) with bursts of a tone, silent in between, that begins with
/// `nSilence` samples of silence: something whose place in time can be found again.
inline void WriteTestTone(std::string const& strPath, int nSampleRate, int nFrames,
                          int nSilence = 0, double dHertz = 220.0) {
    constexpr double kTwoPi = 2 * std::numbers::pi;
    CSoundFile sound{1, nSampleRate, std::vector<float>(static_cast<std::size_t>(nFrames))};
    for (int nFrame = nSilence; nFrame < nFrames; ++nFrame) {
        const double dTime = static_cast<double>(nFrame - nSilence) / nSampleRate;
        const double dBurst = std::max(0.0, std::sin(kTwoPi * (1.3 + dTime) * dTime));
        sound.samples[static_cast<std::size_t>(nFrame)] =
            static_cast<float>(0.6 * dBurst * std::sin(kTwoPi * dHertz * dTime));
    }
    WriteSoundFile(strPath, sound, SF_FORMAT_PCM_16);
}
