#import "Source/PanelControls.h"

#import "Source/PanelDrawing.h"
#include "colours/ComponentCodes.h"
#import "controls/GraphicUtils.h"
#import "controls/QXButtonCell.h"

namespace {

constexpr CGFloat kHeaderHeight = 40;
constexpr CGFloat kFocusInset = 1.5;
constexpr CGFloat kFocusRadius = 4.5;
constexpr CGFloat kLampSize = 7;
constexpr NSSize kLampImage = {20, 10};
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

// In the middle of an image that is wide enough to keep away from the button's edge and title. The
// caller owns it.
NSImage* MakeLamp(bool fLit) {
    NSImage* lamp = [[NSImage alloc] initWithSize:kLampImage];
    NSBezierPath* circle =
        [NSBezierPath bezierPathWithOvalInRect:NSMakeRect((kLampImage.width - kLampSize) / 2,
                                                          (kLampImage.height - kLampSize) / 2,
                                                          kLampSize, kLampSize)];
    [lamp lockFocus];
    [PanelColour(fLit ? ccSelectedRegionSelectedAudio : ccSeparatorLine) set];
    if (fLit) [circle fill];
    [circle stroke];
    [lamp unlockFocus];
    return lamp;
}

/// All buttons' lamps, drawn when the first button is loaded.
NSImage* Lamp(bool fLit) {
    static NSImage* const unlit = MakeLamp(false);
    static NSImage* const lit = MakeLamp(true);
    return fLit ? lit : unlit;
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

// Not in the nib, whose images are not in the colours of the scheme.
- (void)awakeFromNib {
    [super awakeFromNib];
    [self setImage:Lamp(false)];
    [self setAlternateImage:Lamp(true)];
    // What belongs to the state that is on includes a title.
    [self setAlternateTitle:[self title]];
}

- (void)drawRect:(NSRect)dirty {
    QXButtonCell* cell = [self cell];
    // The focus is shown here, for the cell does not know how.
    [cell setShowsFirstResponder:NO];
    const CComponentCode faceUp = cell->m_nFaceUp;
    const CComponentCode borderUp = cell->m_nBorderUp;
    if ([self state] != 0) {
        cell->m_nFaceUp = cell->m_nFaceDown;
        cell->m_nBorderUp = cell->m_nBorderDown;
    }
    [super drawRect:dirty];
    cell->m_nFaceUp = faceUp;
    cell->m_nBorderUp = borderUp;
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
