#pragma once

#import <AppKit/AppKit.h>

#include <memory>

#include "workstation/Arguments.h"
#import "workstation/Log.h"
#import "workstation/StepTaker.h"
#import "workstation/Widgets.h"
#import "workstation/WorkSession.h"

/// The workstation's one window: the plug-ins' views, a transport, the last take and the last
/// result, and a log of what happened.
@interface TavarinWorkstation_Window : TavarinWorkstation_StepTaker {
    std::unique_ptr<CWorkSession> m_session;
    NSWindow* m_window;
    NSMutableArray* m_chooseButtons;
    NSTextField* m_textPosition;
    TavarinWorkstation_Log* m_log;
    TavarinWorkstation_Waveform* m_take;
    TavarinWorkstation_Waveform* m_result;
    NSTimer* m_timerHosts;
}

/// Throws `std::runtime_error` when the bundle or the directory for captures is not usable.
- (id)initWithArguments:(CArguments const&)arguments;

@end
