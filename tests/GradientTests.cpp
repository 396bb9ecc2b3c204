#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "colours/ComponentColour.h"
#include "colours/DeviceRGB.h"
#include "utils/ParameterBlock.h"

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

class GradientTests : public testing::Test {
protected:
    void AddGrey(CGradientFill& fill, double position, double grey) const {
        fill.AddColor(position, grey, grey, grey, 1.0, m_space, 1.0);
    }

    static std::vector<float> Positions(CGradientFill const& fill) {
        std::vector<float> positions;
        for (CGradComponent const* stop : fill.m_components) positions.push_back(stop->m_fPosition);
        return positions;
    }

    /// A stop's block; without a position it stands nowhere.
    void AppendStop(CParameterBlock& block, float position, double grey) const {
        CGradComponent stop(position, grey, grey, grey, 1.0, m_space);
        CParameterBlock inner;
        stop.Save(&inner);
        block.AddParameter("GradColor", &inner);
    }

    static void AppendBrokenStop(CParameterBlock& block, float position) {
        CParameterBlock inner;
        inner.AddParameter("Position", position);
        block.AddParameter("GradColor", &inner);
    }

    static void AppendHead(CParameterBlock& block) {
        block.AddParameter("Type", 2);
        CComponentCode(0, 312).Save(&block);
        block.AddParameter("Cl", 4);
        block.AddParameter("Name", "Button face");
    }

    CDeviceRGB m_space;
    CGradientFill m_fill{{0, 312}, 4, "Button face"};
};

TEST_F(GradientTests, ANewGradientIsEmpty) {
    EXPECT_TRUE(m_fill.m_components.empty());
    EXPECT_EQ(m_fill.m_gradient, nullptr);
    EXPECT_EQ(m_fill.m_cgColor, nullptr);
    EXPECT_EQ(m_fill.m_nsColor, nullptr);
    EXPECT_EQ(m_fill.m_name, "Button face");
    EXPECT_EQ(CGradientFill({1, 2}, 3).m_name, "");
}

TEST_F(GradientTests, StopsStandInAscendingPosition) {
    for (double position : {0.75, 0.0, 1.0, 0.5}) AddGrey(m_fill, position, position);
    EXPECT_EQ(Positions(m_fill), (std::vector<float>{0.0f, 0.5f, 0.75f, 1.0f}));
}

TEST_F(GradientTests, AStopHasNoIdentity) {
    AddGrey(m_fill, 0.0, 0.5);
    CGradComponent const& stop = **m_fill.m_components.begin();
    EXPECT_EQ(stop.m_code, CComponentCode(0, 0));
    EXPECT_EQ(stop.m_nClass, 0);
    EXPECT_EQ(stop.m_name, "");
    EXPECT_NE(stop.m_cgColor, nullptr);
    EXPECT_NE(stop.m_nsColor, nullptr);
}

TEST_F(GradientTests, TheFactorScalesColoursAndAllAreCutAtOne) {
    m_fill.AddColor(0.5, 0.8, 0.8, 0.8, 1.5, m_space, 2.0);
    ASSERT_EQ(m_fill.m_components.size(), 1u);
    for (double channel : (*m_fill.m_components.begin())->m_rgba) EXPECT_EQ(channel, 1.0);

    m_fill.AddColor(0.5, 0.1, 0.1, 0.1, 0.1, m_space, 1.0);
    ASSERT_EQ(m_fill.m_components.size(), 1u) << "a position is taken once";
    EXPECT_EQ((*m_fill.m_components.begin())->m_rgba[0], 1.0);
}

TEST_F(GradientTests, AlphaIsNotScaledAndNothingIsCutBelow) {
    m_fill.AddColor(0.0, 0.25, -0.5, 0.1, -2.0, m_space, 2.0);
    const double* rgba = (*m_fill.m_components.begin())->m_rgba;
    EXPECT_EQ(rgba[0], 0.5);
    EXPECT_EQ(rgba[1], -1.0);
    EXPECT_EQ(rgba[2], 0.2);
    EXPECT_EQ(rgba[3], -2.0);
}

