#include <gtest/gtest.h>

#include <limits>
#include <set>
#include <string>

#include "colours/ComponentCodeTable.h"
#include "colours/ComponentCodes.h"
#include "colours/ComponentColour.h"
#include "utils/ParameterBlock.h"

namespace {

TEST(ComponentCodeTests, TheModuleStandsInTheUpperHalf) {
    EXPECT_EQ(CComponentCode(3, 1).Packed(), 12884901889);
    EXPECT_EQ(CComponentCode(0, 1).Packed(), 1);
}

TEST(ComponentCodeTests, ANegativeIdLeavesTheModuleAlone) {
    EXPECT_EQ(CComponentCode(0, -1).Packed(), 4294967295);
    EXPECT_EQ(CComponentCode(1, -1).Packed(), 8589934591);
}

TEST(ComponentCodeTests, UnpackingGivesModuleAndIdBack) {
    constexpr int least = std::numeric_limits<int>::min();
    constexpr int greatest = std::numeric_limits<int>::max();
    for (int module : {least, -1, 0, 3, greatest}) {
        for (int id : {least, -1, 0, 7, greatest}) {
            const CComponentCode code(CComponentCode(module, id).Packed());
            EXPECT_EQ(code.m_nModule, module);
            EXPECT_EQ(code.m_nCompID, id);
        }
    }
}

TEST(ComponentCodeTests, WithoutNumbersItIsNoComponent) {
    EXPECT_EQ(CComponentCode(), CComponentCode(0, 0));
}

TEST(ComponentCodeTests, SavingAddsABlockWithModuleAndId) {
    CParameterBlock block;
    CComponentCode(3, -7).Save(&block);

    ASSERT_EQ(block.parameters.size(), 1u);
    CParameterBlock* code = nullptr;
    ASSERT_TRUE(block.FindParameter("Code", &code));
    ASSERT_EQ(code->parameters.size(), 2u);
    EXPECT_EQ(code->parameters[0]->name, "Mod");
    EXPECT_EQ(code->parameters[1]->name, "CompID");
    EXPECT_EQ(code->parameters[0]->GetString(), "3");
    EXPECT_EQ(code->parameters[1]->GetString(), "-7");
}

TEST(ComponentCodeTests, LoadingReadsWhatWasSaved) {
    CParameterBlock block;
    CComponentCode(2, 104).Save(&block);
    CComponentCode code;
    EXPECT_TRUE(code.Load(&block));
    EXPECT_EQ(code, CComponentCode(2, 104));
}

TEST(ComponentCodeTests, LoadingWithoutABlockChangesNothing) {
    CParameterBlock block;
    CComponentCode code(2, 104);
    EXPECT_FALSE(code.Load(&block));
    EXPECT_EQ(code, CComponentCode(2, 104));
}

TEST(ComponentCodeTests, AMissingNumberBecomesZero) {
    CParameterBlock inner;
    inner.AddParameter("CompID", 9);
    CParameterBlock block;
    block.AddParameter("Code", &inner);
    CComponentCode code(2, 104);
    EXPECT_FALSE(code.Load(&block));
    EXPECT_EQ(code, CComponentCode(0, 9));
}

TEST(ComponentCodeTests, TheRegistryHasEveryCode) {
    EXPECT_EQ(ComponentCodeTable().size(), 264u);
    std::set<long long> codes;
    std::set<std::string> names;
    int modules[4] = {};
    for (auto const& row : ComponentCodeTable()) {
        codes.insert(row.code.Packed());
        names.insert(row.szName);
        ++modules[row.code.m_nModule];
    }
    EXPECT_EQ(names.size(), 264u);
    EXPECT_EQ(codes.size(), 260u) << "four are aliases";
    EXPECT_EQ(modules[0], 185);
    EXPECT_EQ(modules[1], 56);
    EXPECT_EQ(modules[2], 9);
    EXPECT_EQ(modules[3], 14);
}

TEST(ComponentCodeTests, CodesHaveTheirNumbers) {
    EXPECT_EQ(ccNull, CComponentCode(0, -1));
    EXPECT_EQ(ccAudioLabel, CComponentCode(0, 1));
    EXPECT_EQ(ccPlaybackAreaOverlayEdge, CComponentCode(0, 111));
    EXPECT_EQ(ccControlText, CComponentCode(0, 307));
    EXPECT_EQ(ccLabelText, CComponentCode(0, 308));
    EXPECT_EQ(ccButtonBorder, CComponentCode(0, 311));
    EXPECT_EQ(ccButtonFace, CComponentCode(0, 312));
    EXPECT_EQ(ccButtonFaceActive, CComponentCode(0, 314));
    EXPECT_EQ(ccToolBoxTitle, CComponentCode(0, 1001));
    EXPECT_EQ(ccMorlandPitchMarkerPitched, CComponentCode(1, 0));
    EXPECT_EQ(ccMorlandTargetGainSibilanceEditGroupConnectingLine, CComponentCode(1, 130));
    EXPECT_EQ(ccVolumeGroupSelectedPoint, CComponentCode(2, 104));
    EXPECT_EQ(ccTrackGroup14, CComponentCode(3, 14));
}

TEST(ComponentCodeTests, TheOlderCheckBoxCodesAreAliases) {
    EXPECT_EQ(ccCheckBoxFace, CComponentCode(0, 800));
    EXPECT_EQ(ccCheckBoxFace, ccCheckBoxFaceUnChecked);
    EXPECT_EQ(ccCheckBoxBorder, ccCheckBoxBorderUnChecked);
    EXPECT_EQ(ccCheckBoxFaceActive, ccCheckBoxFaceDownUnChecked);
    EXPECT_EQ(ccCheckBoxBorderActive, ccCheckBoxBorderDownUnChecked);
}

TEST(ComponentCodeTests, NamesAndCodesFindEachOther) {
    EXPECT_EQ(ComponentCodeName(ccButtonFace), "ccButtonFace");
    EXPECT_EQ(ComponentCodeName(ccCheckBoxFace), "ccCheckBoxFaceUnChecked");
    EXPECT_EQ(ComponentCodeName(CComponentCode(9, 9)), "");
    ASSERT_NE(FindComponentCode("ccCheckBoxFace"), nullptr);
    EXPECT_EQ(FindComponentCode("ccCheckBoxFace")->code, ccCheckBoxFaceUnChecked);
    EXPECT_EQ(FindComponentCode("ButtonFace"), nullptr);
}

TEST(ComponentCodeTests, CursorsAndStyleHaveTheirFirstValues) {
    EXPECT_EQ(strControlPointCursor, "GuideEdgeCursor");
    EXPECT_EQ(strPlayPositionCursor, "PlayPositionCursor");
    EXPECT_EQ(gnAppStyle, 1);
}

}  // namespace
