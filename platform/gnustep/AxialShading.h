#pragma once

#import <AppKit/AppKit.h>

#include <vector>

#include "platform/gnustep/GradientStops.h"

/// A shading with its function evaluated. Internal to the platform folder.
struct AxialShading {
    NSPoint start;
    NSPoint end;
    bool extendStart;
    bool extendEnd;
    std::vector<GradientStop>
        stops;  ///< Evenly spaced, close enough to have straight lines between.
};

AxialShading AxialShadingOf(CGShadingRef shading);
