#import "TestPointer.h"

#include "ChildProcess.h"
#import "ViewFixture.h"

namespace {

constexpr char szTool[] = "/usr/bin/xdotool";
constexpr NSTimeInterval kLookEvery = 0.02;

struct CJourney {
    std::vector<CStep> m_steps;
    std::size_t m_nNext = 0;

    bool IsOver() const { return m_nNext == m_steps.size(); }
    void GoOn() {
        if (IsOver() || !m_steps[m_nNext].m_IsDue()) return;
        // Counted first: the step may run AppKit, which comes back here.
        m_steps[m_nNext++].m_Take();
    }
};

}  // namespace

@interface TavarinTestStepper : NSObject {
@public
    CJourney* m_journey;
}
- (void)GoOn:(NSTimer*)timer;
@end

@implementation TavarinTestStepper
- (void)GoOn:(NSTimer*)timer {
    (void)timer;
    m_journey->GoOn();
}
@end

bool CTestPointer::IsPossible() {
    return access(szTool, X_OK) == 0;
}

void CTestPointer::MoveTo(NSView* view) {
    const NSRect inWindow = [view convertRect:[view bounds] toView:nil];
    MoveTo([[view window] convertBaseToScreen:NSMakePoint(NSMidX(inWindow), NSMidY(inWindow))]);
}

void CTestPointer::MoveTo(NSPoint place) {
    const CGFloat height = [[NSScreen mainScreen] frame].size.height;
    Run({"mousemove", std::to_string(static_cast<int>(place.x)),
         std::to_string(static_cast<int>(height - place.y))});
}

void CTestPointer::Press() {
    Run({"mousedown", "1"});
}

void CTestPointer::Release() {
    Run({"mouseup", "1"});
}

void CTestPointer::Key(std::string const& strName) {
    Run({"key", strName});
}

bool CTestPointer::Click(NSView* view) {
    std::vector<CStep> steps;
    steps.emplace_back(CAfterLooks{0}, [=, this] { MoveTo(view); });
    steps.emplace_back(CAfterLooks{5}, [this] { Press(); });
    steps.emplace_back(CAfterLooks{5}, [this] { Release(); });
    steps.emplace_back(CAfterLooks{5}, [] {});
    return TakeSteps(steps);
}

void CTestPointer::Run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), szTool);
    EXPECT_EQ(CChildProcess(arguments, "/dev/null", "/dev/null").Wait(), 0);
}

bool TakeSteps(std::vector<CStep> steps) {
    CJourney journey{std::move(steps)};
    TavarinTestStepper* stepper = [[TavarinTestStepper alloc] init];
    stepper->m_journey = &journey;
    NSTimer* timer = [NSTimer timerWithTimeInterval:kLookEvery
                                             target:stepper
                                           selector:@selector(GoOn:)
                                           userInfo:nil
                                            repeats:YES];
    [[NSRunLoop currentRunLoop] addTimer:timer forMode:NSDefaultRunLoopMode];
    [[NSRunLoop currentRunLoop] addTimer:timer forMode:NSEventTrackingRunLoopMode];
    const bool fOver = WaitFor([&journey] { return journey.IsOver(); });
    [timer invalidate];
    [stepper release];
    return fOver;
}

NSArray* VisibleWindows() {
    return NewWindows([NSArray array]);
}

NSArray* NewWindows(NSArray* known) {
    NSMutableArray* windows = [NSMutableArray array];
    for (NSUInteger nIndex = 0; nIndex < [[NSApp windows] count]; ++nIndex) {
        NSWindow* window = [[NSApp windows] objectAtIndex:nIndex];
        if ([window isVisible] && ![known containsObject:window]) [windows addObject:window];
    }
    return windows;
}
