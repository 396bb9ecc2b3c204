#include "colours/ColourVision.h"

#include <gtest/gtest.h>

#include <limits>

#include "colours/ColourRamp.h"
#include "colours/DeviceRGB.h"

namespace {

constexpr Rgba kBlack{0, 0, 0, 1};
constexpr Rgba kWhite{1, 1, 1, 1};
constexpr Rgba kRed{1, 0, 0, 1};
constexpr Rgba kGreen{0, 1, 0, 1};

TEST(ColourVisionTests, BlackOnWhiteHasTheGreatestContrast) {
    EXPECT_DOUBLE_EQ(Luminance(kBlack), 0.0);
    EXPECT_DOUBLE_EQ(Luminance(kWhite), 1.0);
    EXPECT_DOUBLE_EQ(ContrastRatio(0.0, 1.0), 21.0);
    EXPECT_DOUBLE_EQ(ContrastRatio(1.0, 0.0), 21.0);
    EXPECT_DOUBLE_EQ(ContrastRatio(0.3, 0.3), 1.0);
}

TEST(ColourVisionTests, ContrastIsThatOfTheGuidelines) {
    const Rgba grey{0x77 / 255.0, 0x77 / 255.0, 0x77 / 255.0, 1};
    EXPECT_NEAR(ContrastRatio(Luminance(grey), Luminance(kWhite)), 4.48, 0.005);
}

TEST(ColourVisionTests, TranslucentColoursMix) {
    const Rgba painted = PaintOver({1, 0, 0, 0.25}, kWhite);
    EXPECT_DOUBLE_EQ(painted[0], 1.0);
    EXPECT_DOUBLE_EQ(painted[1], 0.75);
    EXPECT_DOUBLE_EQ(painted[3], 1.0);
}

TEST(ColourVisionTests, ChannelsOutOfRangeAreCut) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const Rgba painted = PaintOver({2.0, -1.0, nan, 5.0}, kWhite);
    EXPECT_EQ(painted, (Rgba{1, 0, 0, 1}));
}

TEST(ColourVisionTests, BlackAndWhiteAreAHundredApart) {
    EXPECT_NEAR(PerceivedDistance(kBlack, kWhite), 100.0, 0.1);
    EXPECT_EQ(PerceivedDistance(kRed, kRed), 0.0);
}

TEST(ColourVisionTests, TheWeakestEyesDecide) {
    // Far apart for most people, much nearer without the long or the medium cones.
    const Rgba brick{0.75, 0.35, 0.2, 1};
    const Rgba olive{0.45, 0.5, 0.15, 1};
    EXPECT_LT(PerceivedDistance(brick, olive), 12.0);
    EXPECT_LT(PerceivedDistance(kRed, kGreen), 52.0) << "full vision sees them at 52";
}

TEST(ColourVisionTests, ARampRunsThroughItsStops) {
    const CDeviceRGB space;
    CGradientFill fill({0, 1}, 0);
    fill.AddColor(0.25, 0, 0, 0, 1, space, 1.0);
    fill.AddColor(0.75, 1, 1, 1, 0, space, 1.0);
    const CColourRamp ramp(fill);
    EXPECT_EQ(ramp.At(0.0), kBlack);
    EXPECT_EQ(ramp.At(0.25), kBlack);
    EXPECT_EQ(ramp.At(0.5), (Rgba{0.5, 0.5, 0.5, 0.5}));
    EXPECT_EQ(ramp.At(1.0), (Rgba{1, 1, 1, 0}));
}

TEST(ColourVisionTests, ARampWithoutStopsIsClear) {
    EXPECT_EQ(CColourRamp(CGradientFill({0, 1}, 0)).At(0.5), Rgba{});
}

TEST(ColourVisionTests, RampsAreAlikeWithinTheTolerance) {
    const CDeviceRGB space;
    const auto ramp = [&space](double grey) {
        return CColourRamp(CComponentColour({0, 1}, 0, "", grey, grey, grey, 1, space));
    };
    EXPECT_TRUE(ramp(0.5).IsLike(ramp(0.501)));
    EXPECT_FALSE(ramp(0.5).IsLike(ramp(0.51)));
    EXPECT_FALSE(ramp(0.5).IsLike(CColourRamp(CGradientFill({0, 1}, 0))));
}

}  // namespace
