#pragma once

#import <AppKit/AppKit.h>

/// Shows a picture as the window's sign where the display has such: in its title, in lists of
/// windows.
void SetWindowIcon(NSWindow* window, NSBitmapImageRep* picture);
