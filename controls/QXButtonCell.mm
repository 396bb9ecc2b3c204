#import "controls/QXButtonCell.h"

#include "colours/ComponentCodes.h"
#import "controls/CellDrawing.h"

@interface QXButtonCell (Private)
- (void)SetDefaults;
@end

@implementation QXButtonCell

- (id)init {
    self = [super init];
    [self SetDefaults];
    return self;
}

- (id)initWithCoder:(NSCoder*)coder {
    self = [super initWithCoder:coder];
    [self SetDefaults];
    return self;
}

- (void)SetDefaults {
    [self SetButtonControlsFaceUp:ccButtonFace
                         BorderUp:ccButtonBorder
                         FaceDown:ccButtonFaceActive
                       BorderDown:ccButtonBorderActive];
}

- (void)SetButtonControlsFaceUp:(CComponentCode)faceUp
                       BorderUp:(CComponentCode)borderUp
                       FaceDown:(CComponentCode)faceDown
                     BorderDown:(CComponentCode)borderDown {
    m_nFaceUp = faceUp;
    m_nBorderUp = borderUp;
    m_nFaceDown = faceDown;
    m_nBorderDown = borderDown;
}

- (void)drawBezelWithFrame:(NSRect)frame inView:(NSView*)view {
    [self DrawButton:CurrentContext()
              Active:[self isHighlighted]
                Area:&frame
             Flipped:[view isFlipped]];
}

- (void)DrawButton:(CGContextRef)context
            Active:(BOOL)fPressed
              Area:(NSRect*)pArea
           Flipped:(BOOL)fFlipped {
    if (gnAppStyle == 0) {
        DrawShadedBezel(context, [self isEnabled], fPressed, pArea -> size);
        return;
    }
    DrawFlatBezel(context, fPressed ? m_nBorderDown : m_nBorderUp,
                  fPressed ? m_nFaceDown : m_nFaceUp, *pArea, fFlipped);
}

- (NSRect)drawTitle:(NSAttributedString*)title withFrame:(NSRect)frame inView:(NSView*)view {
    const bool fImageLeft = [self imagePosition] == NSImageLeft;
    DrawTitle([title string], frame, [self controlSize],
              fImageLeft ? NSTextAlignmentLeft : NSTextAlignmentCenter, ccControlText);
    return frame;
}

@end
