#import "Source/PanelControls.h"

#import "Source/PanelDrawing.h"
#include "colours/ComponentCodes.h"
#import "controls/GraphicUtils.h"

namespace {

constexpr CGFloat kHeaderHeight = 40;
constexpr CGFloat kFocusInset = 2.5;
constexpr CGFloat kFocusRadius = 4;
constexpr std::int32_t kTopToBottom = 1;

void Fill(NSRect rect, CComponentCode code) {
    const auto context =
        static_cast<CGContextRef>([[NSGraphicsContext currentContext] graphicsPort]);
    [GraphicUtils FillRect:context
                     Color:code
                Background:CComponentCode()
                      Rect:rect
             FillDirection:kTopToBottom
                   Flipped:NO];
}

// A second edge inside the first one, in the window that is in front.
void DrawFocus(NSView* view) {
    if (![[view window] isKeyWindow] || [[view window] firstResponder] != view) return;
    NSColor* colour = PanelColour(ccButtonBorderActive);
    if (colour == nil) return;
    [colour set];
    NSBezierPath* edge =
        [NSBezierPath bezierPathWithRoundedRect:NSInsetRect([view bounds], kFocusInset, kFocusInset)
                                        xRadius:kFocusRadius
                                        yRadius:kFocusRadius];
    [edge setLineWidth:1];
    [edge stroke];
}

}  // namespace

@implementation TavarinProLink_PanelView

- (void)drawRect:(NSRect)dirty {
    const NSRect bounds = [self bounds];
    Fill(bounds, ccWindowBackground);
    const NSRect header = NSMakeRect(bounds.origin.x, NSMaxY(bounds) - kHeaderHeight,
                                     bounds.size.width, kHeaderHeight);
    Fill(header, ccTrackInfoBackground);
    Fill(NSMakeRect(header.origin.x, header.origin.y, header.size.width, 1), ccTrackBackground);
}

- (BOOL)isOpaque {
    return YES;
}

@end

@implementation TavarinProLink_ToggleButton

- (void)drawRect:(NSRect)dirty {
    const BOOL fPressed = [[self cell] isHighlighted];
    // The focus is shown here, for the cell does not know how.
    [[self cell] setShowsFirstResponder:NO];
    [[self cell] setHighlighted:fPressed || [self state] != 0];
    [super drawRect:dirty];
    [[self cell] setHighlighted:fPressed];
    DrawFocus(self);
}

@end

@implementation TavarinProLink_TrackPopUp

- (void)drawRect:(NSRect)dirty {
    [super drawRect:dirty];
    DrawFocus(self);
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

- (void)addItemsWithTitles:(NSArray*)titles {
    for (NSUInteger nIndex = 0; nIndex < [titles count]; ++nIndex) {
        [self addItemWithTitle:[titles objectAtIndex:nIndex]];
    }
}

@end
