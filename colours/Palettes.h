#pragma once

#include <algorithm>
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

/// Whether a table is well-formed: every code once, one stop in a plain colour, 1 to 17 ascending
/// ones in a gradient.
constexpr bool IsPalette(std::span<const CPaletteEntry> palette) {
    constexpr std::size_t mostStops = 17;
    return std::ranges::all_of(palette, [palette](CPaletteEntry const& row) {
        const std::size_t most = row.kind == PaletteKind::plain ? 1 : mostStops;
        return std::ranges::count(palette, row.code, &CPaletteEntry::code) == 1 &&
               row.stops.size() >= 1 && row.stops.size() <= most &&
               std::ranges::adjacent_find(row.stops, std::ranges::greater_equal(),
                                          &CPaletteStop::dPosition) == row.stops.end();
    });
}
