#include "platform/Application.h"

#import <AppKit/AppKit.h>

#include <cstdio>
#include <cstdlib>

namespace {

void Stop(NSException* exception) {
    std::fprintf(stderr, "%s: %s\n", [[exception name] UTF8String],
                 [[exception reason] UTF8String]);
    std::abort();
}

}  // namespace

bool HasDisplay() {
    return true;
}

void PrepareApplication() {
    [[NSApplication sharedApplication] setActivationPolicy:NSApplicationActivationPolicyRegular];
}

void StopOnExceptions() {
    NSSetUncaughtExceptionHandler(Stop);
}
