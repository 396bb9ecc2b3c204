#include <gtest/gtest.h>
#include <lv2/atom/util.h>
#include <lv2/patch/patch.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "plugin/PlugInAccess.h"
#include "tests/PlugInHost.h"
#include "tests/SoundFile.h"
#include "tests/TemporaryDirectory.h"

namespace {

constexpr char szModule[] = TAVARIN_LV2_MODULE "/tavarin.so";
constexpr char szSession[] = "urn:tavarin:pro:session";

void Fill(CPlugInHost& host) {
    std::uint32_t nNoise = 1;
    for (std::vector<float>& channel : host.inputs) {
        for (float& sample : channel) {
            nNoise = nNoise * 1664525 + 1013904223;
            sample = static_cast<float>(static_cast<std::int32_t>(nNoise)) / 2e9F;
        }
    }
}

CPlugInAccess& Access(CPlugInHost& host) {
    return *static_cast<CPlugInHandle*>(host.Handle())->pAccess;
}

struct PlugInModule : testing::Test {
    CTemporaryDirectory place;
    void SetUp() override { setenv("TAVARIN_CAPTURES", place.Path().c_str(), 1); }
    void TearDown() override { unsetenv("TAVARIN_CAPTURES"); }
};

TEST_F(PlugInModule, PassesAudioOnBitForBit) {
    for (CPlugInVariant const& variant : kPlugInVariants) {
        CPlugInHost host(szModule, variant.szUri);
        Fill(host);
        host.Activate();
        for (const std::uint32_t nFrames : {0U, 1U, 64U, 1000U, CPlugInHost::kMostFrames}) {
            host.controls[portCapture] = nFrames % 3 == 1 ? 1.0F : 0.0F;
            host.Run(nFrames);
            for (int nChannel = 0; nChannel < variant.nChannels; ++nChannel) {
                ASSERT_EQ(std::memcmp(host.inputs[nChannel].data(), host.outputs[nChannel].data(),
                                      nFrames * sizeof(float)),
                          0)
                    << variant.szUri;
            }
        }
    }
}

TEST_F(PlugInModule, WorksInPlaceAndWithoutAnyFeature) {
    CPlugInHost host(szModule, "urn:tavarin:pro:doubler:stereo", 48000, false);
    Fill(host);
    const std::vector<float> left = host.inputs[0];
    host.Connect(0, host.inputs[0].data(), host.inputs[0].data());
    host.Activate();
    host.Run(1024);
    EXPECT_EQ(host.inputs[0], left);
    CPlugInHost::CProperties properties;
    EXPECT_EQ(host.Save(&properties), LV2_STATE_ERR_NO_FEATURE);
}

TEST_F(PlugInModule, PlacesATakeToTheSampleWithinACycle) {
    CPlugInHost host(szModule, "urn:tavarin:pro:link:stereo");
    Fill(host);
    host.Activate();
    host.controls[portCapture] = 1;
    host.SetTransport(0, 7000, 0);
    host.SetTransport(300, 7000, 1);
    host.Run(1000);
    host.SetTransport(500, 8200, 0);
    host.Run(1000);
    host.Deactivate();
    std::optional<CTake> take;
    for (int nTry = 0; nTry < 1000 && !take; ++nTry) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        take = Access(host).PickTake();
    }
    ASSERT_TRUE(take);
    EXPECT_EQ(take->lPosition, 7000);
    ASSERT_EQ(take->lFrames, 1200);
    const CSoundFile file = ReadSoundFile(take->strFile);
    ASSERT_EQ(file.nChannels, 2);
    EXPECT_EQ(file.samples[0], host.inputs[0][300]);
    EXPECT_EQ(file.samples[1], host.inputs[1][300]);
    EXPECT_EQ(file.samples[2 * 700], host.inputs[0][0]);
    EXPECT_EQ(file.samples[2 * 1199], host.inputs[0][499]);
}

