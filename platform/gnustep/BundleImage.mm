#import "platform/BundleImage.h"

NSImage* MakeBundleImage(NSBundle* bundle, NSString* name) {
    NSString* path = [bundle pathForResource:name ofType:@"png"];
    return path == nil ? nil : [[NSImage alloc] initWithContentsOfFile:path];
}
