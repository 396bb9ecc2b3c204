#pragma once

#import <AppKit/AppKit.h>

/// An image of a bundle by its name without extension, in every resolution that the platform's
/// AppKit takes from there. The caller owns it; nil when the bundle has none.
NSImage* MakeBundleImage(NSBundle* bundle, NSString* name);
