#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "FileIO/FileName.h"
#include "colours/ComponentCodes.h"
#include "colours/ComponentColour.h"
#include "colours/DefaultColours.h"
#include "colours/DeviceRGB.h"
#include "colours/SchemeFile.h"
#include "tests/TemporaryDirectory.h"
#include "utils/ParameterBlock.h"

namespace {

using Image = std::vector<unsigned char>;

class SchemeStorageTests : public testing::Test {
protected:
    void AddPlain(CComponentsColors& scheme, CComponentCode code, double grey) const {
        scheme.Add(new CComponentColour(code, 4, "plain", grey, grey, grey, 1, m_space));
    }

    /// Appends an entry as a scheme writes it.
    void AppendPlain(CParameterBlock& comps, CComponentCode code, double grey) const {
        CParameterBlock comp;
        CComponentColour(code, 4, "plain", grey, grey, grey, 1, m_space).Save(&comp);
        comps.AddParameter("Comp", &comp);
    }

    static void AppendBroken(CParameterBlock& comps) {
        CParameterBlock comp;
        comp.AddParameter("Type", 1);
        comps.AddParameter("Comp", &comp);
    }

    void AppendOfType(CParameterBlock& comps, CComponentCode code, int type) const {
        CParameterBlock comp;
        comp.AddParameter("Type", type);
        CComponentColour(code, 4, "plain", 0.5, 0.5, 0.5, 1, m_space).Save(&comp);
        comps.AddParameter("Comp", &comp);
    }

    bool LoadComps(CComponentsColors& scheme, CParameterBlock const& comps) const {
        CParameterBlock block;
        block.AddParameter("Comps", &comps);
        return scheme.Load(&block, m_space);
    }

    static Image SaveToMemory(CComponentsColors const& scheme) {
        CParameterBlock block;
        scheme.Save(&block);
        CFMutableDataRef data = CFDataCreateMutable(kCFAllocatorDefault, 0);
        const unsigned long size = block.SaveBinarySessionToMemory("CS", data);
        const Image image(CFDataGetBytePtr(data), CFDataGetBytePtr(data) + size);
        CFRelease(data);
        return image;
    }

    bool LoadFromMemory(CComponentsColors& scheme, Image image) const {
        const std::vector<const char*> ids{"CS"};
        CParameterBlock block;
        block.LoadBinarySessionFromMemory(&ids, image.data(),
                                          static_cast<unsigned int>(image.size()));
        return scheme.Load(&block, m_space);
    }

    static void ExpectSame(CComponentsColors const& a, CComponentsColors const& b) {
        ASSERT_EQ(a.Entries().size(), b.Entries().size());
        for (std::size_t index = 0; index < a.Entries().size(); ++index) {
            CComponentColour const& first = *a.Entries()[index].pColour;
            CComponentColour const& second = *b.Entries()[index].pColour;
            EXPECT_EQ(first.m_code, second.m_code);
            EXPECT_EQ(first.m_name, second.m_name);
            EXPECT_EQ(first.m_nClass, second.m_nClass);
            EXPECT_EQ(a.IsGradient(first.m_code), b.IsGradient(first.m_code));
            EXPECT_FALSE(first != second) << first.m_name;
            EXPECT_FALSE(second != first) << first.m_name;
        }
    }

    /// Walks everything a damaged image may have left behind.
    void ExpectUsable(CComponentsColors const& scheme) const {
        for (auto const& entry : scheme.Entries()) {
            CComponentColour const& colour = *entry.pColour;
            EXPECT_EQ(scheme.FindRGBA(colour.m_code), colour.m_rgba);
            if (!scheme.IsGradient(colour.m_code) && !(colour.m_code == CComponentCode())) {
                EXPECT_NE(colour.m_cgColor, nullptr);
                EXPECT_NE(colour.m_nsColor, nullptr);
            }
        }
        CParameterBlock block;
        scheme.Save(&block);
    }

