#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "colours/ComponentCodeTable.h"
#include "colours/ComponentCodes.h"
#include "colours/DefaultColours.h"
#include "colours/Palettes.h"

#import <AppKit/AppKit.h>

namespace {

class PaletteTests : public testing::Test {
protected:
    PaletteTests() {
        AppCreateDefaultColoursDesigner(&m_designer);
        AppCreateDefaultColoursEngineer(&m_engineer);
    }
    ~PaletteTests() override { [m_pool drain]; }

    static void ExpectPlain(CComponentsColors const& scheme, CComponentCode code, double r,
                            double g, double b, double a) {
        ASSERT_NE(scheme.Find(code), nullptr);
        EXPECT_FALSE(scheme.IsGradient(code));
        const double* rgba = scheme.FindRGBA(code);
        EXPECT_EQ(rgba[0], r);
        EXPECT_EQ(rgba[1], g);
        EXPECT_EQ(rgba[2], b);
        EXPECT_EQ(rgba[3], a);
    }

    using Greys = std::vector<std::pair<double, double>>;  // position and grey

    static void ExpectGreys(CComponentsColors const& scheme, CComponentCode code,
                            Greys const& expected) {
        auto const* fill = dynamic_cast<CGradientFill const*>(scheme.Find(code));
        ASSERT_NE(fill, nullptr);
        EXPECT_NE(fill->m_gradient, nullptr);
        Greys greys;
        for (CGradComponent const* stop : fill->m_components) {
            EXPECT_EQ(stop->m_rgba[0], stop->m_rgba[1]);
            EXPECT_EQ(stop->m_rgba[0], stop->m_rgba[2]);
            EXPECT_EQ(stop->m_rgba[3], 1.0);
            greys.emplace_back(stop->m_fPosition, stop->m_rgba[0]);
        }
        EXPECT_EQ(greys, expected);
    }

    static std::map<std::pair<int, bool>, int> CountByClassAndKind(
        std::span<const CPaletteEntry> palette) {
        std::map<std::pair<int, bool>, int> counts;
        for (CPaletteEntry const& row : palette) {
            ++counts[{row.nClass, row.kind == PaletteKind::gradient}];
        }
        return counts;
    }

    /// One number for code, class, name and kind of every row in order (FNV-1a).
    static std::uint64_t Fingerprint(std::span<const CPaletteEntry> palette) {
        std::uint64_t hash = 14695981039346656037u;
        for (CPaletteEntry const& row : palette) {
            const std::string text =
                std::to_string(row.code.m_nModule) + "," + std::to_string(row.code.m_nCompID) +
                "," + std::to_string(row.nClass) + "," + row.szName + "," +
                (row.kind == PaletteKind::gradient ? "gradient" : "plain") + "\n";
            for (unsigned char byte : text) hash = (hash ^ byte) * 1099511628211u;
        }
        return hash;
    }

