#pragma once

#include <CoreGraphics/CoreGraphics.h>

/// Adds a closed subpath with round corners to a context's path. Internal to the controls.
void AddRoundRect(CGContextRef context, float left, float top, float right, float bottom,
                  float radius);
