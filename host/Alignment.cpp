#include "host/Alignment.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

namespace {

constexpr std::int64_t kMaxShiftSeconds = 10;
constexpr std::int64_t kFineSeconds = 30;
constexpr std::int64_t kMaxFineFrames = std::int64_t{1} << 22;

/// One pass of the search: envelope steps of `lHop` samples, smoothed over `lWindow` samples, at
/// shifts of up to `lReach` samples around the best one so far.
struct CSearchPass {
    std::int64_t lHop;
    std::int64_t lWindow;
    std::int64_t lReach;
};

constexpr std::int64_t kCoarseHop = 256;
constexpr std::int64_t kCoarseWindow = 4 * kCoarseHop;
constexpr CSearchPass kFinePasses[] = {{16, 1024, 512}, {1, 512, 32}};

using CEnvelope = std::vector<float>;

/// Adds the energy of samples to that of stretches of `nStep` samples; the first one is sample
/// number `nAt`. A stretch with a sample that is no number counts as silent.
void AddEnergy(std::vector<float> const& samples, std::size_t nAt, std::size_t nStep,
               std::vector<double>& energies) {
    for (std::size_t n = 0; n < samples.size();) {
        std::size_t const nStretch = (nAt + n) / nStep;
        std::size_t const nEnd = std::min(samples.size(), (nStretch + 1) * nStep - nAt);
        double dEnergy = 0.0;
        for (; n < nEnd; ++n)
            dEnergy += static_cast<double>(samples[n]) * static_cast<double>(samples[n]);
        if (std::isfinite(dEnergy)) energies[nStretch] += dEnergy;
    }
}

/// The energy of stretches of `lStep` samples from `lStart` to `lEnd`, all channels together.
std::vector<double> Energies(CSound& sound, std::int64_t lStart, std::int64_t lEnd,
                             std::int64_t lStep, CCheckpoint const& checkpoint) {
    std::vector<double> energies(static_cast<std::size_t>((lEnd - lStart + lStep - 1) / lStep));
    std::size_t nAt = 0;
    ForEachBlock(sound, lStart, lEnd, checkpoint, [&](CAudio const& block) {
        for (auto const& channel : block.m_Channels)
            AddEnergy(channel, nAt, static_cast<std::size_t>(lStep), energies);
        nAt += static_cast<std::size_t>(block.Frames());
    });
    return energies;
}

/// Root mean square over windows centred on each hop; both are given in steps of the energies.
CEnvelope MakeEnvelope(std::vector<double> const& energies, std::int64_t lHop,
                       std::int64_t lWindow) {
    std::vector<double> sums(energies.size() + 1, 0.0);
    std::partial_sum(energies.begin(), energies.end(), sums.begin() + 1);
    auto const lEnd = static_cast<std::int64_t>(energies.size());
    CEnvelope envelope;
    envelope.reserve(static_cast<std::size_t>((lEnd + lHop - 1) / lHop));
    for (std::int64_t lCentre = 0; lCentre < lEnd; lCentre += lHop) {
        auto const nFrom =
            static_cast<std::size_t>(std::max<std::int64_t>(0, lCentre - lWindow / 2));
        auto const nTo = static_cast<std::size_t>(std::min(lEnd, lCentre + (lWindow + 1) / 2));
        double const dEnergy = std::max(0.0, sums[nTo] - sums[nFrom]);
        envelope.push_back(static_cast<float>(std::sqrt(dEnergy / static_cast<double>(lWindow))));
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

bool Silent(std::vector<double> const& energies) {
    return std::all_of(energies.begin(), energies.end(), [](double d) { return d == 0.0; });
}

/// Where the loudest stretch of so many steps begins, the first one of those that are equally loud.
std::int64_t LoudestStretch(std::vector<double> const& energies, std::size_t nSteps) {
    constexpr double kLouder = 1.0 + 1e-9;
    double dSum = 0.0;
    double dBest = 0.0;
    std::size_t nBest = 0;
    for (std::size_t n = 0; n < energies.size(); ++n) {
        dSum += energies[n];
        if (n >= nSteps) dSum -= energies[n - nSteps];
        if (n + 1 < nSteps || dSum <= dBest * kLouder) continue;
        dBest = dSum;
        nBest = n + 1 - nSteps;
    }
    return static_cast<std::int64_t>(nBest);
}

std::int64_t FindCoarseLag(std::vector<double> const& guide, std::vector<double> const& dub,
                           std::int64_t lReach, CCheckpoint const& checkpoint) {
    CEnvelope guideEnvelope = MakeEnvelope(guide, 1, kCoarseWindow / kCoarseHop);
    CEnvelope dubEnvelope = MakeEnvelope(dub, 1, kCoarseWindow / kCoarseHop);
    RemoveMean(guideEnvelope);
    RemoveMean(dubEnvelope);
    return kCoarseHop * BestLag(guideEnvelope, dubEnvelope, lReach / kCoarseHop, checkpoint);
}

std::int64_t FindFineLag(CSound& guide, CSound& dub, std::int64_t lStart, std::int64_t lLength,
                         std::int64_t lLag, CCheckpoint const& checkpoint) {
    std::vector<double> const guideEnergies =
        Energies(guide, lStart, lStart + lLength, 1, checkpoint);
    for (CSearchPass const& pass : kFinePasses) {
        CEnvelope fineGuide = MakeEnvelope(guideEnergies, pass.lHop, pass.lWindow);
        CEnvelope fineDub =
            MakeEnvelope(Energies(dub, lStart + lLag, lStart + lLag + lLength, 1, checkpoint),
                         pass.lHop, pass.lWindow);
        RemoveMean(fineGuide);
        RemoveMean(fineDub);
        lLag += pass.lHop * BestLag(fineGuide, fineDub, pass.lReach / pass.lHop, checkpoint);
    }
    return lLag;
}

}  // namespace

std::int64_t FindDubLag(CSound& guide, CSound& dub, CCheckpoint const& checkpoint) {
    std::vector<double> const guideEnergies =
        Energies(guide, 0, guide.Frames(), kCoarseHop, checkpoint);
    std::vector<double> const dubEnergies = Energies(dub, 0, dub.Frames(), kCoarseHop, checkpoint);
    if (Silent(guideEnergies) || Silent(dubEnergies)) return 0;
    auto const lRate = static_cast<std::int64_t>(std::max(1, guide.SampleRate()));
    std::int64_t const lReach =
        std::min(std::max(guide.Frames(), dub.Frames()), kMaxShiftSeconds * lRate);
    std::int64_t const lLag = FindCoarseLag(guideEnergies, dubEnergies, lReach, checkpoint);
    std::int64_t const lLength = std::min({guide.Frames(), kFineSeconds * lRate, kMaxFineFrames});
    std::int64_t const lStart =
        kCoarseHop * LoudestStretch(guideEnergies, static_cast<std::size_t>(std::max<std::int64_t>(
                                                       1, lLength / kCoarseHop)));
    return FindFineLag(guide, dub, lStart, std::min(lLength, guide.Frames() - lStart), lLag,
                       checkpoint);
}

void AlignDub(CSound& guide, CSound& dub, CSoundSink const& sink, CCheckpoint const& checkpoint) {
    std::int64_t const lLag = FindDubLag(guide, dub, checkpoint);
    ForEachBlock(dub, lLag, lLag + guide.Frames(), checkpoint, sink);
}
