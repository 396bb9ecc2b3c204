#import <AppKit/AppKit.h>
#import <AppKit/DPSOperators.h>
#include <CoreGraphics/CoreGraphics.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>
#include <vector>

#include "platform/gnustep/AxialShading.h"
#include "platform/gnustep/GradientStops.h"

/// A context and its port are one object. The category is in this file because a linker takes a
/// category from an archive only with functions that somebody calls.
@interface NSGraphicsContext (TavarinGraphicsPort)
@end

@implementation NSGraphicsContext (TavarinGraphicsPort)

- (void*)graphicsPort {
    return self;
}

@end

namespace {

// The back end counts in fractions of a pixel in 32 bits.
constexpr CGFloat kFarthest = 1e6;

NSGraphicsContext* Native(CGContextRef context) {
    return reinterpret_cast<NSGraphicsContext*>(context);
}

CGFloat Bounded(CGFloat coordinate) {
    if (std::isnan(coordinate)) return 0;
    return std::clamp(coordinate, -kFarthest, kFarthest);
}

NSPoint Bounded(NSPoint point) {
    return NSMakePoint(Bounded(point.x), Bounded(point.y));
}

NSRect Bounded(NSRect rect) {
    const NSPoint a = Bounded(rect.origin);
    const NSPoint b =
        Bounded(NSMakePoint(rect.origin.x + rect.size.width, rect.origin.y + rect.size.height));
    return NSMakeRect(std::min(a.x, b.x), std::min(a.y, b.y), std::abs(b.x - a.x),
                      std::abs(b.y - a.y));
}

GradientStop StopAt(CGFloat location, GradientStop stop, bool clear = false) {
    stop.location = location;
    if (clear) stop.rgba.back() = 0;
    return stop;
}

/// Stops for AppKit's gradients, which extend at both ends whatever they are told, and which stop
/// the program when there are fewer than two. An end that must not extend turns clear. Clipping
/// would not do: AppKit loses a clip that is no rectangle when a state is saved inside it.
std::vector<GradientStop> DrawableStops(std::span<const GradientStop> stops, bool before,
                                        bool after) {
    std::vector<GradientStop> drawable;
    drawable.reserve(stops.size() + 4);
    for (GradientStop const& stop : stops) {
        if (std::isnan(stop.location)) continue;
        const GradientStop valid = StopAt(std::clamp<CGFloat>(stop.location, 0, 1), stop);
        if (drawable.empty() && !before) {
            drawable.push_back(StopAt(0, valid, true));
            drawable.push_back(StopAt(0, valid));
        }
        drawable.push_back(valid);
    }
    if (!drawable.empty() && !after) {
        drawable.push_back(StopAt(1, drawable.back()));
        drawable.push_back(StopAt(1, drawable.back(), true));
    }
    if (drawable.size() == 1) drawable.push_back(drawable.front());
    return drawable;
}

/// The caller owns it; nil for no stops.
NSGradient* MakeGradient(std::span<const GradientStop> stops, bool before, bool after) {
    const std::vector<GradientStop> drawable = DrawableStops(stops, before, after);
    if (drawable.empty()) return nil;
    // Whoever draws in a loop need not have a pool in it.
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    NSMutableArray* colors = [NSMutableArray arrayWithCapacity:drawable.size()];
    std::vector<CGFloat> locations;
    locations.reserve(drawable.size());
    for (auto const& [location, rgba] : drawable) {
        locations.push_back(location);
        [colors addObject:[NSColor colorWithDeviceRed:rgba[0]
                                                green:rgba[1]
                                                 blue:rgba[2]
                                                alpha:rgba[3]]];
    }
    NSGradient* gradient = [[NSGradient alloc] initWithColors:colors
                                                  atLocations:locations.data()
                                                   colorSpace:[NSColorSpace deviceRGBColorSpace]];
    [pool drain];
    return gradient;
}

void* MakeExtending(std::span<const GradientStop> stops) {
    return MakeGradient(stops, true, true);
}

void Release(void* object) {
    [static_cast<id>(object) release];
}

void Paint(NSGraphicsContext* native, NSGradient* gradient, NSPoint start, NSPoint end) {
    start = Bounded(start);
    end = Bounded(end);
    if (gradient == nil || NSEqualPoints(start, end)) return;
    [native drawGradient:gradient fromPoint:start toPoint:end options:0];
}

NSPoint Direction(NSPoint from, NSPoint to) {
    const CGFloat length = std::hypot(to.x - from.x, to.y - from.y);
    return NSMakePoint((to.x - from.x) / length, (to.y - from.y) / length);
}

NSPoint Along(NSPoint from, NSPoint direction, CGFloat distance) {
    return NSMakePoint(from.x + direction.x * distance, from.y + direction.y * distance);
}

/// An arc of at most a right angle as one curve, which is what AppKit makes of it by a longer way.
/// False when it is more than that, or no arc at all.
bool AddCurve(NSGraphicsContext* native, NSPoint corner, NSPoint toward, CGFloat radius) {
    NSPoint current;
    DPScurrentpoint(native, &current.x, &current.y);
    const NSPoint back = Direction(corner, current);
    const NSPoint on = Direction(corner, toward);
    const CGFloat cosine = back.x * on.x + back.y * on.y;
    const CGFloat sine = std::abs(back.x * on.y - back.y * on.x);
    if (!(radius > 0 && sine > 1e-3 && cosine < 1e-3)) return false;
    const CGFloat sweep = std::atan2(sine, -cosine);
    const CGFloat tangent = radius * sine / (1 - cosine);
    const CGFloat handle = tangent - radius * std::tan(sweep / 4) * 4 / 3;
    const NSPoint start = Along(corner, back, tangent);
    const NSPoint end = Along(corner, on, tangent);
    const NSPoint first = Along(corner, back, handle);
    const NSPoint second = Along(corner, on, handle);
    if (std::hypot(start.x - current.x, start.y - current.y) > 1e-6) {
        DPSlineto(native, start.x, start.y);
    }
    DPScurveto(native, first.x, first.y, second.x, second.y, end.x, end.y);
    return true;
}

}  // namespace

