#pragma once

#import <AppKit/AppKit.h>

#include <string>

#include "workstation/AudioClip.h"

/// \file
/// What the workstation's window is made of. Functions named Make… return objects that the caller
/// does not own.

/// A panel with a title in its strip.
@interface TavarinWorkstation_Panel : NSView {
    NSString* m_title;
}
- (id)initWithFrame:(NSRect)frame title:(NSString*)title;
@end

/// A panel that shows a sound file: its name, its length and its waveform.
@interface TavarinWorkstation_WaveformPanel : TavarinWorkstation_Panel {
    CAudioClip m_clip;
    BOOL m_fBright;
}
/// Shows a clip; an empty one shows the text instead.
- (void)Show:(CAudioClip const&)clip;
/// Chooses the colour of what came back from the host.
- (void)SetBright:(BOOL)fBright;
@end

@interface TavarinWorkstation_ButtonCell : NSButtonCell
@end

NSString* Text(std::string const& strText);
NSTextField* MakeLabel(NSString* text, NSRect frame, CGFloat size);
NSTextField* MakeField(NSString* text, NSRect frame);
NSButton* MakeButton(NSString* title, NSRect frame, id target, SEL action, NSString* toolTip);
