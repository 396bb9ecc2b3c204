#pragma once

#import <AppKit/AppKit.h>

@class TavarinProLink_TrackPopUp;

/// The open list of a pop-up, in a window of its own below or above it. It runs no loop: the
/// pop-up hands it keys and whatever the pointer does with the button held.
@interface TavarinProLink_TrackList : NSView {
@private
    TavarinProLink_TrackPopUp* m_popup;
    NSArray* m_titles;
    NSInteger m_nChosen;
    NSInteger m_nHighlighted;
    NSInteger m_nFirst;
    NSInteger m_nVisible;
    NSInteger m_nScrolling;
    NSTimer* m_timer;
    NSString* m_typed;
    NSTimeInterval m_lastTyped;
    NSView* m_shield;
}

/// Opens the list of a pop-up that is in a window. The pop-up has to outlive it or close it.
- (id)initForPopUp:(TavarinProLink_TrackPopUp*)popup;

/// Takes the list from the screen.
- (void)Close;

/// Highlights what is at a place on the screen; over an arrow the list begins to scroll.
- (void)PointAt:(NSPoint)place;

/// The entry at a place on the screen; -1 for none.
- (NSInteger)EntryAt:(NSPoint)place;

/// What a key does to the list.
- (void)TakeKey:(NSEvent*)event;

/// The highlighted entry; -1 for none.
- (NSInteger)Highlighted;

/// The first entry that is seen.
- (NSInteger)First;

@end
