#import "controls/GraphicUtils.h"

#include "colours/ComponentColour.h"
#include "controls/RoundRectPath.h"

NSString* const fontAudioLabel = @"Trebuchet MS";
NSString* const fontXAxisLabel = @"Arial";

namespace {

constexpr float kButtonCornerRadius = 6.0F;

constexpr std::int32_t kLeftToRight = 3;
constexpr std::int32_t kRightToLeft = 4;
constexpr std::int32_t kDiagonal = 10;

/// Where a gradient starts and ends.
struct CGradientLine {
    NSPoint start;
    NSPoint end;
};

/// The context's state, put back at the end of the scope.
class CSavedState {
public:
    explicit CSavedState(CGContextRef context) : m_context(context) {
        CGContextSaveGState(context);
    }
    ~CSavedState() { CGContextRestoreGState(m_context); }
    CSavedState(CSavedState const&) = delete;
    CSavedState& operator=(CSavedState const&) = delete;

private:
    CGContextRef m_context;
};

CGradientLine TopToBottom(NSRect rect, bool fFlipped) {
    const NSPoint low = rect.origin;
    const NSPoint high = NSMakePoint(rect.origin.x, NSMaxY(rect));
    return fFlipped ? CGradientLine{low, high} : CGradientLine{high, low};
}

CGradientLine LineInRect(NSRect rect, std::int32_t nDirection, bool fFlipped) {
    const NSPoint origin = rect.origin;
    const NSPoint alongX = NSMakePoint(NSMaxX(rect), origin.y);
    const NSPoint alongY = NSMakePoint(origin.x, NSMaxY(rect));
    switch (nDirection) {
        case kLeftToRight:
            return {origin, alongX};
        case kRightToLeft:
            return {alongX, origin};
        case kDiagonal:
            // On the screen these are two different diagonals; that is how it has to look.
            return fFlipped ? CGradientLine{alongX, alongY} : CGradientLine{alongY, alongX};
        default:
            return TopToBottom(rect, fFlipped);
    }
}

CGradientLine LineInRoundRect(NSRect rect, std::int32_t nDirection, bool fFlipped) {
    const NSPoint origin = rect.origin;
    const NSPoint alongX = NSMakePoint(NSMaxX(rect), origin.y);
    switch (nDirection) {
        case kLeftToRight:
            return {origin, alongX};
        case kDiagonal:
            if (fFlipped) return {origin, NSMakePoint(NSMaxX(rect), NSMaxY(rect))};
            return {NSMakePoint(origin.x, NSMaxY(rect)), alongX};
        default:
            return TopToBottom(rect, fFlipped);
    }
}

void DrawGradient(CGContextRef context, CComponentColour const* pFill, CGradientLine const& line) {
    const CGGradientRef gradient = static_cast<CGradientFill const*>(pFill)->m_gradient;
    if (gradient == nullptr) return;
    CGContextDrawLinearGradient(
        context, gradient, line.start, line.end,
        kCGGradientDrawsBeforeStartLocation | kCGGradientDrawsAfterEndLocation);
}

void FillPlain(CGContextRef context, CGColorRef color, NSRect rect) {
    if (color == nullptr) return;
    CGContextSetFillColorWithColor(context, color);
    CGContextFillRect(context, rect);
}

void FillBackground(CGContextRef context, CComponentCode background, NSRect rect) {
    if (background == CComponentCode()) return;
    FillPlain(context, gAppColours.FindCGColorRef(background), rect);
}

// In single precision.
void AddRoundRect(CGContextRef context, NSRect rect, float radius) {
    AddRoundRect(context, static_cast<float>(rect.origin.x), static_cast<float>(rect.origin.y),
                 static_cast<float>(NSMaxX(rect)), static_cast<float>(NSMaxY(rect)), radius);
}

void AddHole(CGContextRef context, NSRect hole) {
    CGContextMoveToPoint(context, NSMinX(hole), NSMinY(hole));
    CGContextAddLineToPoint(context, NSMaxX(hole), NSMinY(hole));
    CGContextAddLineToPoint(context, NSMaxX(hole), NSMaxY(hole));
    CGContextAddLineToPoint(context, NSMinX(hole), NSMaxY(hole));
    CGContextClosePath(context);
}

}  // namespace

