#pragma once

#import <AppKit/AppKit.h>
#include <CoreGraphics/CoreGraphics.h>

#include <cstdint>

#include "colours/ComponentCode.h"

class CComponentColour;

/// \file
/// Rectangles painted in the colours of the process-wide scheme, and what buttons are shaded with.
/// To be used on the thread that draws, in the coordinates of the view that draws.

/// Name of the font of an audio label.
extern NSString* const fontAudioLabel;

/// Name of the font of the horizontal axis's labels.
extern NSString* const fontXAxisLabel;

/// Painting with components' colours. A plain colour fills; a gradient runs in a fill direction:
///
/// | value     | direction                                                            |
/// |-----------|----------------------------------------------------------------------|
/// | 3         | left to right                                                        |
/// | 4         | right to left in plain rectangles, top to bottom in rounded ones     |
/// | 10        | diagonal: top left to bottom right, but in plain rectangles of       |
/// |           | flipped views top right to bottom left                               |
/// | any other | top to bottom                                                        |
///
/// `Flipped` tells whether the view is flipped, so that the top is the top on the screen.
///
/// A background is painted first, across the whole rectangle, and is always a plain colour. A
/// colour that is missing, or that is a gradient where a plain one is needed, paints nothing.
/// Plain rectangles and backgrounds leave their colour behind as the context's fill colour; nothing
/// else is left there.
@interface GraphicUtils : NSObject

/// Paints a rectangle with colours; either may be null.
+ (void)FillRect:(CGContextRef)context
           ColorP:(CComponentColour*)pColor
      BackgroundP:(CComponentColour*)pBackground
             Rect:(NSRect)rect
    FillDirection:(std::int32_t)nFillDirection
          Flipped:(BOOL)fFlipped;

/// The same with codes; (0, 0) stands for none.
+ (void)FillRect:(CGContextRef)context
            Color:(CComponentCode)color
       Background:(CComponentCode)background
             Rect:(NSRect)rect
    FillDirection:(std::int32_t)nFillDirection
          Flipped:(BOOL)fFlipped;

/// Paints a rectangle with round corners. A radius of 0 makes a plain rectangle, with the
/// directions of one.
+ (void)FillRoundRect:(CGContextRef)context
                Color:(CComponentCode)color
           Background:(CComponentCode)background
                 Rect:(NSRect)rect
               Radius:(float)radius
        FillDirection:(std::int32_t)nFillDirection
              Flipped:(BOOL)fFlipped;

/// The same, and a plain colour leaves out what lies both in the rectangle and in the hole; a part
/// of the hole outside is painted. A gradient covers the whole current clip, hole included, and
/// with a radius of 0 there is no hole.
+ (void)FillRoundRect:(CGContextRef)context
                Color:(CComponentCode)color
           Background:(CComponentCode)background
                 Rect:(NSRect)rect
               Radius:(float)radius
                 Hole:(NSRect)hole
        FillDirection:(std::int32_t)nFillDirection
              Flipped:(BOOL)fFlipped;

/// The radius of a button's corners, in points.
+ (float)GetButtonCornerRadius;

@end

/// \name Shadings of buttons
/// Each computes the colour at `*pIn`, from 0 at one end to 1 at the other: greys, followed by an
/// alpha of 1. `info` is the number of outputs as an integer. A disabled button has one look,
/// selected or not.
/// @{

/// Not pressed.
void QXShaderNormalBtn(void* info, CGFloat const* pIn, CGFloat* pOut);

/// Pressed.
void QXShaderSelectedBtn(void* info, CGFloat const* pIn, CGFloat* pOut);

/// Disabled.
void QXShaderDisabledNormalBtn(void* info, CGFloat const* pIn, CGFloat* pOut);

/// Disabled and pressed.
void QXShaderDisabledSelectedBtn(void* info, CGFloat const* pIn, CGFloat* pOut);
/// @}

/// A function that evaluates one of the shadings in a colour space of at most three channels; null
/// for more. The caller releases it.
CGFunctionRef GetBtnShader(CGColorSpace* space, CGFunctionEvaluateCallback evaluator);
