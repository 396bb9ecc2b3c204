#pragma once

#import <AppKit/AppKit.h>

/// \file
/// How much of a text there is room for.

/// The height of a text that wraps at a width.
CGFloat TextHeight(NSString* text, NSDictionary* attributes, CGFloat width);

/// A text, or as much of its beginning as there is room for with an ellipsis. One line at least.
NSString* FittingText(NSString* text, NSDictionary* attributes, NSSize room);
