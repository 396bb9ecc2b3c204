#include "host/Doubling.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

namespace {

constexpr std::int64_t kCheckpointFrames = 1 << 16;

float SampleAt(std::vector<float> const& channel, std::int64_t lIndex) {
    if (lIndex < 0 || lIndex >= static_cast<std::int64_t>(channel.size())) return 0.0f;
    return channel[static_cast<std::size_t>(lIndex)];
}

/// The channel between two samples, by a cubic through four neighbours.
double Interpolate(std::vector<float> const& channel, double dPosition) {
    double const dFloor = std::floor(dPosition);
    auto const lIndex = static_cast<std::int64_t>(dFloor);
    double const t = dPosition - dFloor;
    double const a = SampleAt(channel, lIndex - 1);
    double const b = SampleAt(channel, lIndex);
    double const c = SampleAt(channel, lIndex + 1);
    double const d = SampleAt(channel, lIndex + 2);
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

CAudio MakeDouble(CAudio const& input, CDoublingSettings const& settings,
                  CCheckpoint const& checkpoint) {
    CAudio output{input.m_nSampleRate, {}};
    std::int64_t const lInput = input.Frames();
    CSweep const sweep(settings, std::max(1, input.m_nSampleRate));
    std::int64_t const lFrames = lInput == 0 ? 0 : lInput + sweep.LongestDelay();
    output.m_Channels.assign(input.m_Channels.size(),
                             std::vector<float>(static_cast<std::size_t>(lFrames), 0.0f));
    for (std::int64_t lFrame = 0; lFrame < lFrames; ++lFrame) {
        if (checkpoint && lFrame % kCheckpointFrames == 0) checkpoint();
        for (int nReader : {0, 1}) {
            double const dPhase = sweep.Phase(lFrame, nReader);
            double const dShare = CSweep::Share(dPhase);
            double const dPosition = static_cast<double>(lFrame) - sweep.Delay(dPhase);
            for (std::size_t n = 0; n < input.m_Channels.size(); ++n)
                output.m_Channels[n][static_cast<std::size_t>(lFrame)] +=
                    static_cast<float>(dShare * Interpolate(input.m_Channels[n], dPosition));
        }
    }
    return output;
}
