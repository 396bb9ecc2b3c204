#pragma once

#include <string>
#include <vector>

#include "colours/ComponentColour.h"

/// What differs between two schemes, one line for each component, in descending order of codes;
/// empty when nothing does. Channels up to 1/256 apart count as equal.
std::vector<std::string> DiffSchemes(CComponentsColors const& first,
                                     CComponentsColors const& second);

/// Whether two colours, plain or gradients, look alike.
bool LooksAlike(CComponentColour const& a, CComponentColour const& b);
