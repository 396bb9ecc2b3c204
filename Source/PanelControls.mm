#import "Source/PanelControls.h"

#include <algorithm>

#include "colours/ComponentCodes.h"
#include "colours/ComponentColour.h"

namespace {

constexpr CGFloat kHeaderHeight = 40;
constexpr CGFloat kCornerRadius = 5;
constexpr CGFloat kLampSize = 8;
constexpr CGFloat kLampInset = 14;
constexpr CGFloat kArrowWidth = 9;
constexpr CGFloat kArrowHeight = 5;
constexpr CGFloat kSideMargin = 12;

NSBezierPath* RoundedRect(NSRect rect, CGFloat inset) {
    return [NSBezierPath bezierPathWithRoundedRect:NSInsetRect(rect, inset, inset)
                                           xRadius:kCornerRadius
                                           yRadius:kCornerRadius];
}

// The scheme's colour; of a gradient its first or its last stop.
NSColor* Colour(CComponentCode code, bool fLast = false) {
    if (!gAppColours.IsGradient(code)) return gAppColours.FindNSColor(code);
    auto const& stops = static_cast<CGradientFill*>(gAppColours.Find(code))->m_components;
    if (stops.empty()) return nil;
    return (fLast ? *stops.rbegin() : *stops.begin())->m_nsColor;
}

void Fill(NSBezierPath* path, CComponentCode code) {
    NSColor* top = Colour(code);
    NSColor* bottom = Colour(code, true);
    if (top == nil || bottom == nil) return;
    NSGradient* gradient = [[NSGradient alloc] initWithStartingColor:top endingColor:bottom];
    [gradient drawInBezierPath:path angle:90];
    [gradient release];
}

void Stroke(NSBezierPath* path, CComponentCode code) {
    NSColor* colour = Colour(code);
    if (colour == nil) return;
    [colour set];
    [path setLineWidth:1];
    [path stroke];
}

bool HasFocus(NSView* view) {
    return [[view window] isKeyWindow] && [[view window] firstResponder] == view;
}

void DrawFace(NSRect frame, bool fActive, bool fFocus) {
    Fill(RoundedRect(frame, 0.5), fActive ? ccButtonFaceActive : ccButtonFace);
    Stroke(RoundedRect(frame, 0.5), fActive || fFocus ? ccButtonBorderActive : ccButtonBorder);
    if (fFocus) Stroke(RoundedRect(frame, 2.5), ccButtonBorderActive);
}

void DrawTitle(NSString* title, NSFont* font, CComponentCode code, NSRect frame,
               NSTextAlignment alignment) {
    NSColor* colour = Colour(code);
    if (title == nil || colour == nil) return;
    NSMutableParagraphStyle* style =
        [[[NSParagraphStyle defaultParagraphStyle] mutableCopy] autorelease];
    [style setAlignment:alignment];
    [style setLineBreakMode:NSLineBreakByTruncatingTail];
    NSDictionary* attributes =
        [NSDictionary dictionaryWithObjectsAndKeys:font, NSFontAttributeName, colour,
                                                   NSForegroundColorAttributeName, style,
                                                   NSParagraphStyleAttributeName, nil];
    const CGFloat height = [title sizeWithAttributes:attributes].height;
    frame.origin.y += (frame.size.height - height) / 2;
    frame.size.height = height;
    [title drawInRect:frame withAttributes:attributes];
}

void DrawLamp(NSRect frame, bool fLit) {
    const NSRect lamp = NSMakeRect(frame.origin.x + kLampInset, NSMidY(frame) - kLampSize / 2,
                                   kLampSize, kLampSize);
    NSBezierPath* circle = [NSBezierPath bezierPathWithOvalInRect:lamp];
    if (fLit) {
        [Colour(ccSelectedRegionSelectedAudio) set];
        [circle fill];
    } else {
        Stroke(circle, ccSeparatorLine);
    }
}

// Two small triangles, up and down, at the right end.
void DrawArrows(NSRect frame) {
    [Colour(ccControlText) set];
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
    NSColor* background = Colour(ccWindowBackground);
    if (background != nil) {
        [background set];
        NSRectFill(dirty);
    }
    const NSRect bounds = [self bounds];
    const NSRect header = NSMakeRect(bounds.origin.x, NSMaxY(bounds) - kHeaderHeight,
                                     bounds.size.width, kHeaderHeight);
    Fill([NSBezierPath bezierPathWithRect:header], ccTrackInfoBackground);
    NSColor* edge = Colour(ccTrackBackground);
    if (edge == nil) return;
    [edge set];
    NSRectFill(NSMakeRect(header.origin.x, header.origin.y, header.size.width, 1));
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
    DrawTitle([self title], [self font], text, frame, NSCenterTextAlignment);
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
    DrawTitle([self titleOfSelectedItem], [self font],
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
