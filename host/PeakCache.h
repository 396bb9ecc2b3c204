#pragma once

#include <cstddef>
#include <map>
#include <utility>
#include <vector>

#include "host/Session.h"

/// The lowest and highest sample of one slice of a region, over all its channels.
struct CPeak {
    float m_Low = 0.0f;
    float m_High = 0.0f;
};

/// Waveforms of regions, each read from its file at most once. Used by one thread.
class CPeakCache {
public:
    /// Slices of every waveform.
    static constexpr std::size_t kSlices = 1024;

    /// The region's waveform from start to end; empty when its file cannot be read. Of a slice of
    /// more than 4096 samples only that many are looked at, so that long files stay cheap.
    std::vector<CPeak> const& Peaks(CRegion const& region);

    /// Forgets the regions that the session no longer has. What is asked for afterwards belongs to
    /// this session.
    void Keep(CSession const& session);

private:
    int m_nSessionRate = CSession().SampleRate();
    std::map<CSessionId, std::vector<CPeak>> m_Peaks;
};
