#pragma once

#import <AppKit/AppKit.h>

#include <string>

#include "workstation/AudioClip.h"

/// \file
/// What the workstation's window is made of. Panels and buttons are the plug-in bundle's own, so it
/// has to be loaded. Functions named Make… return objects that the caller does not own.

/// Shows a sound file: its name, whose tooltip has the whole path, its length and its waveform.
@interface TavarinWorkstation_Waveform : NSView {
    CAudioClip m_clip;
    BOOL m_fBright;
    NSTextField* m_name;
    NSTextField* m_length;
}
/// Shows a clip; an empty one shows a text instead.
- (void)Show:(CAudioClip const&)clip;
/// Chooses the colour of what came back from the host.
- (void)SetBright:(BOOL)fBright;
@end

/// An empty scroll view with a bar in the scheme's colours, which is seen when it is needed.
NSScrollView* MakeScrollView(NSRect frame);

NSString* Text(std::string const& strText);

/// A panel with a title in its strip.
NSView* MakePanel(NSString* title, NSSize size);
/// What is left of a panel below the strip, within margins.
NSRect PanelContent(NSView* panel);
/// A text of the bundle's class of that name, in the scheme's colour for it.
NSTextField* MakeText(NSString* className, NSString* text, NSRect frame, CGFloat size);
NSTextField* MakeField(NSString* text, NSRect frame);
/// Gives a field from MakeField the colours that the scheme has now.
void ColourField(NSTextField* field);
NSButton* MakeButton(NSString* title, NSRect frame, id target, SEL action, NSString* toolTip);

/// Makes a button from MakeButton look pressed, or not.
void ShowChosen(NSButton* button, bool fChosen);
