#include "platform/HostedApplication.h"

#import <AppKit/AppKit.h>

bool StartHostedApplication(std::string* strReason) {
    strReason->clear();
    [NSApplication sharedApplication];
    return true;
}

// A process has one application and one queue of events, and the workstation's own loop hands out
// those of every window. Taking any of them here would be taking the workstation's.
void TurnRunLoop() {}
