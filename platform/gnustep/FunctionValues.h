#pragma once

#include <CoreGraphics/CoreGraphics.h>

#include <vector>

/// The outputs of a function for one input, cut at its limits. Internal to the platform folder:
/// shadings are drawn with it, and the public calls offer no way to evaluate a function.
std::vector<CGFloat> ValuesOf(CGFunctionRef function, CGFloat input);
