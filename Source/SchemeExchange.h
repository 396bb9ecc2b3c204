#pragma once

#import <AppKit/AppKit.h>

/// The colours of whatever has this class in it, for the program that loaded it: a bundle has a
/// process-wide scheme of its own. To be found by its name.
@interface TavarinProLink_SchemeExchange : NSObject

/// Replaces all colours by those of an image (see SchemeImage in SchemeFile.h). Open views are
/// drawn anew. NO, with nothing changed, when not all of it could be read.
+ (BOOL)UseImage:(NSData*)image;

@end