TEST_F(GradientTests, PositionsAreSinglePrecision) {
    AddGrey(m_fill, 0.1, 0.5);
    AddGrey(m_fill, 0.1 + 1e-12, 0.6);
    EXPECT_EQ(Positions(m_fill), (std::vector<float>{0.1f}));
}

TEST_F(GradientTests, DeletingTakesExactlyThatStop) {
    AddGrey(m_fill, 0.0, 0.5);
    AddGrey(m_fill, 1.0, 0.6);
    m_fill.DeleteColor(*m_fill.m_components.begin());
    EXPECT_EQ(Positions(m_fill), (std::vector<float>{1.0f}));
}

TEST_F(GradientTests, DeletingAStrangerIsIgnored) {
    AddGrey(m_fill, 0.5, 0.5);
    CGradComponent twin(0.5, 0.5, 0.5, 0.5, 1.0, m_space);
    m_fill.DeleteColor(&twin);
    m_fill.DeleteColor(nullptr);
    EXPECT_EQ(m_fill.m_components.size(), 1u);
}

TEST_F(GradientTests, OnlyCreateMakesWhatIsDrawn) {
    AddGrey(m_fill, 0.0, 0.5);
    AddGrey(m_fill, 1.0, 0.2);
    EXPECT_EQ(m_fill.m_gradient, nullptr);
    m_fill.Create(m_space);
    const CGGradientRef first = m_fill.m_gradient;
    ASSERT_NE(first, nullptr);
    AddGrey(m_fill, 0.5, 0.3);
    EXPECT_EQ(m_fill.m_gradient, first);
    m_fill.DeleteColor(*m_fill.m_components.begin());
    EXPECT_EQ(m_fill.m_gradient, first);
}

TEST_F(GradientTests, CreateReplacesWhatWasDrawn) {
    AddGrey(m_fill, 0.0, 0.5);
    m_fill.Create(m_space);
    const CGGradientRef first = CGGradientRetain(m_fill.m_gradient);
    m_fill.Create(m_space);
    EXPECT_NE(m_fill.m_gradient, first);
    CGGradientRelease(first);
}

TEST_F(GradientTests, CreateWithoutStopsDoesNotCrash) {
    m_fill.Create(m_space);
    EXPECT_TRUE(m_fill.m_components.empty());
}

TEST_F(GradientTests, ClearingEmptiesEverything) {
    AddGrey(m_fill, 0.0, 0.5);
    m_fill.Create(m_space);
    m_fill.Clear();
    EXPECT_TRUE(m_fill.m_components.empty());
    EXPECT_EQ(m_fill.m_gradient, nullptr);
    EXPECT_EQ(m_fill.m_name, "Button face");
}

TEST_F(GradientTests, AssigningCopiesStopsButNotWhatIsDrawn) {
    AddGrey(m_fill, 0.0, 0.5);
    AddGrey(m_fill, 1.0, 0.2);
    m_fill.Create(m_space);
    CGradientFill copy({1, 1}, 1, "Former");
    AddGrey(copy, 0.3, 0.3);
    copy.Create(m_space);
    copy = m_fill;

    EXPECT_EQ(copy.m_name, "Button face");
    EXPECT_EQ(copy.m_code, CComponentCode(0, 312));
    EXPECT_EQ(copy.m_nClass, 4);
    EXPECT_EQ(copy.m_gradient, nullptr);
    EXPECT_FALSE(copy != m_fill);
    EXPECT_NE(*copy.m_components.begin(), *m_fill.m_components.begin());
    EXPECT_NE((*copy.m_components.begin())->m_cgColor, nullptr);
}

TEST_F(GradientTests, AssigningItselfKeepsTheStops) {
    AddGrey(m_fill, 0.0, 0.5);
    CGradientFill& self = m_fill;
    m_fill = self;
    EXPECT_EQ(m_fill.m_components.size(), 1u);
}