@implementation GraphicUtils

+ (void)FillRect:(CGContextRef)context
           ColorP:(CComponentColour*)pColor
      BackgroundP:(CComponentColour*)pBackground
             Rect:(NSRect)rect
    FillDirection:(std::int32_t)nFillDirection
          Flipped:(BOOL)fFlipped {
    if (pBackground != nullptr) FillPlain(context, pBackground->m_cgColor, rect);
    if (pColor == nullptr) return;
    if (dynamic_cast<CGradientFill*>(pColor) == nullptr) {
        FillPlain(context, pColor->m_cgColor, rect);
        return;
    }
    const CSavedState state(context);
    CGContextBeginPath(context);
    CGContextAddRect(context, rect);
    CGContextClip(context);
    DrawGradient(context, pColor, LineInRect(rect, nFillDirection, fFlipped));
}

+ (void)FillRect:(CGContextRef)context
            Color:(CComponentCode)color
       Background:(CComponentCode)background
             Rect:(NSRect)rect
    FillDirection:(std::int32_t)nFillDirection
          Flipped:(BOOL)fFlipped {
    [self FillRect:context
               ColorP:gAppColours.Find(color)
          BackgroundP:gAppColours.Find(background)
                 Rect:rect
        FillDirection:nFillDirection
              Flipped:fFlipped];
}

+ (void)FillRoundRect:(CGContextRef)context
                Color:(CComponentCode)color
           Background:(CComponentCode)background
                 Rect:(NSRect)rect
               Radius:(float)radius
        FillDirection:(std::int32_t)nFillDirection
              Flipped:(BOOL)fFlipped {
    if (radius == 0.0F) {
        [self FillRect:context
                    Color:color
               Background:background
                     Rect:rect
            FillDirection:nFillDirection
                  Flipped:fFlipped];
        return;
    }
    FillBackground(context, background, rect);
    const CSavedState state(context);
    CGContextBeginPath(context);
    AddRoundRect(context, rect, radius);
    CGContextClip(context);
    if (!gAppColours.IsGradient(color)) {
        FillPlain(context, gAppColours.FindCGColorRef(color), rect);
        return;
    }
    DrawGradient(context, gAppColours.Find(color), LineInRoundRect(rect, nFillDirection, fFlipped));
}

+ (void)FillRoundRect:(CGContextRef)context
                Color:(CComponentCode)color
           Background:(CComponentCode)background
                 Rect:(NSRect)rect
               Radius:(float)radius
                 Hole:(NSRect)hole
        FillDirection:(std::int32_t)nFillDirection
              Flipped:(BOOL)fFlipped {
    if (radius == 0.0F) {
        [self FillRect:context
                    Color:color
               Background:background
                     Rect:rect
            FillDirection:nFillDirection
                  Flipped:fFlipped];
        return;
    }
    FillBackground(context, background, rect);
    if (gAppColours.IsGradient(color)) {
        // Without a clip, so that it covers everything, hole included: that is how it has to look.
        DrawGradient(context, gAppColours.Find(color),
                     LineInRoundRect(rect, nFillDirection, fFlipped));
        return;
    }
    const CGColorRef plain = gAppColours.FindCGColorRef(color);
    if (plain == nullptr) return;
    const CSavedState state(context);
    CGContextSetFillColorWithColor(context, plain);
    CGContextBeginPath(context);
    AddRoundRect(context, rect, radius);
    AddHole(context, hole);
    CGContextEOFillPath(context);
}

+ (float)GetButtonCornerRadius {
    return kButtonCornerRadius;
}

@end
