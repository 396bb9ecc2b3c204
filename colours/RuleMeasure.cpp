#include "colours/RuleMeasure.h"

#include <algorithm>
#include <limits>

#include "colours/ColourRamp.h"
#include "colours/ComponentCodes.h"

namespace {

constexpr int kSamples = 33;

// A pressed button whose face a scheme lacks is its title alone. One without any buttons has none.
bool IsDrawnWithoutFace(CSchemeRule const& rule, CComponentsColors const& scheme) {
    return rule.first == ccControlText && rule.second == ccButtonFaceActive &&
           scheme.Find(ccButtonFace) != nullptr;
}

}  // namespace

std::optional<CRuleMeasure> CRuleMeasure::Of(CSchemeRule const& rule,
                                             CComponentsColors const& scheme) {
    CComponentColour const* first = scheme.Find(rule.first);
    CComponentColour const* second = scheme.Find(rule.second);
    CComponentColour const* behind = scheme.Find(rule.backdrop);
    CRuleMeasure measure;
    measure.m_rule = rule;
    measure.m_fFaceMissing = second == nullptr && IsDrawnWithoutFace(rule, scheme);
    if (measure.m_fFaceMissing) second = behind;
    if (first == nullptr || second == nullptr) return std::nullopt;
    measure.m_first = SamplesOf(*first);
    measure.m_second = SamplesOf(*second);
    if (behind != nullptr) measure.m_backdrop = SamplesOf(*behind).front();
    return measure;
}

double CRuleMeasure::Measure() const {
    return m_rule.kind == RuleKind::distinct ? BestDistance() : WorstContrast();
}

void CRuleMeasure::Try(CComponentCode code, Rgba const& colour) {
    if (code == m_rule.first) m_first.assign(1, colour);
    if (code == (m_fFaceMissing ? m_rule.backdrop : m_rule.second)) m_second.assign(1, colour);
    if (code == m_rule.backdrop) m_backdrop = colour;
}

CRuleMeasure::Samples CRuleMeasure::SamplesOf(CComponentColour const& colour) {
    const CColourRamp ramp(colour);
    if (ramp.Stops().size() < 2) return {ramp.At(0.0)};
    Samples samples;
    for (int nSample = 0; nSample < kSamples; ++nSample) {
        samples.push_back(ramp.At(static_cast<double>(nSample) / (kSamples - 1)));
    }
    return samples;
}

double CRuleMeasure::WorstContrast() const {
    double worst = std::numeric_limits<double>::infinity();
    for (Rgba const& translucent : m_second) {
        const Rgba ground = PaintOver(translucent, m_backdrop);
        const double luminance = Luminance(ground);
        for (Rgba const& colour : m_first) {
            worst = std::min(worst, ContrastRatio(Luminance(PaintOver(colour, ground)), luminance));
        }
    }
    return worst;
}

double CRuleMeasure::BestDistance() const {
    const auto at = [](Samples const& samples, std::size_t index) {
        return samples.size() == 1 ? samples.front() : samples[index];
    };
    double best = 0.0;
    for (std::size_t index = 0; index < std::max(m_first.size(), m_second.size()); ++index) {
        best = std::max(best, PerceivedDistance(PaintOver(at(m_first, index), m_backdrop),
                                                PaintOver(at(m_second, index), m_backdrop)));
    }
    return best;
}
