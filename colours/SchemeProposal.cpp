#include "colours/SchemeProposal.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "colours/ColourRamp.h"
#include "colours/RuleMeasure.h"

namespace {

constexpr int kMost = 255;
// Of the grid on which candidates lie, ever finer. The first divides 255: white and black are
// tried.
constexpr int kSteps[] = {17, 5, 1};
// A change of hue or saturation is as bad as one of lightness that is so many times as great.
constexpr double kHueWeight = 8;

struct CCandidate {
    std::array<int, 3> channels;
    double dDistance;
};

/// The rules that a trial is held to.
enum class Demand { EveryRule, ThisAndThoseKept, ThisOne };

// What a colour is tried for.
class CTrial {
public:
    CTrial(CSchemeRule const& rule, CComponentCode code, CComponentsColors const& scheme,
           Demand demand)
        : m_code(code) {
        if (auto measure = CRuleMeasure::Of(rule, scheme)) m_measures.push_back(*measure);
        if (demand == Demand::ThisOne) return;
        for (CSchemeRule const& other : SchemeRules()) {
            const bool fOfCode = other.first == code || other.second == code;
            const auto measure = fOfCode ? CRuleMeasure::Of(other, scheme) : std::nullopt;
            if (measure && (demand == Demand::EveryRule || measure->IsKept())) {
                m_measures.push_back(*measure);
            }
        }
    }

    bool IsKeptWith(Rgba const& colour) {
        return std::ranges::all_of(m_measures, [&](CRuleMeasure& measure) {
            measure.Try(m_code, colour);
            return measure.IsKept();
        });
    }

private:
    CComponentCode m_code;
    std::vector<CRuleMeasure> m_measures;  // the rule that is broken first
};

class CSearch {
public:
    CSearch(Rgba const& origin, CTrial& trial)
        : m_origin(OKLab(PaintOver({origin[0], origin[1], origin[2], 1.0}, {}))),
          m_dAlpha(PaintOver({origin[3], 0.0, 0.0, 1.0}, {})[0]),
          m_trial(trial) {}

    std::optional<Rgba> Nearest() {
        Channels from{0, 0, 0};
        Channels to{kMost, kMost, kMost};
        std::optional<Channels> found;
        for (const int nStep : kSteps) {
            found = FirstKept(from, to, nStep);
            if (!found) return std::nullopt;
            for (std::size_t channel = 0; channel < from.size(); ++channel) {
                from[channel] = std::max(0, (*found)[channel] - nStep);
                to[channel] = std::min(kMost, (*found)[channel] + nStep);
            }
        }
        return ColourOf(*found);
    }

private:
    using Channels = std::array<int, 3>;

    Rgba ColourOf(Channels const& channels) const {
        const auto part = [&](std::size_t channel) {
            return static_cast<double>(channels[channel]) / kMost;
        };
        return {part(0), part(1), part(2), m_dAlpha};
    }

    double DistanceOf(Channels const& channels) const {
        const auto seen = OKLab(ColourOf(channels));
        return std::hypot(seen[0] - m_origin[0], kHueWeight * (seen[1] - m_origin[1]),
                          kHueWeight * (seen[2] - m_origin[2]));
    }

    std::optional<Channels> FirstKept(Channels const& from, Channels const& to, int nStep) {
        std::vector<CCandidate> candidates;
        for (int r = from[0]; r <= to[0]; r += nStep) {
            for (int g = from[1]; g <= to[1]; g += nStep) {
                for (int b = from[2]; b <= to[2]; b += nStep) {
                    candidates.push_back({{r, g, b}, DistanceOf({r, g, b})});
                }
            }
        }
        std::ranges::stable_sort(candidates, {}, &CCandidate::dDistance);
        const auto found = std::ranges::find_if(candidates, [this](CCandidate const& candidate) {
            return m_trial.IsKeptWith(ColourOf(candidate.channels));
        });
        if (found == candidates.end()) return std::nullopt;
        return found->channels;
    }

    std::array<double, 3> m_origin;
    double m_dAlpha;
    CTrial& m_trial;
};

Rgba MiddleOf(CComponentColour const& colour) {
    return CColourRamp(colour).At(0.5);
}

}  // namespace

std::optional<CProposal> ProposeColour(CSchemeRule const& rule, CComponentsColors const& scheme) {
    for (const Demand demand : {Demand::EveryRule, Demand::ThisAndThoseKept, Demand::ThisOne}) {
        for (const CComponentCode code : {rule.first, rule.second}) {
            CComponentColour const* colour = scheme.Find(code);
            if (colour == nullptr) continue;
            CTrial trial(rule, code, scheme, demand);
            const auto nearest = CSearch(MiddleOf(*colour), trial).Nearest();
            if (!nearest) continue;
            return CProposal{code, *nearest, !scheme.IsGradient(code), demand == Demand::ThisOne};
        }
    }
    return std::nullopt;
}
