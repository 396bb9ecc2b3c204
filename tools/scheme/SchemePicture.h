#pragma once

#include <string>

#include "colours/ComponentColour.h"

/// A picture of a whole scheme as SVG: for every colour a swatch (gradients from top to bottom, as
/// they are drawn), its name, its code and its value, grouped by class, on the scheme's own window
/// background. A chequered ground shows through translucent colours. With a base, what looks
/// otherwise there is marked, and shown as it was beside what it is.
std::string DrawScheme(CComponentsColors const& scheme, std::string const& strTitle,
                       CComponentsColors const* pBase = nullptr);
