#include "plugin/PlugIn.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <thread>

#include "plugin/TakeMarks.h"
#include "plugin/TakeText.h"
#include "tests/SoundFile.h"
#include "tests/TemporaryDirectory.h"

namespace {

struct PlugIn : testing::Test {
    CTemporaryDirectory place;
    std::unique_ptr<CPlugIn> plugIn;
    CPlugInControls controls;
    std::vector<float> input = std::vector<float>(1 << 20);
    std::vector<float> output = std::vector<float>(1 << 20);

    void SetUp() override {
        setenv("TAVARIN_CAPTURES", place.Path().c_str(), 1);
        for (std::size_t nFrame = 0; nFrame < input.size(); ++nFrame) {
            input[nFrame] = static_cast<float>(nFrame % 65521) / 65521;
        }
        plugIn = std::make_unique<CPlugIn>(PlugInKind::Link, 1, 48000);
        plugIn->ViewTurned();
        plugIn->SetTransport(0, 1);
    }
    void TearDown() override {
        plugIn.reset();
        unsetenv("TAVARIN_CAPTURES");
    }

    // Runs that stretch of the input through the plug-in in one cycle.
    void Run(std::uint32_t nFrom, std::uint32_t nFrames) {
        float const* in = input.data() + nFrom;
        float* out = output.data() + nFrom;
        plugIn->Begin(controls);
        plugIn->Run(&in, &out, 0, nFrames);
    }

    template <typename Condition>
    void WaitFor(Condition condition) {
        for (int nTry = 0; nTry < 3000 && !condition(); ++nTry) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        ASSERT_TRUE(condition()) << plugIn->Status().strText;
    }

    CTake NextTake() {
        std::optional<CTake> take;
        WaitFor([&] { return take.has_value() || (take = plugIn->PickTake()).has_value(); });
        plugIn->TakeHandled(0);
        return take.value_or(CTake{});
    }
};

TEST_F(PlugIn, CapturesWhileCaptureIsOnAndTheTransportRolls) {
    plugIn->SetTransport(5000, 0);
    controls.fCapture = true;
    Run(0, 1000);
    EXPECT_FALSE(plugIn->Activity().fCapturing);
    plugIn->SetTransport(5000, 1);
    Run(1000, 1000);
    Run(2000, 500);
    EXPECT_TRUE(plugIn->Activity().fCapturing);
    EXPECT_EQ(plugIn->Result(), PlugInResult::Capturing);
    controls.fCapture = false;
    Run(2500, 500);
    const CTake take = NextTake();
    EXPECT_EQ(take.lPosition, 5000);
    EXPECT_EQ(take.lFrames, 1500);
    const std::vector<float> expected(input.begin() + 1000, input.begin() + 2500);
    EXPECT_EQ(ReadSoundFile(take.strFile).samples, expected);
    EXPECT_TRUE(std::equal(output.begin(), output.begin() + 3000, input.begin()));
}

TEST(TakeText, SaysHowFarATakeGoesThatWasCutShort) {
    CTake take;
    take.lFrames = 100800;
    EXPECT_EQ(HandedOverResult(take), PlugInResult::HandedOver);
    EXPECT_EQ(HandedOverText(take, 48000), "The host has the take.");
    take.end = TakeEnd::DiskFailed;
    EXPECT_EQ(HandedOverResult(take), PlugInResult::DiskFailed);
    EXPECT_EQ(HandedOverText(take, 48000),
              "The host has 2.1 s of the take: the disk is full or cannot be written.");
    take.end = TakeEnd::Overflow;
    EXPECT_EQ(HandedOverText(take, 48000),
              "The host has 2.1 s of the take: the disk did not keep up.");
}

TEST_F(PlugIn, KeepsAMarkWhenTheDiskTakesNoOther) {
    CTake take;
    take.strFile = place.File("Take_0001.wav");
    take.lFrames = 10;
    WriteSoundFile(take.strFile, CSoundFile{});
    MarkTake(0, take);
    ASSERT_EQ(MarkedTakes(0, place.Path()).size(), 1U);
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    const auto former = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit none{0, limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &none);
    take.fHandled = true;
    MarkTake(0, take);
    setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, former);
    const std::vector<CTake> marked = MarkedTakes(0, place.Path());
    ASSERT_EQ(marked.size(), 1U);
    EXPECT_FALSE(marked.front().fHandled);
}

