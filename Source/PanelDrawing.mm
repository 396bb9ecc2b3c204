#import "Source/PanelDrawing.h"

#include "colours/ComponentColour.h"

NSColor* PanelColour(CComponentCode code) {
    if (!gAppColours.IsGradient(code)) return gAppColours.FindNSColor(code);
    auto const& stops = static_cast<CGradientFill*>(gAppColours.Find(code))->m_components;
    return stops.empty() ? nil : (*stops.begin())->m_nsColor;
}
