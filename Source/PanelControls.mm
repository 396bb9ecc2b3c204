#import "Source/PanelControls.h"

#import "Source/PanelDrawing.h"
#include "colours/ComponentCodes.h"

namespace {

constexpr CGFloat kLampSize = 8;
constexpr CGFloat kLampInset = 14;
constexpr CGFloat kArrowWidth = 9;
constexpr CGFloat kArrowHeight = 5;
constexpr CGFloat kSideMargin = 12;

void DrawLamp(NSRect frame, bool fLit) {
    const NSRect lamp = NSMakeRect(frame.origin.x + kLampInset, NSMidY(frame) - kLampSize / 2,
                                   kLampSize, kLampSize);
    NSBezierPath* circle = [NSBezierPath bezierPathWithOvalInRect:lamp];
    [PanelColour(fLit ? ccSelectedRegionSelectedAudio : ccSeparatorLine) set];
    if (fLit) {
        [circle fill];
    } else {
        [circle stroke];
    }
}

// Two small triangles, up and down, at the right end.
void DrawArrows(NSRect frame) {
    [PanelColour(ccControlText) set];
    const CGFloat centre = NSMaxX(frame) - kSideMargin - kArrowWidth / 2;
    for (const CGFloat direction : {-1.0, 1.0}) {
        const CGFloat base = NSMidY(frame) + 2 * direction;
        NSBezierPath* arrow = [NSBezierPath bezierPath];
        [arrow moveToPoint:NSMakePoint(centre - kArrowWidth / 2, base)];
        [arrow lineToPoint:NSMakePoint(centre + kArrowWidth / 2, base)];
        [arrow lineToPoint:NSMakePoint(centre, base + direction * kArrowHeight)];
        [arrow closePath];
        [arrow fill];
    }
}

}  // namespace

@implementation TavarinProLink_PanelView

- (void)drawRect:(NSRect)dirty {
    DrawPanel([self bounds]);
}

- (BOOL)isOpaque {
    return YES;
}

@end

@implementation TavarinProLink_ButtonCell

- (void)drawWithFrame:(NSRect)frame inView:(NSView*)view {
    const bool fOn = [self state] != 0;
    DrawFace(frame, fOn || [self isHighlighted], HasFocus(view));
    DrawLamp(frame, fOn);
    CComponentCode text = fOn ? ccControlOnText : ccControlText;
    if (![self isEnabled]) text = ccControlTextDisabled;
    const CGFloat lampSpace = kLampInset + kLampSize;
    frame.origin.x += lampSpace;
    frame.size.width -= lampSpace + kSideMargin;
    DrawLine([self title], [self font], text, frame, NSCenterTextAlignment);
}

@end

@implementation TavarinProLink_PopUpCell

- (void)drawWithFrame:(NSRect)frame inView:(NSView*)view {
    // A choice is sent by way of the view that drew the cell last.
    [self setControlView:view];
    DrawFace(frame, [self isHighlighted], HasFocus(view));
    DrawArrows(frame);
    frame.origin.x += kSideMargin;
    frame.size.width -= 3 * kSideMargin + kArrowWidth;
    DrawLine([self titleOfSelectedItem], [self font],
             [self isEnabled] ? ccControlText : ccControlTextDisabled, frame, NSLeftTextAlignment);
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
