#pragma once

#import "Source/ViewControllerOperations.h"
#include "link/TANClientInterProcess.h"

/// The Doubler Link view: every capture goes to track 0 of the host's AudioSuite document and at
/// once becomes a Doubler process with its result on track 1.
@interface TavarinProDoublerLink_ViewController
    : NSViewController <TavarinProLink_ViewControllerOperations> {
@public
    AAX_IEffectParameters* mEffectParameters;  ///< the plug-in's; not owned
    AAX_IController* mController;              ///< the plug-in's; not owned
    CTANClientInterProcess m_Script;           ///< the link client
    bool m_fAudioSuite;                        ///< true from awakeFromNib on
    IBOutlet NSTextField* m_textLastError;     ///< shows the client's error
    IBOutlet NSTextField* m_textAdvice;        ///< shows the client's advice
    int64_t m_lInputStart;  ///< the last capture on the timeline, in samples; -1: none yet
    int64_t m_lInputEnd;    ///< its end
    IBOutlet NSImageView* m_imageLogo;  ///< shows when there is nothing to say
    int32_t m_nCurrentHost;             ///< the host that CheckHost saw last
}

/// Empties the output track and, once there is a capture, has the host double it.
- (void)CreateDoubler;

@end
