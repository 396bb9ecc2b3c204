// Core Graphics calls in a real context.

#include <cmath>
#include <limits>

#import "DrawingFixture.h"
#include "colours/DeviceRGB.h"

namespace {

class CoreGraphicsDrawing : public CDrawingTest {
protected:
    static CGColorRef MakeColor(double r, double g, double b, double a = 1) {
        const CGFloat rgba[] = {r, g, b, a};
        return CGColorCreate(CDeviceRGB(), rgba);
    }

    static void SetFill(CGContextRef context, double r, double g, double b, double a = 1) {
        CGColorRef color = MakeColor(r, g, b, a);
        CGContextSetFillColorWithColor(context, color);
        CGColorRelease(color);
    }

    /// Black to white, or as many greys as there are locations.
    static CGGradientRef MakeRamp(std::vector<CGFloat> locations = {0, 1}) {
        std::vector<const void*> colors;
        for (std::size_t index = 0; index < locations.size(); ++index) {
            const double grey =
                locations.size() == 1 ? 1 : static_cast<double>(index) / (locations.size() - 1);
            colors.push_back(MakeColor(grey, grey, grey));
        }
        CFArrayRef array = CFArrayCreate(kCFAllocatorDefault, colors.data(),
                                         static_cast<CFIndex>(colors.size()), nullptr);
        CGGradientRef gradient = CGGradientCreateWithColors(CDeviceRGB(), array, locations.data());
        CFRelease(array);
        for (const void* color : colors) CGColorRelease((CGColorRef) const_cast<void*>(color));
        return gradient;
    }

    CPicture DrawRamp(CGGradientDrawingOptions options, NSPoint start, NSPoint end,
                      std::vector<CGFloat> locations = {0, 1}) {
        return Draw(true, [&](CGContextRef context) {
            CGGradientRef gradient = MakeRamp(locations);
            CGContextDrawLinearGradient(context, gradient, start, end, options);
            CGGradientRelease(gradient);
        });
    }

