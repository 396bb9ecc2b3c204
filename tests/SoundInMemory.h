#pragma once

#include <algorithm>

#include "host/Alignment.h"
#include "host/Doubling.h"

/// A whole sound as one that is read block by block.
class CSoundInMemory : public CSound {
public:
    explicit CSoundInMemory(CAudio audio) : m_Audio(std::move(audio)) {}

    int SampleRate() const override { return m_Audio.m_nSampleRate; }
    std::size_t Channels() const override { return m_Audio.m_Channels.size(); }
    std::int64_t Frames() const override { return m_Audio.Frames(); }

    CAudio Read(std::int64_t lStart, std::int64_t lFrames) override {
        CAudio block{m_Audio.m_nSampleRate, {}};
        std::int64_t const lFrom = std::clamp<std::int64_t>(lStart, 0, Frames());
        std::int64_t const lTo = std::clamp<std::int64_t>(lStart + lFrames, lFrom, Frames());
        for (auto const& channel : m_Audio.m_Channels) {
            block.m_Channels.emplace_back(static_cast<std::size_t>(lFrames), 0.0f);
            std::copy(channel.begin() + lFrom, channel.begin() + lTo,
                      block.m_Channels.back().begin() + (lFrom < lTo ? lFrom - lStart : 0));
        }
        return block;
    }

private:
    CAudio m_Audio;
};

/// Gathers what is made.
inline CSoundSink Into(CAudio& audio) {
    return [&audio](CAudio const& block) {
        audio.m_nSampleRate = block.m_nSampleRate;
        audio.m_Channels.resize(block.m_Channels.size());
        for (std::size_t n = 0; n < block.m_Channels.size(); ++n)
            audio.m_Channels[n].insert(audio.m_Channels[n].end(), block.m_Channels[n].begin(),
                                       block.m_Channels[n].end());
    };
}

inline std::int64_t FindDubLag(CAudio const& guide, CAudio const& dub,
                               CCheckpoint const& checkpoint = {}) {
    CSoundInMemory guideSound(guide), dubSound(dub);
    return FindDubLag(guideSound, dubSound, checkpoint);
}

inline CAudio AlignDub(CAudio const& guide, CAudio const& dub) {
    CSoundInMemory guideSound(guide), dubSound(dub);
    CAudio aligned;
    AlignDub(guideSound, dubSound, Into(aligned));
    return aligned;
}

inline CAudio MakeDouble(CAudio const& input, CDoublingSettings const& settings = {},
                         CCheckpoint const& checkpoint = {}) {
    CSoundInMemory sound(input);
    CAudio output;
    MakeDouble(sound, settings, Into(output), checkpoint);
    return output;
}
