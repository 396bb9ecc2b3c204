#pragma once

#include <string>

#include "colours/ComponentColour.h"

/// How a scheme's channels are written.
enum class Channels {
    Exact,   ///< as "#rrggbb" where that is exact, otherwise as numbers
    Rounded  ///< as "#rrggbb" everywhere, to the nearest 255th
};

/// A scheme as JSON text, one colour after the other from the highest code down. Throws
/// CToolFailure when a channel is no number, which JSON cannot say.
std::string SchemeToJson(CComponentsColors const& scheme, Channels channels = Channels::Exact);

/// Lays a scheme from JSON text over `scheme`. Throws CToolFailure, with nothing changed, when the
/// text is not JSON or not a scheme.
void SchemeFromJson(std::string const& text, CComponentsColors& scheme);
