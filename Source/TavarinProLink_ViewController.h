#pragma once

#import "Source/ViewControllerOperations.h"
#include "link/TANClientInterProcess.h"

/// The Link view: the user picks a track of the host, and every capture goes to that track of the
/// host's script document. It shows what the link client has to say when the track list is fetched
/// and when the host changes, not after captures.
@interface TavarinProLink_ViewController
    : NSViewController <TavarinProLink_ViewControllerOperations> {
@public
    AAX_IEffectParameters* mEffectParameters;   ///< the plug-in's; not owned
    AAX_IController* mController;               ///< the plug-in's; not owned
    CTANClientInterProcess m_Script;            ///< the link client
    bool m_fAudioSuite;                         ///< always false: the host's script document
    IBOutlet NSTextField* m_textLastError;      ///< shows the client's error
    IBOutlet NSTextField* m_textAdvice;         ///< shows the client's advice
    IBOutlet NSPopUpButton* m_popupTracks;      ///< the list of tracks
    IBOutlet NSArrayController* m_TracksArray;  ///< its selection is the chosen track
    NSMutableArray* m_Tracks;  ///< owned; one dictionary per track, its name under "Name"
    int32_t m_nCurrentHost;    ///< the host that CheckHost saw last; -1: none
}

/// Fetches the track list from the host and keeps the selection where the list allows it. Without a
/// host it is the one entry "No Track". Waits up to three seconds.
- (IBAction)FillTrackList:(id)sender;

/// The user picked a track; the array controller knows which. Does nothing.
- (IBAction)OnTrack:(id)sender;

@end