TEST_F(GradientTests, AssigningStopsCopiesPositionAndColour) {
    CGradComponent source(0.25, 0.1, 0.2, 0.3, 0.4, m_space);
    CGradComponent target(0.0f, {1, 1});
    target = source;
    EXPECT_EQ(target.m_fPosition, 0.25f);
    EXPECT_EQ(target.m_code, CComponentCode(0, 0));
    EXPECT_FALSE(target != source);
    EXPECT_NE(target.m_cgColor, nullptr);
}

TEST_F(GradientTests, StopsDifferByPositionOrColour) {
    const CGradComponent stop(0.25, 0.1, 0.2, 0.3, 0.4, m_space);
    EXPECT_FALSE(stop != CGradComponent(0.25, 0.1, 0.2, 0.3, 0.4, m_space));
    EXPECT_TRUE(stop != CGradComponent(0.26, 0.1, 0.2, 0.3, 0.4, m_space));
    EXPECT_TRUE(stop != CGradComponent(0.25, 0.2, 0.2, 0.3, 0.4, m_space));
    EXPECT_TRUE(CGradComponent(kNan, {0, 0}) != CGradComponent(kNan, {0, 0}));
}

TEST_F(GradientTests, ThroughTheBaseAStopComparesItsColourOnly) {
    const CGradComponent first(0.25, 0.1, 0.2, 0.3, 0.4, m_space);
    const CGradComponent second(0.75, 0.1, 0.2, 0.3, 0.4, m_space);
    CComponentColour const& base = first;
    EXPECT_FALSE(base != second);
}

TEST_F(GradientTests, AGradientDoesNotDifferFromAPlainColour) {
    AddGrey(m_fill, 0.0, 0.5);
    const CComponentColour plain({0, 1}, 0, "", 1, 1, 1, 1, m_space);
    EXPECT_FALSE(m_fill != plain);
    EXPECT_TRUE(plain != m_fill) << "the plain colour compares its channels with the zeros";
}

TEST_F(GradientTests, GradientsDifferByNumberPositionAndColour) {
    AddGrey(m_fill, 0.0, 0.5);
    AddGrey(m_fill, 1.0, 0.2);
    const auto with = [this](double position, double grey) {
        auto fill = std::make_unique<CGradientFill>(CComponentCode(9, 9), 1, "Other");
        AddGrey(*fill, 0.0, 0.5);
        AddGrey(*fill, position, grey);
        return fill;
    };
    EXPECT_FALSE(m_fill != *with(1.0, 0.2)) << "code, class and name do not count";
    EXPECT_FALSE(m_fill != *with(1.0, 0.2 + 1.0 / 512)) << "nor less than the tolerance";
    EXPECT_TRUE(m_fill != *with(0.9, 0.2));
    EXPECT_TRUE(m_fill != *with(1.0, 0.3));
    CGradientFill longer({0, 0}, 0);
    for (double position : {0.0, 0.5, 1.0}) AddGrey(longer, position, 0.5);
    EXPECT_TRUE(m_fill != longer);
}

TEST_F(GradientTests, APositionThatIsNoNumberDiffersFromItself) {
    m_fill.AddColor(kNan, 0.5, 0.5, 0.5, 1.0, m_space, 1.0);
    CComponentColour const& self = m_fill;
    EXPECT_TRUE(m_fill != self);
}

TEST_F(GradientTests, SavingAStopWritesPositionAndColour) {
    CGradComponent stop(0.25, 0.1, 0.2, 0.3, 0.4, m_space);
    CParameterBlock block;
    stop.Save(&block);
    ASSERT_EQ(block.parameters.size(), 2u);
    EXPECT_EQ(block.parameters[0]->name, "Position");
    EXPECT_EQ(block.parameters[0]->type, std::uint32_t{tagFloat});
    CParameterBlock* colour = nullptr;
    ASSERT_TRUE(block.FindParameter("Color", &colour));
    ASSERT_EQ(colour->parameters.size(), 8u);
    EXPECT_EQ(colour->parameters[0]->GetString(), "1");
    EXPECT_EQ(colour->parameters[2]->GetString(), "0");
    EXPECT_EQ(colour->parameters[7]->GetString(), "");
    CComponentCode code(9, 9);
    EXPECT_TRUE(code.Load(colour));
    EXPECT_EQ(code, CComponentCode(0, 0));
}

