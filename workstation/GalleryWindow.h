#pragma once

#import <AppKit/AppKit.h>

#include "workstation/Arguments.h"
#import "workstation/StepTaker.h"

/// A window with every control in every state. The only step that it takes is a screenshot.
@interface TavarinWorkstation_GalleryWindow : TavarinWorkstation_StepTaker {
    NSWindow* m_window;
}

/// Throws `std::runtime_error` when the bundle with the gallery does not load.
- (id)initWithArguments:(CArguments const&)arguments;

@end
