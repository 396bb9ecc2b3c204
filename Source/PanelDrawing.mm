#import "Source/PanelDrawing.h"

#include "colours/ComponentCodes.h"
#include "colours/ComponentColour.h"

namespace {

constexpr CGFloat kFocusInset = 1.5;
constexpr CGFloat kFocusRadius = 4.5;

}  // namespace

NSColor* PanelColour(CComponentCode code) {
    if (!gAppColours.IsGradient(code)) return gAppColours.FindNSColor(code);
    auto const& stops = static_cast<CGradientFill*>(gAppColours.Find(code))->m_components;
    return stops.empty() ? nil : (*stops.begin())->m_nsColor;
}

void DrawPanelText(NSString* text, CGFloat size, CComponentCode colour, NSRect line) {
    NSColor* textColour = PanelColour(colour);
    if (textColour == nil) return;
    NSDictionary* attributes = [NSDictionary
        dictionaryWithObjectsAndKeys:[NSFont systemFontOfSize:size], NSFontAttributeName,
                                     textColour, NSForegroundColorAttributeName, nil];
    [text drawInRect:line withAttributes:attributes];
}

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