TEST_F(GradientTests, SavingAGradientWritesItsStopsInAscendingPosition) {
    AddGrey(m_fill, 1.0, 0.2);
    AddGrey(m_fill, 0.0, 0.5);
    CParameterBlock block;
    m_fill.Save(&block);
    const char* names[] = {"Type", "Code", "Cl", "Name", "GradColor", "GradColor"};
    ASSERT_EQ(block.parameters.size(), std::size(names));
    for (std::size_t index = 0; index < std::size(names); ++index) {
        EXPECT_EQ(block.parameters[index]->name, names[index]);
    }
    EXPECT_EQ(block.parameters[0]->GetString(), "2");
    float position = -1;
    const auto* first = dynamic_cast<CParameterBlock*>(block.parameters[4]);
    ASSERT_NE(first, nullptr);
    EXPECT_TRUE(first->FindParameter("Position", &position, -1.0f));
    EXPECT_EQ(position, 0.0f);
}

TEST_F(GradientTests, LoadingReadsWhatWasSavedReadyToDraw) {
    AddGrey(m_fill, 0.0, 0.5);
    AddGrey(m_fill, 1.0, 0.2);
    CParameterBlock block;
    m_fill.Save(&block);
    CGradientFill loaded({0, 0}, 0);
    AddGrey(loaded, 0.5, 0.9);
    EXPECT_TRUE(loaded.Load(&block, m_space));
    EXPECT_FALSE(loaded != m_fill);
    EXPECT_EQ(loaded.m_code, CComponentCode(0, 312));
    EXPECT_EQ(loaded.m_nClass, 4);
    EXPECT_EQ(loaded.m_name, "Button face");
    EXPECT_NE(loaded.m_gradient, nullptr);
}

TEST_F(GradientTests, OnlyTheLastStopDecidesWhetherALoadSucceeds) {
    CParameterBlock block;
    AppendHead(block);
    AppendBrokenStop(block, 0.0f);
    AppendStop(block, 1.0f, 0.5);
    EXPECT_TRUE(m_fill.Load(&block, m_space));
    EXPECT_EQ(Positions(m_fill), (std::vector<float>{1.0f}));
}

TEST_F(GradientTests, ABrokenLastStopFailsButKeepsTheOthers) {
    CParameterBlock block;
    AppendHead(block);
    AppendStop(block, 0.0f, 0.5);
    AppendBrokenStop(block, 1.0f);
    EXPECT_FALSE(m_fill.Load(&block, m_space));
    EXPECT_EQ(Positions(m_fill), (std::vector<float>{0.0f}));
    EXPECT_NE(m_fill.m_gradient, nullptr);
}

TEST_F(GradientTests, LoadingWithoutStopsSucceeds) {
    AddGrey(m_fill, 0.0, 0.5);
    CParameterBlock block;
    AppendHead(block);
    EXPECT_TRUE(m_fill.Load(&block, m_space));
    EXPECT_TRUE(m_fill.m_components.empty());
}

TEST_F(GradientTests, LoadingKeepsTheFirstStopOfAPosition) {
    CParameterBlock block;
    AppendHead(block);
    AppendStop(block, 0.5f, 0.25);
    AppendStop(block, 0.5f, 0.75);
    EXPECT_TRUE(m_fill.Load(&block, m_space));
    ASSERT_EQ(m_fill.m_components.size(), 1u);
    EXPECT_EQ((*m_fill.m_components.begin())->m_rgba[0], 0.25);
}

