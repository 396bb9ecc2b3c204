#include "colours/SchemeRules.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "colours/ComponentCodeTable.h"
#include "colours/ComponentCodes.h"
#include "colours/DefaultColours.h"
#include "colours/DeviceRGB.h"
#include "colours/SchemeProposal.h"

namespace {

class SchemeRuleTests : public testing::Test {
protected:
    SchemeRuleTests() { AppCreateDefaultColoursDesigner(&m_scheme); }

    CJudgement Judge(CComponentCode first, CComponentCode second) const {
        for (CJudgement const& judgement : JudgeScheme(m_scheme)) {
            if (judgement.rule.first == first && judgement.rule.second == second) return judgement;
        }
        ADD_FAILURE() << "no such rule";
        return {};
    }

    void SetGrey(CComponentCode code, double grey) {
        m_scheme.Add(new CComponentColour(code, 4, "", grey, grey, grey, 1, CDeviceRGB()));
    }

    static std::string Complaints(CComponentsColors const& scheme) {
        std::string complaints;
        for (CJudgement const& judgement : JudgeScheme(scheme)) {
            if (judgement.verdict == Verdict::broken) complaints += Describe(judgement) + "\n";
        }
        return complaints;
    }

    static std::ptrdiff_t Count(CComponentsColors const& scheme, Verdict verdict) {
        return std::ranges::count(JudgeScheme(scheme), verdict, &CJudgement::verdict);
    }

