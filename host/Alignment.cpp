#include "host/Alignment.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <numeric>
#include <vector>

namespace {

constexpr std::int64_t kMaxShiftSeconds = 10;
constexpr std::int64_t kFineSeconds = 30;

/// One pass of the search: envelope steps of `lHop` samples, smoothed over `lWindow` samples, at
/// shifts of up to `lReach` samples around the best one so far.
struct CSearchPass {
    std::int64_t lHop;
    std::int64_t lWindow;
    std::int64_t lReach;
};

using CEnvelope = std::vector<float>;

/// Root mean square over windows centred on each step, all channels together, for the samples
/// [lStart, lEnd) of the sound.
CEnvelope MakeEnvelope(CAudio const& audio, std::int64_t lStart, std::int64_t lEnd,
                       CSearchPass const& pass) {
    std::int64_t const lSteps =
        std::max<std::int64_t>(0, (lEnd - lStart + pass.lHop - 1) / pass.lHop);
    std::vector<double> energy(static_cast<std::size_t>(lEnd - lStart) + 1, 0.0);
    for (auto const& channel : audio.m_Channels)
        for (std::int64_t l = lStart; l < lEnd; ++l) {
            double const dSample = channel[static_cast<std::size_t>(l)];
            energy[static_cast<std::size_t>(l - lStart) + 1] += dSample * dSample;
        }
    std::partial_sum(energy.begin(), energy.end(), energy.begin());

    CEnvelope envelope(static_cast<std::size_t>(lSteps));
    for (std::int64_t lStep = 0; lStep < lSteps; ++lStep) {
        std::int64_t const lCentre = lStep * pass.lHop;
        auto const nFrom =
            static_cast<std::size_t>(std::max<std::int64_t>(0, lCentre - pass.lWindow / 2));
        auto const nTo =
            static_cast<std::size_t>(std::min(lEnd - lStart, lCentre + (pass.lWindow + 1) / 2));
        double const dEnergy = std::max(0.0, energy[nTo] - energy[nFrom]);
        envelope[static_cast<std::size_t>(lStep)] =
            static_cast<float>(std::sqrt(dEnergy / static_cast<double>(pass.lWindow)));
    }
    return envelope;
}

void RemoveMean(CEnvelope& envelope) {
    if (envelope.empty()) return;
    double const dMean = std::accumulate(envelope.begin(), envelope.end(), 0.0) /
                         static_cast<double>(envelope.size());
    for (float& value : envelope) value -= static_cast<float>(dMean);
}

double Correlate(CEnvelope const& guide, CEnvelope const& dub, std::int64_t lLag) {
    std::int64_t const lFrom = std::max<std::int64_t>(0, -lLag);
    std::int64_t const lTo = std::min<std::int64_t>(static_cast<std::int64_t>(guide.size()),
                                                    static_cast<std::int64_t>(dub.size()) - lLag);
    double dSum = 0.0;
    for (std::int64_t l = lFrom; l < lTo; ++l)
        dSum += static_cast<double>(guide[static_cast<std::size_t>(l)]) *
                static_cast<double>(dub[static_cast<std::size_t>(l + lLag)]);
    return dSum;
}

/// The best lag in steps, from the smallest shift outwards so that a tie keeps the smaller one.
std::int64_t BestLag(CEnvelope const& guide, CEnvelope const& dub, std::int64_t lReach,
                     CCheckpoint const& checkpoint) {
    std::int64_t lBest = 0;
    double dBest = -std::numeric_limits<double>::infinity();
    for (std::int64_t lShift = 0; lShift <= lReach; ++lShift) {
        if (checkpoint) checkpoint();
        for (std::int64_t lLag : {lShift, -lShift}) {
            double const dScore = Correlate(guide, dub, lLag);
            if (!(dScore > dBest)) continue;
            dBest = dScore;
            lBest = lLag;
        }
    }
    return lBest;
}

bool Silent(CAudio const& audio) {
    for (auto const& channel : audio.m_Channels)
        for (float sample : channel)
            if (sample != 0.0f) return false;
    return true;
}

/// Where the fine passes listen: the loudest stretch of the guide, at most kFineSeconds long.
std::int64_t LoudestStretch(CAudio const& guide, std::int64_t lLength) {
    std::int64_t const lBlock = std::max<std::int64_t>(1, guide.m_nSampleRate);
    CEnvelope const envelope = MakeEnvelope(guide, 0, guide.Frames(), {lBlock, lBlock, 0});
    auto const nBlocks = static_cast<std::size_t>(std::max<std::int64_t>(1, lLength / lBlock));
    double dBest = -1.0;
    std::size_t nBest = 0;
    for (std::size_t n = 0; n < envelope.size(); ++n) {
        double dSum = 0.0;
        for (std::size_t k = n; k < std::min(envelope.size(), n + nBlocks); ++k)
            dSum += static_cast<double>(envelope[k]) * static_cast<double>(envelope[k]);
        if (!(dSum > dBest)) continue;
        dBest = dSum;
        nBest = n;
    }
    std::int64_t const lStart = static_cast<std::int64_t>(nBest) * lBlock;
    return std::clamp<std::int64_t>(lStart, 0, std::max<std::int64_t>(0, guide.Frames() - lLength));
}

/// Copies samples [lStart, lStart + lFrames); outside the sound there is silence.
CAudio Slice(CAudio const& audio, std::int64_t lStart, std::int64_t lFrames) {
    CAudio slice{audio.m_nSampleRate, {}};
    std::int64_t const lFrom = std::clamp<std::int64_t>(lStart, 0, audio.Frames());
    std::int64_t const lTo = std::clamp<std::int64_t>(lStart + lFrames, lFrom, audio.Frames());
    for (auto const& channel : audio.m_Channels) {
        slice.m_Channels.emplace_back(static_cast<std::size_t>(lFrames), 0.0f);
        if (lFrom == lTo) continue;
        std::copy(channel.begin() + lFrom, channel.begin() + lTo,
                  slice.m_Channels.back().begin() + (lFrom - lStart));
    }
    return slice;
}

}  // namespace

