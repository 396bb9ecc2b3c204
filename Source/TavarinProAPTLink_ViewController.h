#pragma once

#import "Source/ViewControllerOperations.h"
#include "link/TANClientInterProcess.h"

/// The APT Link view: captures a guide onto track 0 and a dub onto track 1 of the host's AudioSuite
/// document. Every dub asks for an APT process with the result on track 2, once both takes exist.
/// With the automatic switch on, a guide's capture selects the dub and an export the guide again.
@interface TavarinProAPTLink_ViewController
    : NSViewController <TavarinProLink_ViewControllerOperations> {
@public
    AAX_IEffectParameters* mEffectParameters;  ///< the plug-in's; not owned
    AAX_IController* mController;              ///< the plug-in's; not owned
    CTANClientInterProcess m_Script;           ///< the link client
    bool m_fAudioSuite;                        ///< true from awakeFromNib on
    IBOutlet NSTextField* m_textLastError;     ///< shows the client's error
    IBOutlet NSTextField* m_textAdvice;        ///< shows the client's advice
    bool m_fGuideSelected;  ///< whether the next capture is the guide; otherwise it is the dub
    bool m_fAutoSwitch;     ///< the automatic switch; a preference
    IBOutlet NSButton* m_btnGuide;            ///< on while the next capture is the guide
    IBOutlet NSButton* m_btnDub;              ///< on while the next capture is the dub
    IBOutlet NSButton* m_btnAutoTrackSwitch;  ///< on while the automatic switch is
    int64_t m_lGuideStart;  ///< the last guide on the timeline, in samples; -1: none yet
    int64_t m_lGuideEnd;    ///< its end
    int64_t m_lDubStart;    ///< the last dub on the timeline, in samples; -1: none yet
    int64_t m_lDubEnd;      ///< its end
    IBOutlet NSImageView* m_imageLogo;  ///< shows when there is nothing to say
    int32_t m_nCurrentHost;             ///< the host that CheckHost saw last
}

/// The next capture is the guide.
- (IBAction)OnGuide:(id)sender;

/// The next capture is the dub.
- (IBAction)OnDub:(id)sender;

/// Inverts the automatic switch, whatever the sender's state, and stores it.
- (IBAction)OnAutoTrackSwitch:(id)sender;

/// Makes the three buttons show the state.
- (void)SetActiveTrack;

/// Empties the output track and, once there is a guide and a dub, has the host align them.
- (void)CreateAPT;

@end
