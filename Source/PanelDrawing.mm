#import "Source/PanelDrawing.h"

#include "colours/ComponentCodes.h"
#include "colours/ComponentColour.h"

namespace {

constexpr CGFloat kHeaderHeight = 40;
constexpr CGFloat kCornerRadius = 5;

NSBezierPath* RoundedRect(NSRect rect, CGFloat inset) {
    return [NSBezierPath bezierPathWithRoundedRect:NSInsetRect(rect, inset, inset)
                                           xRadius:kCornerRadius
                                           yRadius:kCornerRadius];
}

void Fill(NSBezierPath* path, CComponentCode code) {
    NSColor* top = PanelColour(code);
    NSColor* bottom = PanelColour(code, true);
    if (top == nil || bottom == nil) return;
    NSGradient* gradient = [[NSGradient alloc] initWithStartingColor:top endingColor:bottom];
    [gradient drawInBezierPath:path angle:90];
    [gradient release];
}

void Stroke(NSBezierPath* path, CComponentCode code) {
    NSColor* colour = PanelColour(code);
    if (colour == nil) return;
    [colour set];
    [path setLineWidth:1];
    [path stroke];
}

}  // namespace

NSColor* PanelColour(CComponentCode code, bool fLast) {
    if (!gAppColours.IsGradient(code)) return gAppColours.FindNSColor(code);
    auto const& stops = static_cast<CGradientFill*>(gAppColours.Find(code))->m_components;
    if (stops.empty()) return nil;
    return (fLast ? *stops.rbegin() : *stops.begin())->m_nsColor;
}

void DrawPanel(NSRect bounds) {
    NSColor* background = PanelColour(ccWindowBackground);
    NSColor* edge = PanelColour(ccTrackBackground);
    if (background == nil || edge == nil) return;
    [background set];
    NSRectFill(bounds);
    const NSRect header = NSMakeRect(bounds.origin.x, NSMaxY(bounds) - kHeaderHeight,
                                     bounds.size.width, kHeaderHeight);
    Fill([NSBezierPath bezierPathWithRect:header], ccTrackInfoBackground);
    [edge set];
    NSRectFill(NSMakeRect(header.origin.x, header.origin.y, header.size.width, 1));
}

void DrawFace(NSRect frame, bool fActive, bool fFocus) {
    Fill(RoundedRect(frame, 0.5), fActive ? ccButtonFaceActive : ccButtonFace);
    Stroke(RoundedRect(frame, 0.5), fActive || fFocus ? ccButtonBorderActive : ccButtonBorder);
    if (fFocus) Stroke(RoundedRect(frame, 2.5), ccButtonBorderActive);
}

void DrawLine(NSString* text, NSFont* font, CComponentCode colour, NSRect frame,
              NSTextAlignment alignment) {
    NSColor* textColour = PanelColour(colour);
    if (text == nil || textColour == nil) return;
    NSMutableParagraphStyle* style = [[NSMutableParagraphStyle alloc] init];
    [style setAlignment:alignment];
    [style setLineBreakMode:NSLineBreakByTruncatingTail];
    NSDictionary* attributes =
        [NSDictionary dictionaryWithObjectsAndKeys:font, NSFontAttributeName, textColour,
                                                   NSForegroundColorAttributeName, style,
                                                   NSParagraphStyleAttributeName, nil];
    [style release];
    const CGFloat height = [text sizeWithAttributes:attributes].height;
    frame.origin.y += (frame.size.height - height) / 2;
    frame.size.height = height;
    [text drawInRect:frame withAttributes:attributes];
}

bool HasFocus(NSView* view) {
    return [[view window] isKeyWindow] && [[view window] firstResponder] == view;
}
