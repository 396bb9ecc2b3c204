#import "Source/PanelDrawing.h"

#include "colours/ComponentColour.h"

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
