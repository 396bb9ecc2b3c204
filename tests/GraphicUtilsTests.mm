// Rectangles in the colours of the scheme, looked at pixel by pixel.

#import <AppKit/DPSOperators.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#import "DrawingFixture.h"
#include "colours/ComponentColour.h"
#include "colours/DeviceRGB.h"
#import "controls/GraphicUtils.h"
#include "platform/gnustep/FunctionValues.h"

namespace {

constexpr NSRect kRect = {{20, 10}, {100, 60}};
constexpr CComponentCode kNone;
constexpr CPixel kGreen = {0, 255, 0};
constexpr CPixel kBlue = {0, 0, 255};

/// Which corner or side of a rectangle a gradient comes from, as seen on the screen.
enum class From { Top, Left, Right, TopLeft, TopRight };

class GraphicUtilsDrawing : public CDrawingTest {
protected:
    void SetUp() override {
        CDrawingTest::SetUp();
        AddPlain(kPlain, 0, 1, 0);
        AddPlain(kOther, 0, 0, 1);
        AddRamp(kGradient);
    }

    CPicture FillRect(CComponentCode color, CComponentCode background, int nDirection = 1,
                      bool fFlipped = true) {
        return Draw(fFlipped, [=](CGContextRef context) {
            [GraphicUtils FillRect:context
                             Color:color
                        Background:background
                              Rect:kRect
                     FillDirection:nDirection
                           Flipped:fFlipped];
        });
    }

    CPicture FillRound(CComponentCode color, CComponentCode background, float radius,
                       int nDirection = 1, bool fFlipped = true) {
        return Draw(fFlipped, [=](CGContextRef context) {
            [GraphicUtils FillRoundRect:context
                                  Color:color
                             Background:background
                                   Rect:kRect
                                 Radius:radius
                          FillDirection:nDirection
                                Flipped:fFlipped];
        });
    }

    CPicture FillHole(CComponentCode color, CComponentCode background, float radius, NSRect hole,
                      int nDirection = 1, bool fFlipped = true) {
        return Draw(fFlipped, [=](CGContextRef context) {
            [GraphicUtils FillRoundRect:context
                                  Color:color
                             Background:background
                                   Rect:kRect
                                 Radius:radius
                                   Hole:hole
                          FillDirection:nDirection
                                Flipped:fFlipped];
        });
    }

    static bool IsUntouched(CPicture const& picture) {
        return picture.IsAll(kBackground, NSMakeRect(0, 0, kWidth, kHeight));
    }

    /// Both canvases are as high as kRect is far from their edges, so that rows are the same in
    /// both.
    static void ExpectRamp(CPicture const& picture, From from, std::string const& strWhat) {
        const double left = NSMinX(kRect), top = NSMinY(kRect);
        const double w = kRect.size.width, h = kRect.size.height;
        for (const double along : {0.1, 0.35, 0.5, 0.65, 0.9}) {
            for (const double down : {0.15, 0.5, 0.85}) {
                const int nColumn = static_cast<int>(left + along * w);
                const int nRow = static_cast<int>(top + down * h);
                const double x = nColumn + 0.5 - left, y = nRow + 0.5 - top;
                double dPart = 0;
                switch (from) {
                    case From::Top:
                        dPart = y / h;
                        break;
                    case From::Left:
                        dPart = x / w;
                        break;
                    case From::Right:
                        dPart = 1 - x / w;
                        break;
                    case From::TopLeft:
                        dPart = (x * w + y * h) / (w * w + h * h);
                        break;
                    case From::TopRight:
                        dPart = ((w - x) * w + y * h) / (w * w + h * h);
                        break;
                }
                EXPECT_TRUE(IsGrey(picture.At(nColumn, nRow), dPart)) << strWhat;
            }
        }
    }

