#import <AppKit/AppKit.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "colours/ComponentColour.h"
#include "colours/DefaultColours.h"
#include "platform/Application.h"
#include "platform/ExceptionGuard.h"
#include "tools/ToolFailure.h"
#include "workstation/Arguments.h"
#import "workstation/GalleryWindow.h"
#import "workstation/Window.h"

namespace {

constexpr int kExitDone = 0;
constexpr int kExitFailed = 1;
constexpr int kExitTrouble = 2;

}  // namespace

/// Ends the program with its last window, and says how it went.
@interface TavarinWorkstation_Delegate : NSObject {
@public
    TavarinWorkstation_StepTaker* m_window;
}
@end

@implementation TavarinWorkstation_Delegate

- (void)applicationDidFinishLaunching:(NSNotification*)notification {
    [m_window Start];
}

- (BOOL)applicationShouldTerminateAfterLastWindowClosed:(id)application {
    return YES;
}

- (void)applicationWillTerminate:(NSNotification*)notification {
    // The application ends the process itself, so what has to be tidied and said is done here.
    [m_window Finish];
    const bool fFailed = [m_window HasFailed];
    [m_window release];
    m_window = nil;
    [[NSUserDefaults standardUserDefaults] synchronize];
    std::fflush(stdout);
    // Nothing is left to tidy, and AppKit's own handlers of the process's end do not expect to run
    // in the middle of one of its notifications.
    if (fFailed) std::_Exit(kExitFailed);
}

@end

namespace {

// The caller owns it. Throws when what it needs does not load.
TavarinWorkstation_StepTaker* MakeWindow(CArguments const& arguments) {
    if (arguments.fGallery) {
        return [[TavarinWorkstation_GalleryWindow alloc] initWithArguments:arguments];
    }
    return [[TavarinWorkstation_Window alloc] initWithArguments:arguments];
}

}  // namespace

namespace {

int Run(int argc, char** argv) {
    int nStatus = kExitDone;
    const std::optional<CArguments> arguments = ReadArguments(argc, argv, &nStatus);
    if (!arguments) return nStatus;
    if (!HasDisplay()) throw std::runtime_error("there is no display: DISPLAY is not set");

    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    PrepareApplication();
    const std::optional<std::string> unreachable =
        ExceptionIn([] { [NSApplication sharedApplication]; });
    if (unreachable) throw std::runtime_error("there is no display: " + *unreachable);
    StopOnExceptions();
    AppCreateDefaultColoursDesigner(&gAppColours);
    TavarinWorkstation_Delegate* delegate = [[TavarinWorkstation_Delegate alloc] init];
    delegate->m_window = MakeWindow(*arguments);
    [NSApp setDelegate:(id)delegate];
    [NSApp run];
    [pool drain];
    return kExitDone;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (CToolFailure const& failure) {
        failure.Report("tavarin-workstation");
        return kExitTrouble;
    } catch (std::exception const& failure) {
        std::fprintf(stderr, "tavarin-workstation: %s\n", failure.what());
        return kExitTrouble;
    }
}
