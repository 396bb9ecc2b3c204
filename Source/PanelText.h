#pragma once

#import <AppKit/AppKit.h>

#include "colours/ComponentCode.h"

/// \file
/// The texts of the nibs' views, in the colours of the process-wide scheme.

/// A text in a colour of the scheme. What does not fit ends in an ellipsis; a tooltip of ours has
/// room for the whole. Each subclass has its colour.
@interface TavarinProLink_PanelText : NSTextField {
@private
    NSString* m_tip;
    NSTrackingRectTag m_nTracked;
}

/// The component whose colour the text has.
- (CComponentCode)Component;

/// The height that the text needs at the field's width, line by line.
- (CGFloat)NeededHeight;

@end

/// The name of a view, in the strip along its top edge.
@interface TavarinProLink_TitleText : TavarinProLink_PanelText
@end

/// What stands above a control.
@interface TavarinProLink_CaptionText : TavarinProLink_PanelText
@end

/// What went wrong.
@interface TavarinProLink_ErrorText : TavarinProLink_PanelText
@end

/// What to do about it.
@interface TavarinProLink_AdviceText : TavarinProLink_PanelText
@end

/// Arranges its two texts one below the other, again whenever one changes. The first is as high as
/// its text needs and the second has the rest; where both do not fit, the second keeps a third.
@interface TavarinProLink_TextStack : NSView

/// Gives the texts their frames.
- (void)Arrange;

@end
