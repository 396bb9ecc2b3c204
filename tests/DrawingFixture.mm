#import "DrawingFixture.h"

#import <AppKit/DPSOperators.h>

#include <cmath>
#include <cstdlib>

#include "colours/ComponentCodes.h"
#include "colours/ComponentColour.h"
#include "colours/DeviceRGB.h"

@interface TavarinTestCanvas : NSView {
@public
    BOOL m_fFlipped;
}
@end

@implementation TavarinTestCanvas
- (BOOL)isFlipped {
    return m_fFlipped;
}
@end

namespace {

int Byte(double dChannel) {
    return static_cast<int>(std::lround(dChannel * 255));
}

NSView* MakeCanvas(bool fFlipped, NSRect frame) {
    TavarinTestCanvas* canvas = [[[TavarinTestCanvas alloc] initWithFrame:frame] autorelease];
    canvas->m_fFlipped = fFlipped;
    return canvas;
}

}  // namespace

const CPixel CDrawingTest::kBackground = {200, 0, 200};

bool IsNear(CPixel a, CPixel b, int nTolerance) {
    return std::abs(a.nRed - b.nRed) <= nTolerance && std::abs(a.nGreen - b.nGreen) <= nTolerance &&
           std::abs(a.nBlue - b.nBlue) <= nTolerance;
}

CPixel Colour(double dRed, double dGreen, double dBlue) {
    return {Byte(dRed), Byte(dGreen), Byte(dBlue)};
}

testing::AssertionResult IsGrey(CPixel pixel, double dPart, double dTolerance) {
    const bool fGrey = std::abs(pixel.nRed - pixel.nGreen) <= 2 &&
                       std::abs(pixel.nRed - pixel.nBlue) <= 2 &&
                       std::abs(pixel.nRed / 255.0 - dPart) <= dTolerance;
    if (fGrey) return testing::AssertionSuccess();
    return testing::AssertionFailure() << pixel << " is not a grey of " << dPart;
}

CPixel CPicture::At(int nColumn, int nRow) const {
    NSUInteger channels[5] = {};
    [m_image getPixel:channels atX:nColumn y:nRow];
    return {static_cast<int>(channels[0]), static_cast<int>(channels[1]),
            static_cast<int>(channels[2])};
}

bool CPicture::IsAll(CPixel colour, NSRect part) const {
    for (int nRow = NSMinY(part); nRow < NSMaxY(part); ++nRow) {
        for (int nColumn = NSMinX(part); nColumn < NSMaxX(part); ++nColumn) {
            if (!IsNear(At(nColumn, nRow), colour)) return false;
        }
    }
    return true;
}

NSRect CPicture::Extent(std::function<bool(CPixel)> const& holds) const {
    NSRect extent = NSZeroRect;
    for (int nRow = 0; nRow < [m_image pixelsHigh]; ++nRow) {
        for (int nColumn = 0; nColumn < [m_image pixelsWide]; ++nColumn) {
            if (!holds(At(nColumn, nRow))) continue;
            extent = NSUnionRect(extent, NSMakeRect(nColumn, nRow, 1, 1));
        }
    }
    return extent;
}

void CDrawingTest::SetUpTestSuite() {
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    [NSApplication sharedApplication];
    [pool drain];
}

void CDrawingTest::SetUp() {
    m_pool = [[NSAutoreleasePool alloc] init];
    gAppColours.Clear();
    gnAppStyle = 1;
    m_window = [[NSWindow alloc] initWithContentRect:NSMakeRect(100, 100, kWidth, 2 * kHeight)
                                           styleMask:NSBorderlessWindowMask
                                             backing:NSBackingStoreBuffered
                                               defer:NO];
    [m_window setReleasedWhenClosed:NO];
    m_flipped = MakeCanvas(true, NSMakeRect(0, 0, kWidth, kHeight));
    m_upright = MakeCanvas(false, NSMakeRect(0, kHeight, kWidth, kHeight));
    [[m_window contentView] addSubview:m_flipped];
    [[m_window contentView] addSubview:m_upright];
    [m_window orderFront:nil];
    [m_window display];
}

void CDrawingTest::TearDown() {
    // First, because cells still know the view that they were drawn in.
    [m_pool drain];
    m_pool = [[NSAutoreleasePool alloc] init];
    [m_window close];
    [m_window release];
    gAppColours.Clear();
    gnAppStyle = 1;
    [m_pool drain];
}

void CDrawingTest::AddPlain(CComponentCode code, double dRed, double dGreen, double dBlue,
                            double dAlpha) {
    gAppColours.Add(
        new CComponentColour(code, 1, "plain", dRed, dGreen, dBlue, dAlpha, CDeviceRGB()));
}

void CDrawingTest::AddRamp(CComponentCode code) {
    AddRamp(code, {0, 0, 0}, {255, 255, 255});
}

void CDrawingTest::AddRamp(CComponentCode code, CPixel first, CPixel last) {
    const CDeviceRGB space;
    auto* fill = new CGradientFill(code, 1, "ramp");
    double dPosition = 0;
    for (CPixel stop : {first, last}) {
        fill->AddColor(dPosition, stop.nRed / 255.0, stop.nGreen / 255.0, stop.nBlue / 255.0, 1.0,
                       space, 1.0);
        dPosition += 1;
    }
    fill->Create(space);
    gAppColours.Add(fill);
}

CPicture CDrawingTest::Draw(bool fFlipped, std::function<void(CGContextRef)> const& draw) {
    NSView* canvas = Canvas(fFlipped);
    [canvas lockFocus];
    [[NSColor colorWithDeviceRed:kBackground.nRed / 255.0
                           green:kBackground.nGreen / 255.0
                            blue:kBackground.nBlue / 255.0
                           alpha:1] set];
    NSRectFill([canvas bounds]);
    NSGraphicsContext* context = [NSGraphicsContext currentContext];
    // What a drawing leaves on the context must not get into the way of looking at it.
    [context saveGraphicsState];
    draw(static_cast<CGContextRef>([context graphicsPort]));
    [context restoreGraphicsState];
    NSBitmapImageRep* image =
        [[[NSBitmapImageRep alloc] initWithFocusedViewRect:[canvas bounds]] autorelease];
    [canvas unlockFocus];
    return CPicture(image);
}
