#pragma once

#include <string>
#include <vector>

#include "colours/ComponentColour.h"

/// \file
/// What makes a scheme usable: text that can be read, edges that can be seen, states that can be
/// told apart. The pairs stand in one table in SchemeRules.cpp; they hold for the default palettes
/// and judge any other scheme.

enum class RuleKind {
    readable,  ///< text on its background: a contrast ratio
    visible,   ///< an edge or an indicator on its background: a contrast ratio
    distinct,  ///< two states or neighbours: a distance, as PerceivedDistance measures it
};

/// One demand on two colours.
struct CSchemeRule {
    RuleKind kind;
    CComponentCode first;
    CComponentCode second;    ///< For contrast, what `first` is drawn on.
    CComponentCode backdrop;  ///< What shows through where `second` is translucent.
    double dMinimum;
};

enum class Verdict {
    kept,
    broken,
    given,   ///< Below the minimum, but both are as the default palettes prescribe them.
    absent,  ///< The scheme has not both colours.
};

struct CJudgement {
    CSchemeRule rule;
    double dMeasured;  ///< 0 for absent.
    Verdict verdict;
    bool fFaceMissing = false;  ///< The scheme lacks `second`; the text stands on the backdrop.
};

/// All rules.
std::vector<CSchemeRule> const& SchemeRules();

/// Judges a scheme by all rules. Of gradients, contrast takes the worst place and distance the best
/// one.
std::vector<CJudgement> JudgeScheme(CComponentsColors const& scheme);

/// One line on a judgement, as in "ccLabelText on ccWindowBackground: contrast 8.8, at least 4.5".
std::string Describe(CJudgement const& judgement);
