#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <mutex>
#include <thread>

#include "plugin/PlugInAccess.h"
#include "tests/PlugInHost.h"
#include "tests/RealTimeTrap.h"
#include "tests/SoundFile.h"
#include "tests/TemporaryDirectory.h"

namespace {

void Settle() {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
}

// The trap must be one: each of these is caught.
TEST(RealTimeTrap, CatchesMemoryLocksWaitingAndFiles) {
    struct CCase {
        char const* szCall;
        void (*act)();
    };
    const CCase cases[] = {
        {"malloc", [] { free(strdup("a")); }},
        {"malloc", [] { delete new std::string(100, 'a'); }},
        {"pthread_mutex_lock",
         [] {
             static std::mutex lock;
             const std::lock_guard guard(lock);
         }},
        {"clock_nanosleep", [] { std::this_thread::sleep_for(std::chrono::nanoseconds(1)); }},
        {"fopen", [] { fclose(fopen("/dev/null", "r")); }},
        {"write", [] { (void)!write(-1, "", 0); }},
    };
    for (CCase const& one : cases) {
        std::vector<std::string> calls;
        {
            const CRealTimeTrap trap;
            one.act();
            calls = trap.Calls();
        }
        // The standard library may sleep by either of two names.
        const bool fCaught = std::find(calls.begin(), calls.end(), one.szCall) != calls.end() ||
                             (std::string(one.szCall) == "clock_nanosleep" &&
                              std::find(calls.begin(), calls.end(), "nanosleep") != calls.end());
        EXPECT_TRUE(fCaught) << one.szCall;
    }
}

struct PlugInRealTime : testing::TestWithParam<char const*> {
    CTemporaryDirectory place;
    void SetUp() override { setenv("TAVARIN_CAPTURES", place.Path().c_str(), 1); }
    void TearDown() override { unsetenv("TAVARIN_CAPTURES"); }
};

// One cycle after another in all that a plug-in can be told, in blocks of every size.
TEST_P(PlugInRealTime, RunCallsNothingThatMayWait) {
    CSoundFile sound;
    sound.samples.assign(20000, 0.5F);
    const std::string strReturned = place.File("Export.wav");
    WriteSoundFile(strReturned, sound);

    CPlugInHost host(TAVARIN_LV2_MODULE "/tavarin.so", GetParam());
    CPlugInAccess& plugIn = *static_cast<CPlugInHandle*>(host.Handle())->pAccess;
    host.Activate();
    std::vector<std::string> calls;
    const auto run = [&host, &calls](std::uint32_t nFrames) {
        const CRealTimeTrap trap;
        host.Run(nFrames);
        for (std::string const& call : trap.Calls()) calls.push_back(call);
    };
    std::int64_t lPosition = 0;
    for (int nRound = 0; nRound < 12; ++nRound) {
        plugIn.ViewTurned();
        host.controls[portCapture] = nRound % 3 == 0 ? 0.0F : 1.0F;
        host.controls[portReturn] = nRound % 4 < 2 ? 1.0F : 0.0F;
        host.controls[portMode] = static_cast<float>(nRound % 2);
        host.controls[portTrack] = static_cast<float>(nRound);
        if (nRound == 4) plugIn.SetReturned(strReturned, 1000);
        if (nRound == 8) plugIn.SetReturned(strReturned, 3000);
        if (nRound % 5 == 4) lPosition = 500;
        plugIn.Report(PlugInResult::Ready, "A message for the workstation.");
        Settle();
        for (std::uint32_t nFrames : {1U, 7U, 64U, 100U, 1024U, 8192U}) {
            host.SetTransport(0, lPosition, nRound % 6 == 5 ? 0.0F : 1.0F);
            if (nFrames > 50) host.SetTransport(40, lPosition + (nRound == 7 ? 90 : 40), 1.0F);
            run(nFrames);
            lPosition += nFrames;
        }
    }
    EXPECT_EQ(calls, std::vector<std::string>{});
    EXPECT_TRUE(plugIn.IsTakeWaiting());
}

INSTANTIATE_TEST_SUITE_P(EachPlugIn, PlugInRealTime,
                         testing::Values("urn:tavarin:pro:link", "urn:tavarin:pro:apt:stereo",
                                         "urn:tavarin:pro:doubler"));

}  // namespace
