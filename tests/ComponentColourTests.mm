#include "colours/ComponentColour.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "colours/DeviceRGB.h"
#include "utils/ParameterBlock.h"

#import <AppKit/AppKit.h>

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

class ComponentColourTests : public testing::Test {
protected:
    ~ComponentColourTests() override { [m_pool drain]; }

    void ExpectBothForms(CComponentColour const& colour) const {
        ASSERT_NE(colour.m_cgColor, nullptr);
        ASSERT_NE(colour.m_nsColor, nil);
        const CGFloat* components = CGColorGetComponents(colour.m_cgColor);
        for (int channel = 0; channel < 4; ++channel) {
            EXPECT_EQ(components[channel], colour.m_rgba[channel]);
        }
        // AppKit may keep its channels in single precision.
        EXPECT_FLOAT_EQ([colour.m_nsColor redComponent], colour.m_rgba[0]);
        EXPECT_FLOAT_EQ([colour.m_nsColor greenComponent], colour.m_rgba[1]);
        EXPECT_FLOAT_EQ([colour.m_nsColor blueComponent], colour.m_rgba[2]);
        EXPECT_FLOAT_EQ([colour.m_nsColor alphaComponent], colour.m_rgba[3]);
        EXPECT_TRUE([[colour.m_nsColor colorSpaceName] isEqual:NSCalibratedRGBColorSpace]);
    }

    bool Differ(double a, double b) const {
        const CComponentColour first({0, 1}, 0, "", a, 0, 0, 1, m_space);
        const CComponentColour second({0, 1}, 0, "", b, 0, 0, 1, m_space);
        EXPECT_EQ(first != second, first.NotEqual(second));
        return first.NotEqual(second);
    }

    NSAutoreleasePool* m_pool = [[NSAutoreleasePool alloc] init];
    CDeviceRGB m_space;
};

TEST_F(ComponentColourTests, AnEmptyColourHasNothing) {
    const CComponentColour colour({1, 2}, 5);
    EXPECT_EQ(colour.m_code, CComponentCode(1, 2));
    EXPECT_EQ(colour.m_nClass, 5);
    EXPECT_EQ(colour.m_name, "");
    EXPECT_EQ(colour.m_cgColor, nullptr);
    EXPECT_EQ(colour.m_nsColor, nil);
    for (double channel : colour.m_rgba) EXPECT_EQ(channel, 0.0);
}

TEST_F(ComponentColourTests, AWholeColourHasBothForms) {
    const CComponentColour colour({1, 2}, 4, "Label text", 0.25, 0.5, 0.75, 0.3, m_space);
    EXPECT_EQ(colour.m_name, "Label text");
    EXPECT_EQ(colour.m_rgba[0], 0.25);
    EXPECT_EQ(colour.m_rgba[3], 0.3);
    ExpectBothForms(colour);
}

TEST_F(ComponentColourTests, ItOwnsItsNativeColours) {
    NSColor* nsColor = nil;
    CGColorRef cgColor = nullptr;
    {
        const CComponentColour colour({1, 2}, 4, "", 0.1, 0.2, 0.3, 1, m_space);
        nsColor = [colour.m_nsColor retain];
        cgColor = CGColorRetain(colour.m_cgColor);
        EXPECT_EQ([nsColor retainCount], 2u);
    }
    EXPECT_EQ([nsColor retainCount], 1u);
    EXPECT_EQ(CFGetRetainCount(cgColor), 1);
    [nsColor release];
    CGColorRelease(cgColor);
}

TEST_F(ComponentColourTests, UpdatingReplacesBothForms) {
    CComponentColour colour({1, 2}, 4, "", 0.1, 0.2, 0.3, 1, m_space);
    NSColor* former = [colour.m_nsColor retain];
    colour.UpdateColour(0.9, 0.8, 0.7, 0.6);
    EXPECT_EQ(colour.m_rgba[0], 0.9);
    ExpectBothForms(colour);
    EXPECT_EQ([former retainCount], 1u);
    [former release];
}

TEST_F(ComponentColourTests, AssigningCopiesEverythingAndMakesItsOwnColours) {
    CComponentColour source({3, 4}, 5, "Source", 0.9, 0.8, 0.7, 0.6, m_space);
    CComponentColour target({1, 2}, 4, "Target", 0.1, 0.2, 0.3, 1, m_space);
    target = source;
    EXPECT_EQ(target.m_code, CComponentCode(3, 4));
    EXPECT_EQ(target.m_nClass, 5);
    EXPECT_EQ(target.m_name, "Source");
    EXPECT_FALSE(target != source);
    EXPECT_NE(target.m_cgColor, source.m_cgColor);
    EXPECT_NE(target.m_nsColor, source.m_nsColor);
    ExpectBothForms(target);
}

TEST_F(ComponentColourTests, AssigningAnEmptyColourMakesBothForms) {
    CComponentColour source({3, 4}, 5);
    CComponentColour target({1, 2}, 4, "Target", 0.1, 0.2, 0.3, 1, m_space);
    target = source;
    EXPECT_EQ(target.m_rgba[2], 0.0);
    ExpectBothForms(target);
}

