#pragma once

#import <AppKit/AppKit.h>

#include <cstdint>

/// \file
/// A window of this program inside one of another program's.

/// Moves a window that was not shown yet into that window of the display, and shows it there.
void EmbedWindow(NSWindow* window, std::uint64_t nParent);

/// To be called every now and then: tells the application where on the screen its embedded window
/// has got to with the other program's.
void FollowParent(NSWindow* window);
