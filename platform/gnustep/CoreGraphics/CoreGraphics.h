#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstddef>
#include <cstdint>

/// \file
/// The few Core Graphics calls that this system makes, for machines that have AppKit without the
/// framework.
///
/// Names, types and behaviour are those of Apple's documentation, so the same sources compile
/// against either. Every object is a Core Foundation object too: CFRetain, CFRelease, CFEqual and
/// the Core Foundation containers take it. What a function "creates" belongs to the caller. The
/// typed retain and release calls accept null and then do nothing. Objects never change once they
/// are made, so any thread may use them; contexts belong to the thread that draws.

typedef double CGFloat;

/// AppKit's own geometry under its Core Graphics names; complete once AppKit is included.
typedef struct _NSPoint CGPoint;
typedef struct _NSSize CGSize;
typedef struct _NSRect CGRect;

typedef struct CGColorSpace* CGColorSpaceRef;
typedef struct CGColor* CGColorRef;
typedef struct CGGradient* CGGradientRef;
typedef struct CGFunction* CGFunctionRef;
typedef struct CGShading* CGShadingRef;

/// AppKit's graphics context under its Core Graphics name: what `-graphicsPort` answers.
typedef struct CGContext* CGContextRef;

/// Which sides of a gradient take the colour of its first or last stop; otherwise they stay as they
/// are.
enum CGGradientDrawingOptions : std::uint32_t {
    kCGGradientDrawsBeforeStartLocation = 1,
    kCGGradientDrawsAfterEndLocation = 2
};

constexpr CGGradientDrawingOptions operator|(CGGradientDrawingOptions a,
                                             CGGradientDrawingOptions b) {
    return static_cast<CGGradientDrawingOptions>(static_cast<std::uint32_t>(a) |
                                                 static_cast<std::uint32_t>(b));
}

/// Computes the outputs of a function from its inputs.
typedef void (*CGFunctionEvaluateCallback)(void* info, const CGFloat* in, CGFloat* out);
typedef void (*CGFunctionReleaseInfoCallback)(void* info);

/// `version` is 0. `releaseInfo` is called once when the function goes; it may be null.
struct CGFunctionCallbacks {
    unsigned int version;
    CGFunctionEvaluateCallback evaluate;
    CGFunctionReleaseInfoCallback releaseInfo;
};

extern "C" {

/// The one colour space there is: red, green and blue as the display takes them.
CGColorSpaceRef CGColorSpaceCreateDeviceRGB(void);
CGColorSpaceRef CGColorSpaceRetain(CGColorSpaceRef space);
void CGColorSpaceRelease(CGColorSpaceRef space);

/// The number of colour channels, alpha not counted; 0 for null.
std::size_t CGColorSpaceGetNumberOfComponents(CGColorSpaceRef space);

/// A colour from the channels of `space` followed by alpha, kept as they are, also outside 0 to 1.
/// Null when `space` or `components` is null.
CGColorRef CGColorCreate(CGColorSpaceRef space, const CGFloat* components);
CGColorRef CGColorRetain(CGColorRef color);
void CGColorRelease(CGColorRef color);

/// True for two colours with the same space and equal components, and for two nulls.
bool CGColorEqualToColor(CGColorRef color1, CGColorRef color2);

/// The channels and alpha, valid as long as the colour.
const CGFloat* CGColorGetComponents(CGColorRef color);

/// The number of channels with alpha; 0 for null.
std::size_t CGColorGetNumberOfComponents(CGColorRef color);

/// 0 for null.
CGFloat CGColorGetAlpha(CGColorRef color);

/// The colour's own space, not to be released; null for null.
CGColorSpaceRef CGColorGetColorSpace(CGColorRef color);

/// A gradient through the CGColorRefs of `colors`, each at its entry of `locations` or, when
/// `locations` is null, evenly spaced from 0 to 1. The colours are copied. Null when there is no
/// array, no colour in it, or a null among them.
CGGradientRef CGGradientCreateWithColors(CGColorSpaceRef space, CFArrayRef colors,
                                         const CGFloat* locations);
CGGradientRef CGGradientRetain(CGGradientRef gradient);
void CGGradientRelease(CGGradientRef gradient);

/// A function of `domainDimension` inputs and `rangeDimension` outputs. `domain` and `range` hold a
/// lower and an upper limit for each and are copied; inputs and outputs are cut at them, or not at
/// all when the table is null. Null when there is nothing to call.
CGFunctionRef CGFunctionCreate(void* info, std::size_t domainDimension, const CGFloat* domain,
                               std::size_t rangeDimension, const CGFloat* range,
                               const CGFunctionCallbacks* callbacks);
CGFunctionRef CGFunctionRetain(CGFunctionRef function);
void CGFunctionRelease(CGFunctionRef function);

/// Colours along the line from `start` to `end`: `function` gives channels and alpha for an input
/// from 0 to 1. Beyond an end, what is there stays, or takes the colour of that end when it
/// extends. Keeps the function. Null when there is none.
CGShadingRef CGShadingCreateAxial(CGColorSpaceRef space, CGPoint start, CGPoint end,
                                  CGFunctionRef function, bool extendStart, bool extendEnd);
CGShadingRef CGShadingRetain(CGShadingRef shading);
void CGShadingRelease(CGShadingRef shading);

/// \name Drawing
/// All of it does nothing in a null context. Coordinates are those of the view that draws; what is
/// beyond a million points counts as a million, and NaN as 0.
/// @{

/// Saved states nest. A state is the clip, the fill colour, the transformation and, other than in
/// the framework, the path. A clip that is no rectangle does not hold in a state that is saved
/// inside it, and is there again when that state is restored: what has such a clip does not save.
void CGContextSaveGState(CGContextRef context);
void CGContextRestoreGState(CGContextRef context);

/// A path is built of subpaths; each begins with a point or is a whole rectangle.
void CGContextBeginPath(CGContextRef context);
void CGContextMoveToPoint(CGContextRef context, CGFloat x, CGFloat y);
void CGContextAddLineToPoint(CGContextRef context, CGFloat x, CGFloat y);
void CGContextClosePath(CGContextRef context);
void CGContextAddRect(CGContextRef context, CGRect rect);

/// An arc that touches the line from the current point to (x1, y1) and the one from there to (x2,
/// y2), and a line to where it begins.
void CGContextAddArcToPoint(CGContextRef context, CGFloat x1, CGFloat y1, CGFloat x2, CGFloat y2,
                            CGFloat radius);

/// These use up the path. After clipping, nothing outside the path is painted; what a path encloses
/// is told by the winding number or by the even-odd rule.
void CGContextClip(CGContextRef context);
void CGContextFillPath(CGContextRef context);
void CGContextEOFillPath(CGContextRef context);

/// Uses up the path, without having it filled.
void CGContextFillRect(CGContextRef context, CGRect rect);

/// A null colour leaves the one that is set. Lines take the same colour here.
void CGContextSetFillColorWithColor(CGContextRef context, CGColorRef color);

/// Both paint the whole clip, apart from what they do not extend to; nothing when start and end are
/// one point. They leave the path.
void CGContextDrawLinearGradient(CGContextRef context, CGGradientRef gradient, CGPoint startPoint,
                                 CGPoint endPoint, CGGradientDrawingOptions options);
void CGContextDrawShading(CGContextRef context, CGShadingRef shading);
/// @}
}

/// The rectangle without `dx` at its left and right and `dy` above and below, or with more for
/// negative distances. Infinitely far away and empty when nothing would be left.
CGRect CGRectInset(CGRect rect, CGFloat dx, CGFloat dy);
