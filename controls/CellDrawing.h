#pragma once

#import <AppKit/AppKit.h>
#include <CoreGraphics/CoreGraphics.h>

#include "colours/ComponentCode.h"

/// \file
/// What the button and the pop-up draw alike. Internal to the controls.

/// A bezel in the scheme's colours: a border, and a face 1 point inside it.
void DrawFlatBezel(CGContextRef context, CComponentCode border, CComponentCode face, NSRect frame,
                   bool fFlipped);

/// A grey bezel of a size, always at the origin of the view. It stays the context's clip.
void DrawShadedBezel(CGContextRef context, bool fEnabled, bool fPressed, NSSize size);

/// One line in bold system type, from the top of a rectangle, shortened in the middle. Nothing when
/// the scheme lacks the colour.
void DrawTitle(NSString* title, NSRect rect, NSControlSize size, NSTextAlignment alignment,
               CComponentCode colour);

/// The context that AppKit draws with now; null when it does not draw.
CGContextRef CurrentContext();
