#pragma once

#import <AppKit/AppKit.h>

#include <string>

/// The lines that tell what happened, the newest last. It scrolls, and follows the newest line
/// unless its user has scrolled back.
@interface TavarinWorkstation_Log : NSObject {
    NSScrollView* m_scroll;
    NSTextView* m_text;
}

/// What to put into a window.
- (NSView*)View;

- (void)Add:(std::string const&)strLine;

/// Takes the colours that the scheme has now.
- (void)Colour;

@end
