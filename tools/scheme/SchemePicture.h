#pragma once

#include <string>

#include "colours/ComponentColour.h"

/// A picture of a whole scheme as SVG: for every colour a swatch (gradients from top to bottom, as
/// they are drawn), its name and its code, grouped by class, on the scheme's own window background.
/// A chequered ground shows through translucent colours.
std::string DrawScheme(CComponentsColors const& scheme, std::string const& strTitle);