    static std::string What(int nDirection, bool fFlipped) {
        return "direction " + std::to_string(nDirection) + (fFlipped ? ", flipped" : ", upright");
    }
};

TEST_F(GraphicUtilsDrawing, PlainColourFillsTheRectangleAndNoMore) {
    for (const bool fFlipped : {false, true}) {
        const CPicture picture = FillRect(kPlain, kNone, 1, fFlipped);
        EXPECT_TRUE(
            NSEqualRects(picture.Extent([](CPixel pixel) { return pixel != kBackground; }), kRect));
        EXPECT_TRUE(picture.IsAll(kGreen, kRect));
    }
}

TEST_F(GraphicUtilsDrawing, GradientFillsTheRectangleAndNoMore) {
    const CPicture picture = FillRect(kGradient, kNone);
    EXPECT_TRUE(
        NSEqualRects(picture.Extent([](CPixel pixel) { return pixel != kBackground; }), kRect));
}

TEST_F(GraphicUtilsDrawing, PlainRectanglesHaveFourDirections) {
    for (const bool fFlipped : {false, true}) {
        const std::pair<int, From> directions[] = {
            {3, From::Left},
            {4, From::Right},
            {10, fFlipped ? From::TopRight : From::TopLeft},
        };
        for (auto const& [nDirection, from] : directions) {
            ExpectRamp(FillRect(kGradient, kNone, nDirection, fFlipped), from,
                       What(nDirection, fFlipped));
        }
    }
}

TEST_F(GraphicUtilsDrawing, AnyOtherDirectionIsTopToBottom) {
    for (const bool fFlipped : {false, true}) {
        for (const int nDirection : {0, 1, 2, 5, 7, 9, 11, 99, -1, -3}) {
            ExpectRamp(FillRect(kGradient, kNone, nDirection, fFlipped), From::Top,
                       What(nDirection, fFlipped));
            ExpectRamp(FillRound(kGradient, kNone, 6, nDirection, fFlipped), From::Top,
                       "round, " + What(nDirection, fFlipped));
        }
    }
}

TEST_F(GraphicUtilsDrawing, RoundRectanglesHaveThreeDirections) {
    for (const bool fFlipped : {false, true}) {
        const std::pair<int, From> directions[] = {
            {3, From::Left},
            {4, From::Top},
            {10, From::TopLeft},
        };
        for (auto const& [nDirection, from] : directions) {
            ExpectRamp(FillRound(kGradient, kNone, 6, nDirection, fFlipped), from,
                       What(nDirection, fFlipped));
            ExpectRamp(
                FillHole(kGradient, kNone, 6, NSMakeRect(50, 30, 10, 10), nDirection, fFlipped),
                from, "with a hole, " + What(nDirection, fFlipped));
        }
    }
}

TEST_F(GraphicUtilsDrawing, RadiusZeroHasTheDirectionsOfPlainRectangles) {
    ExpectRamp(FillRound(kGradient, kNone, 0, 4), From::Right, "direction 4");
    ExpectRamp(FillRound(kGradient, kNone, 0, 10), From::TopRight, "direction 10");
    const CPicture picture = FillRound(kPlain, kOther, 0);
    EXPECT_TRUE(picture.IsAll(kGreen, kRect));
}

TEST_F(GraphicUtilsDrawing, BackgroundIsPaintedFirst) {
    AddPlain(kPlain, 1, 0, 0, 0.5);
    EXPECT_TRUE(FillRect(kPlain, kOther).IsAll({128, 0, 128}, kRect));
    EXPECT_TRUE(FillRect(kNone, kOther).IsAll(kBlue, kRect));
    EXPECT_TRUE(FillRect(kMissing, kOther).IsAll(kBlue, kRect));
}

TEST_F(GraphicUtilsDrawing, MissingColoursPaintNothing) {
    EXPECT_TRUE(IsUntouched(FillRect(kNone, kNone)));
    EXPECT_TRUE(IsUntouched(FillRect(kMissing, kMissing)));
    EXPECT_TRUE(IsUntouched(FillRound(kNone, kNone, 6)));
    EXPECT_TRUE(IsUntouched(FillRound(kMissing, kMissing, 6)));
    EXPECT_TRUE(IsUntouched(FillHole(kMissing, kMissing, 6, NSMakeRect(40, 20, 10, 10))));
    EXPECT_TRUE(IsUntouched(Draw(true, [](CGContextRef context) {
        [GraphicUtils FillRect:context
                        ColorP:nullptr
                   BackgroundP:nullptr
                          Rect:kRect
                 FillDirection:1
                       Flipped:YES];
    })));
}

TEST_F(GraphicUtilsDrawing, GradientAsABackgroundPaintsNothing) {
    EXPECT_TRUE(IsUntouched(FillRect(kNone, kGradient)));
    EXPECT_TRUE(IsUntouched(FillRound(kNone, kGradient, 6)));
    EXPECT_TRUE(IsUntouched(FillHole(kNone, kGradient, 6, NSMakeRect(40, 20, 10, 10))));
    EXPECT_TRUE(FillRect(kPlain, kGradient).IsAll(kGreen, kRect));
}

TEST_F(GraphicUtilsDrawing, ColoursThatAreNotMadeYetPaintNothing) {
    gAppColours.Add(new CComponentColour(kMissing, 1));
    EXPECT_TRUE(IsUntouched(FillRect(kMissing, kNone)));
    EXPECT_TRUE(IsUntouched(FillRound(kMissing, kNone, 6)));
    gAppColours.Add(new CGradientFill(kMissing, 1, "never created"));
    EXPECT_TRUE(IsUntouched(FillRect(kMissing, kNone)));
    EXPECT_TRUE(IsUntouched(FillRound(kMissing, kNone, 6)));
}

TEST_F(GraphicUtilsDrawing, ColourOfACodeAndItsObjectAreTheSame) {
    const CPicture picture = Draw(true, [](CGContextRef context) {
        [GraphicUtils FillRect:context
                        ColorP:gAppColours.Find(kGradient)
                   BackgroundP:gAppColours.Find(kOther)
                          Rect:kRect
                 FillDirection:3
                       Flipped:YES];
    });
    ExpectRamp(picture, From::Left, "by its object");
}

/// Expects corners of a radius of 20: their rim is 5.86 in from both sides.
void ExpectRadius20(CPicture const& picture, CPixel inside, CPixel outside) {
    const int nLeft = NSMinX(kRect), nTop = NSMinY(kRect);
    const int nRight = NSMaxX(kRect) - 1, nBottom = NSMaxY(kRect) - 1;
    const auto expect = [&](int nIn, CPixel colour) {
        EXPECT_TRUE(IsNear(picture.At(nLeft + nIn, nTop + nIn), colour)) << nIn;
        EXPECT_TRUE(IsNear(picture.At(nRight - nIn, nTop + nIn), colour)) << nIn;
        EXPECT_TRUE(IsNear(picture.At(nLeft + nIn, nBottom - nIn), colour)) << nIn;
        EXPECT_TRUE(IsNear(picture.At(nRight - nIn, nBottom - nIn), colour)) << nIn;
    };
    expect(4, outside);
    expect(7, inside);
    EXPECT_TRUE(IsNear(picture.At(nLeft + 8, nTop), outside));
    EXPECT_TRUE(IsNear(picture.At(nLeft + 21, nTop), inside));
    EXPECT_TRUE(IsNear(picture.At(nLeft, nTop + 8), outside));
    EXPECT_TRUE(IsNear(picture.At(nLeft, nTop + 21), inside));
}

TEST_F(GraphicUtilsDrawing, CornersHaveTheRadius) {
    for (const bool fFlipped : {false, true}) {
        ExpectRadius20(FillRound(kPlain, kNone, 20, 1, fFlipped), kGreen, kBackground);
    }
    AddRamp(kGradient, kGreen, kGreen);
    ExpectRadius20(FillRound(kGradient, kNone, 20), kGreen, kBackground);
    ExpectRadius20(FillHole(kPlain, kNone, 20, NSMakeRect(60, 30, 10, 10)), kGreen, kBackground);
}

TEST_F(GraphicUtilsDrawing, BackgroundOfARoundRectangleHasSquareCorners) {
    const CPicture picture = FillRound(kPlain, kOther, 20);
    ExpectRadius20(picture, kGreen, kBlue);
    EXPECT_TRUE(IsNear(picture.At(NSMinX(kRect), NSMinY(kRect)), kBlue));
    EXPECT_TRUE(
        NSEqualRects(picture.Extent([](CPixel pixel) { return pixel != kBackground; }), kRect));
}

TEST_F(GraphicUtilsDrawing, HoleIsLeftFree) {
    const NSRect hole = NSMakeRect(50, 20, 30, 25);
    for (const CComponentCode background : {kNone, kOther}) {
        const CPicture picture = FillHole(kPlain, background, 6, hole);
        EXPECT_TRUE(picture.IsAll(background == kNone ? kBackground : kBlue, hole));
        EXPECT_TRUE(picture.IsAll(kGreen, NSMakeRect(26, 10, 24, 60)));
        EXPECT_TRUE(picture.IsAll(kGreen, NSMakeRect(80, 10, 34, 60)));
        EXPECT_TRUE(picture.IsAll(kGreen, NSMakeRect(26, 10, 88, 10)));
    }
}

// Only the even-odd rule does not mind which way round a hole goes.
TEST_F(GraphicUtilsDrawing, HoleOfNegativeWidthIsLeftFreeToo) {
    const CPicture picture = FillHole(kPlain, kNone, 6, NSMakeRect(80, 20, -30, 25));
    EXPECT_TRUE(picture.IsAll(kBackground, NSMakeRect(50, 20, 30, 25)));
    EXPECT_TRUE(picture.IsAll(kGreen, NSMakeRect(26, 10, 24, 60)));
}

TEST_F(GraphicUtilsDrawing, PartOfTheHoleOutsideIsPainted) {
    const CPicture picture = FillHole(kPlain, kNone, 6, NSMakeRect(100, 20, 40, 25));
    EXPECT_TRUE(picture.IsAll(kBackground, NSMakeRect(100, 20, 20, 25)));
    EXPECT_TRUE(picture.IsAll(kGreen, NSMakeRect(120, 20, 20, 25)));
    EXPECT_TRUE(picture.IsAll(kBackground, NSMakeRect(140, 0, 20, 80)));
}

TEST_F(GraphicUtilsDrawing, RadiusZeroFillsTheHoleToo) {
    EXPECT_TRUE(FillHole(kPlain, kNone, 0, NSMakeRect(50, 20, 30, 25)).IsAll(kGreen, kRect));
    ExpectRamp(FillHole(kGradient, kNone, 0, NSMakeRect(50, 20, 30, 25), 4), From::Right, "hole");
}

TEST_F(GraphicUtilsDrawing, GradientCoversTheHoleAndTheWholeClip) {
    const CPicture everywhere = FillHole(kGradient, kNone, 6, NSMakeRect(50, 20, 30, 25));
    EXPECT_TRUE(everywhere.IsAll({0, 0, 0}, NSMakeRect(0, 0, kWidth, 10)));
    EXPECT_TRUE(everywhere.IsAll({255, 255, 255}, NSMakeRect(0, 70, kWidth, 10)));
    ExpectRamp(everywhere, From::Top, "hole included");

    const CPicture clipped = Draw(true, [](CGContextRef context) {
        CGContextBeginPath(context);
        CGContextAddRect(context, NSMakeRect(10, 5, 70, 50));
        CGContextClip(context);
        [GraphicUtils FillRoundRect:context
                              Color:kGradient
                         Background:kNone
                               Rect:kRect
                             Radius:6
                               Hole:NSMakeRect(50, 20, 30, 25)
                      FillDirection:1
                            Flipped:YES];
    });
    EXPECT_TRUE(NSEqualRects(clipped.Extent([](CPixel pixel) { return pixel != kBackground; }),
                             NSMakeRect(10, 5, 70, 50)));
}

TEST_F(GraphicUtilsDrawing, TinyRectanglesDoNoHarm) {
    for (const NSRect rect :
         {NSMakeRect(20, 20, 0, 0), NSMakeRect(20, 20, 1, 1), NSMakeRect(20, 20, 4, 30),
          NSMakeRect(20, 20, 30, 4), NSMakeRect(INFINITY, INFINITY, 0, 0)}) {
        const CPicture picture = Draw(true, [rect](CGContextRef context) {
            for (const CComponentCode code : {kPlain, kGradient}) {
                [GraphicUtils FillRoundRect:context
                                      Color:code
                                 Background:kNone
                                       Rect:rect
                                     Radius:6
                              FillDirection:1
                                    Flipped:YES];
            }
        });
        EXPECT_TRUE(picture.IsAll(kBackground, NSMakeRect(60, 0, 100, 80)));
    }
}

/// What a context has set, as AppKit answers it.
struct CState {
    CGFloat rgb[3] = {};
    CGFloat alpha = 0;
    CGFloat lineWidth = 0;
    NSAffineTransformStruct transform = {};

