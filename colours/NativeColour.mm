#include "colours/NativeColour.h"

#import <AppKit/AppKit.h>

NSColor* MakeCalibratedColour(const double rgba[4]) {
    // Callers need not have a pool: a program that only loads a scheme has none.
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    NSColor* colour = [[NSColor colorWithCalibratedRed:rgba[0]
                                                 green:rgba[1]
                                                  blue:rgba[2]
                                                 alpha:rgba[3]] retain];
    [pool drain];
    return colour;
}

void ReleaseColour(NSColor* colour) noexcept {
    [colour release];
}
