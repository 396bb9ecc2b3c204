#pragma once

#import <AppKit/AppKit.h>

#include <cstdint>

/// \file
/// What a plug-in with a window of its own asks its view controller. Messages, because the fields
/// of a class in a bundle that is loaded cannot be reached from outside.

/// The operations that all three view controllers have for their plug-in's window. Each belongs to
/// the thread of the user interface.
@protocol TavarinProLink_WindowOperations

/// The host that CheckHost saw last; less than 1 when there is none with a session.
- (int32_t)CurrentHost;

/// What the link client said last, valid until it is asked for something else; empty when all went
/// well.
- (char const*)LastError;

/// Shows a text of the plug-in's own where the view shows those of the link client.
- (void)ShowError:(char const*)text;

/// The track that the next take goes to; -1 while there is nothing to choose from.
- (int32_t)ChosenTrack;

/// Chooses a track. Without effect where there is no such track.
- (void)ChooseTrack:(int32_t)track;

/// Fetches the list of tracks anew, where the view has one.
- (void)FetchTracks;

/// The list of tracks that the view has, another value for another list; null without a list.
- (void const*)TrackList;

/// Tells the view of a take that the host has on a track from before the view was made.
- (void)RememberTakeOnTrack:(int32_t)track Start:(int64_t)start End:(int64_t)end;

@end
