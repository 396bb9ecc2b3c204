#pragma once

#import <AppKit/AppKit.h>

#include "colours/ComponentCode.h"

/// The scheme's colour for a component; of a gradient its first stop. May be nil.
NSColor* PanelColour(CComponentCode code);

/// Draws a text of one line in system type of a size, from the rectangle's upper left corner on, in
/// the scheme's colour for a component. Draws nothing when the scheme has none.
void DrawPanelText(NSString* text, CGFloat size, CComponentCode colour, NSRect line);

/// Draws a second edge inside the first one of a control that has the keyboard focus, in the window
/// that is in front.
void DrawFocus(NSView* view);