std::int64_t FindDubLag(CAudio const& guide, CAudio const& dub, CCheckpoint const& checkpoint) {
    if (Silent(guide) || Silent(dub)) return 0;
    std::int64_t const lLonger = std::max(guide.Frames(), dub.Frames());
    CSearchPass const coarse{
        256, 1024, std::min(lLonger, kMaxShiftSeconds * std::max(1, guide.m_nSampleRate))};
    CEnvelope guideEnvelope = MakeEnvelope(guide, 0, guide.Frames(), coarse);
    CEnvelope dubEnvelope = MakeEnvelope(dub, 0, dub.Frames(), coarse);
    RemoveMean(guideEnvelope);
    RemoveMean(dubEnvelope);
    std::int64_t lLag =
        coarse.lHop * BestLag(guideEnvelope, dubEnvelope, coarse.lReach / coarse.lHop, checkpoint);

    std::int64_t const lLength = std::min(
        guide.Frames(), kFineSeconds * static_cast<std::int64_t>(std::max(1, guide.m_nSampleRate)));
    std::int64_t const lStart = LoudestStretch(guide, lLength);
    CAudio const guidePart = Slice(guide, lStart, lLength);
    for (CSearchPass const& pass : {CSearchPass{16, 1024, 512}, CSearchPass{1, 512, 32}}) {
        CAudio const dubPart = Slice(dub, lStart + lLag, lLength);
        CEnvelope fineGuide = MakeEnvelope(guidePart, 0, lLength, pass);
        CEnvelope fineDub = MakeEnvelope(dubPart, 0, lLength, pass);
        RemoveMean(fineGuide);
        RemoveMean(fineDub);
        lLag += pass.lHop * BestLag(fineGuide, fineDub, pass.lReach / pass.lHop, checkpoint);
    }
    return lLag;
}

CAudio AlignDub(CAudio const& guide, CAudio const& dub, CCheckpoint const& checkpoint) {
    return Slice(dub, FindDubLag(guide, dub, checkpoint), guide.Frames());
}
