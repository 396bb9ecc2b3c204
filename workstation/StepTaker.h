#pragma once

#import <AppKit/AppKit.h>

#include <memory>
#include <string>
#include <vector>

#include "workstation/Arguments.h"
#include "workstation/SchemeWatch.h"

/// A window's controller that takes the steps of the command line, one after the other, once it is
/// shown, and shows the command line's scheme as it is at any time.
@interface TavarinWorkstation_StepTaker : NSObject {
    std::vector<CStep> m_steps;
    std::size_t m_nNextStep;
    BOOL m_fFailed;
    BOOL m_fForce;
    std::unique_ptr<CSchemeWatch> m_scheme;
    NSTimer* m_timerScheme;
}

- (id)initWithArguments:(CArguments const&)arguments;

/// Shows the scheme of the command line, if there is one. For whoever overrides ShowScheme, once
/// that can be done. Throws `CToolFailure` when it cannot be read.
- (void)UseScheme;

/// Shows a scheme, given as its image. Overridden.
- (void)ShowScheme:(NSData*)image named:(NSString*)name;

/// Tells the user something in a line. Overridden.
- (void)Tell:(std::string const&)strLine;

/// Opens the window and begins. Overridden by what opens it.
- (void)Start;

/// Writes a picture of a view, and tells when that does not work.
- (BOOL)WritePictureOf:(NSView*)view to:(std::string const&)strFile;

/// Takes one step other than waiting and the end; NO when it failed. Overridden.
- (BOOL)Take:(CStep const&)step;

/// Tidies up. Nothing can be done afterwards.
- (void)Finish;

/// Whether a step has failed, or was not taken.
- (BOOL)HasFailed;

@end
