// What a view leaves behind when it is released.

#include <malloc.h>

#import "ViewFixture.h"

namespace {

class ViewLeaks : public CViewTest {
protected:
    void SetUp() override {
        CViewTest::SetUp();
        m_window = [[NSWindow alloc] initWithContentRect:NSMakeRect(200, 300, 420, 232)
                                               styleMask:NSWindowStyleMaskTitled
                                                 backing:NSBackingStoreBuffered
                                                   defer:NO];
        [m_window setReleasedWhenClosed:NO];
        [m_window orderFront:nil];
    }
    void TearDown() override {
        [m_window close];
        [m_window release];
        CViewTest::TearDown();
    }

    // Creates a view, shows it and releases it.
    template <typename Make>
    void Cycle(Make const& make) {
        NSViewController* controller = make();
        [m_window setContentView:[controller view]];
        [[controller view] display];
        [(AnyView)controller CheckHost];
        [(AnyView)controller SetTextFields];
        [m_window setContentView:[[[NSView alloc] initWithFrame:NSZeroRect] autorelease]];
        [controller release];
        TakeEvents();
    }

    // What the display has sent would otherwise heap up unread.
    static void TakeEvents() {
        while (NSEvent* event = [NSApp nextEventMatchingMask:NSAnyEventMask
                                                   untilDate:[NSDate distantPast]
                                                      inMode:NSDefaultRunLoopMode
                                                     dequeue:YES]) {
            [NSApp sendEvent:event];
        }
    }

    template <typename Make>
    void ExpectNoGrowth(Make const& make, double dLimit = kLimit) {
        ExpectNoGrowthOf([this, &make] { Cycle(make); }, dLimit);
    }

    template <typename Work>
    void ExpectNoGrowthOf(Work const& work, double dLimit = kLimit) {
        Repeat(kWarmUp, work);
        const std::size_t nBefore = mallinfo2().uordblks;
        Repeat(kCycles, work);
        const double dPerCycle =
            (static_cast<double>(mallinfo2().uordblks) - static_cast<double>(nBefore)) / kCycles;
        RecordProperty("BytesPerCycle", std::to_string(dPerCycle));
        EXPECT_LT(dPerCycle, dLimit);
    }

    template <typename Work>
    static void Repeat(int nTimes, Work const& work) {
        for (int nTime = 0; nTime < nTimes; ++nTime) {
            NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
            work();
            [pool drain];
        }
    }

    // In bytes for each cycle. GNUstep's bindings to an array controller keep some; what we own
    // ourselves is larger.
    static constexpr double kLimit = 64;
    static constexpr double kLimitWithBindings = 128;
    // For the first eight hundred views or so, AppKit's caches grow.
    static constexpr int kWarmUp = 1000;
    static constexpr int kCycles = 500;
    NSWindow* m_window = nil;
};

TEST_F(ViewLeaks, LinkViewLeavesNothing) {
    ExpectNoGrowth(
        [this] {
            return [Factory() LinkViewControllerFromBundle:Bundle()
                                          effectParameters:nullptr
                                                controller:nullptr];
        },
        kLimitWithBindings);
}

TEST_F(ViewLeaks, APTLinkViewLeavesNothing) {
    ExpectNoGrowth([this] {
        return [Factory() APTLinkViewControllerFromBundle:Bundle()
                                         effectParameters:nullptr
                                               controller:nullptr];
    });
}

TEST_F(ViewLeaks, DoublerLinkViewLeavesNothing) {
    ExpectNoGrowth([this] {
        return [Factory() DoublerLinkViewControllerFromBundle:Bundle()
                                             effectParameters:nullptr
                                                   controller:nullptr];
    });
}

TEST_F(ViewLeaks, OpeningThePopUpLeavesNothing) {
    TavarinProLink_ViewController* view = MakeLink();
    ExpectNoGrowthOf([view] { [view FillTrackList:nil]; });
}

TEST_F(ViewLeaks, FactoriesLeaveNothing) {
    ExpectNoGrowth([this] {
        [[[[Bundle() principalClass] alloc] init] release];
        return [Factory() APTLinkViewControllerFromBundle:Bundle()
                                         effectParameters:nullptr
                                               controller:nullptr];
    });
}

}  // namespace
