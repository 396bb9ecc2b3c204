#pragma once

#import <AppKit/AppKit.h>

@class TavarinProLink_TrackList;

/// A pop-up that keeps entries of equal titles apart, unlike AppKit's own, so that positions in the
/// menu are positions in the list behind it. It shows when it has the keyboard focus.
///
/// Its entries open as a list in the colours of the scheme, which is no menu of AppKit's: while it
/// is open, whoever runs the process's run loop goes on doing so. A click opens the list and leaves
/// it open, and a press that is let go over an entry chooses it. The arrow keys, Home, End, Page Up
/// and Page Down go through the list, typing goes to the first entry that begins so, Return and
/// Space choose, Escape closes.
@interface TavarinProLink_TrackPopUp : NSPopUpButton {
@private
    TavarinProLink_TrackList* m_list;
}

/// Whether the list is open.
- (BOOL)IsOpen;

/// Posts NSPopUpButtonWillPopUpNotification, then opens the list unless it is empty.
- (void)Open;

/// Closes the list; nothing is chosen.
- (void)Close;

/// Closes the list and chooses an entry, as a menu does.
- (void)Choose:(NSInteger)nEntry;

@end
