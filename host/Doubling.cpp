#include "host/Doubling.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

namespace {

constexpr std::int64_t kBlock = 1 << 16;
// The neighbours that a value between two samples is made from, in front of it and behind.
constexpr std::int64_t kBefore = 1;
constexpr std::int64_t kBehind = 2;

/// A channel between two samples, by a cubic through four neighbours. The position is counted from
/// the start of the stretch, which has them all.
double Interpolate(std::vector<float> const& stretch, double dPosition) {
    double const dFloor = std::floor(dPosition);
    float const* const pAt = stretch.data() + static_cast<std::ptrdiff_t>(dFloor);
    double const t = dPosition - dFloor;
    double const a = pAt[-kBefore];
    double const b = pAt[0];
    double const c = pAt[1];
    double const d = pAt[kBehind];
    double const dSlopeB = (c - a) / 2.0;
    double const dSlopeC = (d - b) / 2.0;
    double const dCurve = dSlopeB + dSlopeC - 2.0 * (c - b);
    return b + t * (dSlopeB + t * ((c - b) - dSlopeB - dCurve + t * dCurve));
}

/// The delay line's two readers: where each is in its sweep (0 to 1) at a sample.
class CSweep {
public:
    CSweep(CDoublingSettings const& settings, int nSampleRate)
        : m_dDelay(settings.m_dDelaySeconds * nSampleRate),
          m_dWidth(settings.m_dSweepSeconds * nSampleRate),
          m_dStep((std::exp2(settings.m_dDetuneCents / 1200.0) - 1.0) / m_dWidth) {}

    double Phase(std::int64_t lFrame, int nReader) const {
        double const dPhase = m_dStep * static_cast<double>(lFrame) + 0.5 * nReader;
        return dPhase - std::floor(dPhase);
    }

    /// How far behind the input a reader is, in samples.
    double Delay(double dPhase) const { return m_dDelay + m_dWidth * (1.0 - dPhase); }

    /// A reader's share of the output; the two shares add up to 1 and are 0 where a sweep jumps.
    static double Share(double dPhase) {
        double const dSine = std::sin(std::numbers::pi * dPhase);
        return dSine * dSine;
    }

    std::int64_t LongestDelay() const {
        return static_cast<std::int64_t>(std::ceil(m_dDelay + m_dWidth));
    }

private:
    double m_dDelay;
    double m_dWidth;
    double m_dStep;
};

}  // namespace

void MakeDouble(CSound& input, CDoublingSettings const& settings, CSoundSink const& sink,
                CCheckpoint const& checkpoint) {
    CSweep const sweep(settings, std::max(1, input.SampleRate()));
    std::int64_t const lFrames = input.Frames() == 0 ? 0 : input.Frames() + sweep.LongestDelay();
    std::int64_t const lReach = sweep.LongestDelay() + kBefore + 1;
    for (std::int64_t lStart = 0; lStart < lFrames; lStart += kBlock) {
        if (checkpoint) checkpoint();
        std::int64_t const lCount = std::min(kBlock, lFrames - lStart);
        CAudio const stretch = input.Read(lStart - lReach, lReach + lCount + kBehind);
        CAudio output{input.SampleRate(), {}};
        output.m_Channels.assign(input.Channels(),
                                 std::vector<float>(static_cast<std::size_t>(lCount), 0.0f));
        for (std::int64_t l = 0; l < lCount; ++l)
            for (int nReader : {0, 1}) {
                double const dPhase = sweep.Phase(lStart + l, nReader);
                double const dShare = CSweep::Share(dPhase);
                double const dPosition = static_cast<double>(lReach + l) - sweep.Delay(dPhase);
                for (std::size_t n = 0; n < output.m_Channels.size(); ++n)
                    output.m_Channels[n][static_cast<std::size_t>(l)] +=
                        static_cast<float>(dShare * Interpolate(stretch.m_Channels[n], dPosition));
            }
        sink(output);
    }
}
