#include <gtest/gtest.h>

#include "colours/ComponentCodes.h"
#include "colours/ComponentColour.h"
#include "colours/DeviceRGB.h"
#include "utils/ParameterBlock.h"

#import <AppKit/AppKit.h>

namespace {

/// Tells when it is destroyed.
class CWatchedColour : public CComponentColour {
public:
    CWatchedColour(CComponentCode code, int* pnDestroyed)
        : CComponentColour(code, 0), m_pnDestroyed(pnDestroyed) {}
    ~CWatchedColour() override { ++*m_pnDestroyed; }

private:
    int* m_pnDestroyed;
};

class SchemeTests : public testing::Test {
protected:
    ~SchemeTests() override { [m_pool drain]; }

    CComponentColour* AddPlain(CComponentCode code, double grey) {
        auto* colour = new CComponentColour(code, 4, "plain", grey, grey, grey, 1, m_space);
        m_scheme.Add(colour);
        return colour;
    }

    CGradientFill* AddGradient(CComponentCode code) {
        auto* fill = new CGradientFill(code, 4, "gradient");
        fill->AddColor(0, 0.5, 0.5, 0.5, 1, m_space, 1.0);
        fill->Create(m_space);
        m_scheme.Add(fill);
        return fill;
    }

    NSAutoreleasePool* m_pool = [[NSAutoreleasePool alloc] init];
    CDeviceRGB m_space;
    CComponentsColors m_scheme;
    int m_nDestroyed = 0;
};

TEST_F(SchemeTests, FindAnswersTheColourOfACode) {
    CComponentColour* first = AddPlain({0, 1}, 0.1);
    CComponentColour* second = AddPlain({3, 1}, 0.2);
    EXPECT_EQ(m_scheme.Find({0, 1}), first);
    EXPECT_EQ(m_scheme.Find(CComponentCode(12884901889)), second);
    EXPECT_EQ(m_scheme.Find({3, 2}), nullptr);
    EXPECT_EQ(m_scheme.Find({1, 0}), nullptr);
}

TEST_F(SchemeTests, NoComponentIsNeverFoundThoughItsPartsAre) {
    CComponentColour* colour = AddPlain({0, 0}, 0.1);
    EXPECT_EQ(m_scheme.Find({0, 0}), nullptr);
    EXPECT_EQ(m_scheme.FindRGBA({0, 0}), colour->m_rgba);
    EXPECT_EQ(m_scheme.FindCGColorRef({0, 0}), colour->m_cgColor);
    EXPECT_EQ(m_scheme.FindNSColor({0, 0}), colour->m_nsColor);
    EXPECT_FALSE(m_scheme.IsGradient({0, 0}));
}

TEST_F(SchemeTests, TheNullCodeIsFoundLikeAnyOther) {
    EXPECT_EQ(m_scheme.Find(ccNull), nullptr);
    CComponentColour* colour = AddPlain(ccNull, 0.1);
    EXPECT_EQ(m_scheme.Find(ccNull), colour);
}

TEST_F(SchemeTests, NegativeCodesAreFound) {
    CComponentColour* colour = AddPlain({-2, -3}, 0.1);
    AddPlain({2, 3}, 0.1);
    EXPECT_EQ(m_scheme.Find({-2, -3}), colour);
}

TEST_F(SchemeTests, AbsentCodesHaveNoParts) {
    EXPECT_EQ(m_scheme.FindCGColorRef({0, 1}), nullptr);
    EXPECT_EQ(m_scheme.FindNSColor({0, 1}), nil);
    EXPECT_EQ(m_scheme.FindRGBA({0, 1}), nullptr);
    EXPECT_FALSE(m_scheme.IsGradient({0, 1}));
}

TEST_F(SchemeTests, AGradientHasNoColourOfItsOwn) {
    AddGradient({0, 1});
    AddPlain({0, 2}, 0.5);
    EXPECT_TRUE(m_scheme.IsGradient({0, 1}));
    EXPECT_FALSE(m_scheme.IsGradient({0, 2}));
    EXPECT_EQ(m_scheme.FindCGColorRef({0, 1}), nullptr);
    EXPECT_EQ(m_scheme.FindNSColor({0, 1}), nil);
    const double* rgba = m_scheme.FindRGBA({0, 1});
    ASSERT_NE(rgba, nullptr);
    for (int channel = 0; channel < 4; ++channel) EXPECT_EQ(rgba[channel], 0.0);
}

TEST_F(SchemeTests, AddingACodeAgainDestroysTheFirst) {
    m_scheme.Add(new CWatchedColour({0, 1}, &m_nDestroyed));
    CComponentColour* second = AddPlain({0, 1}, 0.5);
    EXPECT_EQ(m_nDestroyed, 1);
    EXPECT_EQ(m_scheme.Find({0, 1}), second);
    EXPECT_EQ(m_scheme.Entries().size(), 1u);
}

TEST_F(SchemeTests, AddingTheSameColourAgainKeepsIt) {
    auto* colour = new CWatchedColour({0, 1}, &m_nDestroyed);
    m_scheme.Add(colour);
    m_scheme.Add(colour);
    EXPECT_EQ(m_nDestroyed, 0);
    EXPECT_EQ(m_scheme.Find({0, 1}), colour);
}

TEST_F(SchemeTests, ClearingAndDestroyingDeleteTheColours) {
    {
        CComponentsColors scheme;
        scheme.Add(new CWatchedColour({0, 1}, &m_nDestroyed));
        scheme.Add(new CWatchedColour({0, 2}, &m_nDestroyed));
        scheme.Clear();
        EXPECT_EQ(m_nDestroyed, 2);
        EXPECT_EQ(scheme.Find({0, 1}), nullptr);
        scheme.Add(new CWatchedColour({0, 3}, &m_nDestroyed));
    }
    EXPECT_EQ(m_nDestroyed, 3);
}

TEST_F(SchemeTests, UpdatingChangesAPresentColourOnly) {
    CComponentColour* colour = AddPlain({0, 1}, 0.5);
    m_scheme.UpdateColour({0, 1}, 0.1f, 0.2f, 0.3f, 0.4f);
    EXPECT_EQ(colour->m_rgba[0], static_cast<double>(0.1f));
    EXPECT_EQ(colour->m_rgba[3], static_cast<double>(0.4f));
    EXPECT_FLOAT_EQ([m_scheme.FindNSColor({0, 1}) redComponent], 0.1f);
    m_scheme.UpdateColour({0, 2}, 0.1f, 0.2f, 0.3f, 0.4f);
    EXPECT_EQ(m_scheme.Find({0, 2}), nullptr);
}

TEST_F(SchemeTests, ColoursStandInDescendingOrderOfPackedCodes) {
    for (CComponentCode code : {CComponentCode(0, 1), CComponentCode(3, 1), CComponentCode(-1, 5),
                                CComponentCode(0, -1), CComponentCode(0, 2)}) {
        AddPlain(code, 0.5);
    }
    std::vector<CComponentCode> codes;
    for (auto const& entry : m_scheme.Entries()) codes.push_back(entry.pColour->m_code);
    EXPECT_EQ(codes, (std::vector<CComponentCode>{{3, 1}, {0, -1}, {0, 2}, {0, 1}, {-1, 5}}));
}

TEST_F(SchemeTests, TheProcessWideSchemeStartsEmpty) {
    EXPECT_TRUE(gAppColours.Entries().empty());
    EXPECT_EQ(gAppColours.Find(ccButtonFace), nullptr);
}

}  // namespace
