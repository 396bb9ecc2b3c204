#pragma once

#import <AppKit/AppKit.h>

/// \file
/// How the nibs' views look: drawn in the colours of the process-wide scheme. A colour that the
/// scheme lacks is not drawn.

/// The background of a plug-in view, with a strip along its top edge for the view's name.
@interface TavarinProLink_PanelView : NSView
@end

/// A push button that stays in when its state is on and then has its lamp lit.
@interface TavarinProLink_ButtonCell : NSButtonCell
@end

/// A pop-up button. Unlike AppKit's own it keeps entries of equal titles apart, so that positions
/// in the menu are positions in the list behind it.
@interface TavarinProLink_PopUpCell : NSPopUpButtonCell
@end