    CDeviceRGB m_space;
    CComponentsColors m_scheme;
};

TEST_F(SchemeStorageTests, SavingGoesFromTheHighestCodeDown) {
    for (CComponentCode code : {CComponentCode(0, 1), CComponentCode(0, 2), CComponentCode(3, 1)}) {
        AddPlain(m_scheme, code, 0.5);
    }
    CParameterBlock block;
    m_scheme.Save(&block);
    ASSERT_EQ(block.parameters.size(), 1u);
    CParameterBlock* comps = nullptr;
    ASSERT_TRUE(block.FindParameter("Comps", &comps));
    std::vector<CComponentCode> codes;
    for (CParameter* parameter : comps->parameters) {
        EXPECT_EQ(parameter->name, "Comp");
        auto* comp = dynamic_cast<CParameterBlock*>(parameter);
        ASSERT_NE(comp, nullptr);
        EXPECT_EQ(comp->parameters.size(), 8u);
        EXPECT_TRUE(codes.emplace_back().Load(comp));
    }
    EXPECT_EQ(codes, (std::vector<CComponentCode>{{3, 1}, {0, 2}, {0, 1}}));
}

TEST_F(SchemeStorageTests, SavingAnEmptySchemeWritesAnEmptyBlock) {
    CParameterBlock block;
    m_scheme.Save(&block);
    CParameterBlock* comps = nullptr;
    ASSERT_TRUE(block.FindParameter("Comps", &comps));
    EXPECT_TRUE(comps->parameters.empty());
}

TEST_F(SchemeStorageTests, SavingAppendsToTheCallersBlock) {
    CParameterBlock block;
    block.AddParameter("Other", 1);
    m_scheme.Save(&block);
    ASSERT_EQ(block.parameters.size(), 2u);
    EXPECT_EQ(block.parameters[1]->name, "Comps");
}

TEST_F(SchemeStorageTests, ASavedColourHasTheSameBytesAsOneThatIsAdded) {
    AddPlain(m_scheme, {3, 1}, 0.5);
    CParameterBlock saved;
    m_scheme.Save(&saved);

    CParameterBlock comps;
    AppendPlain(comps, {3, 1}, 0.5);
    CParameterBlock built;
    built.AddParameter("Comps", &comps);
    EXPECT_TRUE(saved == built);
    EXPECT_EQ(saved.GetSize(), built.GetSize());
}

TEST_F(SchemeStorageTests, LoadingWithoutTheBlockFailsAndChangesNothing) {
    AddPlain(m_scheme, {0, 1}, 0.5);
    CParameterBlock block;
    EXPECT_FALSE(m_scheme.Load(&block, m_space));
    EXPECT_EQ(m_scheme.Entries().size(), 1u);
}

TEST_F(SchemeStorageTests, LoadingNoEntriesSucceedsAndChangesNothing) {
    AddPlain(m_scheme, {0, 1}, 0.5);
    CParameterBlock comps;
    comps.AddParameter("Other", 1);
    EXPECT_TRUE(LoadComps(m_scheme, comps));
    EXPECT_EQ(m_scheme.Entries().size(), 1u);
}

TEST_F(SchemeStorageTests, LoadingLaysColoursOverThoseThatAreThere) {
    AddPlain(m_scheme, {0, 1}, 0.1);
    AddPlain(m_scheme, {0, 2}, 0.2);
    CParameterBlock comps;
    AppendPlain(comps, {0, 2}, 0.8);
    AppendPlain(comps, {3, 3}, 0.9);
    EXPECT_TRUE(LoadComps(m_scheme, comps));
    EXPECT_EQ(m_scheme.Entries().size(), 3u);
    EXPECT_EQ(m_scheme.FindRGBA({0, 1})[0], 0.1);
    EXPECT_EQ(m_scheme.FindRGBA({0, 2})[0], 0.8);
    EXPECT_EQ(m_scheme.FindRGBA({3, 3})[0], 0.9);
}

TEST_F(SchemeStorageTests, TheLastEntryOfACodeWins) {
    CParameterBlock comps;
    for (double grey : {0.1, 0.2, 0.3}) AppendPlain(comps, {0, 1}, grey);
    EXPECT_TRUE(LoadComps(m_scheme, comps));
    EXPECT_EQ(m_scheme.Entries().size(), 1u);
    EXPECT_EQ(m_scheme.FindRGBA({0, 1})[0], 0.3);
}

TEST_F(SchemeStorageTests, WithoutATypeAnEntryIsAPlainColour) {
    CParameterBlock comp;
    CComponentColour({0, 1}, 4, "plain", 0.5, 0.5, 0.5, 1, m_space).Save(&comp);
    comp.parameters[0]->name = "?";
    CParameterBlock comps;
    comps.AddParameter("Comp", &comp);
    EXPECT_TRUE(LoadComps(m_scheme, comps));
    EXPECT_NE(m_scheme.Find({0, 1}), nullptr);
}

TEST_F(SchemeStorageTests, ABadEntryDoesNotCostTheGoodOnesBeforeIt) {
    CParameterBlock comps;
    AppendPlain(comps, {0, 1}, 0.5);
    AppendBroken(comps);
    EXPECT_FALSE(LoadComps(m_scheme, comps)) << "the last entry decides";
    EXPECT_NE(m_scheme.Find({0, 1}), nullptr);
    EXPECT_EQ(m_scheme.Entries().size(), 1u);
}

TEST_F(SchemeStorageTests, OnlyTheLastEntryDecidesWhetherALoadSucceeds) {
    CParameterBlock comps;
    AppendBroken(comps);
    AppendPlain(comps, {0, 1}, 0.5);
    EXPECT_TRUE(LoadComps(m_scheme, comps));
    EXPECT_NE(m_scheme.Find({0, 1}), nullptr);
}

TEST_F(SchemeStorageTests, EntriesOfUnknownTypesArePassedOver) {
    CParameterBlock comps;
    for (int type : {0, 3, -1, 1000000}) AppendOfType(comps, {0, 1}, type);
    EXPECT_TRUE(LoadComps(m_scheme, comps));
    EXPECT_TRUE(m_scheme.Entries().empty());

    AppendBroken(comps);
    AppendOfType(comps, {0, 1}, 3);
    EXPECT_FALSE(LoadComps(m_scheme, comps)) << "they say nothing about the entry before them";
}

TEST_F(SchemeStorageTests, APlainColourMayReplaceAGradient) {
    auto* fill = new CGradientFill({0, 1}, 4, "gradient");
    fill->AddColor(0, 0.5, 0.5, 0.5, 1, m_space, 1.0);
    m_scheme.Add(fill);
    CParameterBlock comps;
    AppendPlain(comps, {0, 1}, 0.5);
    EXPECT_TRUE(LoadComps(m_scheme, comps));
    EXPECT_FALSE(m_scheme.IsGradient({0, 1}));
}

TEST_F(SchemeStorageTests, BothPalettesSurviveSavingAndLoading) {
    for (auto* fill : {AppCreateDefaultColoursDesigner, AppCreateDefaultColoursEngineer}) {
        CComponentsColors palette;
        fill(&palette);
        CComponentsColors loaded;
        EXPECT_TRUE(LoadFromMemory(loaded, SaveToMemory(palette)));
        ExpectSame(palette, loaded);
    }
}

TEST_F(SchemeStorageTests, EntriesInAnyOrderEndUpSorted) {
    CParameterBlock comps;
    constexpr int count = 3000;
    for (int id = 0; id < count; ++id) AppendPlain(comps, {7, (id * 7919) % count}, 0.5);
    EXPECT_TRUE(LoadComps(m_scheme, comps));
    ASSERT_EQ(m_scheme.Entries().size(), static_cast<std::size_t>(count));
    EXPECT_TRUE(std::ranges::is_sorted(m_scheme.Entries(), std::ranges::greater(),
                                       &CComponentsColors::Entry::lCode));
}

TEST_F(SchemeStorageTests, CutImagesNeverCrash) {
    CComponentsColors palette;
    AppCreateDefaultColoursEngineer(&palette);
    const Image image = SaveToMemory(palette);
    for (std::size_t size = 0; size < image.size(); size += 1 + size / 40) {
        CComponentsColors scheme;
        LoadFromMemory(scheme, Image(image.begin(), image.begin() + static_cast<long>(size)));
        ExpectUsable(scheme);
    }
}

TEST_F(SchemeStorageTests, DamagedImagesNeverCrash) {
    CComponentsColors palette;
    AppCreateDefaultColoursDesigner(&palette);
    const Image image = SaveToMemory(palette);
    std::mt19937 random(4);
    for (int round = 0; round < 300; ++round) {
        Image damaged = image;
        for (int hit = 0; hit < 8; ++hit) {
            damaged[random() % damaged.size()] = static_cast<unsigned char>(random());
        }
        CComponentsColors scheme;
        LoadFromMemory(scheme, damaged);
        ExpectUsable(scheme);
    }
}

// AppKit says so on standard error when an object stays behind because there is no pool for it.
TEST_F(SchemeStorageTests, ProgramsWithoutAnAutoreleasePoolMayFillAndLoad) {
    testing::internal::CaptureStderr();
    CComponentsColors palette;
    AppCreateDefaultColoursDesigner(&palette);
    EXPECT_TRUE(LoadFromMemory(m_scheme, SaveToMemory(palette)));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(SchemeStorageTests, ASchemeFileHoldsAScheme) {
    const CTemporaryDirectory directory;
    const CFileName file(directory.File("mine.scheme").c_str());
    CComponentsColors palette;
    AppCreateDefaultColoursDesigner(&palette);
    EXPECT_EQ(SaveSchemeFile(palette, file), sessionDone);
    EXPECT_EQ(directory.Read("mine.scheme").substr(0, 20),
              std::string("TavarinColourScheme\0", 20));
    EXPECT_EQ(LoadSchemeFile(m_scheme, file), sessionDone);
    ExpectSame(palette, m_scheme);
}

TEST_F(SchemeStorageTests, SchemeFilesThatAreNoneSayWhy) {
    const CTemporaryDirectory directory;
    const auto load = [this](std::string const& path) {
        return LoadSchemeFile(m_scheme, CFileName(path.c_str()));
    };
    EXPECT_EQ(load(directory.File("absent")), sessionFileFailed);
    EXPECT_EQ(load(directory.Write("text", "no scheme at all")), sessionHeaderFailed);
    CParameterBlock other;
    other.AddParameter("Other", 1);
    const CFileName file(directory.File("other").c_str());
    ASSERT_EQ(other.SaveBinarySession(szSchemeIdentifier, &file), sessionDone);
    EXPECT_EQ(LoadSchemeFile(m_scheme, file), sessionBodyFailed);
    EXPECT_TRUE(m_scheme.Entries().empty());
}

TEST_F(SchemeStorageTests, AnImageReplacesAScheme) {
    CComponentsColors palette;
    AppCreateDefaultColoursEngineer(&palette);
    AppCreateDefaultColoursDesigner(&m_scheme);
    EXPECT_FALSE(ReplaceScheme(m_scheme, "no image"));
    EXPECT_FALSE(ReplaceScheme(m_scheme, ""));
    EXPECT_EQ(m_scheme.Entries().size(), 254U) << "as it was";
    EXPECT_TRUE(ReplaceScheme(m_scheme, SchemeImage(palette)));
    ExpectSame(palette, m_scheme);
}

}  // namespace
