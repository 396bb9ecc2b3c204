#include "host/PeakCache.h"

#include <algorithm>
#include <cmath>

#include "host/AudioFile.h"
#include "host/Resampling.h"

namespace {

constexpr std::int64_t kMaxSamplesPerSlice = 4096;

CPeak PeakOf(CAudio const& audio) {
    CPeak peak;
    for (auto const& channel : audio.m_Channels)
        for (float sample : channel) {
            if (!std::isfinite(sample)) continue;
            peak.m_Low = std::min(peak.m_Low, sample);
            peak.m_High = std::max(peak.m_High, sample);
        }
    return peak;
}

// Of the file as it is: a waveform looks the same at any rate.
std::vector<CPeak> ReadPeaks(CAudioRange const& range) {
    CAudioFile file(range.m_strFile);
    std::int64_t const lLength = range.m_lEnd - range.m_lStart;
    auto const nSlices = static_cast<std::int64_t>(
        std::min<std::int64_t>(static_cast<std::int64_t>(CPeakCache::kSlices), lLength));
    std::vector<CPeak> peaks;
    for (std::int64_t n = 0; n < nSlices; ++n) {
        auto const place = [&](std::int64_t k) {
            return range.m_lStart + lLength / nSlices * k + lLength % nSlices * k / nSlices;
        };
        std::int64_t const lFrames = std::min(kMaxSamplesPerSlice, place(n + 1) - place(n));
        peaks.push_back(PeakOf(file.Read(place(n), lFrames, range.m_Channels)));
    }
    return peaks;
}

}  // namespace

std::vector<CPeak> const& CPeakCache::Peaks(CRegion const& region) {
    auto const [place, fNew] = m_Peaks.try_emplace(region.m_idRegion);
    if (!fNew) return place->second;
    try {
        place->second = ReadPeaks(FileRange(region, m_nSessionRate));
    } catch (CAudioFileError const&) {
        place->second.clear();
    }
    return place->second;
}

void CPeakCache::Keep(CSession const& session) {
    m_nSessionRate = session.SampleRate();
    std::erase_if(m_Peaks, [&](auto const& entry) {
        return std::none_of(kDocumentKinds.begin(), kDocumentKinds.end(), [&](DocumentKind kind) {
            return session.Document(kind).FindRegion(entry.first) != nullptr;
        });
    });
}
