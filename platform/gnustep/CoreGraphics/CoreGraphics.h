#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstddef>

/// \file
/// The few Core Graphics calls that this system makes, for machines that have AppKit without the
/// framework.
///
/// Names, types and behaviour are those of Apple's documentation, so the same sources compile
/// against either. Every object is a Core Foundation object too: CFRetain, CFRelease, CFEqual and
/// the Core Foundation containers take it. What a function "creates" belongs to the caller. The
/// typed retain and release calls accept null and then do nothing. Objects never change once they
/// are made, so any thread may use them.

typedef double CGFloat;

/// AppKit's own geometry under its Core Graphics names; complete once AppKit is included.
typedef struct _NSPoint CGPoint;
typedef struct _NSSize CGSize;
typedef struct _NSRect CGRect;

typedef struct CGColorSpace* CGColorSpaceRef;
typedef struct CGColor* CGColorRef;
typedef struct CGGradient* CGGradientRef;

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
}
