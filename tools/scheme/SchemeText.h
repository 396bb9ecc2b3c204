#pragma once

#include <string>

#include "colours/ColourVision.h"
#include "colours/ComponentColour.h"

/// How `tavarin-scheme` writes things.

/// A number with at most three decimals, in every locale.
std::string NumberText(double value);

/// "#rrggbb", without alpha; channels are cut to 0 to 1.
std::string HexText(Rgba const& rgba);

/// "#rrggbb", or "#rrggbbaa" where it is not opaque: as a scheme's JSON has it.
std::string ExactHexText(Rgba const& rgba);

/// "ccButtonFace", or "(3, 20)" for a code that has no name.
std::string CodeText(CComponentCode code);

/// "#36393f alpha 0.5", or for a gradient its stops: "0 #727272, 1 #282828".
std::string ColourText(CComponentColour const& colour);

/// Text for XML: markup is escaped, and what XML does not allow becomes a question mark.
std::string XmlText(std::string const& text);
