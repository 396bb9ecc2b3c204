#pragma once

#import <AppKit/AppKit.h>
#include <CoreGraphics/CoreGraphics.h>

#include "colours/ComponentCode.h"

/// A button that draws itself in the colours of the process-wide scheme: a face in a border of a
/// point's width with round corners, and a title in bold system type, centred unless the image is
/// on its left. A code that the scheme lacks is not painted.
///
/// With `gnAppStyle` 0 the bezel is a grey shading instead, drawn at the origin of the view, which
/// stays the clip.
@interface QXButtonCell : NSButtonCell {
@public
    CComponentCode m_nFaceUp;      ///< Face when not pressed; ccButtonFace at first.
    CComponentCode m_nBorderUp;    ///< Border when not pressed; ccButtonBorder at first.
    CComponentCode m_nFaceDown;    ///< Face when pressed; ccButtonFaceActive at first.
    CComponentCode m_nBorderDown;  ///< Border when pressed; ccButtonBorderActive at first.
}

/// Gives the codes their first values.
- (id)init;

/// Does the same, whatever the archive holds.
- (id)initWithCoder:(NSCoder*)coder;

/// Sets the codes. Redrawing is up to the caller.
- (void)SetButtonControlsFaceUp:(CComponentCode)faceUp
                       BorderUp:(CComponentCode)borderUp
                       FaceDown:(CComponentCode)faceDown
                     BorderDown:(CComponentCode)borderDown;

/// Has DrawButton paint the bezel as the state of the cell wants it.
- (void)drawBezelWithFrame:(NSRect)frame inView:(NSView*)view;

/// Paints the bezel into `*pArea`.
- (void)DrawButton:(CGContextRef)context
            Active:(BOOL)fPressed
              Area:(NSRect*)pArea
           Flipped:(BOOL)fFlipped;

/// Draws the text of `title` from the top of `frame`, and answers `frame`.
- (NSRect)drawTitle:(NSAttributedString*)title withFrame:(NSRect)frame inView:(NSView*)view;

@end
