#import "Source/TrackPopUp.h"

#import "Source/PanelDrawing.h"
#import "Source/TrackList.h"

namespace {

NSPoint OnScreen(NSEvent* event) {
    return [[event window] convertBaseToScreen:[event locationInWindow]];
}

// What closes an open list.
NSString* const kClosing[] = {NSWindowDidResignKeyNotification, NSWindowWillMoveNotification,
                              NSWindowDidResizeNotification, NSWindowWillCloseNotification,
                              NSWindowDidMiniaturizeNotification};

}  // namespace

@implementation TavarinProLink_TrackPopUp

- (void)awakeFromNib {
    // Otherwise every change of an entry looks at all of them.
    [[self menu] setAutoenablesItems:NO];
}

- (void)dealloc {
    [self Close];
    [super dealloc];
}

- (void)drawRect:(NSRect)dirty {
    [super drawRect:dirty];
    DrawFocus(self);
}

- (BOOL)IsOpen {
    return m_list != nil;
}

- (void)Open {
    if (m_list != nil || ![self isEnabled] || [self window] == nil) return;
    NSNotificationCenter* center = [NSNotificationCenter defaultCenter];
    [center postNotificationName:NSPopUpButtonWillPopUpNotification object:self];
    if ([self numberOfItems] == 0) return NSBeep();
    [[self window] makeFirstResponder:self];
    m_list = [[TavarinProLink_TrackList alloc] initForPopUp:self];
    for (NSString* name : kClosing) {
        [center addObserver:self selector:@selector(OnClosing:) name:name object:[self window]];
    }
}

- (void)Close {
    if (m_list == nil) return;
    for (NSString* name : kClosing) {
        [[NSNotificationCenter defaultCenter] removeObserver:self name:name object:nil];
    }
    TavarinProLink_TrackList* list = m_list;
    m_list = nil;
    [list Close];
    // It may be what has called.
    [list autorelease];
}

- (void)OnClosing:(NSNotification*)notification {
    [self Close];
}

- (void)Choose:(NSInteger)nEntry {
    [self Close];
    if (nEntry >= 0 && nEntry < [self numberOfItems]) {
        [[self menu] performActionForItemAtIndex:nEntry];
    }
    [self setNeedsDisplay:YES];
}

- (BOOL)acceptsFirstResponder {
    return [self isEnabled];
}

- (BOOL)resignFirstResponder {
    [self Close];
    return [super resignFirstResponder];
}

- (void)viewWillMoveToWindow:(NSWindow*)window {
    [self Close];
    [super viewWillMoveToWindow:window];
}

- (void)performClick:(id)sender {
    [self Open];
}

- (void)mouseDown:(NSEvent*)event {
    if (m_list != nil) return [self Close];
    [self Open];
}

- (void)mouseDragged:(NSEvent*)event {
    [m_list PointAt:OnScreen(event)];
}

- (void)mouseUp:(NSEvent*)event {
    if (m_list == nil) return;
    const NSPoint here = [self convertPoint:[event locationInWindow] fromView:nil];
    if (NSPointInRect(here, [self bounds])) return;
    const NSInteger nEntry = [m_list EntryAt:OnScreen(event)];
    if (nEntry < 0) return [self Close];
    [self Choose:nEntry];
}

- (void)keyDown:(NSEvent*)event {
    if (m_list != nil) return [m_list TakeKey:event];
    NSString* keys = [event characters];
    const unichar key = [keys length] == 0 ? 0 : [keys characterAtIndex:0];
    if (key == ' ' || key == NSUpArrowFunctionKey || key == NSDownArrowFunctionKey) {
        return [self Open];
    }
    [super keyDown:event];
}

// AppKit removes a present item with the title of a new one. So an item goes in under a title that
// no other can have, and gets its own afterwards.
- (void)insertItemWithTitle:(NSString*)title atIndex:(NSInteger)index {
    [super insertItemWithTitle:[[NSProcessInfo processInfo] globallyUniqueString] atIndex:index];
    [[self itemAtIndex:index] setTitle:title];
    [self synchronizeTitleAndSelectedItem];
}

- (void)addItemWithTitle:(NSString*)title {
    [self insertItemWithTitle:title atIndex:[self numberOfItems]];
}

// The first by AppKit's own way; the others are made like it, because that way looks through the
// whole menu for each.
- (void)addItemsWithTitles:(NSArray*)titles {
    if ([titles count] == 0) return;
    [self addItemWithTitle:[titles objectAtIndex:0]];
    NSMenuItem* first = (NSMenuItem*)[self lastItem];
    for (NSUInteger nIndex = 1; nIndex < [titles count]; ++nIndex) {
        NSMenuItem* item = [[NSMenuItem alloc] initWithTitle:[titles objectAtIndex:nIndex]
                                                      action:[first action]
                                               keyEquivalent:@""];
        [item setTarget:[first target]];
        [item setOnStateImage:nil];
        [item setMixedStateImage:nil];
        [[self menu] addItem:item];
        [item release];
    }
    [self synchronizeTitleAndSelectedItem];
}

@end
