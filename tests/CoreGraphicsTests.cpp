#include <CoreGraphics/CoreGraphics.h>
#include <gtest/gtest.h>

#include "platform/gnustep/GradientStops.h"

namespace {

class CoreGraphicsTests : public testing::Test {
protected:
    ~CoreGraphicsTests() override { CGColorSpaceRelease(m_space); }

    CGColorRef Color(double r, double g, double b, double a) const {
        const CGFloat components[] = {r, g, b, a};
        return CGColorCreate(m_space, components);
    }

    CGColorSpaceRef m_space = CGColorSpaceCreateDeviceRGB();
};

TEST_F(CoreGraphicsTests, ADeviceSpaceHasThreeChannels) {
    EXPECT_EQ(CGColorSpaceGetNumberOfComponents(m_space), 3u);
    EXPECT_EQ(CGColorSpaceGetNumberOfComponents(nullptr), 0u);
}

TEST_F(CoreGraphicsTests, ADeviceSpaceOutlivesItsOwners) {
    CGColorSpaceRelease(CGColorSpaceCreateDeviceRGB());
    CGColorSpaceRelease(CGColorSpaceCreateDeviceRGB());
    EXPECT_EQ(CGColorSpaceGetNumberOfComponents(CGColorSpaceRetain(m_space)), 3u);
    CGColorSpaceRelease(m_space);
}

TEST_F(CoreGraphicsTests, AColorKeepsItsComponentsAsTheyAre) {
    CGColorRef color = Color(0.25, -1.0, 2.0, 0.5);
    ASSERT_EQ(CGColorGetNumberOfComponents(color), 4u);
    const CGFloat* components = CGColorGetComponents(color);
    EXPECT_EQ(components[0], 0.25);
    EXPECT_EQ(components[1], -1.0);
    EXPECT_EQ(components[2], 2.0);
    EXPECT_EQ(components[3], 0.5);
    EXPECT_EQ(CGColorGetAlpha(color), 0.5);
    EXPECT_EQ(CGColorGetColorSpace(color), m_space);
    CGColorRelease(color);
}

TEST_F(CoreGraphicsTests, NoSpaceOrNoComponentsMakeNoColor) {
    const CGFloat components[] = {0, 0, 0, 1};
    EXPECT_EQ(CGColorCreate(nullptr, components), nullptr);
    EXPECT_EQ(CGColorCreate(m_space, nullptr), nullptr);
}

TEST_F(CoreGraphicsTests, NoColorHasNothing) {
    EXPECT_EQ(CGColorGetComponents(nullptr), nullptr);
    EXPECT_EQ(CGColorGetNumberOfComponents(nullptr), 0u);
    EXPECT_EQ(CGColorGetAlpha(nullptr), 0.0);
    EXPECT_EQ(CGColorGetColorSpace(nullptr), nullptr);
    EXPECT_EQ(CGColorRetain(nullptr), nullptr);
    EXPECT_EQ(CGGradientRetain(nullptr), nullptr);
    CGColorRelease(nullptr);
    CGGradientRelease(nullptr);
    CGColorSpaceRelease(nullptr);
}

TEST_F(CoreGraphicsTests, EqualColorsAreEqual) {
    CGColorRef red = Color(1, 0, 0, 1);
    CGColorRef sameRed = Color(1, 0, 0, 1);
    CGColorRef clearRed = Color(1, 0, 0, 0.5);
    EXPECT_TRUE(CGColorEqualToColor(red, sameRed));
    EXPECT_TRUE(CFEqual(red, sameRed));
    EXPECT_FALSE(CGColorEqualToColor(red, clearRed));
    EXPECT_FALSE(CGColorEqualToColor(red, nullptr));
    EXPECT_TRUE(CGColorEqualToColor(nullptr, nullptr));
    for (CGColorRef color : {red, sameRed, clearRed}) CGColorRelease(color);
}

TEST_F(CoreGraphicsTests, AColorIsACoreFoundationObject) {
    CGColorRef color = Color(0, 0, 0, 1);
    CFMutableArrayRef array = CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks);
    CFArrayAppendValue(array, color);
    EXPECT_EQ(CFGetRetainCount(color), 2);
    CFRelease(array);
    EXPECT_EQ(CFGetRetainCount(color), 1);
    EXPECT_FALSE(CFEqual(color, CFSTR("color")));
    CFRelease(color);
}

TEST_F(CoreGraphicsTests, AGradientCopiesItsColorsAndLocations) {
    CGColorRef first = Color(0.1, 0.2, 0.3, 0.4);
    CGColorRef second = Color(0.5, 0.6, 0.7, 0.8);
    const void* colors[] = {first, second};
    const CGFloat locations[] = {0.25, 0.75};
    CFArrayRef array = CFArrayCreate(kCFAllocatorDefault, colors, 2, nullptr);
    CGGradientRef gradient = CGGradientCreateWithColors(m_space, array, locations);
    CFRelease(array);
    CGColorRelease(first);
    CGColorRelease(second);

    const auto stops = StopsOf(gradient);
    ASSERT_EQ(stops.size(), 2u);
    EXPECT_EQ(stops[0].location, 0.25);
    EXPECT_EQ(stops[1].location, 0.75);
    EXPECT_EQ(stops[1].rgba, (std::array<CGFloat, 4>{0.5, 0.6, 0.7, 0.8}));
    CGGradientRelease(gradient);
}

TEST_F(CoreGraphicsTests, WithoutLocationsStopsAreEvenlySpaced) {
    CGColorRef color = Color(0, 0, 0, 1);
    const void* colors[] = {color, color, color};
    CFArrayRef array = CFArrayCreate(kCFAllocatorDefault, colors, 3, nullptr);
    CGGradientRef gradient = CGGradientCreateWithColors(m_space, array, nullptr);
    const auto stops = StopsOf(gradient);
    ASSERT_EQ(stops.size(), 3u);
    EXPECT_EQ(stops[0].location, 0.0);
    EXPECT_EQ(stops[1].location, 0.5);
    EXPECT_EQ(stops[2].location, 1.0);
    CGGradientRelease(gradient);
    CFRelease(array);
    CGColorRelease(color);
}

TEST_F(CoreGraphicsTests, NoColorsMakeNoGradient) {
    const void* colors[] = {nullptr};
    CFArrayRef empty = CFArrayCreate(kCFAllocatorDefault, nullptr, 0, nullptr);
    CFArrayRef hollow = CFArrayCreate(kCFAllocatorDefault, colors, 1, nullptr);
    EXPECT_EQ(CGGradientCreateWithColors(m_space, nullptr, nullptr), nullptr);
    EXPECT_EQ(CGGradientCreateWithColors(m_space, empty, nullptr), nullptr);
    EXPECT_EQ(CGGradientCreateWithColors(m_space, hollow, nullptr), nullptr);
    EXPECT_TRUE(StopsOf(nullptr).empty());
    CFRelease(empty);
    CFRelease(hollow);
}

}  // namespace
