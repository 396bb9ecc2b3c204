#pragma once

#import <AppKit/AppKit.h>

/// \file
/// What the nibs' views are made of besides AppKit's own and the cells of `controls/`.

/// The background of a plug-in view, with a strip along its top edge for the view's name. In the
/// colours of the process-wide scheme.
@interface TavarinProLink_PanelView : NSView
@end

/// A button from a nib, with a QXButtonCell, that looks pressed, with its lamp lit, as long as its
/// state is on. It shows when it has the keyboard focus.
@interface TavarinProLink_ToggleButton : NSButton
@end

/// A pop-up that keeps entries of equal titles apart, unlike AppKit's own, so that positions in the
/// menu are positions in the list behind it. It shows when it has the keyboard focus.
@interface TavarinProLink_TrackPopUp : NSPopUpButton
@end