TEST_F(PlugInModule, TellsTheWorkstationResultsInWordsAndAsANumber) {
    CPlugInHost host(szModule, "urn:tavarin:pro:link");
    host.Activate();
    Access(host).Report(PlugInResult::NoHost, "Nobody is there.");
    host.Run(64);
    EXPECT_EQ(host.controls[portResult], static_cast<float>(PlugInResult::NoHost));
    std::string strText;
    LV2_ATOM_SEQUENCE_FOREACH(&host.Notes(), event) {
        auto const& object = reinterpret_cast<LV2_Atom_Object const&>(event->body);
        ASSERT_EQ(object.body.otype, host.Number(LV2_PATCH__Set));
        LV2_Atom const* value = nullptr;
        lv2_atom_object_get(&object, host.Number(LV2_PATCH__value), &value, 0);
        ASSERT_NE(value, nullptr);
        strText = static_cast<char const*>(LV2_ATOM_BODY_CONST(value));
    }
    EXPECT_EQ(strText, "Nobody is there.");
    host.Run(64);
    EXPECT_EQ(host.Notes().atom.size, sizeof(LV2_Atom_Sequence_Body));
}

TEST_F(PlugInModule, TakesItsStateThroughTheWorkstationsSession) {
    CPlugInHost::CProperties properties;
    {
        CPlugInHost host(szModule, "urn:tavarin:pro:link");
        Fill(host);
        host.Activate();
        host.controls[portCapture] = 1;
        host.SetTransport(0, 0, 1);
        host.controls[portTrack] = 5;
        host.Run(1000);
        host.Deactivate();
        for (int nTry = 0; nTry < 1000 && !Access(host).IsTakeWaiting(); ++nTry) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        for (int nTry = 0; nTry < 1000 && Access(host).Track() != 5; ++nTry) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        ASSERT_EQ(host.Save(&properties), LV2_STATE_SUCCESS);
    }
    // The numbers of names are the workstation's own, and differ from one to the next.
    CPlugInHost host(szModule, "urn:tavarin:pro:link");
    ASSERT_EQ(properties.size(), 1U);
    CPlugInHost::CProperties again{{host.Number(szSession), properties.begin()->second}};
    ASSERT_EQ(host.Restore(again), LV2_STATE_SUCCESS);
    EXPECT_EQ(Access(host).Track(), 5);
    const std::optional<CTake> take = Access(host).LastTake();
    ASSERT_TRUE(take);
    EXPECT_EQ(take->lFrames, 1000);
}

// It may have been handed over after the session was saved, and the host must keep its file then.
TEST_F(PlugInModule, GivesATakeThatWaitsInASessionASecondName) {
    CPlugInHost::CProperties properties;
    std::string strFirst;
    {
        CPlugInHost host(szModule, "urn:tavarin:pro:link");
        Fill(host);
        host.Activate();
        host.controls[portCapture] = 1;
        host.SetTransport(0, 0, 1);
        host.Run(1000);
        host.Deactivate();
        for (int nTry = 0; nTry < 1000 && !Access(host).IsTakeWaiting(); ++nTry) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        ASSERT_EQ(host.Save(&properties), LV2_STATE_SUCCESS);
        strFirst = Access(host).LastTake()->strFile;
    }
    CPlugInHost host(szModule, "urn:tavarin:pro:link");
    CPlugInHost::CProperties again{{host.Number(szSession), properties.begin()->second}};
    ASSERT_EQ(host.Restore(again), LV2_STATE_SUCCESS);
    const CTake take = Access(host).LastTake().value_or(CTake{});
    EXPECT_TRUE(take.fMayBeThere);
    EXPECT_NE(take.strFile, strFirst);
    std::filesystem::remove(take.strFile);
    EXPECT_EQ(ReadSoundFile(strFirst).samples.size(), 1000U);
}

TEST_F(PlugInModule, ReportsAStateThatCannotBeReadAndKeepsIt) {
    CPlugInHost host(szModule, "urn:tavarin:pro:apt");
    host.Activate();
    const LV2_URID session = host.Number(szSession);
    const CPlugInHost::CProperties damaged{{session, "not a state at all"}};
    EXPECT_NE(host.Restore(damaged), LV2_STATE_SUCCESS);
    host.Run(64);
    EXPECT_EQ(host.controls[portResult], static_cast<float>(PlugInResult::StateUnreadable));
    EXPECT_EQ(Access(host).Status().strText,
              "The saved state of this plug-in is damaged and was not loaded.");
    CPlugInHost::CProperties saved;
    ASSERT_EQ(host.Save(&saved), LV2_STATE_SUCCESS);
    EXPECT_EQ(saved[host.Number("urn:tavarin:pro:unread-session")], "not a state at all");
}

TEST_F(PlugInModule, SaysHowMuchOfACycleItTook) {
    CPlugInHost host(szModule, "urn:tavarin:pro:link");
    host.Activate();
    host.Run(64);
    EXPECT_GT(host.controls[portLoad], 0);
}

}  // namespace
