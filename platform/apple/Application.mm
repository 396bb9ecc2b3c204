#include "platform/Application.h"

#import <AppKit/AppKit.h>

#include <cstdio>
#include <cstdlib>

namespace {

void Stop(NSException* exception) {
    NSString* reason = [exception reason] == nil ? @"no reason given" : [exception reason];
    std::fprintf(stderr, "%s: %s\n", [[exception name] UTF8String], [reason UTF8String]);
    std::abort();
}

}  // namespace

bool HasDisplay() {
    return true;
}

// Every display has its own, and its windows know it.
void UseScale(float /*scale*/) {}

void PrepareApplication() {
    [[NSApplication sharedApplication] setActivationPolicy:NSApplicationActivationPolicyRegular];
}

void StopOnExceptions() {
    NSSetUncaughtExceptionHandler(Stop);
}