    explicit CState(CGContextRef context) {
        auto* native = reinterpret_cast<NSGraphicsContext*>(context);
        DPScurrentrgbcolor(native, &rgb[0], &rgb[1], &rgb[2]);
        DPScurrentalpha(native, &alpha);
        DPScurrentlinewidth(native, &lineWidth);
        transform = [[native GSCurrentCTM] transformStruct];
    }
    bool operator==(CState const& other) const {
        return std::equal(std::begin(rgb), std::end(rgb), std::begin(other.rgb)) &&
               alpha == other.alpha && lineWidth == other.lineWidth &&
               std::memcmp(&transform, &other.transform, sizeof(transform)) == 0;
    }
};

// A plain rectangle and any background set the fill colour; a round rectangle's own is put back.
CState Left(CState before, CComponentCode color, CComponentCode background, float radius) {
    for (const CComponentCode code : {background, radius == 0 ? color : CComponentCode()}) {
        double const* pRgba = gAppColours.FindRGBA(code);
        if (pRgba == nullptr || gAppColours.FindCGColorRef(code) == nullptr) continue;
        std::copy_n(pRgba, 3, before.rgb);
        before.alpha = pRgba[3];
    }
    return before;
}

TEST_F(GraphicUtilsDrawing, OnlyTheFillColourIsLeftBehind) {
    AddPlain(kOther, 0, 0, 1, 0.5);
    for (const CComponentCode color : {kPlain, kOther, kGradient, kMissing, kNone}) {
        for (const CComponentCode background : {kNone, kOther, kGradient}) {
            for (const float radius : {0.0F, 6.0F}) {
                const CPicture picture = Draw(true, [=](CGContextRef context) {
                    auto* native = reinterpret_cast<NSGraphicsContext*>(context);
                    DPSsetrgbcolor(native, 1, 0, 0);
                    DPSsetalpha(native, 0.75);
                    DPSsetlinewidth(native, 3);
                    const CState before(context);
                    [GraphicUtils FillRoundRect:context
                                          Color:color
                                     Background:background
                                           Rect:NSMakeRect(20, 10, 40, 20)
                                         Radius:radius
                                  FillDirection:1
                                        Flipped:YES];
                    EXPECT_TRUE(CState(context) == Left(before, color, background, radius));
                    DPSsetrgbcolor(native, 1, 0, 0);
                    const CState between(context);
                    CGContextSaveGState(context);
                    CGContextBeginPath(context);
                    CGContextAddRect(context, NSMakeRect(0, 0, 100, 80));
                    CGContextClip(context);
                    [GraphicUtils FillRoundRect:context
                                          Color:color
                                     Background:background
                                           Rect:NSMakeRect(20, 10, 40, 20)
                                         Radius:radius
                                           Hole:NSMakeRect(30, 15, 5, 5)
                                  FillDirection:1
                                        Flipped:YES];
                    EXPECT_TRUE(CState(context) == Left(between, color, background, radius));
                    CGContextRestoreGState(context);
                    DPSsetrgbcolor(native, 1, 0, 0);
                    DPSsetalpha(native, 1);
                    CGContextFillPath(context);
                    CGContextFillRect(context, NSMakeRect(120, 0, 40, 80));
                });
                EXPECT_TRUE(picture.IsAll({255, 0, 0}, NSMakeRect(120, 0, 40, 80)))
                    << "neither clip nor path stay";
                EXPECT_TRUE(picture.IsAll(kBackground, NSMakeRect(100, 0, 20, 80)));
            }
        }
    }
}

TEST_F(GraphicUtilsDrawing, WithoutAContextNothingHappens) {
    [GraphicUtils FillRoundRect:nullptr
                          Color:kPlain
                     Background:kOther
                           Rect:kRect
                         Radius:6
                  FillDirection:1
                        Flipped:YES];
}

TEST(GraphicUtilsValues, ButtonCornersAndFonts) {
    EXPECT_EQ([GraphicUtils GetButtonCornerRadius], 6.0F);
    EXPECT_TRUE([fontAudioLabel isEqual:@"Trebuchet MS"]);
    EXPECT_TRUE([fontXAxisLabel isEqual:@"Arial"]);
    [[[GraphicUtils alloc] init] release];
}

struct CShading {
    CGFunctionEvaluateCallback evaluate;
    double c;
    double k;
};

const CShading kShadings[] = {
    {QXShaderNormalBtn, 0.4, 0.2},
    {QXShaderSelectedBtn, 0.4000000059604645, 0.4},
    {QXShaderDisabledNormalBtn, 0.15, 0.75},
    {QXShaderDisabledSelectedBtn, 0.15, 0.75},
};

TEST(ButtonShading, EveryChannelFallsAndAlphaIsOne) {
    for (CShading const& shading : kShadings) {
        for (const double t : {0.0, 0.25, 0.5, 1.0}) {
            CGFloat out[5] = {-1, -1, -1, -1, -1};
            shading.evaluate(reinterpret_cast<void*>(4), &t, out);
            for (int nChannel = 0; nChannel < 3; ++nChannel) {
                EXPECT_DOUBLE_EQ(out[nChannel], shading.c * (1 - t) + shading.k);
            }
            EXPECT_EQ(out[3], 1.0);
            EXPECT_EQ(out[4], -1) << "not an output";
        }
    }
}

TEST(ButtonShading, EndsHaveTheirGreys) {
    const double ends[][2] = {{0.6, 0.2}, {0.8, 0.4}, {0.9, 0.75}, {0.9, 0.75}};
    for (int nShading = 0; nShading < 4; ++nShading) {
        for (const int nEnd : {0, 1}) {
            const double t = nEnd;
            CGFloat out[4] = {};
            kShadings[nShading].evaluate(reinterpret_cast<void*>(4), &t, out);
            EXPECT_NEAR(out[0], ends[nShading][nEnd], 1e-8);
        }
    }
}

TEST(ButtonShading, CoefficientsOfTheSelectedOneAreSinglePrecision) {
    const double t = 0;
    CGFloat out[4] = {};
    QXShaderSelectedBtn(reinterpret_cast<void*>(4), &t, out);
    EXPECT_NE(out[0], 0.8);
    EXPECT_DOUBLE_EQ(out[0], static_cast<double>(0.4F) + 0.4);
}

TEST(ButtonShading, OneOutputIsAlphaAloneAndNoneIsNothing) {
    for (CShading const& shading : kShadings) {
        const double t = 0;
        CGFloat out[2] = {-1, -1};
        shading.evaluate(nullptr, &t, out);
        EXPECT_EQ(out[0], -1);
        shading.evaluate(reinterpret_cast<void*>(1), &t, out);
        EXPECT_EQ(out[0], 1.0);
        EXPECT_EQ(out[1], -1);
    }
}

TEST(ButtonShading, FunctionOfADeviceSpaceHasFourOutputs) {
    CGFunctionRef function = GetBtnShader(CDeviceRGB(), QXShaderNormalBtn);
    ASSERT_NE(function, nullptr);
    EXPECT_EQ(CFGetRetainCount(function), 1);
    const std::vector<CGFloat> top = ValuesOf(function, 0);
    ASSERT_EQ(top.size(), 4u);
    for (int nChannel = 0; nChannel < 3; ++nChannel) EXPECT_DOUBLE_EQ(top[nChannel], 0.6);
    EXPECT_EQ(top[3], 1.0);
    EXPECT_EQ(ValuesOf(function, -5), top) << "inputs are cut at 0 and 1";
    EXPECT_EQ(ValuesOf(function, 7), ValuesOf(function, 1));
    CGFunctionRelease(function);
}

void Beyond(void*, CGFloat const*, CGFloat* pOut) {
    const CGFloat values[] = {-1, 2, 0.5, 9};
    std::copy_n(values, 4, pOut);
}

TEST(ButtonShading, OutputsAreCutAtZeroAndOne) {
    CGFunctionRef function = GetBtnShader(CDeviceRGB(), Beyond);
    EXPECT_EQ(ValuesOf(function, 0), (std::vector<CGFloat>{0, 1, 0.5, 1}));
    CGFunctionRelease(function);
}

}  // namespace
