#pragma once

#import <AppKit/AppKit.h>

#include <cstdint>
#include <functional>

/// \file
/// A window among those of other programs.

/// The number of a place on the display, below `nPlaces`, that no other program's window has: the
/// first one from `nWanted` on, or `nWanted` when all are taken. It is this window's until the
/// program ends.
std::uint32_t TakePlace(NSWindow* window, std::uint32_t nWanted, std::uint32_t nPlaces);

/// A function for another thread, to be called while the application does not handle events:
/// whether the user asked for the window to be closed. The window itself is not touched.
std::function<bool()> CloseWatch(NSWindow* window);