// As the two halves of a mono plug-in on a stereo track, of which only one is seen.
TEST_F(PlugIn, SendsOneOfTwoTakesThatWereCapturedTogetherForOneTrack) {
    CPlugIn twin(PlugInKind::Doubler, 1, 48000);
    plugIn = std::make_unique<CPlugIn>(PlugInKind::Doubler, 1, 48000);
    controls.fCapture = true;
    for (CPlugIn* one : {plugIn.get(), &twin}) {
        one->ViewTurned();
        one->SetTransport(0, 1);
        one->Begin(controls);
        float const* in = input.data();
        float* out = output.data();
        one->Run(&in, &out, 0, 1000);
        one->Stop();
    }
    NextTake();
    WaitFor([&] { return !twin.PickTake() && twin.Status().result == PlugInResult::Twin; });
    EXPECT_FALSE(twin.IsTakeWaiting());
    EXPECT_TRUE(std::filesystem::exists(twin.LastTake()->strFile));

    // One after the other is another thing, and told.
    twin.SetTransport(9000, 1);
    float const* in = input.data();
    float* out = output.data();
    twin.Run(&in, &out, 0, 1000);
    twin.Stop();
    std::optional<CTake> take;
    WaitFor([&] { return take || (take = twin.PickTake()); });
    EXPECT_TRUE(take->fReplaces);
    EXPECT_EQ(HandedOverText(*take, 48000),
              "The host has the take, in place of another plug-in's.");
}

TEST_F(PlugIn, CapturesNothingBeforeItKnowsWhereTheTransportIs) {
    plugIn = std::make_unique<CPlugIn>(PlugInKind::Link, 1, 48000);
    controls.fCapture = true;
    Run(0, 1000);
    EXPECT_FALSE(plugIn->Activity().fCapturing);
    plugIn->SetTransport(700, 1);
    Run(1000, 1000);
    EXPECT_TRUE(plugIn->Activity().fCapturing);
    plugIn->Stop();
    EXPECT_EQ(NextTake().lPosition, 700);
}

// A workstation that stops running the plug-in, as some do with a track that nobody listens to.
TEST_F(PlugIn, EndsATakeWhenNoCyclesCome) {
    controls.fCapture = true;
    Run(0, 1000);
    const CTake take = NextTake();
    EXPECT_EQ(take.lFrames, 1000);
    EXPECT_FALSE(plugIn->Activity().fCapturing);
    Run(1000, 500);
    EXPECT_TRUE(plugIn->Activity().fCapturing);
    plugIn->Stop();
    const CTake second = NextTake();
    EXPECT_EQ(second.lPosition, 1000);
    EXPECT_EQ(second.lFrames, 500);
    EXPECT_EQ(ReadSoundFile(take.strFile).samples,
              std::vector<float>(input.begin(), input.begin() + 1000));
}

TEST_F(PlugIn, DoesNotCaptureInASessionThatIsOpenedBeforeCaptureIsPressed) {
    plugIn->Restore(plugIn->State());
    controls.fCapture = true;
    Run(0, 1000);
    EXPECT_FALSE(plugIn->Activity().fCapturing);
    EXPECT_FALSE(plugIn->Activity().fCapture);
    controls.fCapture = false;
    Run(1000, 10);
    controls.fCapture = true;
    Run(1010, 10);
    EXPECT_TRUE(plugIn->Activity().fCapturing);
}

// The control would have to be pressed twice otherwise.
TEST_F(PlugIn, SwitchesCaptureOffWhereItMustBePressedAnew) {
    plugIn->Restore(plugIn->State());
    controls.fCapture = true;
    Run(0, 1000);
    std::optional<CWindowNote> note;
    WaitFor([&] { return note || (note = plugIn->Desk().TakeNote()); });
    EXPECT_EQ(note->fClosed, 0U);
    EXPECT_EQ(note->nPort, portCapture);
    EXPECT_EQ(note->value, 0);
}

// A plug-in that was removed, or whose session was saved and closed, in the middle of a take.
TEST_F(PlugIn, KeepsTheEndOfATakeForWhoeverOpensItsDirectoryNext) {
    Run(0, 10);
    controls.fCapture = true;
    Run(10, 1000);
    // The directory is there by now; the take is not whole.
    WaitFor([&] { return !plugIn->State().strCaptureDirectory.empty(); });
    const CPlugInState saved = plugIn->State();
    EXPECT_TRUE(saved.takes.empty());
    plugIn.reset();
    for (int nRound = 0; nRound < 2; ++nRound) {
        CPlugIn next(PlugInKind::Link, 1, 48000);
        next.ViewTurned();
        next.Restore(saved);
        const std::optional<CTake> take = next.PickTake();
        ASSERT_EQ(take.has_value(), nRound == 0);
        if (!take) break;
        EXPECT_EQ(take->lPosition, 10);
        EXPECT_EQ(take->lFrames, 1000);
        EXPECT_TRUE(std::filesystem::exists(take->strFile));
        next.TakeHandled(2);
    }
}

