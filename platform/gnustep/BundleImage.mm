#import "platform/BundleImage.h"

namespace {

// GNUstep draws the representation of the window's resolution, but looks for no second file.
void AddFinerFile(NSImage* image, NSString* path) {
    NSString* finer = [[path stringByDeletingPathExtension] stringByAppendingString:@"@2x.png"];
    NSImageRep* representation = [NSImageRep imageRepWithContentsOfFile:finer];
    if (representation == nil) return;
    [representation setSize:[image size]];
    [image addRepresentation:representation];
}

}  // namespace

NSImage* MakeBundleImage(NSBundle* bundle, NSString* name) {
    NSString* path = [bundle pathForResource:name ofType:@"png"];
    // A bundle may remember that a resource was missing.
    if (path == nil) {
        NSString* file = [name stringByAppendingPathExtension:@"png"];
        path = [[bundle resourcePath] stringByAppendingPathComponent:file];
    }
    if (path == nil) return nil;
    NSImage* image = [[NSImage alloc] initWithContentsOfFile:path];
    if (image != nil) AddFinerFile(image, path);
    return image;
}
