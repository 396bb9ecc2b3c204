#pragma once

#include <CoreGraphics/CoreGraphics.h>

#include <array>
#include <span>

/// One colour of a gradient and where it stands. Internal to the platform folder: drawing code
/// reads gradients through this, which the public calls offer no way to do.
struct GradientStop {
    CGFloat location;
    std::array<CGFloat, 4> rgba;
};

/// The stops in the order they were given, valid as long as the gradient; none for null.
std::span<const GradientStop> StopsOf(CGGradientRef gradient);

/// What a gradient is drawn with: made from its stops when it is first asked for, and let go with
/// it. May be asked for on any thread, always with the same two functions.
void* DrawableOf(CGGradientRef gradient, void* (*make)(std::span<const GradientStop>),
                 void (*release)(void*));