TEST_F(PlugIn, KnowsWhatWasHandedOverAfterTheSessionWasSaved) {
    controls.fCapture = true;
    Run(0, 1000);
    plugIn->Stop();
    WaitFor([&] { return plugIn->IsTakeWaiting(); });
    const CPlugInState saved = plugIn->State();
    NextTake();
    plugIn = std::make_unique<CPlugIn>(PlugInKind::Link, 1, 48000);
    plugIn->Restore(saved);
    EXPECT_FALSE(plugIn->IsTakeWaiting());
    EXPECT_EQ(plugIn->LastTakeOn(0).value_or(CTake{}).lFrames, 1000);
}

TEST_F(PlugIn, CountsByItselfWhereThereIsNoTransport) {
    plugIn = std::make_unique<CPlugIn>(PlugInKind::Link, 1, 48000);
    plugIn->ViewTurned();
    plugIn->CountByItself();
    Run(0, 700);
    controls.fCapture = true;
    Run(700, 300);
    plugIn->Stop();
    const CTake take = NextTake();
    EXPECT_EQ(take.lPosition, 700);
    EXPECT_EQ(take.lFrames, 300);
}

TEST_F(PlugIn, EndsATakeWhenTheTransportStopsOrJumps) {
    controls.fCapture = true;
    plugIn->SetTransport(1000, 1);
    Run(0, 100);
    plugIn->SetTransport(50, 1);
    Run(100, 100);
    plugIn->SetTransport(150, 0);
    Run(200, 100);
    plugIn->SetTransport(1000000, 1);
    Run(300, 100);
    plugIn->Stop();
    EXPECT_EQ(NextTake().lPosition, 1000);
    const CTake second = NextTake();
    EXPECT_EQ(second.lPosition, 50);
    EXPECT_EQ(second.lFrames, 100);
    EXPECT_EQ(NextTake().lPosition, 1000000);
}

TEST_F(PlugIn, KeepsATakeWholeOverAGapOfTheWorkstation) {
    controls.fCapture = true;
    plugIn->SetTransport(1000, 1);
    Run(0, 100);
    plugIn->SetTransport(1200, 1);
    Run(100, 100);
    plugIn->Stop();
    const CTake take = NextTake();
    EXPECT_EQ(take.lPosition, 1000);
    ASSERT_EQ(take.lFrames, 300);
    const CSoundFile file = ReadSoundFile(take.strFile);
    EXPECT_EQ(file.samples[99], input[99]);
    EXPECT_EQ(file.samples[100], 0);
    EXPECT_EQ(file.samples[200], input[100]);
}

TEST_F(PlugIn, StopsATakeThatTheDiskCannotFollowAndSaysSo) {
    controls.fCapture = true;
    // More than the ring holds, in one go.
    Run(0, 1 << 19);
    EXPECT_FALSE(plugIn->Activity().fCapturing);
    const CTake take = NextTake();
    EXPECT_EQ(take.end, TakeEnd::Overflow);
    EXPECT_EQ(take.lFrames, 8 * 48000);
    EXPECT_EQ(plugIn->Status().result, PlugInResult::Overflow);
    EXPECT_EQ(plugIn->Status().strText,
              "The disk did not keep up: the take was stopped after 8.0 s.");
    // Nothing more until Capture was off.
    Run(0, 100);
    EXPECT_FALSE(plugIn->Activity().fCapturing);
    controls.fCapture = false;
    Run(0, 100);
    controls.fCapture = true;
    Run(0, 100);
    EXPECT_TRUE(plugIn->Activity().fCapturing);
}

TEST_F(PlugIn, WaitsForTheDiskWhileTheWorkstationFreewheels) {
    controls.fCapture = true;
    controls.fFreewheel = true;
    for (int nRound = 0; nRound < 10; ++nRound) {
        for (std::uint32_t nFrom = 0; nFrom < 400000; nFrom += 4000) Run(nFrom, 4000);
    }
    plugIn->Stop();
    const CTake take = NextTake();
    EXPECT_EQ(take.end, TakeEnd::Stopped);
    EXPECT_EQ(take.lFrames, 4000000);
}

