#include "plugin/ReturnedAudio.h"

#include <sndfile.h>

#include <algorithm>

#include "link/SampleRateWarning.h"

namespace {

constexpr sf_count_t kFramesAtOnce = 16384;

struct CCloseSound {
    void operator()(SNDFILE* file) const { sf_close(file); }
};

std::string Channels(int nChannels) {
    return nChannels == 1 ? "1 channel" : std::to_string(nChannels) + " channels";
}

}  // namespace

std::unique_ptr<CReturnedAudio> LoadReturnedAudio(std::string const& strFile,
                                                  std::int64_t lPosition, int nChannels,
                                                  int nSampleRate) {
    SF_INFO info{};
    const std::unique_ptr<SNDFILE, CCloseSound> file(sf_open(strFile.c_str(), SFM_READ, &info));
    if (!file) {
        throw std::runtime_error("The returned file cannot be read: " + strFile + ": " +
                                 sf_strerror(nullptr));
    }
    if (info.samplerate != nSampleRate) {
        throw std::runtime_error(SampleRateWarning(nSampleRate, info.samplerate));
    }
    if (info.channels != 1 && info.channels != nChannels) {
        throw std::runtime_error("The returned file has " + Channels(info.channels) +
                                 ", the track has " + Channels(nChannels) + ".");
    }
    const auto lBytes = static_cast<std::uint64_t>(info.frames) * info.channels * sizeof(float);
    if (lBytes > kMostReturnedBytes) {
        throw std::runtime_error("The returned file is too long: " + strFile);
    }

    auto audio = std::make_unique<CReturnedAudio>();
    audio->strFile = strFile;
    audio->lPosition = lPosition;
    audio->channels.resize(info.channels);
    std::vector<float> interleaved(kFramesAtOnce * info.channels);
    for (;;) {
        const sf_count_t lRead = sf_readf_float(file.get(), interleaved.data(), kFramesAtOnce);
        if (lRead <= 0) break;
        for (int nChannel = 0; nChannel < info.channels; ++nChannel) {
            std::vector<float>& samples = audio->channels[nChannel];
            for (sf_count_t lFrame = 0; lFrame < lRead; ++lFrame) {
                samples.push_back(interleaved[lFrame * info.channels + nChannel]);
            }
        }
        audio->lFrames += lRead;
    }
    for (std::vector<float>& samples : audio->channels) samples.shrink_to_fit();
    return audio;
}
