#import <AppKit/AppKit.h>
#include <benchmark/benchmark.h>

#include <cstdint>

#include "colours/ComponentCodes.h"
#include "colours/ComponentColour.h"
#include "colours/DefaultColours.h"
#import "controls/GraphicUtils.h"
#import "controls/QXButtonCell.h"
#import "controls/QXPopUpButtonCell.h"

// What drawing a control costs, beside the toolkit's own in the same view of the same window. The
// toolkit hands drawing over to the display's server, which does it later: every row waits for the
// server after kBatch drawings, so that what it does counts too.

/// Paints what a flat bezel's two gradients paint, with nothing done for round edges.
@interface CPlainGradientsCell : NSButtonCell
@end

@implementation CPlainGradientsCell
- (void)drawBezelWithFrame:(NSRect)frame inView:(NSView*)view {
    auto* const context =
        static_cast<CGContextRef>([[NSGraphicsContext currentContext] graphicsPort]);
    for (CComponentCode code : {ccButtonBorder, ccButtonFace}) {
        [GraphicUtils FillRect:context
                         Color:code
                    Background:CComponentCode()
                          Rect:frame
                 FillDirection:1
                       Flipped:[view isFlipped]];
        frame = NSInsetRect(frame, 1, 1);
    }
}
@end

namespace {

constexpr NSRect kFrame = {{0, 0}, {86, 46}};
constexpr int kBatch = 500;

enum class What { Bezel, Control };

/// A window with one view to draw in, while in scope.
class CCanvas {
public:
    CCanvas() : m_pool([[NSAutoreleasePool alloc] init]) {
        m_window = [[NSWindow alloc] initWithContentRect:NSMakeRect(100, 100, 200, 100)
                                               styleMask:NSBorderlessWindowMask
                                                 backing:NSBackingStoreBuffered
                                                   defer:NO];
        [m_window setReleasedWhenClosed:NO];
        m_view = [[[NSButton alloc] initWithFrame:NSMakeRect(10, 10, 86, 46)] autorelease];
        [[m_window contentView] addSubview:m_view];
        [m_window orderFront:nil];
        [m_window display];
        [m_view lockFocus];
    }
    ~CCanvas() {
        [m_view unlockFocus];
        [m_window close];
        [m_window release];
        [m_pool drain];
    }
    CCanvas(CCanvas const&) = delete;
    CCanvas& operator=(CCanvas const&) = delete;

    NSView* View() const { return m_view; }

    /// Reading a pixel back waits for everything before it.
    void WaitForServer() const {
        [[[NSBitmapImageRep alloc] initWithFocusedViewRect:NSMakeRect(0, 0, 1, 1)] release];
    }

private:
    NSAutoreleasePool* m_pool;
    NSWindow* m_window;
    NSView* m_view;
};

NSButtonCell* StockButton() {
    NSButtonCell* cell = [[[NSButtonCell alloc] initTextCell:@"Guide"] autorelease];
    [cell setBezelStyle:NSRoundedBezelStyle];
    [cell setBordered:YES];
    return cell;
}

NSButtonCell* StockPopUp() {
    NSPopUpButtonCell* cell = [[[NSPopUpButtonCell alloc] initTextCell:@""
                                                             pullsDown:NO] autorelease];
    [cell addItemWithTitle:@"Guide"];
    return cell;
}

NSButtonCell* OwnButton() {
    QXButtonCell* cell = [[[QXButtonCell alloc] init] autorelease];
    [cell setTitle:@"Guide"];
    return cell;
}

NSButtonCell* OwnPopUp() {
    QXPopUpButtonCell* cell = [[[QXPopUpButtonCell alloc] init] autorelease];
    [cell addItemWithTitle:@"Guide"];
    return cell;
}

NSButtonCell* PlainGradients() {
    return [[[CPlainGradientsCell alloc] init] autorelease];
}

void Draw(benchmark::State& state, NSButtonCell* (*make)(), What what, std::int32_t nStyle) {
    const CCanvas canvas;
    AppCreateDefaultColoursDesigner(&gAppColours);
    gnAppStyle = nStyle;
    NSAutoreleasePool* cells = [[NSAutoreleasePool alloc] init];
    NSButtonCell* cell = make();
    for (auto _ : state) {
        NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
        for (int nDrawing = 0; nDrawing < kBatch; ++nDrawing) {
            [NSGraphicsContext saveGraphicsState];
            if (what == What::Bezel) {
                [cell drawBezelWithFrame:kFrame inView:canvas.View()];
            } else {
                [cell drawWithFrame:kFrame inView:canvas.View()];
            }
            [NSGraphicsContext restoreGraphicsState];
        }
        canvas.WaitForServer();
        [pool drain];
    }
    [cells drain];
    state.counters["each"] = benchmark::Counter(
        kBatch, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

BENCHMARK_CAPTURE(Draw, stock_rounded_bezel, StockButton, What::Bezel, 1)->UseRealTime();
BENCHMARK_CAPTURE(Draw, flat_bezel, OwnButton, What::Bezel, 1)->UseRealTime();
BENCHMARK_CAPTURE(Draw, stock_popup_bezel, StockPopUp, What::Bezel, 1)->UseRealTime();
BENCHMARK_CAPTURE(Draw, flat_popup_bezel, OwnPopUp, What::Bezel, 1)->UseRealTime();
BENCHMARK_CAPTURE(Draw, gradients_of_a_bezel, PlainGradients, What::Bezel, 1)->UseRealTime();
BENCHMARK_CAPTURE(Draw, shaded_bezel, OwnButton, What::Bezel, 0)->UseRealTime();
BENCHMARK_CAPTURE(Draw, stock_popup, StockPopUp, What::Control, 1)->UseRealTime();
BENCHMARK_CAPTURE(Draw, flat_popup, OwnPopUp, What::Control, 1)->UseRealTime();
BENCHMARK_CAPTURE(Draw, stock_button, StockButton, What::Control, 1)->UseRealTime();
BENCHMARK_CAPTURE(Draw, flat_button, OwnButton, What::Control, 1)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    [NSApplication sharedApplication];
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    [pool drain];
    return 0;
}
