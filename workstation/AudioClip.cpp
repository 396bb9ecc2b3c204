#include "workstation/AudioClip.h"

#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>
#include <stdexcept>

namespace {

using CSoundFile = std::unique_ptr<SNDFILE, decltype(&sf_close)>;

constexpr int kRate = 48000;
constexpr double kSeconds = 3.0;
constexpr double kSyllableSeconds = 0.34;

struct CSyllable {
    double dGuideStart;
    double dDubStart;
    double dHertz;
};

constexpr CSyllable kSyllables[] = {{0.10, 0.18, 196}, {0.55, 0.71, 220}, {1.00, 1.08, 247},
                                    {1.45, 1.62, 262}, {1.90, 2.05, 247}, {2.35, 2.58, 196}};

double Voice(double dTime, double dHertz) {
    double dSum = 0;
    for (int nPartial = 1; nPartial <= 6; ++nPartial) {
        const double dVibrato = 0.004 * std::sin(2 * std::numbers::pi * 5.5 * dTime);
        dSum += std::sin(2 * std::numbers::pi * dHertz * nPartial * (dTime + dVibrato / dHertz)) /
                (nPartial * nPartial);
    }
    return dSum;
}

CSoundFile Open(std::string const& strPath, int nMode, SF_INFO* pInfo) {
    CSoundFile file(sf_open(strPath.c_str(), nMode, pInfo), &sf_close);
    if (!file) throw std::runtime_error(strPath + ": " + sf_strerror(nullptr));
    return file;
}

}  // namespace

CAudioClip ReadAudioClip(std::string const& strPath) {
    SF_INFO info{};
    const CSoundFile file = Open(strPath, SFM_READ, &info);
    CAudioClip clip{strPath, info.frames, info.samplerate, info.channels, {}};
    const sf_count_t nPerColumn =
        std::max<sf_count_t>(1, (info.frames + CAudioClip::kColumns - 1) / CAudioClip::kColumns);

    constexpr sf_count_t kBlock = 4096;
    std::vector<float> block(static_cast<std::size_t>(kBlock) * info.channels);
    sf_count_t nDone = 0;
    while (const sf_count_t nRead = sf_readf_float(file.get(), block.data(), kBlock)) {
        for (sf_count_t nFrame = 0; nFrame < nRead; ++nFrame) {
            const auto nColumn = static_cast<std::size_t>((nDone + nFrame) / nPerColumn);
            if (nColumn >= CAudioClip::kColumns) break;
            if (nColumn >= clip.peaks.size()) clip.peaks.resize(nColumn + 1);
            for (int nChannel = 0; nChannel < info.channels; ++nChannel) {
                const float sample = std::abs(block[nFrame * info.channels + nChannel]);
                clip.peaks[nColumn] = std::max(clip.peaks[nColumn], std::min(sample, 1.0F));
            }
        }
        nDone += nRead;
    }
    return clip;
}

bool IsBuiltInTake(std::string const& strName) {
    return strName == "guide" || strName == "dub";
}

void WriteBuiltInTake(std::string const& strName, std::string const& strPath) {
    const bool fDub = strName == "dub";
    std::vector<float> samples(static_cast<std::size_t>(kRate * kSeconds));
    for (CSyllable const& syllable : kSyllables) {
        const double dStart = fDub ? syllable.dDubStart : syllable.dGuideStart;
        const double dHertz = fDub ? syllable.dHertz * 1.02 : syllable.dHertz;
        const auto nFirst = static_cast<std::size_t>(dStart * kRate);
        const auto nCount = static_cast<std::size_t>(kSyllableSeconds * kRate);
        for (std::size_t nSample = 0; nSample < nCount && nFirst + nSample < samples.size();
             ++nSample) {
            const double dPart = static_cast<double>(nSample) / static_cast<double>(nCount);
            const double dSwell = std::pow(std::sin(std::numbers::pi * std::sqrt(dPart)), 1.5);
            const double dTime = static_cast<double>(nSample) / kRate;
            samples[nFirst + nSample] += static_cast<float>(0.55 * dSwell * Voice(dTime, dHertz));
        }
    }
    SF_INFO info{};
    info.samplerate = kRate;
    info.channels = 1;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    const CSoundFile file = Open(strPath, SFM_WRITE, &info);
    const auto nFrames = static_cast<sf_count_t>(samples.size());
    if (sf_writef_float(file.get(), samples.data(), nFrames) != nFrames) {
        throw std::runtime_error(strPath + ": " + sf_strerror(file.get()));
    }
}
