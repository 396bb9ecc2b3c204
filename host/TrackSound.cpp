#include "host/TrackSound.h"

#include <algorithm>
#include <string>
#include <utility>

#include "host/HostFunctions.h"
#include "host/Resampling.h"

namespace {

constexpr std::int64_t kBlock = 1 << 16;
constexpr std::int64_t kMixedSamples = std::int64_t{1} << 21;

void AddTo(CAudio& mix, std::int64_t lAt, CAudio const& block) {
    bool const fMono = block.m_Channels.size() == 1;
    for (std::size_t n = 0; n < mix.m_Channels.size(); ++n) {
        if (!fMono && n >= block.m_Channels.size()) return;
        auto const& source = block.m_Channels[fMono ? 0 : n];
        float* const pTarget = mix.m_Channels[n].data() + lAt;
        for (std::size_t i = 0; i < source.size(); ++i) pTarget[i] += source[i];
    }
}

CAudio SilenceOf(std::int64_t lFrames, std::size_t nChannels, int nSampleRate) {
    return {nSampleRate, {nChannels, std::vector<float>(static_cast<std::size_t>(lFrames), 0.0f)}};
}

}  // namespace

CTrackSound::CTrackSound(CTrack const& track, std::int64_t lStart, std::int64_t lEnd,
                         int nSampleRate, Notice notice)
    : m_lStart(lStart), m_lEnd(lEnd), m_nSampleRate(nSampleRate), m_Notice(std::move(notice)) {
    for (CRegion const& region : track.m_Regions) {
        if (region.Start() >= lEnd || region.End() <= lStart) continue;
        m_Regions.push_back(&region);
        m_nChannels = std::max(m_nChannels, region.m_Channels.size());
    }
    if (m_Regions.empty())
        throw CHostFunctionError("the track \"" + track.m_strName + "\" has no audio from " +
                                 std::to_string(lStart) + " to " + std::to_string(lEnd));
}

CAudio CTrackSound::Read(std::int64_t lStart, std::int64_t lFrames) {
    CAudio audio = SilenceOf(lFrames, m_nChannels, m_nSampleRate);
    std::int64_t const lFrom = std::clamp<std::int64_t>(lStart, 0, Frames());
    std::int64_t const lTo = std::clamp<std::int64_t>(lStart + lFrames, lFrom, Frames());
    if (lFrom == lTo) return audio;
    if (lFrom < m_lMixStart || lTo > m_lMixStart + m_Mix.Frames()) {
        std::int64_t const lMost = kMixedSamples / static_cast<std::int64_t>(m_nChannels);
        Mix(lFrom, std::min(std::max(lTo - lFrom, lMost), Frames() - lFrom));
    }
    for (std::size_t n = 0; n < m_nChannels; ++n)
        std::copy_n(m_Mix.m_Channels[n].begin() + (lFrom - m_lMixStart), lTo - lFrom,
                    audio.m_Channels[n].begin() + (lFrom - lStart));
    return audio;
}

void CTrackSound::Mix(std::int64_t lStart, std::int64_t lFrames) {
    m_Mix = {};
    m_Mix = SilenceOf(lFrames, m_nChannels, m_nSampleRate);
    m_lMixStart = lStart;
    for (CRegion const* pRegion : m_Regions) MixRegion(*pRegion);
    m_Notice(lFrames);
}

void CTrackSound::MixRegion(CRegion const& region) {
    std::int64_t const lMixStart = m_lStart + m_lMixStart;
    std::int64_t const lFrom = std::max(lMixStart, region.Start());
    std::int64_t const lTo = std::min(lMixStart + m_Mix.Frames(), region.End());
    if (lFrom >= lTo) return;
    CRegionReader reader(region, m_nSampleRate, lFrom - region.m_lFilePosition);
    for (std::int64_t lAt = lFrom; lAt < lTo; lAt += kBlock) {
        m_Notice(0);
        AddTo(m_Mix, lAt - lMixStart, reader.Read(std::min(kBlock, lTo - lAt)));
    }
}
