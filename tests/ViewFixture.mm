#import "ViewFixture.h"

#include <algorithm>
#include <cstring>

NSBundle* CViewTest::Bundle() {
    return [NSBundle bundleWithPath:[NSString stringWithUTF8String:TAVARIN_BUNDLE]];
}

void CViewTest::SetUpTestSuite() {
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    [NSApplication sharedApplication];
    ASSERT_TRUE([Bundle() load]) << TAVARIN_BUNDLE;
    [pool drain];
}

void CViewTest::SetUp() {
    m_pool = [[NSAutoreleasePool alloc] init];
    m_controllers = [[NSMutableArray alloc] init];
    m_windows = [[NSMutableArray alloc] init];
    m_factory = [[[Bundle() principalClass] alloc] init];
    ASSERT_NE(m_factory, nil);
}

void CViewTest::TearDown() {
    for (NSUInteger nIndex = 0; nIndex < [m_windows count]; ++nIndex) {
        [[m_windows objectAtIndex:nIndex] close];
    }
    [m_windows release];
    [m_controllers release];
    [m_factory release];
    [m_pool drain];
}

template <typename Controller>
Controller* CViewTest::Keep(Controller* controller) {
    [m_controllers addObject:controller];
    [controller release];
    EXPECT_NE([controller view], nil);
    return controller;
}

TavarinProLink_ViewController* CViewTest::MakeLink() {
    return Keep([m_factory LinkViewControllerFromBundle:Bundle()
                                       effectParameters:nullptr
                                             controller:nullptr]);
}

TavarinProAPTLink_ViewController* CViewTest::MakeAPT() {
    return Keep([m_factory APTLinkViewControllerFromBundle:Bundle()
                                          effectParameters:nullptr
                                                controller:nullptr]);
}

TavarinProDoublerLink_ViewController* CViewTest::MakeDoubler() {
    return Keep([m_factory DoublerLinkViewControllerFromBundle:Bundle()
                                              effectParameters:nullptr
                                                    controller:nullptr]);
}

NSWindow* CViewTest::Show(NSViewController* controller) {
    NSView* view = [controller view];
    const NSRect frame = NSMakeRect(200, 300, [view frame].size.width, [view frame].size.height);
    NSWindow* window = [[NSWindow alloc] initWithContentRect:frame
                                                   styleMask:NSWindowStyleMaskTitled
                                                     backing:NSBackingStoreBuffered
                                                       defer:NO];
    [window setReleasedWhenClosed:NO];
    [m_windows addObject:window];
    [window release];
    [window setContentView:view];
    [window makeKeyAndOrderFront:nil];
    // The focus may still be on its way from a window that closed: it has to stay for some turns.
    constexpr int kTurns = 15;
    int nTurns = 0;
    const auto ready = [&] {
        const bool fReady = [window isVisible] && [window isKeyWindow] && [NSApp isActive];
        if (!fReady) {
            nTurns = 0;
            [NSApp activateIgnoringOtherApps:YES];
            [window makeKeyAndOrderFront:nil];
        }
        return fReady && ++nTurns > kTurns;
    };
    EXPECT_TRUE(WaitFor(ready));
    return window;
}

paramPostAnalyze MakeCapture(std::string const& strPath, double dPosition, double dStart,
                             double dEnd) {
    paramPostAnalyze capture;
    std::memset(&capture, 0x5A, sizeof(capture));
    std::memcpy(capture.szFilePath, strPath.c_str(),
                std::min(strPath.size() + 1, sizeof(capture.szFilePath)));
    capture.dFilePosition = dPosition;
    capture.dRegionStart = dStart;
    capture.dRegionEnd = dEnd;
    return capture;
}

int Capture(AnyView view, std::string const& strPath, double dPosition, double dStart,
            double dEnd) {
    paramPostAnalyze capture = MakeCapture(strPath, dPosition, dStart, dEnd);
    return Notify(view, notifyPostAnalyze, capture);
}

bool Export(AnyView view) {
    paramExportSelectedRegion record{};
    record.nSampleRate = 48000;
    Notify(view, notifyExportSelectedRegion, record);
    return record.fResult;
}

std::string Text(NSTextField* field) {
    return [[field stringValue] UTF8String];
}

std::vector<std::string> Titles(NSPopUpButton* popup) {
    std::vector<std::string> titles;
    for (NSInteger nItem = 0; nItem < [popup numberOfItems]; ++nItem) {
        titles.push_back([[popup itemTitleAtIndex:nItem] UTF8String]);
    }
    return titles;
}

int Selected(NSArrayController* controller) {
    return static_cast<std::int32_t>([controller selectionIndex]);
}

bool WaitFor(std::function<bool()> const& condition) {
    NSDate* limit = [NSDate dateWithTimeIntervalSinceNow:20];
    while (!condition() && [limit timeIntervalSinceNow] > 0) {
        NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
        NSEvent* event = [NSApp nextEventMatchingMask:NSAnyEventMask
                                            untilDate:[NSDate dateWithTimeIntervalSinceNow:0.02]
                                               inMode:NSDefaultRunLoopMode
                                              dequeue:YES];
        if (event != nil) [NSApp sendEvent:event];
        [pool drain];
    }
    return condition();
}