extern "C" {

void CGContextSaveGState(CGContextRef context) {
    if (context != nullptr) DPSgsave(Native(context));
}

void CGContextRestoreGState(CGContextRef context) {
    if (context != nullptr) DPSgrestore(Native(context));
}

void CGContextBeginPath(CGContextRef context) {
    if (context != nullptr) DPSnewpath(Native(context));
}

void CGContextMoveToPoint(CGContextRef context, CGFloat x, CGFloat y) {
    if (context != nullptr) DPSmoveto(Native(context), Bounded(x), Bounded(y));
}

void CGContextAddLineToPoint(CGContextRef context, CGFloat x, CGFloat y) {
    if (context != nullptr) DPSlineto(Native(context), Bounded(x), Bounded(y));
}

void CGContextClosePath(CGContextRef context) {
    if (context != nullptr) DPSclosepath(Native(context));
}

void CGContextAddRect(CGContextRef context, CGRect rect) {
    const NSRect bounded = Bounded(rect);
    CGContextMoveToPoint(context, NSMinX(bounded), NSMinY(bounded));
    CGContextAddLineToPoint(context, NSMaxX(bounded), NSMinY(bounded));
    CGContextAddLineToPoint(context, NSMaxX(bounded), NSMaxY(bounded));
    CGContextAddLineToPoint(context, NSMinX(bounded), NSMaxY(bounded));
    CGContextClosePath(context);
}

void CGContextAddArcToPoint(CGContextRef context, CGFloat x1, CGFloat y1, CGFloat x2, CGFloat y2,
                            CGFloat radius) {
    if (context == nullptr) return;
    const NSPoint corner = Bounded(NSMakePoint(x1, y1));
    const NSPoint toward = Bounded(NSMakePoint(x2, y2));
    if (AddCurve(Native(context), corner, toward, Bounded(radius))) return;
    DPSarct(Native(context), corner.x, corner.y, toward.x, toward.y, Bounded(radius));
}

void CGContextClip(CGContextRef context) {
    if (context == nullptr) return;
    DPSclip(Native(context));
    DPSnewpath(Native(context));
}

void CGContextFillPath(CGContextRef context) {
    if (context != nullptr) DPSfill(Native(context));
}

void CGContextEOFillPath(CGContextRef context) {
    if (context != nullptr) DPSeofill(Native(context));
}

void CGContextFillRect(CGContextRef context, CGRect rect) {
    if (context == nullptr) return;
    const NSRect bounded = Bounded(rect);
    DPSrectfill(Native(context), bounded.origin.x, bounded.origin.y, bounded.size.width,
                bounded.size.height);
    DPSnewpath(Native(context));
}

void CGContextSetFillColorWithColor(CGContextRef context, CGColorRef color) {
    if (context == nullptr || color == nullptr) return;
    const CGFloat* rgba = CGColorGetComponents(color);
    DPSsetrgbcolor(Native(context), rgba[0], rgba[1], rgba[2]);
    DPSsetalpha(Native(context), rgba[3]);
}

void CGContextDrawLinearGradient(CGContextRef context, CGGradientRef gradient, CGPoint startPoint,
                                 CGPoint endPoint, CGGradientDrawingOptions options) {
    if (context == nullptr || gradient == nullptr) return;
    const bool before = (options & kCGGradientDrawsBeforeStartLocation) != 0;
    const bool after = (options & kCGGradientDrawsAfterEndLocation) != 0;
    if (before && after) {
        void* kept = DrawableOf(gradient, MakeExtending, Release);
        Paint(Native(context), static_cast<NSGradient*>(kept), startPoint, endPoint);
        return;
    }
    NSGradient* native = MakeGradient(StopsOf(gradient), before, after);
    Paint(Native(context), native, startPoint, endPoint);
    [native release];
}

void CGContextDrawShading(CGContextRef context, CGShadingRef shading) {
    if (context == nullptr || shading == nullptr) return;
    const AxialShading axial = AxialShadingOf(shading);
    NSGradient* native = MakeGradient(axial.stops, axial.extendStart, axial.extendEnd);
    Paint(Native(context), native, axial.start, axial.end);
    [native release];
}
}

CGRect CGRectInset(CGRect rect, CGFloat dx, CGFloat dy) {
    constexpr CGFloat kNowhere = std::numeric_limits<CGFloat>::infinity();
    const NSRect inset = NSInsetRect(rect, dx, dy);
    if (inset.size.width >= 0 && inset.size.height >= 0) return inset;
    return NSMakeRect(kNowhere, kNowhere, 0, 0);
}