    static constexpr CGGradientDrawingOptions kNeither{};
    static constexpr CGGradientDrawingOptions kBoth =
        kCGGradientDrawsBeforeStartLocation | kCGGradientDrawsAfterEndLocation;
};

TEST_F(CoreGraphicsDrawing, FilledRectangleHasItsEdges) {
    const CPicture picture = Draw(true, [](CGContextRef context) {
        SetFill(context, 0, 1, 0);
        CGContextFillRect(context, NSMakeRect(10, 20, 30, 15));
    });
    EXPECT_TRUE(NSEqualRects(picture.Extent([](CPixel pixel) { return pixel != kBackground; }),
                             NSMakeRect(10, 20, 30, 15)));
    EXPECT_TRUE(picture.IsAll({0, 255, 0}, NSMakeRect(10, 20, 30, 15)));
}

TEST_F(CoreGraphicsDrawing, RectangleOfNegativeSizeIsTheSameOne) {
    const CPicture picture = Draw(false, [](CGContextRef context) {
        SetFill(context, 0, 1, 0);
        CGContextFillRect(context, NSMakeRect(40, 35, -30, -15));
    });
    EXPECT_TRUE(NSEqualRects(picture.Extent([](CPixel pixel) { return pixel != kBackground; }),
                             NSMakeRect(10, kHeight - 35, 30, 15)));
}

TEST_F(CoreGraphicsDrawing, AlphaMixesWithWhatIsThere) {
    const CPicture picture = Draw(true, [](CGContextRef context) {
        SetFill(context, 0, 1, 0, 0.25);
        CGContextFillRect(context, NSMakeRect(0, 0, 20, 20));
        SetFill(context, 0, 1, 0, 1);
        CGContextFillRect(context, NSMakeRect(20, 0, 20, 20));
    });
    EXPECT_TRUE(IsNear(picture.At(10, 10), {150, 64, 150})) << picture.At(10, 10);
    EXPECT_TRUE(IsNear(picture.At(30, 10), {0, 255, 0})) << picture.At(30, 10);
}

TEST_F(CoreGraphicsDrawing, NullColorLeavesTheOneThatIsSet) {
    const CPicture picture = Draw(true, [](CGContextRef context) {
        SetFill(context, 0, 0, 1);
        CGContextSetFillColorWithColor(context, nullptr);
        CGContextFillRect(context, NSMakeRect(0, 0, 20, 20));
    });
    EXPECT_TRUE(IsNear(picture.At(10, 10), {0, 0, 255}));
}

void AddSquare(CGContextRef context, NSRect rect) {
    CGContextMoveToPoint(context, NSMinX(rect), NSMinY(rect));
    CGContextAddLineToPoint(context, NSMaxX(rect), NSMinY(rect));
    CGContextAddLineToPoint(context, NSMaxX(rect), NSMaxY(rect));
    CGContextAddLineToPoint(context, NSMinX(rect), NSMaxY(rect));
    CGContextClosePath(context);
}

TEST_F(CoreGraphicsDrawing, WindingAndEvenOddDifferOnAHole) {
    for (const bool fEvenOdd : {false, true}) {
        const CPicture picture = Draw(true, [fEvenOdd](CGContextRef context) {
            SetFill(context, 0, 1, 0);
            CGContextBeginPath(context);
            AddSquare(context, NSMakeRect(0, 0, 60, 60));
            AddSquare(context, NSMakeRect(20, 20, 20, 20));
            fEvenOdd ? CGContextEOFillPath(context) : CGContextFillPath(context);
        });
        EXPECT_TRUE(picture.IsAll({0, 255, 0}, NSMakeRect(0, 0, 60, 19)));
        EXPECT_TRUE(
            picture.IsAll(fEvenOdd ? kBackground : CPixel{0, 255, 0}, NSMakeRect(21, 21, 18, 18)));
    }
}

TEST_F(CoreGraphicsDrawing, FillingUsesUpThePath) {
    const CPicture picture = Draw(true, [](CGContextRef context) {
        SetFill(context, 0, 1, 0);
        CGContextBeginPath(context);
        CGContextAddRect(context, NSMakeRect(0, 0, 20, 20));
        CGContextFillPath(context);
        SetFill(context, 0, 0, 1);
        CGContextAddRect(context, NSMakeRect(40, 0, 20, 20));
        CGContextFillRect(context, NSMakeRect(80, 0, 20, 20));
        CGContextFillPath(context);
    });
    EXPECT_TRUE(IsNear(picture.At(10, 10), {0, 255, 0})) << "not filled again";
    EXPECT_TRUE(IsNear(picture.At(50, 10), kBackground)) << "filling a rectangle used it up";
    EXPECT_TRUE(IsNear(picture.At(90, 10), {0, 0, 255}));
}

TEST_F(CoreGraphicsDrawing, ClipHoldsUntilTheStateIsRestored) {
    const CPicture picture = Draw(true, [](CGContextRef context) {
        SetFill(context, 1, 0, 0);
        CGContextSaveGState(context);
        CGContextBeginPath(context);
        CGContextAddRect(context, NSMakeRect(20, 20, 20, 20));
        CGContextClip(context);
        SetFill(context, 0, 1, 0);
        CGContextFillRect(context, NSMakeRect(0, 0, 60, 60));
        CGContextRestoreGState(context);
        CGContextFillRect(context, NSMakeRect(100, 0, 20, 20));
    });
    EXPECT_TRUE(NSEqualRects(picture.Extent([](CPixel pixel) {
        return IsNear(pixel, {0, 255, 0});
    }),
                             NSMakeRect(20, 20, 20, 20)));
    EXPECT_TRUE(IsNear(picture.At(110, 10), {255, 0, 0})) << "the colour is back too";
}

TEST_F(CoreGraphicsDrawing, EmptyPathClipsEverythingAway) {
    const CPicture picture = Draw(true, [](CGContextRef context) {
        SetFill(context, 0, 1, 0);
        CGContextBeginPath(context);
        CGContextClip(context);
        CGContextFillRect(context, NSMakeRect(0, 0, 60, 60));
    });
    EXPECT_TRUE(picture.IsAll(kBackground, NSMakeRect(0, 0, kWidth, kHeight)));
}

TEST_F(CoreGraphicsDrawing, ArcTouchesBothLines) {
    for (const bool fFlipped : {false, true}) {
        const CPicture picture = Draw(fFlipped, [](CGContextRef context) {
            SetFill(context, 0, 1, 0);
            CGContextBeginPath(context);
            CGContextMoveToPoint(context, 10, 70);
            CGContextAddArcToPoint(context, 10, 10, 70, 10, 40);
            CGContextAddLineToPoint(context, 70, 10);
            CGContextAddLineToPoint(context, 70, 70);
            CGContextClosePath(context);
            CGContextFillPath(context);
        });
        const auto at = [&](int x, int y) { return picture.At(x, fFlipped ? y : kHeight - 1 - y); };
        // The circle's middle is (50, 50); its rim crosses the diagonal 28.3 from there.
        EXPECT_TRUE(IsNear(at(20, 20), kBackground)) << fFlipped;
        EXPECT_TRUE(IsNear(at(23, 23), {0, 255, 0})) << fFlipped;
        EXPECT_TRUE(IsNear(at(11, 60), {0, 255, 0})) << fFlipped;
        EXPECT_TRUE(IsNear(at(60, 11), {0, 255, 0})) << fFlipped;
        EXPECT_TRUE(IsNear(at(11, 30), kBackground)) << fFlipped;
    }
}

TEST_F(CoreGraphicsDrawing, GradientExtendsOnlyToTheSidesAskedFor) {
    for (const bool fBefore : {false, true}) {
        for (const bool fAfter : {false, true}) {
            CGGradientDrawingOptions options{};
            if (fBefore) options = options | kCGGradientDrawsBeforeStartLocation;
            if (fAfter) options = options | kCGGradientDrawsAfterEndLocation;
            const CPicture picture = DrawRamp(options, NSMakePoint(40, 0), NSMakePoint(120, 0));
            EXPECT_TRUE(IsNear(picture.At(38, 40), fBefore ? CPixel{0, 0, 0} : kBackground));
            EXPECT_TRUE(IsNear(picture.At(0, 40), fBefore ? CPixel{0, 0, 0} : kBackground));
            EXPECT_TRUE(IsGrey(picture.At(41, 40), 0.02));
            EXPECT_TRUE(IsGrey(picture.At(80, 40), 0.5));
            EXPECT_TRUE(IsGrey(picture.At(118, 40), 0.98));
            EXPECT_TRUE(IsNear(picture.At(121, 40), fAfter ? CPixel{255, 255, 255} : kBackground));
            EXPECT_TRUE(IsNear(picture.At(159, 0), fAfter ? CPixel{255, 255, 255} : kBackground));
        }
    }
}

TEST_F(CoreGraphicsDrawing, StopsInsideAGradientLeaveItsEndsInTheirColours) {
    const CPicture picture =
        DrawRamp(kNeither, NSMakePoint(40, 0), NSMakePoint(120, 0), {0.25, 0.75});
    EXPECT_TRUE(IsNear(picture.At(38, 40), kBackground));
    EXPECT_TRUE(IsGrey(picture.At(41, 40), 0));
    EXPECT_TRUE(IsGrey(picture.At(58, 40), 0));
    EXPECT_TRUE(IsGrey(picture.At(80, 40), 0.5));
    EXPECT_TRUE(IsGrey(picture.At(102, 40), 1));
    EXPECT_TRUE(IsNear(picture.At(121, 40), kBackground));
}

TEST_F(CoreGraphicsDrawing, OneStopIsOneColour) {
    const CPicture picture = DrawRamp(kBoth, NSMakePoint(40, 0), NSMakePoint(120, 0), {0});
    EXPECT_TRUE(picture.IsAll({255, 255, 255}, NSMakeRect(0, 0, kWidth, kHeight)));
}

TEST_F(CoreGraphicsDrawing, GradientBetweenOnePointPaintsNothing) {
    const CPicture picture = DrawRamp(kBoth, NSMakePoint(40, 10), NSMakePoint(40, 10));
    EXPECT_TRUE(picture.IsAll(kBackground, NSMakeRect(0, 0, kWidth, kHeight)));
}

TEST_F(CoreGraphicsDrawing, GradientStaysInsideARoundClip) {
    const CPicture picture = Draw(true, [](CGContextRef context) {
        CGContextBeginPath(context);
        CGContextMoveToPoint(context, 0, 60);
        CGContextAddArcToPoint(context, 0, 0, 60, 0, 60);
        CGContextAddLineToPoint(context, 60, 60);
        CGContextClosePath(context);
        CGContextClip(context);
        CGGradientRef gradient = MakeRamp();
        CGContextDrawLinearGradient(context, gradient, NSMakePoint(0, 0), NSMakePoint(60, 0),
                                    kNeither);
        CGGradientRelease(gradient);
    });
    EXPECT_TRUE(IsNear(picture.At(5, 5), kBackground));
    EXPECT_TRUE(IsGrey(picture.At(30, 30), 0.5));
    EXPECT_TRUE(IsNear(picture.At(62, 30), kBackground));
}

TEST_F(CoreGraphicsDrawing, NothingComesOfNull) {
    const CPicture picture = Draw(true, [](CGContextRef context) {
        CGContextDrawLinearGradient(context, nullptr, NSMakePoint(0, 0), NSMakePoint(9, 9), kBoth);
        CGContextDrawShading(context, nullptr);
        CGContextSaveGState(nullptr);
        CGContextSetFillColorWithColor(nullptr, nullptr);
        CGContextBeginPath(nullptr);
        CGContextAddRect(nullptr, NSMakeRect(0, 0, 10, 10));
        CGContextAddArcToPoint(nullptr, 0, 0, 1, 1, 1);
        CGContextClip(nullptr);
        CGContextFillPath(nullptr);
        CGContextEOFillPath(nullptr);
        CGContextFillRect(nullptr, NSMakeRect(0, 0, 10, 10));
        CGContextRestoreGState(nullptr);
    });
    EXPECT_TRUE(picture.IsAll(kBackground, NSMakeRect(0, 0, kWidth, kHeight)));
}

TEST_F(CoreGraphicsDrawing, NumbersThatAreNoPlacesDoNoHarm) {
    const double dInfinite = std::numeric_limits<double>::infinity();
    const CPicture picture = Draw(true, [dInfinite](CGContextRef context) {
        SetFill(context, 0, 1, 0);
        CGContextFillRect(context, NSMakeRect(dInfinite, dInfinite, 0, 0));
        CGContextBeginPath(context);
        AddSquare(context, NSMakeRect(dInfinite, NAN, 5, 5));
        CGContextFillPath(context);
        CGContextFillRect(context, NSMakeRect(100, -dInfinite, 20, dInfinite));
        CGContextFillRect(context, NSMakeRect(20, 0, 20, 1e300));
    });
    EXPECT_TRUE(picture.IsAll({0, 255, 0}, NSMakeRect(20, 0, 20, kHeight)));
    EXPECT_TRUE(picture.IsAll(kBackground, NSMakeRect(0, 0, 20, kHeight)));
}

void Steep(void* info, CGFloat const* pIn, CGFloat* pOut) {
    auto const* pTop = static_cast<double const*>(info);
    for (int nOutput = 0; nOutput < 3; ++nOutput) pOut[nOutput] = *pIn < 0.5 ? -1 : *pTop;
    pOut[3] = 1;
}

class Shadings : public CoreGraphicsDrawing {
protected:
    CPicture DrawSteep(bool fStart, bool fEnd) {
        return Draw(true, [=](CGContextRef context) {
            static double dTop = 7;
            constexpr CGFloat domain[] = {0, 1};
            constexpr CGFloat range[] = {0, 1, 0, 1, 0, 1, 0, 1};
            const CGFunctionCallbacks callbacks{0, Steep, nullptr};
            CGFunctionRef function = CGFunctionCreate(&dTop, 1, domain, 4, range, &callbacks);
            CGShadingRef shading = CGShadingCreateAxial(CDeviceRGB(), NSMakePoint(0, 20),
                                                        NSMakePoint(0, 60), function, fStart, fEnd);
            CGFunctionRelease(function);
            CGContextDrawShading(context, shading);
            CGShadingRelease(shading);
        });
    }
};

TEST_F(Shadings, FunctionIsEvaluatedAndCutAtItsRange) {
    const CPicture picture = DrawSteep(false, false);
    EXPECT_TRUE(IsGrey(picture.At(80, 22), 0));
    EXPECT_TRUE(IsGrey(picture.At(80, 37), 0));
    EXPECT_TRUE(IsGrey(picture.At(80, 42), 1));
    EXPECT_TRUE(IsGrey(picture.At(80, 57), 1));
}

TEST_F(Shadings, EndsExtendWhenTheyAreAskedTo) {
    for (const bool fStart : {false, true}) {
        for (const bool fEnd : {false, true}) {
            const CPicture picture = DrawSteep(fStart, fEnd);
            EXPECT_EQ(IsNear(picture.At(80, 5), kBackground), !fStart);
            EXPECT_EQ(IsNear(picture.At(80, 75), kBackground), !fEnd);
        }
    }
}

TEST_F(Shadings, FunctionLetsItsInformationGoOnce) {
    int nReleased = 0;
    const CGFunctionCallbacks callbacks{0, Steep, [](void* info) { ++*static_cast<int*>(info); }};
    CGFunctionRef function = CGFunctionCreate(&nReleased, 1, nullptr, 4, nullptr, &callbacks);
    CGShadingRef shading = CGShadingCreateAxial(CDeviceRGB(), NSZeroPoint, NSMakePoint(0, 1),
                                                CGFunctionRetain(function), false, false);
    CGFunctionRelease(function);
    CGFunctionRelease(function);
    EXPECT_EQ(nReleased, 0);
    CGShadingRelease(CGShadingRetain(shading));
    CGShadingRelease(shading);
    EXPECT_EQ(nReleased, 1);
}

TEST_F(Shadings, NothingToCallMakesNone) {
    const CGFunctionCallbacks nothing{0, nullptr, nullptr};
    EXPECT_EQ(CGFunctionCreate(nullptr, 1, nullptr, 4, nullptr, &nothing), nullptr);
    EXPECT_EQ(CGFunctionCreate(nullptr, 1, nullptr, 4, nullptr, nullptr), nullptr);
    EXPECT_EQ(
        CGShadingCreateAxial(CDeviceRGB(), NSZeroPoint, NSMakePoint(0, 1), nullptr, true, true),
        nullptr);
    CGFunctionRelease(nullptr);
    CGShadingRelease(nullptr);
}

TEST(RectangleInset, LeavesARectangleOrNone) {
    EXPECT_TRUE(NSEqualRects(CGRectInset(NSMakeRect(1, 2, 10, 20), 1, 3), NSMakeRect(2, 5, 8, 14)));
    EXPECT_TRUE(NSEqualRects(CGRectInset(NSMakeRect(1, 2, 2, 2), -1, 1), NSMakeRect(0, 3, 4, 0)));
    const NSRect none = CGRectInset(NSMakeRect(1, 2, 1, 20), 1, 1);
    EXPECT_TRUE(std::isinf(none.origin.x));
    EXPECT_EQ(none.size.width, 0);
}

}  // namespace