TEST_F(GradientTests, WithoutCodeOrNameNoStopIsRead) {
    for (const char* missing : {"Code", "Name"}) {
        CParameterBlock block;
        AppendHead(block);
        AppendStop(block, 0.0f, 0.5);
        for (CParameter* parameter : block.parameters) {
            if (parameter->name == missing) parameter->name = "?";
        }
        CGradientFill fill({1, 1}, 3, "Former");
        AddGrey(fill, 0.0, 0.9);
        EXPECT_FALSE(fill.Load(&block, m_space)) << missing;
        EXPECT_TRUE(fill.m_components.empty()) << missing;
        EXPECT_EQ(fill.m_nClass, 4) << missing;
    }
}

TEST_F(GradientTests, AMissingClassKeepsTheCurrentOne) {
    CParameterBlock block;
    CComponentCode(0, 312).Save(&block);
    block.AddParameter("Name", "x");
    EXPECT_TRUE(m_fill.Load(&block, m_space));
    EXPECT_EQ(m_fill.m_nClass, 4);
}

TEST_F(GradientTests, AStopWithoutPositionOrColourIsNotTouched) {
    CParameterBlock onlyPosition;
    onlyPosition.AddParameter("Position", 0.5f);
    CGradComponent stop(0.25, 0.1, 0.2, 0.3, 0.4, m_space);
    EXPECT_FALSE(stop.Load(&onlyPosition, m_space));
    EXPECT_EQ(stop.m_rgba[0], 0.1);
    EXPECT_NE(stop.m_cgColor, nullptr);

    CParameterBlock colour;
    CComponentColour({0, 0}, 0, "", 0.9, 0.9, 0.9, 1, m_space).Save(&colour);
    CParameterBlock onlyColour;
    onlyColour.AddParameter("Color", &colour);
    EXPECT_FALSE(stop.Load(&onlyColour, m_space));
    EXPECT_EQ(stop.m_rgba[0], 0.1);
    EXPECT_EQ(stop.m_fPosition, 0.0f);
}

TEST_F(GradientTests, StopsWithoutANumberForPositionDoNotBreakTheOrder) {
    CParameterBlock block;
    AppendHead(block);
    for (float position : {0.5f, kNan, 0.0f, kNan, 1.0f}) AppendStop(block, position, 0.5);
    EXPECT_TRUE(m_fill.Load(&block, m_space));
    EXPECT_EQ(Positions(m_fill), (std::vector<float>{0.0f, 0.5f, 1.0f}));
}

TEST_F(GradientTests, DumpedCodeIsWhatWouldMakeTheGradient) {
    m_fill.AddColor(1.0, 0.156863, 0.5, 1.0, 0.25, m_space, 1.0);
    AddGrey(m_fill, 0.0, 0.447059);
    testing::internal::CaptureStderr();
    m_fill.DumpCode();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "\t{\n"
              "\t\tCGradientFill *pFill = new CGradientFill(XXXX, \"Button face\", true);\n"
              "\t\tpFill->AddColor(0.000000, 0.447059, 0.447059, 0.447059, 1.000000, refSpace, "
              "true);\n"
              "\t\tpFill->AddColor(1.000000, 0.156863, 0.500000, 1.000000, 0.250000, refSpace, "
              "true);\n"
              "\t\tpFill->Create(refSpace);\n"
              "\t\tgAppColours.Add(pFill);\n"
              "\t}\n");
}

TEST_F(GradientTests, DumpedCodeOfExtremeNumbersIsWhole) {
    constexpr double most = std::numeric_limits<double>::max();
    m_fill.AddColor(0.0, -most, std::nan(""), -0.0, -most, m_space, 1.0);
    testing::internal::CaptureStderr();
    m_fill.DumpCode();
    const std::string text = testing::internal::GetCapturedStderr();
    char expected[400];
    std::snprintf(expected, sizeof expected, "%f", -most);
    EXPECT_NE(text.find(expected), std::string::npos);
    EXPECT_NE(text.find("nan, -0.000000"), std::string::npos);
}

}  // namespace
