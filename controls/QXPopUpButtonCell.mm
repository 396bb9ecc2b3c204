#import "controls/QXPopUpButtonCell.h"

#include "colours/ComponentCodes.h"
#import "controls/CellDrawing.h"
#import "platform/BundleImage.h"

namespace {

constexpr float kArrowGap = 4.0F;
constexpr CGFloat kArrowOpacity = 0.9;
constexpr CGFloat kArrowOpacityDisabled = 0.3;

NSImage* LoadArrow() {
    return MakeBundleImage([NSBundle bundleForClass:[QXPopUpButtonCell class]], @"PopupArrow");
}

/// All pop-ups' arrow, loaded when it is first drawn; nil as long as there is none.
NSImage* PopupArrow() {
    static NSImage* arrow = nil;
    if (arrow == nil) arrow = LoadArrow();
    return arrow;
}

NSSize ArrowSize() {
    // A structure that nil answers may hold anything.
    return PopupArrow() == nil ? NSZeroSize : [PopupArrow() size];
}

void DrawArrow(NSRect rect, bool fEnabled) {
    if (![PopupArrow() isFlipped]) [PopupArrow() setFlipped:YES];
    [PopupArrow() drawInRect:rect
                    fromRect:NSZeroRect
                   operation:NSCompositeSourceOver
                    fraction:fEnabled ? kArrowOpacity : kArrowOpacityDisabled];
}

}  // namespace

@interface QXPopUpButtonCell (Private)
- (void)SetDefaults;
- (NSRect)TitleRect:(NSRect)frame besides:(float)arrowSpace;
- (CComponentCode)TitleColour;
@end

@implementation QXPopUpButtonCell

- (id)init {
    self = [super init];
    [self SetDefaults];
    return self;
}

- (id)initWithCoder:(NSCoder*)coder {
    self = [super initWithCoder:coder];
    [self SetDefaults];
    return self;
}

- (void)SetDefaults {
    [self SetButtonControlsFaceUp:ccButtonFace
                         BorderUp:ccButtonBorder
                         FaceDown:ccButtonFaceActive
                       BorderDown:ccButtonBorderActive];
    [self SetReadOnly:NO];
}

- (void)SetButtonControlsFaceUp:(CComponentCode)faceUp
                       BorderUp:(CComponentCode)borderUp
                       FaceDown:(CComponentCode)faceDown
                     BorderDown:(CComponentCode)borderDown {
    m_nFaceUp = faceUp;
    m_nBorderUp = borderUp;
    m_nFaceDown = faceDown;
    m_nBorderDown = borderDown;
}

- (void)SetReadOnly:(BOOL)fReadOnly {
    m_fReadOnly = fReadOnly;
}

- (void)drawBezelWithFrame:(NSRect)frame inView:(NSView*)view {
    [self DrawButton:CurrentContext()
              Active:[self isHighlighted]
                Area:&frame
             Flipped:[view isFlipped]];
}

- (void)DrawButton:(CGContextRef)context
            Active:(BOOL)fPressed
              Area:(NSRect*)pArea
           Flipped:(BOOL)fFlipped {
    if (gnAppStyle == 0) {
        DrawShadedBezel(context, [self isEnabled], fPressed, pArea -> size);
        return;
    }
    DrawFlatBezel(context, fPressed ? m_nBorderDown : m_nBorderUp,
                  fPressed ? m_nFaceDown : m_nFaceUp, *pArea, fFlipped);
}

- (void)drawWithFrame:(NSRect)frame inView:(NSView*)view {
    // A choice is sent by way of the view that drew the cell last.
    [self setControlView:view];
    [self drawBezelWithFrame:frame inView:view];
    const NSSize arrow = ArrowSize();
    const float arrowSpace = m_fReadOnly ? 0.0F : static_cast<float>(arrow.width) + kArrowGap;
    DrawArrow(NSMakeRect(NSMaxX(frame) - arrowSpace,
                         frame.origin.y + (frame.size.height - arrow.height) * 0.5, arrow.width,
                         arrow.height),
              [self isEnabled]);
    DrawTitle([[self selectedItem] title], [self TitleRect:frame besides:arrowSpace],
              [self controlSize], NSTextAlignmentCenter, [self TitleColour]);
}

- (NSRect)TitleRect:(NSRect)frame besides:(float)arrowSpace {
    const bool fSmall = [self controlSize] == NSControlSizeSmall;
    const CGFloat lower = fSmall ? 3.0 : 1.0;
    const CGFloat shorter = fSmall ? 3.0 : 2.0;
    return NSMakeRect(frame.origin.x, frame.origin.y + lower,
                      static_cast<float>(frame.size.width) - arrowSpace,
                      frame.size.height - shorter);
}

- (CComponentCode)TitleColour {
    return [self isEnabled] || m_fReadOnly ? ccControlText : ccControlTextDisabled;
}

@end