TEST_F(PlugIn, SaysWhenThereIsNoPlaceForATake) {
    setenv("TAVARIN_CAPTURES", place.Write("a file").c_str(), 1);
    controls.fCapture = true;
    Run(0, 100);
    WaitFor([&] {
        Run(0, 100);
        return !plugIn->Activity().fCapturing;
    });
    WaitFor([&] { return plugIn->Status().result == PlugInResult::DiskFailed; });
    EXPECT_FALSE(plugIn->IsTakeWaiting());
}

TEST_F(PlugIn, AsksForARegionEachTimeThatReturnIsSwitchedOn) {
    ReturnMode mode{};
    Run(0, 10);
    EXPECT_FALSE(plugIn->PickReturnRequest(&mode));
    controls.fReturn = true;
    controls.mode = ReturnMode::Export;
    Run(0, 10);
    Run(0, 10);
    ASSERT_TRUE(plugIn->PickReturnRequest(&mode));
    EXPECT_EQ(mode, ReturnMode::Export);
    EXPECT_FALSE(plugIn->PickReturnRequest(&mode));
}

TEST_F(PlugIn, PlaysACopyOfTheReturnedFile) {
    CSoundFile sound;
    sound.samples.assign(1000, 0.5F);
    const std::string strExported = place.File("Export.wav");
    WriteSoundFile(strExported, sound);
    plugIn->SetReturned(strExported, 300);
    WaitFor([&] { return plugIn->Status().result == PlugInResult::Returned; });
    const CPlugInState state = plugIn->State();
    EXPECT_NE(state.strReturnedFile, strExported);
    EXPECT_EQ(state.lReturnedPosition, 300);
    EXPECT_EQ(ReadSoundFile(state.strReturnedFile).samples, sound.samples);

    controls.fReturn = true;
    plugIn->SetTransport(0, 1);
    Run(0, 2000);
    EXPECT_EQ(output[299], input[299]);
    EXPECT_EQ(output[300 + 240], 0.5F);
    EXPECT_EQ(output[1299 - 240], 0.5F);
    EXPECT_EQ(output[1300], input[1300]);
}

TEST_F(PlugIn, SaysThatTheRegionPlaysOnlyWhileReturnIsOn) {
    CSoundFile sound;
    sound.samples.assign(1000, 0.5F);
    const std::string strExported = place.File("Export.wav");
    WriteSoundFile(strExported, sound);
    plugIn->SetReturned(strExported, 24000);
    WaitFor([&] { return plugIn->Status().result == PlugInResult::Returned; });
    EXPECT_EQ(plugIn->Status().strText, "The host's region is ready from 0:00.5 on.");
    controls.fReturn = true;
    Run(0, 100);
    EXPECT_EQ(plugIn->Status().strText, "The host's region plays from 0:00.5 on.");
    controls.fReturn = false;
    Run(0, 100);
    EXPECT_EQ(plugIn->Status().strText, "The host's region is ready from 0:00.5 on.");
}

TEST_F(PlugIn, RefusesAFileOfAnotherSampleRateWithTheTextOfTheViews) {
    CSoundFile sound;
    sound.nSampleRate = 44100;
    sound.samples.assign(100, 0.5F);
    const std::string strExported = place.File("Export.wav");
    WriteSoundFile(strExported, sound);
    plugIn->SetReturned(strExported, 0);
    WaitFor([&] { return plugIn->Status().result == PlugInResult::ReturnRefused; });
    EXPECT_EQ(plugIn->Status().strText,
              "Warning - Session Sample Rate is: 48000 Tavarin Pro Sample rate is: 44100");
    EXPECT_FALSE(plugIn->Activity().fHasReturned);
}

TEST_F(PlugIn, RefusesAFileWithMoreChannelsOrNoneAtAll) {
    CSoundFile sound;
    sound.nChannels = 2;
    sound.samples.assign(100, 0.5F);
    const std::string strExported = place.File("Export.wav");
    WriteSoundFile(strExported, sound);
    plugIn->SetReturned(strExported, 0);
    WaitFor([&] { return plugIn->Status().result == PlugInResult::ReturnRefused; });
    const std::uint64_t nSerial = plugIn->Status().nSerial;
    plugIn->SetReturned(place.File("missing.wav"), 0);
    WaitFor([&] { return plugIn->Status().nSerial > nSerial; });
    EXPECT_EQ(plugIn->Status().result, PlugInResult::ReturnRefused);
}

