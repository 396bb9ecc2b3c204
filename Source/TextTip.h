#pragma once

#import <AppKit/AppKit.h>

/// Where on a screen the whole of a text can be read: below the pointer, or else above it, or else
/// over it, as narrow as possible. A text that no place is large enough for has the screen.
NSRect TipFrame(NSString* text, NSPoint pointer, NSRect screen);

/// The whole of a text, in a window of its own beside the pointer, in the scheme's colours.
/// AppKit's own tooltips are not every text's size. There is one at most.
@interface TavarinProLink_TextTip : NSView {
@private
    NSView* m_owner;
    NSString* m_text;
    NSTimer* m_timer;
}

/// Shows the tooltip of a view, until the pointer leaves it, a button is pressed on the tip, or the
/// view's window goes. Nothing happens unless the pointer is there.
+ (void)ShowFor:(NSView*)owner;

/// Takes a view's tip from the screen. A view that shows one has to before it is freed.
+ (void)HideFor:(NSView*)owner;

/// What is shown of the text.
- (NSString*)ShownText;

@end
