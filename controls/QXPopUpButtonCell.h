#pragma once

#import <AppKit/AppKit.h>
#include <CoreGraphics/CoreGraphics.h>

#include "colours/ComponentCode.h"

/// A pop-up that draws itself like QXButtonCell, with the selected item's title and, at the right
/// end, the arrow from the resource PopupArrow.png of the bundle that this class is in.
@interface QXPopUpButtonCell : NSPopUpButtonCell {
@public
    CComponentCode m_nFaceUp;      ///< Face when not pressed; ccButtonFace at first.
    CComponentCode m_nBorderUp;    ///< Border when not pressed; ccButtonBorder at first.
    CComponentCode m_nFaceDown;    ///< Face when pressed; ccButtonFaceActive at first.
    CComponentCode m_nBorderDown;  ///< Border when pressed; ccButtonBorderActive at first.
    BOOL m_fReadOnly;              ///< No arrow, and a normal title also when disabled.
}

/// Gives the codes their first values, and makes it not read-only.
- (id)init;

/// Does the same, whatever the archive holds.
- (id)initWithCoder:(NSCoder*)coder;

/// Sets the codes. Redrawing is up to the caller.
- (void)SetButtonControlsFaceUp:(CComponentCode)faceUp
                       BorderUp:(CComponentCode)borderUp
                       FaceDown:(CComponentCode)faceDown
                     BorderDown:(CComponentCode)borderDown;

/// A read-only pop-up shows its value and no arrow. Redrawing is up to the caller.
- (void)SetReadOnly:(BOOL)fReadOnly;

/// Has DrawButton paint the bezel as the state of the cell wants it.
- (void)drawBezelWithFrame:(NSRect)frame inView:(NSView*)view;

/// Paints the bezel into `*pArea`.
- (void)DrawButton:(CGContextRef)context
            Active:(BOOL)fPressed
              Area:(NSRect*)pArea
           Flipped:(BOOL)fFlipped;

/// Draws all of it. The title begins 1 point below the top of `frame`, that of a small pop-up 3.
- (void)drawWithFrame:(NSRect)frame inView:(NSView*)view;

@end
