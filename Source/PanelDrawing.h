#pragma once

#import <AppKit/AppKit.h>

#include "colours/ComponentCode.h"

/// \file
/// How panels and their controls look, in the colours of the process-wide scheme. A colour that the
/// scheme lacks is not drawn. To be called while a view draws.

/// The scheme's colour for a component; of a gradient its first or its last stop. May be nil.
NSColor* PanelColour(CComponentCode code, bool fLast = false);

/// A panel's background, with a strip along its top edge for a title. In coordinates that grow
/// upward.
void DrawPanel(NSRect bounds);

/// The face of a button: active when it is on or pressed, with a second edge for the keyboard
/// focus.
void DrawFace(NSRect frame, bool fActive, bool fFocus);

/// One line of text in the middle of a height; a text that is too long ends in an ellipsis.
void DrawLine(NSString* text, NSFont* font, CComponentCode colour, NSRect frame,
              NSTextAlignment alignment);

/// Whether a view has the keyboard focus in the window that is in front.
bool HasFocus(NSView* view);