TEST_F(ComponentColourTests, AssigningItselfChangesNothing) {
    CComponentColour colour({3, 4}, 5, "Self", 0.9, 0.8, 0.7, 0.6, m_space);
    CComponentColour& self = colour;
    colour = self;
    EXPECT_EQ(colour.m_name, "Self");
    ExpectBothForms(colour);
}

TEST_F(ComponentColourTests, ChannelsExactlyOneTwoHundredFiftySixthApartAreEqual) {
    constexpr double step = 1.0 / 256.0;
    EXPECT_FALSE(Differ(0.5, 0.5 + step));
    EXPECT_FALSE(Differ(0.5, 0.5 - step));
    EXPECT_TRUE(Differ(0.5, 0.5 + step + 1e-9));
    EXPECT_TRUE(Differ(0.5, 0.5 - step - 1e-9));
}

TEST_F(ComponentColourTests, TheToleranceIsTestedOnBothSides) {
    // Rounded sums may let pass what a rounded difference would not: both sides decide.
    for (double a : {0.1, 0.3, 0.7, 1.1}) {
        for (double b : {a - 1.0 / 256.0, a + 1.0 / 256.0}) {
            const bool fWithin = b >= a - 1.0 / 256.0 && a + 1.0 / 256.0 >= b;
            EXPECT_EQ(Differ(a, b), !fWithin);
            EXPECT_EQ(WithinCG(a, b, 1.0 / 256.0), fWithin);
        }
    }
}

TEST_F(ComponentColourTests, NotANumberDiffersEvenFromItself) {
    EXPECT_TRUE(Differ(kNan, kNan));
    EXPECT_TRUE(Differ(kNan, 0.0));
    EXPECT_TRUE(Differ(0.0, kNan));
}

TEST_F(ComponentColourTests, InfinityDiffersFromEveryNumber) {
    EXPECT_TRUE(Differ(kInfinity, 1.0));
    EXPECT_TRUE(Differ(1.0, kInfinity));
    EXPECT_TRUE(Differ(kInfinity, -kInfinity));
}

TEST_F(ComponentColourTests, EveryChannelCounts) {
    const CComponentColour base({0, 1}, 0, "", 0.5, 0.5, 0.5, 0.5, m_space);
    EXPECT_TRUE(base != CComponentColour({0, 1}, 0, "", 0.6, 0.5, 0.5, 0.5, m_space));
    EXPECT_TRUE(base != CComponentColour({0, 1}, 0, "", 0.5, 0.6, 0.5, 0.5, m_space));
    EXPECT_TRUE(base != CComponentColour({0, 1}, 0, "", 0.5, 0.5, 0.6, 0.5, m_space));
    EXPECT_TRUE(base != CComponentColour({0, 1}, 0, "", 0.5, 0.5, 0.5, 0.6, m_space));
}

TEST_F(ComponentColourTests, CodeClassAndNameDoNotCount) {
    const CComponentColour first({0, 1}, 1, "One", 0.5, 0.5, 0.5, 1, m_space);
    const CComponentColour second({3, 2}, 2, "Two", 0.5, 0.5, 0.5, 1, m_space);
    EXPECT_FALSE(first != second);
}

TEST_F(ComponentColourTests, TheToleranceOfGeometryIsTheCallers) {
    EXPECT_TRUE(WithinCG(10.0, 10.5, 0.5));
    EXPECT_TRUE(WithinCG(10.5, 10.0, 0.5));
    EXPECT_FALSE(WithinCG(10.0, 10.75, 0.5));
    EXPECT_FALSE(WithinCG(10.75, 10.0, 0.5));
    EXPECT_FALSE(WithinCG(kNan, 10.0, 0.5));
    EXPECT_FALSE(WithinCG(10.0, 10.0, kNan));
}

TEST_F(ComponentColourTests, SavingWritesEverythingInOrder) {
    const CComponentColour colour({3, 14}, 5, "Track Group 14", 0.6, 0.5, 0.4, 1, m_space);
    CParameterBlock block;
    colour.Save(&block);
    const char* names[] = {"Type", "Code", "Cl", "R", "G", "B", "A", "Name"};
    const std::uint32_t types[] = {tagInt,    tagBlock,  tagInt,    tagDouble,
                                   tagDouble, tagDouble, tagDouble, tagString};
    ASSERT_EQ(block.parameters.size(), std::size(names));
    for (std::size_t index = 0; index < std::size(names); ++index) {
        EXPECT_EQ(block.parameters[index]->name, names[index]);
        EXPECT_EQ(block.parameters[index]->type, types[index]);
    }
    EXPECT_EQ(block.parameters[0]->GetString(), "1");
    EXPECT_EQ(block.parameters[2]->GetString(), "5");
    EXPECT_EQ(block.parameters[3]->GetString(), "0.6");
    EXPECT_EQ(block.parameters[7]->GetString(), "Track Group 14");
}

