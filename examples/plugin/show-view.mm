// The least that a plug-in does with the bundle: load it, show a view, send a capture.
//
//   show-view BUNDLE TAKE SAMPLES [SECONDS]
//
// Shows the Doubler view and hands over TAKE, a sound file of SAMPLES samples, at the start of the
// timeline, in place of what the host's first track holds. Ends with the window, or after SECONDS.
// The view deletes a take that the host has already: give it a file that is yours to lose.

#import <AppKit/AppKit.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "Source/Notifications.h"
#import "Source/TavarinProDoublerLink_ViewController.h"
#import "Source/TavarinProLink_ViewControllerFactory.h"

namespace {

// The classes come with the bundle, so they are asked for and never linked.
TavarinProDoublerLink_ViewController* MakeView(NSBundle* bundle) {
    TavarinProLink_ViewControllerFactory* factory = [[[bundle principalClass] alloc] init];
    TavarinProDoublerLink_ViewController* view =
        [factory DoublerLinkViewControllerFromBundle:bundle
                                    effectParameters:nullptr
                                          controller:nullptr];
    [factory release];
    return view;
}

NSWindow* Show(NSViewController* view) {
    NSWindow* window =
        [[NSWindow alloc] initWithContentRect:[[view view] bounds]
                                    styleMask:NSWindowStyleMaskTitled | NSWindowStyleMaskClosable
                                      backing:NSBackingStoreBuffered
                                        defer:NO];
    [window setReleasedWhenClosed:NO];
    [window setTitle:@"A plug-in"];
    [window setContentView:[view view]];
    [window center];
    [window makeKeyAndOrderFront:nil];
    return window;
}

void Capture(TavarinProDoublerLink_ViewController* view, const char* szPath, double dSamples) {
    paramPostAnalyze record{};
    // The host opens the file, from wherever it was started.
    const std::string strPath = std::filesystem::absolute(szPath).string();
    std::strncpy(record.szFilePath, strPath.c_str(), sizeof(record.szFilePath) - 1);
    record.dRegionEnd = dSamples;
    [view NotificationReceived:notifyPostAnalyze Data:&record DataSize:sizeof(record)];
    // Asked for by name: the class is not linked, and its fields are not either.
    NSTextField* error = [view valueForKey:@"m_textLastError"];
    std::printf("The view says: %s\n", [[error stringValue] UTF8String]);
}

// Lets the window work, and has the view look for the host twice a second as a plug-in does.
void RunFor(double dSeconds, NSWindow* window, TavarinProDoublerLink_ViewController* view) {
    NSDate* end = [NSDate dateWithTimeIntervalSinceNow:dSeconds];
    while ([window isVisible] && [end timeIntervalSinceNow] > 0) {
        NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
        NSEvent* event = [NSApp nextEventMatchingMask:NSAnyEventMask
                                            untilDate:[NSDate dateWithTimeIntervalSinceNow:0.5]
                                               inMode:NSDefaultRunLoopMode
                                              dequeue:YES];
        if (event) [NSApp sendEvent:event];
        [view CheckHost];
        [pool drain];
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 4) return std::fprintf(stderr, "show-view BUNDLE TAKE SAMPLES [SECONDS]\n"), 2;
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    [NSApplication sharedApplication];
    const std::string strBundle = std::filesystem::absolute(argv[1]).string();
    NSBundle* bundle = [NSBundle bundleWithPath:[NSString stringWithUTF8String:strBundle.c_str()]];
    if (![bundle load]) return std::fprintf(stderr, "%s does not load\n", argv[1]), 1;

    TavarinProDoublerLink_ViewController* view = MakeView(bundle);
    NSWindow* window = Show(view);
    Capture(view, argv[2], std::atof(argv[3]));
    RunFor(argc > 4 ? std::atof(argv[4]) : HUGE_VAL, window, view);

    [window release];
    [view release];
    [pool drain];
    return 0;
}
