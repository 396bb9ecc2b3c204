#pragma once

#import <AppKit/AppKit.h>

#include <vector>

#include "workstation/Arguments.h"

/// A window's controller that takes the steps of the command line, one after the other, once it is
/// shown.
@interface TavarinWorkstation_StepTaker : NSObject {
    std::vector<CStep> m_steps;
    std::size_t m_nNextStep;
    BOOL m_fFailed;
}

- (id)initWithSteps:(std::vector<CStep> const&)steps;

/// Opens the window and begins. Overridden by what opens it.
- (void)Start;

/// Takes one step other than waiting and the end; NO when it failed. Overridden.
- (BOOL)Take:(CStep const&)step;

/// Tidies up. Nothing can be done afterwards.
- (void)Finish;

/// Whether a step has failed.
- (BOOL)HasFailed;

@end
