#import "controls/CellDrawing.h"

#include "colours/ComponentColour.h"
#include "colours/DeviceRGB.h"
#import "controls/GraphicUtils.h"
#include "controls/RoundRectPath.h"

namespace {

constexpr CGFloat kBorderWidth = 1.0;
constexpr std::int32_t kTopToBottom = 1;

CGFloat FontSize(NSControlSize size) {
    switch (size) {
        case NSControlSizeMini:
            return 8.0;
        case NSControlSizeSmall:
            return 10.0;
        default:
            return 12.0;
    }
}

CGFunctionEvaluateCallback Shading(bool fEnabled, bool fPressed) {
    if (fEnabled) return fPressed ? QXShaderSelectedBtn : QXShaderNormalBtn;
    return fPressed ? QXShaderDisabledSelectedBtn : QXShaderDisabledNormalBtn;
}

}  // namespace

void DrawFlatBezel(CGContextRef context, CComponentCode border, CComponentCode face, NSRect frame,
                   bool fFlipped) {
    const float radius = [GraphicUtils GetButtonCornerRadius];
    [GraphicUtils FillRoundRect:context
                          Color:border
                     Background:CComponentCode()
                           Rect:frame
                         Radius:radius
                  FillDirection:kTopToBottom
                        Flipped:fFlipped];
    [GraphicUtils FillRoundRect:context
                          Color:face
                     Background:CComponentCode()
                           Rect:CGRectInset(frame, kBorderWidth, kBorderWidth)
                         Radius:radius - static_cast<float>(kBorderWidth)
                  FillDirection:kTopToBottom
                        Flipped:fFlipped];
}

void DrawShadedBezel(CGContextRef context, bool fEnabled, bool fPressed, NSSize size) {
    const auto w = static_cast<float>(size.width);
    const auto h = static_cast<float>(size.height);
    CGContextBeginPath(context);
    AddRoundRect(context, 0, 0, w, h, [GraphicUtils GetButtonCornerRadius]);
    CGContextClip(context);

    const CDeviceRGB space;
    const CGFunctionRef function = GetBtnShader(space, Shading(fEnabled, fPressed));
    const CGShadingRef shading =
        CGShadingCreateAxial(space, NSMakePoint(w, 0), NSMakePoint(w, h), function, false, false);
    CGContextDrawShading(context, shading);
    CGShadingRelease(shading);
    CGFunctionRelease(function);
}

void DrawTitle(NSString* title, NSRect rect, NSControlSize size, NSTextAlignment alignment,
               CComponentCode colour) {
    NSColor* textColour = gAppColours.FindNSColor(colour);
    if (textColour == nil) return;
    NSMutableParagraphStyle* style = [[NSMutableParagraphStyle alloc] init];
    [style setAlignment:alignment];
    [style setLineBreakMode:NSLineBreakByTruncatingMiddle];
    NSFont* font = [NSFont boldSystemFontOfSize:FontSize(size)];
    NSDictionary* attributes =
        [NSDictionary dictionaryWithObjectsAndKeys:font, NSFontAttributeName, style,
                                                   NSParagraphStyleAttributeName, textColour,
                                                   NSForegroundColorAttributeName, nil];
    [title drawInRect:rect withAttributes:attributes];
    [style release];
}

CGContextRef CurrentContext() {
    return static_cast<CGContextRef>([[NSGraphicsContext currentContext] graphicsPort]);
}
