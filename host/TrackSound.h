#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "host/Session.h"
#include "host/Sound.h"

/// The sound of a track in a timeline range: all regions that reach into it, mixed, silence between
/// them. As many channels as the region with the most; one-channel regions are heard on all of
/// them. The track stays as it is meanwhile.
///
/// A stretch of about eight megabytes is mixed at a time, one region after the other, so that at
/// most one file is open.
class CTrackSound : public CSound {
public:
    /// Is told how many samples have been read.
    using Notice = std::function<void(std::int64_t lSamples)>;

    /// Throws `CHostFunctionError` when no region reaches into the range.
    CTrackSound(CTrack const& track, std::int64_t lStart, std::int64_t lEnd, int nSampleRate,
                Notice notice);

    int SampleRate() const override { return m_nSampleRate; }
    std::size_t Channels() const override { return m_nChannels; }
    std::int64_t Frames() const override { return m_lEnd - m_lStart; }
    CAudio Read(std::int64_t lStart, std::int64_t lFrames) override;

private:
    void Mix(std::int64_t lStart, std::int64_t lFrames);
    void MixRegion(CRegion const& region);

    std::int64_t m_lStart;
    std::int64_t m_lEnd;
    int m_nSampleRate;
    Notice m_Notice;
    std::vector<CRegion const*> m_Regions;
    std::size_t m_nChannels = 1;
    CAudio m_Mix;                  ///< a stretch of the sound
    std::int64_t m_lMixStart = 0;  ///< where it begins in it
};
