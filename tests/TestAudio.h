#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <numbers>

#include "host/AudioFile.h"

/// Sound made for tests.
namespace TestAudio {

/// Silence.
inline CAudio Silence(std::int64_t lFrames, int nChannels = 1, int nSampleRate = 48000) {
    CAudio audio{nSampleRate, {}};
    audio.m_Channels.assign(static_cast<std::size_t>(nChannels),
                            std::vector<float>(static_cast<std::size_t>(lFrames), 0.0f));
    return audio;
}

/// Adds a word-like burst: a few harmonics under a rounded envelope.
inline void AddBurst(CAudio& audio, std::int64_t lStart, std::int64_t lLength, double dPitch,
                     double dLevel) {
    for (std::int64_t l = 0; l < lLength; ++l) {
        if (lStart + l < 0 || lStart + l >= audio.Frames()) continue;
        double const dTime = static_cast<double>(l) / audio.m_nSampleRate;
        double const dEnvelope =
            std::sin(std::numbers::pi * static_cast<double>(l) / static_cast<double>(lLength));
        double dSample = 0.0;
        for (int nHarmonic = 1; nHarmonic <= 4; ++nHarmonic)
            dSample += std::sin(2.0 * std::numbers::pi * dPitch * nHarmonic * dTime) / nHarmonic;
        for (auto& channel : audio.m_Channels)
            channel[static_cast<std::size_t>(lStart + l)] +=
                static_cast<float>(dLevel * dEnvelope * dSample * 0.5);
    }
}

/// A phrase of five words of different lengths that starts `lShift` samples late.
inline CAudio Phrase(std::int64_t lFrames, std::int64_t lShift = 0, double dPitch = 140.0,
                     int nChannels = 1) {
    CAudio audio = Silence(lFrames, nChannels);
    struct CWord {
        std::int64_t lStart, lLength;
        double dLevel;
    };
    for (CWord const& word :
         {CWord{4000, 7000, 0.8}, CWord{14000, 3000, 0.5}, CWord{19500, 9000, 0.9},
          CWord{33000, 2500, 0.4}, CWord{38000, 6000, 0.7}})
        AddBurst(audio, word.lStart + lShift, word.lLength, dPitch, word.dLevel);
    return audio;
}

/// Mean power of a channel.
inline double Power(std::vector<float> const& channel) {
    double dSum = 0.0;
    for (float sample : channel) dSum += static_cast<double>(sample) * static_cast<double>(sample);
    return channel.empty() ? 0.0 : dSum / static_cast<double>(channel.size());
}

/// Normalised correlation of left[i] with right[i + lLag], from -1 to 1.
inline double Correlation(std::vector<float> const& left, std::vector<float> const& right,
                          std::int64_t lLag = 0) {
    double dProduct = 0.0, dLeft = 0.0, dRight = 0.0;
    for (std::size_t i = 0; i < left.size(); ++i) {
        auto const lOther = static_cast<std::int64_t>(i) + lLag;
        if (lOther < 0 || lOther >= static_cast<std::int64_t>(right.size())) continue;
        double const a = left[i], b = right[static_cast<std::size_t>(lOther)];
        dProduct += a * b;
        dLeft += a * a;
        dRight += b * b;
    }
    return dLeft > 0 && dRight > 0 ? dProduct / std::sqrt(dLeft * dRight) : 0.0;
}

}  // namespace TestAudio
