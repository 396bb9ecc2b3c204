#pragma once

/// \file
/// AppKit's colours for code that is not Objective-C++. Internal to the colour scheme.

#ifdef __OBJC__
@class NSColor;
#else
struct NSColor;
#endif

/// A calibrated colour that belongs to the caller; `rgba` holds red, green, blue and alpha.
NSColor* MakeCalibratedColour(const double rgba[4]);

/// Gives a colour back; nil is ignored.
void ReleaseColour(NSColor* colour) noexcept;
