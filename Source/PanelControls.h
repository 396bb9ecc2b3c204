#pragma once

#import <AppKit/AppKit.h>

/// \file
/// What the nibs' views are made of besides AppKit's own and the cells of `controls/`.

/// The background of a plug-in view, with a strip along its top edge for the view's name. In the
/// colours of the process-wide scheme, all of it anew when the scheme changes. When its window
/// closes, the preferences are written to disk.
@interface TavarinProLink_PanelView : NSView
@end

/// A button from a nib that looks pressed, with its lamp lit, as long as its state is on. It shows
/// when it has the keyboard focus. For a QXButtonCell; with another cell the look is the cell's.
@interface TavarinProLink_ToggleButton : NSButton
@end
