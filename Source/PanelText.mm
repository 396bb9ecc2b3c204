#import "Source/PanelText.h"

#include <algorithm>

#import "Source/PanelDrawing.h"
#include "colours/ComponentCodes.h"

namespace {

constexpr CGFloat kInset = 2;
constexpr CGFloat kGap = 6;
constexpr CGFloat kTallest = 10000;
// More than any panel shows; the rest need not be measured.
constexpr NSUInteger kMostShown = 2000;

NSDictionary* Attributes(TavarinProLink_PanelText* field) {
    NSColor* colour = PanelColour([field Component]);
    return [NSDictionary dictionaryWithObjectsAndKeys:[field font], NSFontAttributeName,
                                                      colour == nil ? [NSColor clearColor] : colour,
                                                      NSForegroundColorAttributeName, nil];
}

CGFloat Height(NSString* text, NSDictionary* attributes, CGFloat width) {
    if ([text length] == 0) return 0;
    const NSRect bounds = [text boundingRectWithSize:NSMakeSize(width, kTallest)
                                             options:NSStringDrawingUsesLineFragmentOrigin
                                          attributes:attributes];
    return ceil(bounds.size.height);
}

NSString* Beginning(NSString* text, NSUInteger nLength) {
    const NSRange last = [text rangeOfComposedCharacterSequenceAtIndex:nLength];
    return [[text substringToIndex:last.location] stringByAppendingString:@"\u2026"];
}

// As much of a text as there is room for.
NSString* Fitting(NSString* text, NSDictionary* attributes, NSSize room) {
    const CGFloat height = std::max(room.height, Height(@"X", attributes, kTallest));
    const bool fShort = [text length] <= kMostShown;
    if (fShort && Height(text, attributes, room.width) <= height) return text;
    NSUInteger nFits = 0;
    NSUInteger nTooLong = std::min([text length], kMostShown);
    while (nTooLong - nFits > 1) {
        const NSUInteger nTried = nFits + (nTooLong - nFits) / 2;
        const bool fFits = Height(Beginning(text, nTried), attributes, room.width) <= height;
        (fFits ? nFits : nTooLong) = nTried;
    }
    return Beginning(text, nFits);
}

}  // namespace

@implementation TavarinProLink_PanelText

- (CComponentCode)Component {
    return ccLabelText;
}

- (CGFloat)NeededHeight {
    NSString* text = [self stringValue];
    if ([text length] > kMostShown) text = [text substringToIndex:kMostShown];
    return Height(text, Attributes(self), [self bounds].size.width - 2 * kInset);
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
    [Fitting([self stringValue], attributes, area.size) drawInRect:area withAttributes:attributes];
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
