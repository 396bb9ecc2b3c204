#pragma once

#import <AppKit/AppKit.h>

#include <memory>

#include "workstation/Arguments.h"
#import "workstation/Widgets.h"
#import "workstation/WorkSession.h"

/// The workstation's one window: the plug-ins' views, a transport, the last take and the last
/// result, and the log of every notification. Takes the steps of the command line once it is shown.
@interface TavarinWorkstation_Window : NSObject {
    CArguments m_arguments;
    std::unique_ptr<CWorkSession> m_session;
    std::size_t m_nNextStep;
    BOOL m_fFailed;
    NSWindow* m_window;
    NSMutableArray* m_chooseButtons;
    NSTextField* m_textPosition;
    NSTextView* m_textLog;
    TavarinWorkstation_WaveformPanel* m_takePanel;
    TavarinWorkstation_WaveformPanel* m_resultPanel;
    NSTimer* m_timerHosts;
}

/// Throws `std::runtime_error` when the bundle or the directory for captures is not usable.
- (id)initWithArguments:(CArguments const&)arguments;

/// Opens the window and begins.
- (void)Start;

/// Lets the plug-ins go and removes temporary captures. Nothing can be done with the window
/// afterwards.
- (void)Finish;

/// Whether a step of the command line has failed.
- (BOOL)HasFailed;

@end
