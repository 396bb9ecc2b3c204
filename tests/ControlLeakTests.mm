// What a hundred thousand drawings leave behind. This program has no arrow among its resources.

#include <malloc.h>

#include <filesystem>

#import "DrawingCalls.h"
#import "DrawingFixture.h"
#include "colours/ComponentCodes.h"
#include "colours/ComponentColour.h"
#include "colours/DefaultColours.h"
#import "controls/GraphicUtils.h"
#import "controls/QXButtonCell.h"
#import "controls/QXPopUpButtonCell.h"

namespace {

constexpr NSRect kFrame = {{10, 10}, {86, 20}};

class ControlLeaks : public CDrawingTest {
protected:
    void SetUp() override {
        CDrawingTest::SetUp();
        AppCreateDefaultColoursDesigner(&gAppColours);
    }

    // A byte for every draw would be a leak already.
    template <typename Work>
    void ExpectNoGrowth(Work const& work) {
        Draw(true, [&](CGContextRef context) {
            Repeat(kWarmUp, context, work);
            const std::size_t nBefore = mallinfo2().uordblks;
            Repeat(kDraws, context, work);
            const std::size_t nAfter = mallinfo2().uordblks;
            EXPECT_LT(static_cast<double>(nAfter) - static_cast<double>(nBefore), kDraws);
        });
    }

    template <typename Work>
    static void Repeat(int nTimes, CGContextRef context, Work const& work) {
        for (int nTime = 0; nTime < nTimes; ++nTime) {
            NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
            work(context);
            [pool drain];
        }
    }

    static constexpr int kWarmUp = 1000;
    static constexpr int kDraws = 100'000;
};

TEST_F(ControlLeaks, FlatButtonsLeaveNothing) {
    QXButtonCell* cell = [[[QXButtonCell alloc] init] autorelease];
    ExpectNoGrowth([&](CGContextRef) { [cell drawBezelWithFrame:kFrame inView:Canvas(true)]; });
}

TEST_F(ControlLeaks, ShadedButtonsLeaveNothing) {
    gnAppStyle = 0;
    QXButtonCell* cell = [[[QXButtonCell alloc] init] autorelease];
    ExpectNoGrowth([&](CGContextRef context) {
        CGContextSaveGState(context);
        [cell drawBezelWithFrame:kFrame inView:Canvas(true)];
        CGContextRestoreGState(context);
    });
}

TEST_F(ControlLeaks, WholePopUpsLeaveNothing) {
    QXPopUpButtonCell* cell = [[[QXPopUpButtonCell alloc] init] autorelease];
    [cell addItemWithTitle:@"Lead vocal"];
    ExpectNoGrowth([&](CGContextRef) { [cell drawWithFrame:kFrame inView:Canvas(true)]; });
}

TEST_F(ControlLeaks, HolesAndShadersLeaveNothing) {
    ExpectNoGrowth([&](CGContextRef context) {
        [GraphicUtils FillRoundRect:context
                              Color:ccControlText
                         Background:ccWindowBackground
                               Rect:kFrame
                             Radius:6
                               Hole:NSMakeRect(20, 15, 10, 5)
                      FillDirection:10
                            Flipped:YES];
        CGColorSpaceRef space = CGColorSpaceCreateDeviceRGB();
        CGFunctionRelease(GetBtnShader(space, QXShaderNormalBtn));
        CGColorSpaceRelease(space);
    });
}

TEST_F(ControlLeaks, MissingArrowDrawsNothingAndTakesOnlyItsGap) {
    QXPopUpButtonCell* cell = [[[QXPopUpButtonCell alloc] init] autorelease];
    [cell addItemWithTitle:@"Lead vocal"];
    CDrawingCalls calls;
    Draw(true, [&](CGContextRef) { [cell drawWithFrame:kFrame inView:Canvas(true)]; });
    EXPECT_TRUE(calls.m_images.empty());
    ASSERT_EQ(calls.m_texts.size(), 1u);
    EXPECT_TRUE(NSEqualRects(calls.m_texts[0].rect, NSMakeRect(10, 11, 82, 18)));
}

TEST_F(ControlLeaks, ArrowIsLookedForUntilItIsThere) {
    namespace fs = std::filesystem;
    const fs::path resources = [[[NSBundle mainBundle] resourcePath] UTF8String];
    QXPopUpButtonCell* cell = [[[QXPopUpButtonCell alloc] init] autorelease];
    CDrawingCalls calls;
    const auto draw = [&] {
        Draw(true, [&](CGContextRef) { [cell drawWithFrame:kFrame inView:Canvas(true)]; });
    };
    draw();
    EXPECT_TRUE(calls.m_images.empty());
    fs::create_directories(resources);
    fs::copy_file(TAVARIN_ARROW, resources / "PopupArrow.png",
                  fs::copy_options::overwrite_existing);
    draw();
    EXPECT_EQ(calls.m_images.size(), 1u);
    fs::remove_all(resources);
    draw();
    EXPECT_EQ(calls.m_images.size(), 2u) << "kept once it is there";
}

}  // namespace
