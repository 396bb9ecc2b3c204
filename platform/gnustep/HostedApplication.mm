#include "platform/HostedApplication.h"

#import <AppKit/AppKit.h>
#import <GNUstepGUI/GSDisplayServer.h>
#include <dlfcn.h>
#include <unistd.h>

#include <array>
#include <clocale>
#include <csignal>

#include "platform/Application.h"
#include "platform/ExceptionGuard.h"

namespace {

using XErrorHandler = int (*)(void* display, void* error);
using XSetErrorHandlerFunction = XErrorHandler (*)(XErrorHandler);

void* gDisplay = nullptr;
XErrorHandler gOwnHandler = nullptr;
XErrorHandler gHostHandler = nullptr;

// One handler serves all displays of a process; each display's errors go to whom it belongs.
int OnDisplayError(void* display, void* error) {
    const XErrorHandler handler = display == gDisplay ? gOwnHandler : gHostHandler;
    return handler == nullptr ? 0 : handler(display, error);
}

XSetErrorHandlerFunction FindSetErrorHandler() {
    return reinterpret_cast<XSetErrorHandlerFunction>(dlsym(RTLD_DEFAULT, "XSetErrorHandler"));
}

// What the process had before AppKit came.
class CHostSettings {
public:
    CHostSettings() : m_strLocale(std::setlocale(LC_ALL, nullptr)) {
        for (int nSignal = 1; nSignal < kSignals; ++nSignal) {
            sigaction(nSignal, nullptr, &m_Signals[nSignal]);
        }
        const XSetErrorHandlerFunction set = FindSetErrorHandler();
        if (set == nullptr) return;
        m_pHandler = set(nullptr);
        set(m_pHandler);
    }

    void GiveBack() const {
        std::setlocale(LC_ALL, m_strLocale.c_str());
        for (int nSignal = 1; nSignal < kSignals; ++nSignal) {
            // What was left to the system before, AppKit may have.
            const bool fHandled = m_Signals[nSignal].sa_handler != SIG_DFL;
            if (fHandled) sigaction(nSignal, &m_Signals[nSignal], nullptr);
        }
        const XSetErrorHandlerFunction set = FindSetErrorHandler();
        // A process that showed no windows before has nothing to be given back.
        if (set == nullptr || m_pHandler == nullptr) return;
        gDisplay = [GSCurrentServer() serverDevice];
        gHostHandler = m_pHandler;
        gOwnHandler = set(OnDisplayError);
    }

private:
    static constexpr int kSignals = 32;

    std::string m_strLocale;
    std::array<struct sigaction, kSignals> m_Signals{};
    XErrorHandler m_pHandler = nullptr;
};

// The process's arguments are not for this application: it would take settings from them, and open
// those that name files.
void ForgetArguments() {
    const char* szName = [[[NSProcessInfo processInfo] processName] UTF8String];
    static std::string strName = szName == nullptr ? "" : szName;
    static char* arguments[] = {strName.data(), nullptr};
    [NSProcessInfo initializeWithArguments:arguments count:1 environment:environ];
}

bool MakeApplication(std::string* strReason) {
    if (NSApp != nil) return true;
    const CHostSettings settings;
    const std::optional<std::string> strFailure = ExceptionIn([] {
        ForgetArguments();
        PrepareApplication();
        [NSApplication sharedApplication];
        [NSApp finishLaunching];
    });
    settings.GiveBack();
    *strReason = strFailure.value_or("");
    return !strFailure;
}

}  // namespace

bool StartHostedApplication(std::string* strReason) {
    static std::string strFailure;
    static const bool fStarted = MakeApplication(&strFailure);
    *strReason = strFailure;
    return fStarted;
}

void TurnRunLoop() {
    for (;;) {
        NSEvent* event = [NSApp nextEventMatchingMask:NSAnyEventMask
                                            untilDate:[NSDate distantPast]
                                               inMode:NSDefaultRunLoopMode
                                              dequeue:YES];
        if (event == nil) break;
        [NSApp sendEvent:event];
    }
    [NSApp updateWindows];
}
