#import "platform/WindowIcon.h"

// Windows have no signs here; the application has one.
void SetWindowIcon(NSWindow* /*window*/, NSBitmapImageRep* picture) {
    NSImage* image = [[[NSImage alloc] initWithSize:[picture size]] autorelease];
    [image addRepresentation:picture];
    [NSApp setApplicationIconImage:image];
}