TEST_F(ComponentColourTests, TheKeysAreNamed) {
    EXPECT_STREQ(CComponentColour::szType, "Type");
    EXPECT_STREQ(CComponentColour::szClass, "Cl");
    EXPECT_STREQ(CComponentColour::szRed, "R");
    EXPECT_STREQ(CComponentColour::szGreen, "G");
    EXPECT_STREQ(CComponentColour::szBlue, "B");
    EXPECT_STREQ(CComponentColour::szAlpha, "A");
    EXPECT_STREQ(CComponentColour::szComponent, "Comp");
    EXPECT_STREQ(CComponentColour::szComponents, "Comps");
    EXPECT_STREQ(CComponentColour::szName, "Name");
    EXPECT_STREQ(CComponentColour::szComponentColour, "CC");
}

TEST_F(ComponentColourTests, LoadingReadsWhatWasSaved) {
    const CComponentColour colour({3, 14}, 5, "Track", 0.6, 0.5, 0.4, 0.9, m_space);
    CParameterBlock block;
    colour.Save(&block);
    CComponentColour loaded({0, 0}, 0);
    EXPECT_TRUE(loaded.Load(&block, m_space));
    EXPECT_EQ(loaded.m_code, CComponentCode(3, 14));
    EXPECT_EQ(loaded.m_nClass, 5);
    EXPECT_EQ(loaded.m_name, "Track");
    EXPECT_FALSE(loaded != colour);
    ExpectBothForms(loaded);
}

TEST_F(ComponentColourTests, ANameMayHoldZeroBytes) {
    CComponentColour colour({3, 14}, 5, "", 0.6, 0.5, 0.4, 0.9, m_space);
    colour.m_name = std::string("a\0b\xff", 4);
    CParameterBlock block;
    colour.Save(&block);
    CComponentColour loaded({0, 0}, 0);
    EXPECT_TRUE(loaded.Load(&block, m_space));
    EXPECT_EQ(loaded.m_name, colour.m_name);
}

TEST_F(ComponentColourTests, AMissingClassKeepsTheCurrentOne) {
    CParameterBlock block;
    CComponentCode(0, 7).Save(&block);
    for (const char* name : {"R", "G", "B", "A"}) block.AddParameter(name, 0.5);
    block.AddParameter("Name", "x");
    CComponentColour colour({0, 0}, 3);
    EXPECT_TRUE(colour.Load(&block, m_space));
    EXPECT_EQ(colour.m_nClass, 3);
}

TEST_F(ComponentColourTests, AFailedLoadLeavesDefaultsAndOnlyTheAppKitColour) {
    for (const char* missing : {"Code", "R", "G", "B", "A", "Name"}) {
        const CComponentColour saved({0, 7}, 4, "x", 0.5, 0.5, 0.5, 0.5, m_space);
        CParameterBlock block;
        saved.Save(&block);
        for (CParameter* parameter : block.parameters) {
            if (parameter->name == missing) parameter->name = "?";
        }
        CComponentColour colour({1, 1}, 3, "former", 0.9, 0.9, 0.9, 1, m_space);
        EXPECT_FALSE(colour.Load(&block, m_space)) << missing;
        EXPECT_EQ(colour.m_cgColor, nullptr) << missing;
        ASSERT_NE(colour.m_nsColor, nil) << missing;
        EXPECT_FLOAT_EQ([colour.m_nsColor redComponent], colour.m_rgba[0]) << missing;
        EXPECT_EQ(colour.m_rgba[0], std::string("R") == missing ? 0.0 : 0.5) << missing;
        EXPECT_EQ(colour.m_name, std::string("Name") == missing ? "" : "x") << missing;
    }
}

TEST_F(ComponentColourTests, AWrongTypeCountsAsMissing) {
    CParameterBlock block;
    CComponentCode(0, 7).Save(&block);
    block.AddParameter("R", 1);
    for (const char* name : {"G", "B", "A"}) block.AddParameter(name, 0.5);
    block.AddParameter("Name", "x");
    CComponentColour colour({0, 0}, 3);
    EXPECT_FALSE(colour.Load(&block, m_space));
    EXPECT_EQ(colour.m_rgba[0], 0.0);
}

TEST_F(ComponentColourTests, ChannelsThatAreNoNumbersAreKept) {
    CComponentColour colour({0, 7}, 4, "", kNan, kInfinity, -kInfinity, kNan, m_space);
    CParameterBlock block;
    colour.Save(&block);
    CComponentColour loaded({0, 0}, 0);
    EXPECT_TRUE(loaded.Load(&block, m_space));
    EXPECT_TRUE(std::isnan(loaded.m_rgba[0]));
    EXPECT_EQ(loaded.m_rgba[1], kInfinity);
    EXPECT_NE(loaded.m_cgColor, nullptr);
    EXPECT_NE(loaded.m_nsColor, nil);
    EXPECT_TRUE(loaded != colour);
}

TEST_F(ComponentColourTests, CopyingTheColourArrayDoesNothing) {
    CComponentColour colour({0, 7}, 4, "", 0.1, 0.2, 0.3, 1, m_space);
    colour.CopyColourArray();
    EXPECT_EQ(colour.m_rgba[0], 0.1);
    ExpectBothForms(colour);
}

}  // namespace