TEST_F(PlugIn, GoesOnWhereTheSessionWasWithoutAskingTheHost) {
    CSoundFile sound;
    sound.samples.assign(1000, 0.5F);
    CPlugInState state;
    state.strCaptureDirectory = place.MakeDirectory("earlier");
    state.strReturnedFile = place.File("Return_0001.wav");
    state.lReturnedPosition = 100;
    state.nTrack = 4;
    WriteSoundFile(state.strReturnedFile, sound);
    plugIn->Restore(state);
    WaitFor([&] { return plugIn->Status().result == PlugInResult::Returned; });
    EXPECT_EQ(plugIn->State(), state);

    controls.fReturn = true;
    plugIn->SetTransport(0, 1);
    Run(0, 2000);
    ReturnMode mode{};
    EXPECT_FALSE(plugIn->PickReturnRequest(&mode));
    EXPECT_EQ(output[600], 0.5F);
    controls.fCapture = true;
    Run(2000, 100);
    plugIn->Stop();
    EXPECT_EQ(std::filesystem::path(NextTake().strFile).parent_path(), state.strCaptureDirectory);
}

// One instance on the track of the guide, one on that of the dub.
struct PairOfPlugIns : PlugIn {
    std::unique_ptr<CPlugIn> second;

    void SetUp() override {
        PlugIn::SetUp();
        plugIn = std::make_unique<CPlugIn>(PlugInKind::APT, 1, 48000);
        second = std::make_unique<CPlugIn>(PlugInKind::APT, 1, 48000);
        plugIn->ViewTurned();
        second->ViewTurned();
    }
    void TearDown() override {
        second.reset();
        PlugIn::TearDown();
    }

    // A take of `captor`, which is handed over to a track.
    void Take(CPlugIn& captor, std::int64_t lPosition, std::int32_t nTrack) {
        float const* in = input.data();
        float* out = output.data();
        captor.ViewTurned();
        captor.SetTransport(lPosition, 1);
        captor.Begin({true, false, ReturnMode::Export, nTrack, false});
        captor.Run(&in, &out, 0, 1000);
        captor.Begin({false, false, ReturnMode::Export, nTrack, false});
        captor.Run(&in, &out, 0, 1000);
        std::optional<CTake> take;
        WaitFor([&] { return take.has_value() || (take = captor.PickTake()).has_value(); });
        captor.TakeHandled(nTrack);
    }
};

TEST_F(PairOfPlugIns, SharesTheGuideThatWasCapturedLast) {
    EXPECT_FALSE(second->Guide().has_value());
    Take(*second, 7000, 0);
    Take(*plugIn, 90000, 0);
    ASSERT_TRUE(second->Guide().has_value());
    EXPECT_EQ(second->Guide()->take.lPosition, 90000);
    EXPECT_EQ(second->Guide()->take.lFrames, 1000);
    EXPECT_GE(second->Guide()->lAge, 0);
    Take(*second, 95000, 1);
    EXPECT_EQ(second->Guide()->take.lPosition, 90000);
}

TEST_F(PairOfPlugIns, DoesNotShareAGuideThatTheHostRefused) {
    Take(*plugIn, 90000, -1);
    EXPECT_FALSE(second->Guide().has_value());
}

TEST_F(PairOfPlugIns, HasTheGuideAgainAfterTheSessionWasOpenedAgain) {
    Take(*plugIn, 90000, 0);
    const CPlugInState state = plugIn->State();
    plugIn.reset();
    second.reset();
    second = std::make_unique<CPlugIn>(PlugInKind::APT, 1, 48000);
    EXPECT_FALSE(second->Guide().has_value());
    plugIn = std::make_unique<CPlugIn>(PlugInKind::APT, 1, 48000);
    plugIn->Restore(state);
    ASSERT_TRUE(second->Guide().has_value());
    EXPECT_EQ(second->Guide()->take.lPosition, 90000);
}

TEST_F(PairOfPlugIns, LeavesOtherPlugInsWithoutAGuide) {
    Take(*plugIn, 90000, 0);
    EXPECT_FALSE(CPlugIn(PlugInKind::Doubler, 1, 48000).Guide().has_value());
}

TEST_F(PlugIn, ReportsEveryResultInWords) {
    plugIn->Report(PlugInResult::HostRefused, "no");
    CPlugInMessage const* message = plugIn->Message();
    ASSERT_NE(message, nullptr);
    EXPECT_EQ(message->result, PlugInResult::HostRefused);
    EXPECT_STREQ(message->szText, "no");
    plugIn->DropMessage();
    EXPECT_EQ(plugIn->Message(), nullptr);
    EXPECT_EQ(plugIn->Result(), PlugInResult::HostRefused);
}

}  // namespace
