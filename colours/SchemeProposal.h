#pragma once

#include <optional>

#include "colours/ColourVision.h"
#include "colours/SchemeRules.h"

/// A colour to give a component, so that a rule is kept.
struct CProposal {
    CComponentCode code;
    Rgba rgba;           ///< Channels are whole 255ths; alpha is that of the colour so far.
    bool fPlain = true;  ///< Otherwise the component has a gradient, all of which it would replace.
    bool fAlone = false;  ///< It keeps this rule only at the price of another.
};

/// The colour nearest to what a rule's first component has, or failing that its second, that keeps
/// every rule of the component. Failing that, the nearest that keeps this rule and breaks none; and
/// failing that too, the nearest that keeps this one. Nearest in OKLab, where hue and saturation
/// count more than lightness, and on a grid that is refined around the best, so that one a little
/// nearer may be missed. Nothing when no colour does.
std::optional<CProposal> ProposeColour(CSchemeRule const& rule, CComponentsColors const& scheme);
