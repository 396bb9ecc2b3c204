#include "platform/Application.h"

#import <AppKit/AppKit.h>
#include <X11/Xlib.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

constexpr float kLargestScale = 4;

void Stop(NSException* exception) {
    NSString* reason = [exception reason] == nil ? @"no reason given" : [exception reason];
    std::fprintf(stderr, "%s: %s\n", [[exception name] UTF8String], [reason UTF8String]);
    std::abort();
}

// What desktops tell every program of the display's resolution; it stands for 1 at 96.
float DisplayScale() {
    const std::unique_ptr<Display, decltype(&XCloseDisplay)> display(XOpenDisplay(nullptr),
                                                                     XCloseDisplay);
    if (!display) return 1;
    const char* const szDotsPerInch = XGetDefault(display.get(), "Xft", "dpi");
    return szDotsPerInch == nullptr ? 1 : std::strtof(szDotsPerInch, nullptr) / 96;
}

}  // namespace

bool HasDisplay() {
    const char* const szDisplay = std::getenv("DISPLAY");
    return szDisplay != nullptr && *szDisplay != 0;
}

void UseScale(float scale) {
    const float wanted = std::clamp(scale < 1 ? DisplayScale() : scale, 1.0F, kLargestScale);
    NSDictionary* defaults =
        [NSDictionary dictionaryWithObject:[NSString stringWithFormat:@"%g", wanted]
                                    forKey:@"GSScaleFactor"];
    [[NSUserDefaults standardUserDefaults] registerDefaults:defaults];
}

void PrepareApplication() {
    // Before anything else is done with the display.
    XInitThreads();
    NSDictionary* defaults =
        [NSDictionary dictionaryWithObjectsAndKeys:@"YES", @"GSSuppressAppIcon", @"NO",
                                                   @"GSAppOwnsMiniwindow", nil];
    [[NSUserDefaults standardUserDefaults] registerDefaults:defaults];
}

void StopOnExceptions() {
    NSSetUncaughtExceptionHandler(Stop);
}
