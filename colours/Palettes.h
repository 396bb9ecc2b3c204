#pragma once

#include <algorithm>
#include <array>
#include <functional>
#include <initializer_list>
#include <span>

#include "colours/ComponentColour.h"

/// \file
/// The two default palettes as tables. DefaultColours.h fills a scheme from them.

enum class PaletteKind { plain, gradient };

/// One colour, and where it stands in a gradient.
struct CPaletteStop {
    double dPosition;
    double dRed;
    double dGreen;
    double dBlue;
    double dAlpha;
};

/// A row of a palette.
struct CPaletteEntry {
    CComponentCode code;
    ColourClass nClass;
    const char* szName;
    PaletteKind kind;
    std::initializer_list<CPaletteStop> stops;  ///< One, at 0, for a plain colour.
};

/// Dark greys with coloured accents, for long work: what the system starts with.
std::span<const CPaletteEntry> DesignerPalette();

/// Light greys.
std::span<const CPaletteEntry> EngineerPalette();

/// Whether a row has one stop for a plain colour, 1 to 17 in ascending position for a gradient.
constexpr bool HasRightStops(CPaletteEntry const& row) {
    constexpr std::size_t mostStops = 17;
    const std::size_t most = row.kind == PaletteKind::plain ? 1 : mostStops;
    return row.stops.size() >= 1 && row.stops.size() <= most &&
           std::ranges::adjacent_find(row.stops, std::ranges::greater_equal(),
                                      &CPaletteStop::dPosition) == row.stops.end();
}

/// Whether a table is well-formed: right stops everywhere, and no code twice.
template <std::size_t Rows>
constexpr bool IsPalette(CPaletteEntry const (&palette)[Rows]) {
    std::array<long long, Rows> codes{};
    std::ranges::transform(palette, codes.begin(),
                           [](CPaletteEntry const& row) { return row.code.Packed(); });
    std::ranges::sort(codes);
    return std::ranges::adjacent_find(codes) == codes.end() &&
           std::ranges::all_of(palette, HasRightStops);
}
