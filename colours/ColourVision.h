#pragma once

#include <array>

/// \file
/// How colours look to people: contrast, and how far apart two colours are, also to eyes that lack
/// one kind of cone. Channels are sRGB, 0 to 1.

/// Red, green, blue, alpha.
using Rgba = std::array<double, 4>;

/// `top` painted over an opaque `bottom`. Channels are cut to 0 to 1 first, and NaN counts as 0.
Rgba PaintOver(Rgba const& top, Rgba const& bottom);

/// Relative luminance, 0 black to 1 white, of an opaque colour.
double Luminance(Rgba const& colour);

/// The contrast of two luminances by the Web Content Accessibility Guidelines, 1 to 21.
double ContrastRatio(double luminance1, double luminance2);

/// The distance of two opaque colours in OKLab times 100, the smallest of four: as seen by full
/// colour vision and with protanopia, deuteranopia and tritanopia. 2 is just noticeable side by
/// side; black and white are 100 apart.
double PerceivedDistance(Rgba const& colour1, Rgba const& colour2);

/// An opaque colour in OKLab, as full colour vision sees it: lightness from 0 to 1, and two axes.
std::array<double, 3> OKLab(Rgba const& colour);
