#import "Source/TextTip.h"

#include <algorithm>

#import "Source/FloatingWindow.h"
#import "Source/PanelDrawing.h"
#import "Source/TextFitting.h"
#include "colours/ComponentCodes.h"

namespace {

constexpr CGFloat kTextSize = 11;
constexpr CGFloat kInset = 6;
constexpr CGFloat kNarrowest = 320;
constexpr CGFloat kWiden = 1.5;
constexpr CGFloat kBesidePointer = 8;
constexpr CGFloat kBelowPointer = 18;
constexpr CGFloat kFromScreenEdge = 4;
constexpr NSTimeInterval kLookEvery = 0.1;

TavarinProLink_TextTip* shown = nil;

NSDictionary* Attributes() {
    NSColor* colour = PanelColour(ccTextEditorForeground);
    return [NSDictionary dictionaryWithObjectsAndKeys:[NSFont systemFontOfSize:kTextSize],
                                                      NSFontAttributeName,
                                                      colour == nil ? [NSColor textColor] : colour,
                                                      NSForegroundColorAttributeName, nil];
}

// The narrowest size within a room that has the whole text; nothing when there is none.
NSSize SizeWithin(NSString* text, NSSize room) {
    NSDictionary* attributes = Attributes();
    const CGFloat longestLine = ceil([text sizeWithAttributes:attributes].width) + 1;
    const CGFloat narrowest = std::min(longestLine + 2 * kInset, kNarrowest);
    for (CGFloat width = std::min(narrowest, room.width);;) {
        const CGFloat height = TextHeight(text, attributes, width - 2 * kInset) + 2 * kInset;
        if (height <= room.height) return NSMakeSize(width, height);
        if (width >= room.width) return NSZeroSize;
        width = std::min(width * kWiden, room.width);
    }
}

bool IsPointerOver(NSView* view) {
    if (![[view window] isVisible] || [view isHiddenOrHasHiddenAncestor]) return false;
    return NSPointInRect(PointerOnScreen(), PlaceOnScreen(view));
}

}  // namespace

NSRect TipFrame(NSString* text, NSPoint pointer, NSRect screen) {
    const NSRect area = NSInsetRect(screen, kFromScreenEdge, kFromScreenEdge);
    const CGFloat below = pointer.y - kBelowPointer;
    const CGFloat above = pointer.y + kBesidePointer;
    const NSRect rooms[] = {
        {area.origin, {area.size.width, below - NSMinY(area)}},
        {{area.origin.x, above}, {area.size.width, NSMaxY(area) - above}},
        area,
    };
    for (NSRect const& room : rooms) {
        const NSSize size = SizeWithin(text, room.size);
        if (NSEqualSizes(size, NSZeroSize)) continue;
        const CGFloat right = std::min(pointer.x + kBesidePointer, NSMaxX(room) - size.width);
        const CGFloat top = &room == &rooms[1] ? NSMinY(room) + size.height : NSMaxY(room);
        return NSMakeRect(std::max(right, NSMinX(room)), top - size.height, size.width,
                          size.height);
    }
    return area;
}

@interface TavarinProLink_TextTip (Private)
- (id)initFor:(NSView*)owner;
- (void)Close;
- (void)OnLook:(NSTimer*)timer;
@end

@implementation TavarinProLink_TextTip

+ (void)ShowFor:(NSView*)owner {
    if (shown != nil || [[owner toolTip] length] == 0 || !IsPointerOver(owner)) return;
    shown = [[TavarinProLink_TextTip alloc] initFor:owner];
}

+ (void)HideFor:(NSView*)owner {
    if (shown != nil && shown->m_owner == owner) [shown Close];
}

- (id)initFor:(NSView*)owner {
    const NSRect place = TipFrame([owner toolTip], PointerOnScreen(), ScreenArea([owner window]));
    self = [super initWithFrame:NSMakeRect(0, 0, place.size.width, place.size.height)];
    if (self == nil) return nil;
    m_owner = owner;
    m_text = [[owner toolTip] copy];
    Float(self, place);
    // The tip may lie over its view, whose window is not told of the pointer then.
    m_timer = [NSTimer scheduledTimerWithTimeInterval:kLookEvery
                                               target:self
                                             selector:@selector(OnLook:)
                                             userInfo:nil
                                              repeats:YES];
    return self;
}

- (void)dealloc {
    [m_text release];
    [super dealloc];
}

- (void)Close {
    shown = nil;
    m_owner = nil;
    [m_timer invalidate];
    m_timer = nil;
    CloseFloating(self);
    [self autorelease];
}

- (void)OnLook:(NSTimer*)timer {
    if (!IsPointerOver(m_owner)) [self Close];
}

- (void)mouseDown:(NSEvent*)event {
    [self Close];
}

- (BOOL)acceptsFirstMouse:(NSEvent*)event {
    return YES;
}

- (BOOL)isOpaque {
    return YES;
}

- (NSString*)ShownText {
    return FittingText(m_text, Attributes(), NSInsetRect([self bounds], kInset, kInset).size);
}

- (void)drawRect:(NSRect)dirty {
    const NSRect bounds = [self bounds];
    NSColor* ground = PanelColour(ccTextEditorBackground);
    [(ground == nil ? [NSColor textBackgroundColor] : ground) set];
    NSRectFill(bounds);
    [[self ShownText] drawInRect:NSInsetRect(bounds, kInset, kInset) withAttributes:Attributes()];
    [PanelColour(ccTextEditorBackgroundBorder) set];
    NSFrameRect(bounds);
}

@end
