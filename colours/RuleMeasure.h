#pragma once

#include <optional>
#include <vector>

#include "colours/ColourVision.h"
#include "colours/SchemeRules.h"

/// The two colours of a rule in one scheme, and how far they keep it. Either may be tried in
/// another colour, without a change to the scheme.
class CRuleMeasure {
public:
    /// Nothing when the scheme has not both colours. Where a text's face is not there although
    /// the controls would draw the text, what is behind is measured instead.
    static std::optional<CRuleMeasure> Of(CSchemeRule const& rule, CComponentsColors const& scheme);

    /// A contrast ratio at the worst place of gradients, or a distance at the best one.
    double Measure() const;
    bool IsKept() const { return Measure() >= m_rule.dMinimum; }

    /// Whether the face is not there, so that the text stands on what is behind.
    bool IsFaceMissing() const { return m_fFaceMissing; }

    CSchemeRule const& Rule() const { return m_rule; }

    /// Tries one colour, opaque or not, for a component; nothing changes when the rule has none
    /// such.
    void Try(CComponentCode code, Rgba const& colour);

private:
    /// From one end to the other; one for a plain colour.
    using Samples = std::vector<Rgba>;

    static Samples SamplesOf(CComponentColour const& colour);
    double WorstContrast() const;
    double BestDistance() const;

    CSchemeRule m_rule;
    bool m_fFaceMissing = false;
    Samples m_first;
    Samples m_second;
    Rgba m_backdrop{};
};
