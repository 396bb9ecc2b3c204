#pragma once

#include <vector>

#include "colours/ColourVision.h"
#include "colours/Palettes.h"

/// The colours of a component from one end of what is painted to the other, whether it has a plain
/// colour or a gradient.
class CColourRamp {
public:
    struct Stop {
        double dPosition;
        Rgba rgba;
    };

    explicit CColourRamp(CComponentColour const& colour);
    explicit CColourRamp(CPaletteEntry const& row);

    /// In ascending position; empty for a gradient without stops.
    std::vector<Stop> const& Stops() const { return m_stops; }

    /// The colour at a place from 0 to 1. Clear black without stops.
    Rgba At(double place) const;

    /// Whether both have the same stops, up to what a plain colour's comparison lets pass.
    bool IsLike(CColourRamp const& other) const;

private:
    std::vector<Stop> m_stops;
};