    CComponentsColors m_scheme;
};

TEST_F(SchemeRuleTests, DesignerKeepsEveryRule) {
    EXPECT_EQ(Complaints(m_scheme), "");
    EXPECT_EQ(Count(m_scheme, Verdict::given), 2);
    EXPECT_GT(Count(m_scheme, Verdict::kept), 400);
}

TEST_F(SchemeRuleTests, EngineerKeepsEveryRule) {
    CComponentsColors engineer;
    AppCreateDefaultColoursEngineer(&engineer);
    EXPECT_EQ(Complaints(engineer), "");
    EXPECT_EQ(Count(engineer, Verdict::given), 2);
    EXPECT_GT(Count(engineer, Verdict::kept), 170);
}

TEST_F(SchemeRuleTests, AnEmptySchemeHasNothingToJudge) {
    CComponentsColors empty;
    EXPECT_EQ(Count(empty, Verdict::absent), std::ssize(SchemeRules()));
}

TEST_F(SchemeRuleTests, RulesNameRegisteredComponentsOnce) {
    auto const& rules = SchemeRules();
    for (auto rule = rules.begin(); rule != rules.end(); ++rule) {
        for (CComponentCode code : {rule->first, rule->second, rule->backdrop}) {
            EXPECT_FALSE(ComponentCodeName(code).empty());
        }
        EXPECT_TRUE(std::none_of(rules.begin(), rule,
                                 [rule](CSchemeRule const& other) {
                                     return other.kind == rule->kind &&
                                            other.first == rule->first &&
                                            other.second == rule->second;
                                 }))
            << ComponentCodeName(rule->first) << " and " << ComponentCodeName(rule->second);
    }
}

TEST_F(SchemeRuleTests, TextNeedsFourAndAHalfAndEdgesNeedThree) {
    for (CSchemeRule const& rule : SchemeRules()) {
        if (rule.kind == RuleKind::distinct) continue;
        EXPECT_EQ(rule.dMinimum, rule.kind == RuleKind::readable ? 4.5 : 3.0);
    }
}

TEST_F(SchemeRuleTests, EveryTwoTrackGroupsAreKeptApart) {
    const auto isGroup = [](CComponentCode code) { return code.m_nModule == 3; };
    const auto pairs = std::ranges::count_if(SchemeRules(), [&](CSchemeRule const& rule) {
        return rule.kind == RuleKind::distinct && isGroup(rule.first) && isGroup(rule.second);
    });
    EXPECT_EQ(pairs, 14 * 13 / 2);
}

TEST_F(SchemeRuleTests, UnreadableTextIsBroken) {
    EXPECT_EQ(Judge(ccLabelText, ccWindowBackground).verdict, Verdict::kept);
    SetGrey(ccLabelText, 0.3);
    EXPECT_EQ(Judge(ccLabelText, ccWindowBackground).verdict, Verdict::broken);
}

TEST_F(SchemeRuleTests, AnInvisibleEdgeIsBroken) {
    SetGrey(ccSeparatorLine, 0.2);
    EXPECT_EQ(Judge(ccSeparatorLine, ccWindowBackground).verdict, Verdict::broken);
}

TEST_F(SchemeRuleTests, StatesThatLookAlikeAreBroken) {
    SetGrey(ccMarkerEnabled, 0.5);
    SetGrey(ccMarkerDisabled, 0.5);
    EXPECT_EQ(Judge(ccMarkerEnabled, ccMarkerDisabled).verdict, Verdict::broken);
    EXPECT_EQ(Judge(ccMarkerEnabled, ccMarkerDisabled).dMeasured, 0.0);
}

TEST_F(SchemeRuleTests, GradientsAreJudgedAtTheirWorstPlace) {
    auto* fill = new CGradientFill(ccButtonFaceActive, 4, "");
    // Both ends contrast with the text; half way it vanishes.
    fill->AddColor(0.0, 0.0, 0.0, 0.0, 1, CDeviceRGB(), 1.0);
    fill->AddColor(1.0, 1.0, 1.0, 1.0, 1, CDeviceRGB(), 1.0);
    m_scheme.Add(fill);
    SetGrey(ccControlOnText, 0.46);
    const CJudgement judgement = Judge(ccControlOnText, ccButtonFaceActive);
    EXPECT_LT(judgement.dMeasured, 1.1);
    EXPECT_EQ(judgement.verdict, Verdict::broken);
}

TEST_F(SchemeRuleTests, TranslucentBackgroundsShowWhatIsBehindThem) {
    m_scheme.Add(
        new CComponentColour(ccVolumeEditLabelBackground, 3, "", 1, 1, 1, 0.0, CDeviceRGB()));
    EXPECT_EQ(Judge(ccLabelText, ccVolumeEditLabelBackground).verdict, Verdict::kept);
    SetGrey(ccTrackBackground, 0.7);
    EXPECT_EQ(Judge(ccLabelText, ccVolumeEditLabelBackground).verdict, Verdict::broken);
}

TEST_F(SchemeRuleTests, PrescribedColoursAreExcusedOnlyWhileTheyStand) {
    EXPECT_EQ(Judge(ccLabelText, ccSelectedTextBackground).verdict, Verdict::given);
    SetGrey(ccLabelText, 0.70);
    EXPECT_EQ(Judge(ccLabelText, ccSelectedTextBackground).verdict, Verdict::broken);
    SetGrey(ccLabelText, 0.95);
    EXPECT_EQ(Judge(ccLabelText, ccSelectedTextBackground).verdict, Verdict::kept);
}

TEST_F(SchemeRuleTests, ColoursThatAreNoNumbersAreJudgedToo) {
    m_scheme.UpdateColour(ccLabelText, NAN, NAN, NAN, NAN);
    m_scheme.UpdateColour(ccWindowBackground, INFINITY, -INFINITY, NAN, INFINITY);
    EXPECT_EQ(Judge(ccLabelText, ccWindowBackground).verdict, Verdict::broken);
}

TEST_F(SchemeRuleTests, ATitleWithoutAFaceIsReadOnTheWindow) {
    AppCreateDefaultColoursEngineer(&m_scheme);
    EXPECT_EQ(Judge(ccControlText, ccButtonFaceActive).verdict, Verdict::given);
    SetGrey(ccControlText, 0.80);
    EXPECT_EQ(Judge(ccControlText, ccButtonFaceActive).verdict, Verdict::broken);
    EXPECT_TRUE(Judge(ccControlText, ccButtonFaceActive).fFaceMissing);
    SetGrey(ccButtonFaceActive, 0.1);
    EXPECT_EQ(Judge(ccControlText, ccButtonFaceActive).verdict, Verdict::kept);
    m_scheme.Clear();
    SetGrey(ccControlText, 0.80);
    SetGrey(ccWindowBackground, 0.80);
    EXPECT_EQ(Judge(ccControlText, ccButtonFaceActive).verdict, Verdict::absent)
        << "without buttons nothing is pressed";
}

TEST_F(SchemeRuleTests, AProposalKeepsEveryRuleOfTheColourAndItsHue) {
    SetGrey(ccLabelText, 0.3);
    const CJudgement broken = Judge(ccLabelText, ccWindowBackground);
    const auto proposal = ProposeColour(broken.rule, m_scheme);
    ASSERT_TRUE(proposal);
    EXPECT_EQ(proposal->code, ccLabelText);
    EXPECT_FALSE(proposal->fAlone);
    auto const& rgba = proposal->rgba;
    EXPECT_NEAR(rgba[0], rgba[1], 3.0 / 255);
    EXPECT_NEAR(rgba[1], rgba[2], 3.0 / 255);
    m_scheme.Add(
        new CComponentColour(ccLabelText, 4, "", rgba[0], rgba[1], rgba[2], rgba[3], CDeviceRGB()));
    EXPECT_EQ(Complaints(m_scheme), "");
}

TEST_F(SchemeRuleTests, AProposalIsNoFurtherAwayThanItMust) {
    SetGrey(ccSeparatorLine, 0.3);
    const auto proposal = ProposeColour(Judge(ccSeparatorLine, ccWindowBackground).rule, m_scheme);
    ASSERT_TRUE(proposal);
    // Every grey between keeps it not.
    const double least = *std::ranges::min_element(proposal->rgba);
    for (double grey = 0.3; grey < least - 4.0 / 255; grey += 1.0 / 255) {
        SetGrey(ccSeparatorLine, grey);
        EXPECT_EQ(Judge(ccSeparatorLine, ccWindowBackground).verdict, Verdict::broken) << grey;
    }
}

TEST_F(SchemeRuleTests, AGradientIsToldToGiveWay) {
    auto* edge = new CGradientFill(ccButtonBorderActive, 4, "");
    edge->AddColor(0.0, 0.1, 0.1, 0.1, 1, CDeviceRGB(), 1.0);
    edge->AddColor(1.0, 0.2, 0.2, 0.2, 1, CDeviceRGB(), 1.0);
    m_scheme.Add(edge);
    const auto proposal =
        ProposeColour(Judge(ccButtonBorderActive, ccWindowBackground).rule, m_scheme);
    ASSERT_TRUE(proposal);
    EXPECT_FALSE(proposal->fPlain);
}

TEST_F(SchemeRuleTests, ADescriptionNamesBothAndTheMeasure) {
    EXPECT_EQ(Describe({{RuleKind::readable, ccLabelText, ccWindowBackground, ccNull, 4.5},
                        8.76,
                        Verdict::kept}),
              "ccLabelText on ccWindowBackground: contrast 8.8, at least 4.5");
    EXPECT_EQ(Describe({{RuleKind::distinct, ccBar, ccBeat, ccNull, 4.0}, 3.0, Verdict::broken}),
              "ccBar and ccBeat: distance 3.0, at least 4.0");
}

}  // namespace
