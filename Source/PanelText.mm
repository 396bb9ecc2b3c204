#import "Source/PanelText.h"

#include <algorithm>

#import "Source/PanelDrawing.h"
#import "Source/TextFitting.h"
#import "Source/TextTip.h"
#include "colours/ComponentCodes.h"

namespace {

constexpr CGFloat kInset = 2;
constexpr CGFloat kGap = 6;
// More than any panel shows; the rest need not be measured.
constexpr NSUInteger kMostShown = 2000;
constexpr NSTimeInterval kBeforeTip = 0.5;

NSDictionary* Attributes(TavarinProLink_PanelText* field) {
    NSColor* colour = PanelColour([field Component]);
    return [NSDictionary dictionaryWithObjectsAndKeys:[field font], NSFontAttributeName,
                                                      colour == nil ? [NSColor clearColor] : colour,
                                                      NSForegroundColorAttributeName, nil];
}

}  // namespace

@interface TavarinProLink_PanelText (Private)
- (void)Track;
- (void)ShowTip;
- (void)HideTip;
@end

@implementation TavarinProLink_PanelText

- (void)dealloc {
    [self HideTip];
    [m_tip release];
    [super dealloc];
}

- (CComponentCode)Component {
    return ccLabelText;
}

- (CGFloat)NeededHeight {
    NSString* text = [self stringValue];
    if ([text length] > kMostShown) text = [text substringToIndex:kMostShown];
    return TextHeight(text, Attributes(self), [self bounds].size.width - 2 * kInset);
}

- (void)setStringValue:(NSString*)text {
    [super setStringValue:text];
    id stack = [self superview];
    if ([stack isKindOfClass:[TavarinProLink_TextStack class]]) [stack Arrange];
    [self setNeedsDisplay:YES];
}

- (void)drawRect:(NSRect)dirty {
    const NSRect area = NSInsetRect([self bounds], kInset, 0);
    NSDictionary* attributes = Attributes(self);
    [FittingText([self stringValue], attributes, area.size) drawInRect:area
                                                        withAttributes:attributes];
}

- (NSString*)toolTip {
    return m_tip;
}

- (void)setToolTip:(NSString*)text {
    if (text == m_tip || [text isEqualToString:m_tip]) return;
    [self HideTip];
    [m_tip autorelease];
    m_tip = [text copy];
    [self Track];
}

// The rectangle that is tracked does not follow the view.
- (void)Track {
    if (m_nTracked != 0) [self removeTrackingRect:m_nTracked];
    m_nTracked = 0;
    if ([m_tip length] == 0 || [self window] == nil) return;
    m_nTracked = [self addTrackingRect:[self bounds] owner:self userData:nil assumeInside:NO];
}

- (void)setFrame:(NSRect)frame {
    [super setFrame:frame];
    [self Track];
}

- (void)setFrameSize:(NSSize)size {
    [super setFrameSize:size];
    [self Track];
}

- (void)viewWillMoveToWindow:(NSWindow*)window {
    [self HideTip];
    [super viewWillMoveToWindow:window];
}

- (void)viewDidMoveToWindow {
    [super viewDidMoveToWindow];
    [self Track];
}

- (void)mouseEntered:(NSEvent*)event {
    [self performSelector:@selector(ShowTip) withObject:nil afterDelay:kBeforeTip];
}

- (void)mouseExited:(NSEvent*)event {
    [NSObject cancelPreviousPerformRequestsWithTarget:self];
}

- (void)ShowTip {
    [TavarinProLink_TextTip ShowFor:self];
}

- (void)HideTip {
    [NSObject cancelPreviousPerformRequestsWithTarget:self];
    [TavarinProLink_TextTip HideFor:self];
}

@end

@implementation TavarinProLink_TitleText
@end

@implementation TavarinProLink_CaptionText
- (CComponentCode)Component {
    return ccTimeAxisText;
}
@end

@implementation TavarinProLink_ErrorText
// Amber in either palette, and dark enough in the lighter one to be read on a panel.
- (CComponentCode)Component {
    return ccAudioEstimatedLabel;
}
@end

@implementation TavarinProLink_AdviceText
@end

@implementation TavarinProLink_TextStack

- (void)Arrange {
    if ([[self subviews] count] != 2) return;
    TavarinProLink_PanelText* first = [[self subviews] objectAtIndex:0];
    TavarinProLink_PanelText* second = [[self subviews] objectAtIndex:1];
    const NSSize size = [self bounds].size;
    // A text that grows is measured at the width that it will have.
    [first setFrameSize:NSMakeSize(size.width, [first frame].size.height)];
    [second setFrameSize:NSMakeSize(size.width, [second frame].size.height)];
    const CGFloat kept = std::min([second NeededHeight], floor(size.height / 3));
    const CGFloat height = std::min([first NeededHeight] + kGap, size.height - kept);
    const CGFloat rest = size.height - height;
    [first setFrame:NSMakeRect(0, rest, size.width, height)];
    [second setFrame:NSMakeRect(0, 0, size.width, rest)];
    [self setNeedsDisplay:YES];
}

- (void)resizeSubviewsWithOldSize:(NSSize)size {
    [self Arrange];
}

@end
