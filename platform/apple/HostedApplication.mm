#include "platform/HostedApplication.h"

#import <AppKit/AppKit.h>

bool StartHostedApplication(std::string* strReason) {
    strReason->clear();
    [NSApplication sharedApplication];
    return true;
}

void TurnRunLoop() {
    for (;;) {
        NSEvent* event = [NSApp nextEventMatchingMask:NSEventMaskAny
                                            untilDate:[NSDate distantPast]
                                               inMode:NSDefaultRunLoopMode
                                              dequeue:YES];
        if (event == nil) break;
        [NSApp sendEvent:event];
    }
    [NSApp updateWindows];
}