    NSAutoreleasePool* m_pool = [[NSAutoreleasePool alloc] init];
    CComponentsColors m_designer;
    CComponentsColors m_engineer;
};

TEST_F(PaletteTests, DesignerHasEveryEntryOfEveryClassAndKind) {
    EXPECT_EQ(DesignerPalette().size(), 254u);
    const std::map<std::pair<int, bool>, int> expected{
        {{1, true}, 4},   {{1, false}, 9}, {{2, true}, 15},  {{2, false}, 27}, {{3, true}, 4},
        {{3, false}, 69}, {{4, true}, 66}, {{4, false}, 46}, {{5, false}, 14}};
    EXPECT_EQ(CountByClassAndKind(DesignerPalette()), expected);
}

TEST_F(PaletteTests, EngineerHasEveryEntryAllOfClassFour) {
    EXPECT_EQ(EngineerPalette().size(), 141u);
    const std::map<std::pair<int, bool>, int> expected{{{4, true}, 8}, {{4, false}, 133}};
    EXPECT_EQ(CountByClassAndKind(EngineerPalette()), expected);
}

// Values may be redesigned; codes, classes, names, kinds and their order are fixed.
TEST_F(PaletteTests, OrderNamesClassesAndKindsAreFixed) {
    EXPECT_EQ(Fingerprint(DesignerPalette()), 0x871343f930514ccfu);
    EXPECT_EQ(Fingerprint(EngineerPalette()), 0x83a5187e868e93c8u);
}

TEST_F(PaletteTests, PaletteTablesAreChecked) {
    const CPaletteEntry good[] = {
        {ccRed, 1, "", PaletteKind::plain, {{0, 1, 0, 0, 1}}},
        {ccBlue, 1, "", PaletteKind::gradient, {{0, 1, 0, 0, 1}, {1, 0, 0, 0, 1}}}};
    EXPECT_TRUE(IsPalette(good));
    const CPaletteEntry twoStops[] = {
        {ccRed, 1, "", PaletteKind::plain, {{0, 1, 0, 0, 1}, {1, 0, 0, 0, 1}}}};
    const CPaletteEntry twice[] = {{ccRed, 1, "", PaletteKind::plain, {{0, 1, 0, 0, 1}}},
                                   {ccRed, 1, "", PaletteKind::plain, {{0, 1, 0, 0, 1}}}};
    const CPaletteEntry descending[] = {
        {ccRed, 1, "", PaletteKind::gradient, {{1, 1, 0, 0, 1}, {0, 0, 0, 0, 1}}}};
    EXPECT_FALSE(IsPalette(twoStops));
    EXPECT_FALSE(IsPalette(twice));
    EXPECT_FALSE(IsPalette(descending));
}

TEST_F(PaletteTests, DesignerDefinesAllCodesButTen) {
    std::set<std::string> missing;
    for (CNamedComponentCode const& row : ComponentCodeTable()) {
        if (m_designer.Find(row.code) == nullptr) missing.insert(row.szName);
    }
    // The four older check-box codes are aliases, so they find the colours of the newer ones.
    EXPECT_EQ(missing, (std::set<std::string>{"ccNull", "ccTestFill", "ccMorlandProjectButton",
                                              "ccMorlandProjectButtonHighlighted",
                                              "ccMorlandProjectGreyButton",
                                              "ccMorlandTargetGainEditGroupSelectedPoint"}));
}

TEST_F(PaletteTests, TheNullCodeHasNoColour) {
    EXPECT_EQ(m_designer.Find(ccNull), nullptr);
    EXPECT_EQ(m_engineer.Find(ccNull), nullptr);
}

TEST_F(PaletteTests, CheckBoxAliasesFindTheUncheckedColours) {
    ASSERT_NE(m_designer.Find(ccCheckBoxFace), nullptr);
    EXPECT_EQ(m_designer.Find(ccCheckBoxFace), m_designer.Find(ccCheckBoxFaceUnChecked));
    EXPECT_EQ(m_designer.Find(ccCheckBoxFace)->m_name, "Checkbox Face Unchecked");
    EXPECT_EQ(m_designer.Find(ccCheckBoxBorder)->m_name, "Checkbox Border Unchecked");
    EXPECT_EQ(m_designer.Find(ccCheckBoxFaceActive)->m_name, "Checkbox Face Down Unchecked");
    EXPECT_EQ(m_designer.Find(ccCheckBoxBorderActive)->m_name, "Checkbox Border Down Unchecked");
}

TEST_F(PaletteTests, EngineerDefinesTheProjectButtons) {
    for (CComponentCode code :
         {ccMorlandProjectButton, ccMorlandProjectButtonHighlighted, ccMorlandProjectGreyButton}) {
        EXPECT_TRUE(m_engineer.IsGradient(code));
    }
}

TEST_F(PaletteTests, ThePalettesDifferInNamesAndKindsOfThirtyThreeEach) {
    int names = 0;
    int kinds = 0;
    for (auto const& entry : m_engineer.Entries()) {
        CComponentColour const* other = m_designer.Find(entry.pColour->m_code);
        if (other == nullptr) continue;
        names += other->m_name != entry.pColour->m_name;
        kinds += m_designer.IsGradient(other->m_code) && !m_engineer.IsGradient(other->m_code);
    }
    EXPECT_EQ(names, 33);
    EXPECT_EQ(kinds, 33);
}

TEST_F(PaletteTests, NamesAreLiteral) {
    EXPECT_EQ(m_designer.Find(ccSliderIndicatorHighlight)->m_name, "Slider Indicator Highlighed");
    EXPECT_EQ(m_designer.Find(ccTrackOddLayerBackground)->m_name, "Track Even Layer Background");
    EXPECT_EQ(m_designer.Find(ccProcessPopupBackground)->m_name, "Process window background");
    EXPECT_EQ(m_engineer.Find(ccProcessPopupBackground)->m_name, "Process popup background");
    EXPECT_EQ(m_engineer.Find(ccMorlandSemitonesBlack)->m_name, "APT Pitch Block Note");
    EXPECT_EQ(m_designer.Find(ccTrackGroup14)->m_name, "Track Group 14");
}

TEST_F(PaletteTests, DesignerHasThePrescribedValues) {
    constexpr double text = 0.752941;
    ExpectPlain(m_designer, ccControlText, text, text, text, 1.0);
    ExpectPlain(m_designer, ccControlTextDisabled, text, text, text, 0.3);
    ExpectPlain(m_designer, ccLabelText, 0.756863, 0.756863, 0.756863, 1.0);
    ExpectPlain(m_designer, ccLabelTextEditing, 0.1, 0.1, 0.1, 1.0);
    ExpectPlain(m_designer, ccSelectedTextBackground, 0.294118, 0.349020, 0.447059, 1.0);
    ExpectGreys(m_designer, ccButtonFace, {{0.0, 0.211765}});
    ExpectGreys(m_designer, ccButtonBorder, {{0.0, 0.447059}, {1.0, 0.156863}});
    ExpectPlain(m_designer, ccViewAudioTrackBkg, 0, 0, 0, 1);
    ExpectPlain(m_designer, ccAudioLabel, 0.5, 0.5, 0.5, 1);
    ExpectPlain(m_designer, ccAudioMissing, 0.3, 0, 0, 0.3);
    ExpectPlain(m_designer, ccTransparent, 0, 0, 0, 0);
    ExpectPlain(m_designer, ccRed, 1, 0, 0, 1);
    ExpectPlain(m_designer, ccYellow, 0.901961, 0.854902, 0, 1);
    ExpectPlain(m_designer, ccBlue, 0, 0, 1, 1);
    ExpectPlain(m_designer, ccBlack, 0, 0, 0, 1);
    ExpectPlain(m_designer, ccTrackGroup14, 0.6, 0.6, 0.6, 1);
}

TEST_F(PaletteTests, EngineerHasThePrescribedValues) {
    constexpr double text = 0.752941;
    ExpectPlain(m_engineer, ccControlText, text, text, text, 1.0);
    ExpectPlain(m_engineer, ccControlTextDisabled, text, text, text, 0.3);
    ExpectPlain(m_engineer, ccLabelText, 0.345098, 0.345098, 0.352941, 1.0);
    ExpectPlain(m_engineer, ccLabelTextEditing, 0.1, 0.1, 0.1, 1.0);
    ExpectPlain(m_engineer, ccSelectedTextBackground, 0.709804, 0.835294, 1.0, 1.0);
    ExpectGreys(m_engineer, ccButtonFace, {{0.0, 0.603922}, {1.0, 0.211765}});
}

TEST_F(PaletteTests, ControlTextIsAGreyForAppKitToo) {
    EXPECT_NEAR([m_designer.FindNSColor(ccControlText) redComponent], 192.0 / 255.0, 1e-6);
    EXPECT_NEAR([m_designer.FindNSColor(ccControlText) blueComponent], 192.0 / 255.0, 1e-6);
}

TEST_F(PaletteTests, GradientsAreReadyToDrawAndPlainColoursHaveBothForms) {
    for (CComponentsColors const* scheme : {&m_designer, &m_engineer}) {
        for (auto const& entry : scheme->Entries()) {
            if (auto const* fill = dynamic_cast<CGradientFill const*>(entry.pColour.get())) {
                EXPECT_NE(fill->m_gradient, nullptr);
            } else {
                EXPECT_NE(entry.pColour->m_cgColor, nullptr);
                EXPECT_NE(entry.pColour->m_nsColor, nil);
            }
        }
    }
}

TEST_F(PaletteTests, TheFilledProcessWideSchemeEndsWithTheProcess) {
    const auto fillAndExit = [] {
        AppCreateDefaultColoursDesigner(&gAppColours);
        std::exit(0);
    };
    EXPECT_EXIT(fillAndExit(), testing::ExitedWithCode(0), "^$");
}

TEST_F(PaletteTests, FillingAgainReplacesEverything) {
    m_designer.Add(new CComponentColour({9, 9}, 0));
    AppCreateDefaultColoursDesigner(&m_designer);
    EXPECT_EQ(m_designer.Entries().size(), 254u);
    AppCreateDefaultColoursEngineer(&m_designer);
    EXPECT_EQ(m_designer.Entries().size(), 141u);
}

}  // namespace
