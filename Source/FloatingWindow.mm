#import "Source/FloatingWindow.h"

namespace {

CGFloat ScreenUnitsPerPoint() {
    return [NSWindow frameRectForContentRect:NSMakeRect(0, 0, 1, 1)
                                   styleMask:NSWindowStyleMaskBorderless]
        .size.width;
}

NSRect InPoints(NSRect onScreen) {
    const CGFloat scale = ScreenUnitsPerPoint();
    return NSMakeRect(onScreen.origin.x / scale, onScreen.origin.y / scale,
                      onScreen.size.width / scale, onScreen.size.height / scale);
}

}  // namespace

NSRect ScreenArea(NSWindow* window) {
    return InPoints([[window screen] visibleFrame]);
}

NSRect PlaceOnScreen(NSView* view) {
    NSRect place = [view convertRect:[view bounds] toView:nil];
    place.origin = [[view window] convertBaseToScreen:place.origin];
    return InPoints(place);
}

NSPoint PointerOnScreen() {
    return InPoints({[NSEvent mouseLocation], NSZeroSize}).origin;
}

void Float(NSView* contents, NSRect place) {
    const CGFloat scale = ScreenUnitsPerPoint();
    place.origin = NSMakePoint(place.origin.x * scale, place.origin.y * scale);
    NSWindow* window = [[NSWindow alloc] initWithContentRect:place
                                                   styleMask:NSWindowStyleMaskBorderless
                                                     backing:NSBackingStoreBuffered
                                                       defer:NO];
    [window setReleasedWhenClosed:NO];
    [window setLevel:NSPopUpMenuWindowLevel];
    [window setContentView:contents];
    [window setAcceptsMouseMovedEvents:YES];
    [window orderFront:nil];
    [contents display];
}

void CloseFloating(NSView* contents) {
    NSWindow* window = [contents window];
    [window orderOut:nil];
    [[contents retain] autorelease];
    [window setContentView:[[[NSView alloc] initWithFrame:NSZeroRect] autorelease]];
    [window close];
    [window autorelease];
}
