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
    const char* const szDisplay = std::getenv("DISPLAY");
    return szDisplay != nullptr && *szDisplay != 0;
}

void PrepareApplication() {
    NSDictionary* defaults =
        [NSDictionary dictionaryWithObjectsAndKeys:@"YES", @"GSSuppressAppIcon", @"NO",
                                                   @"GSAppOwnsMiniwindow", nil];
    [[NSUserDefaults standardUserDefaults] registerDefaults:defaults];
}

void StopOnExceptions() {
    NSSetUncaughtExceptionHandler(Stop);
}
