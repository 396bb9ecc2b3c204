#import "platform/BundleImage.h"

// A file by its path would be one resolution.
NSImage* MakeBundleImage(NSBundle* bundle, NSString* name) {
    return [[bundle imageForResource:name] retain];
}
