#import <AppKit/AppKit.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "platform/Application.h"
#include "platform/ChildProgram.h"
#include "platform/ExceptionGuard.h"
#include "plugin/LinkSender.h"
#include "window/PlugInWatch.h"
#import "window/PlugInWindow.h"

namespace {

constexpr int kExitDone = 0;
constexpr int kExitTrouble = 2;
constexpr double kTurn = 0.1;
std::atomic<unsigned> s_nTurns{0};

}  // namespace

/// Tells the plug-in that the window lives while a menu is open, and no more than that.
@interface TavarinView_Pulse : NSObject {
@public
    CPlugInMirror* m_pPlugIn;
}
@end

@implementation TavarinView_Pulse
- (void)OnTimer:(NSTimer*)timer {
    ++s_nTurns;
    m_pPlugIn->Hear();
    m_pPlugIn->ViewTurned();
}
@end

namespace {

void StartPulse(CPlugInMirror& plugIn) {
    TavarinView_Pulse* pulse = [[[TavarinView_Pulse alloc] init] autorelease];
    pulse->m_pPlugIn = &plugIn;
    NSTimer* timer = [NSTimer timerWithTimeInterval:0.25
                                             target:pulse
                                           selector:@selector(OnTimer:)
                                           userInfo:nil
                                            repeats:YES];
    [[NSRunLoop currentRunLoop] addTimer:timer forMode:NSEventTrackingRunLoopMode];
}

void HandleEventsUntil(NSDate* date) {
    while (NSEvent* event = [NSApp nextEventMatchingMask:NSUIntegerMax
                                               untilDate:date
                                                  inMode:NSDefaultRunLoopMode
                                                 dequeue:YES]) {
        [NSApp sendEvent:event];
    }
    [NSApp updateWindows];
}

void ShowWindow(CPlugInMirror& plugIn) {
    if (!HasDisplay()) throw std::runtime_error("there is no display");
    PrepareApplication();
    UseScale(plugIn.Opened().scale);
    [NSApplication sharedApplication];
    StopOnExceptions();
    [NSApp finishLaunching];
    CPlugInWindow window(plugIn);
    StartPulse(plugIn);
    window.Show();
    CloseWithoutTurns(s_nTurns, window.CloseWatch(), [&plugIn] { plugIn.SayClosed(); });
    while (plugIn.Hear() && !window.IsClosed()) {
        NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
        HandleEventsUntil([NSDate dateWithTimeIntervalSinceNow:kTurn]);
        ++s_nTurns;
        window.Turn();
        [pool drain];
    }
    if (window.IsClosed()) plugIn.SayClosed();
}

int Run() {
    CRecordSocket socket(kChildDescriptor);
    if (!socket.IsOpen()) {
        std::fputs("tavarin-view: started by the plug-ins of Tavarin Pro, not by hand\n", stderr);
        return kExitTrouble;
    }
    CPlugInMirror plugIn(socket);
    if (!plugIn.Begin()) return kExitTrouble;
    WatchForDeadHosts();
    EndWithPlugIn(socket.Descriptor(), plugIn.Opened().nWorkstation);

    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    std::string strFailure;
    const std::optional<std::string> strException = ExceptionIn([&] {
        try {
            ShowWindow(plugIn);
        } catch (std::exception const& failure) {
            strFailure = failure.what();
        }
    });
    if (strException) strFailure = *strException;
    if (!strFailure.empty()) {
        plugIn.Report(PlugInResult::WindowFailed, "No window can be shown: " + strFailure);
    }
    [[NSUserDefaults standardUserDefaults] synchronize];
    [pool drain];
    return strFailure.empty() ? kExitDone : kExitTrouble;
}

}  // namespace

int main() {
    // AppKit's own tidying at the end would wait for what is no longer there.
    std::_Exit(Run());
}
