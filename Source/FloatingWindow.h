#pragma once

#import <AppKit/AppKit.h>

/// \file
/// Windows that float over all others for a while. Everything here is in points. AppKit's own calls
/// are not, beside GNUstep: a screen and the frame of a window on it are in pixels there, and only
/// what a window shows is in points.

/// The part of a window's screen that windows may have.
NSRect ScreenArea(NSWindow* window);

/// Where on the screen a view is.
NSRect PlaceOnScreen(NSView* view);

/// Where on the screen the pointer is.
NSPoint PointerOnScreen();

/// Shows a view at a place on the screen, in a window of its own that never has the keyboard.
void Float(NSView* contents, NSRect place);

/// Takes such a view's window from the screen. The view goes with the pool if nobody else has it.
void CloseFloating(NSView* contents);
