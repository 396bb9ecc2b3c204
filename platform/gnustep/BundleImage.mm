#import "platform/BundleImage.h"

NSImage* MakeBundleImage(NSBundle* bundle, NSString* name) {
    NSString* path = [bundle pathForResource:name ofType:@"png"];
    // A bundle may remember that a resource was missing.
    if (path == nil) {
        NSString* file = [name stringByAppendingPathExtension:@"png"];
        path = [[bundle resourcePath] stringByAppendingPathComponent:file];
    }
    return path == nil ? nil : [[NSImage alloc] initWithContentsOfFile:path];
}
