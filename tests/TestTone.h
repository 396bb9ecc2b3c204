#pragma once

#include <sndfile.h>

#include <cmath>
#include <stdexcept>
#include <string>
#include <vector>

/// Writes a mono WAV file (16 bit) with bursts of a tone, silent in between, that begins with
/// `nSilence` samples of silence: something whose place in time can be found again.
inline void WriteTestTone(std::string const& strPath, int nSampleRate, int nFrames,
                          int nSilence = 0, double dHertz = 220.0) {
    constexpr double kTwoPi = 6.283185307179586;
    std::vector<short> samples(static_cast<std::size_t>(nFrames));
    for (int nFrame = nSilence; nFrame < nFrames; ++nFrame) {
        const double dTime = static_cast<double>(nFrame - nSilence) / nSampleRate;
        const double dBurst = std::max(0.0, std::sin(kTwoPi * (1.3 + dTime) * dTime));
        samples[static_cast<std::size_t>(nFrame)] =
            static_cast<short>(20000.0 * dBurst * std::sin(kTwoPi * dHertz * dTime));
    }
    SF_INFO info{};
    info.samplerate = nSampleRate;
    info.channels = 1;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* const pFile = sf_open(strPath.c_str(), SFM_WRITE, &info);
    if (!pFile) throw std::runtime_error("cannot write " + strPath);
    sf_writef_short(pFile, samples.data(), nFrames);
    sf_close(pFile);
}
