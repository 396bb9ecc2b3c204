#include "plugin/LinkSender.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <memory>
#include <vector>

#include "HostProgramFixture.h"
#include "plugin/CaptureDirectory.h"
#include "plugin/PlugIn.h"
#include "plugin/TakeMarks.h"
#include "tests/ScopedEnvironment.h"
#include "tests/SoundFile.h"

namespace {

class LinkSender : public HostProgram {
protected:
    void SetUp() override {
        HostProgram::SetUp();
        StartHost({"--session", m_directory.File("session.json")});
        job.take.emplace();
        job.take->strFile = m_directory.File("guide.wav");
        job.take->lFrames = kFrames;
        job.nSampleRate = kRate;
    }

    std::size_t Regions() {
        EXPECT_EQ(Tool({"link", "regions", "--json"}), 0) << Errors();
        return OutputAsJson()["regions"].size();
    }

    // What the host has aligned, doubled and so on, as its session says when it ends.
    json Processes() {
        EXPECT_EQ(StopHost(), 0);
        m_host.reset();
        return json::parse(
            m_directory.Read("session.json"))["documents"]["audioSuite"]["processes"];
    }

    CLinkJob job;
};

TEST_F(LinkSender, HandsATakeOver) {
    const CLinkOutcome outcome = CarryOut(job);
    EXPECT_EQ(outcome.result, PlugInResult::HandedOver);
    EXPECT_EQ(outcome.nTrack, 0);
    EXPECT_EQ(Regions(), 1U);
}

TEST_F(LinkSender, DropsATakeWithTheSoundOfAnother) {
    CarryOut(job);
    const std::string strSecond = m_directory.File("again.wav");
    fs::copy_file(job.take->strFile, strSecond);
    job.take->strFile = strSecond;
    EXPECT_EQ(CarryOut(job).result, PlugInResult::Duplicate);
    EXPECT_FALSE(fs::exists(strSecond));
}

// As after a window that was ended before it could say that the host has the take.
TEST_F(LinkSender, HandsATakeOverOnceThoughItIsSentTwice) {
    CarryOut(job);
    const std::string strFirst = job.take->strFile;
    job.take->strFile = CCaptureDirectory::SecondName(strFirst);
    job.take->fMayBeThere = true;
    const CLinkOutcome outcome = CarryOut(job);
    EXPECT_EQ(outcome.result, PlugInResult::HandedOver) << outcome.strText;
    EXPECT_EQ(outcome.strText, "");
    EXPECT_EQ(outcome.nTrack, 0);
    EXPECT_FALSE(fs::exists(job.take->strFile));
    EXPECT_TRUE(fs::exists(strFirst));
    EXPECT_EQ(Regions(), 1U);
}

TEST_F(LinkSender, HandsOverTheTakeOfAPlugInThatIsRemovedInTheMiddleOfIt) {
    const CScopedEnvironment captures("TAVARIN_CAPTURES", m_directory.Path());
    std::vector<float> sound(kRate, 0.25F);
    float const* in = sound.data();
    float* out = sound.data();
    CPlugInState saved;
    {
        CPlugIn plugIn(PlugInKind::Link, 1, kRate);
        CPlugInControls controls;
        plugIn.Begin(controls);
        plugIn.SetTransport(500, 1);
        controls.fCapture = true;
        plugIn.Begin(controls);
        plugIn.Run(&in, &out, 0, kRate);
        for (int nTry = 0; nTry < 1000 && saved.strCaptureDirectory.empty(); ++nTry) {
            saved = plugIn.State();
            usleep(10'000);
        }
    }
    for (int nTry = 0; nTry < 1000 && Regions() == 0; ++nTry) usleep(10'000);
    EXPECT_EQ(Regions(), 1U);
    // The session that was saved meanwhile does not know, and hears it from the mark.
    const std::string strDirectory = saved.strCaptureDirectory;
    const auto isMarked = [&strDirectory] {
        const auto marked = MarkedTakes(static_cast<std::int32_t>(PlugInKind::Link), strDirectory);
        return marked.size() == 1 && marked.front().fHandled;
    };
    for (int nTry = 0; nTry < 1000 && !isMarked(); ++nTry) usleep(10'000);
    CPlugIn next(PlugInKind::Link, 1, kRate);
    next.Restore(saved);
    EXPECT_FALSE(next.IsTakeWaiting());
}

TEST_F(LinkSender, IsSentAwayFromAHostThatDied) {
    WatchForDeadHosts();
    m_host->Signal(SIGSTOP);
    auto outcome = std::async(std::launch::async, [this] { return CarryOut(job); });
    EXPECT_EQ(outcome.wait_for(std::chrono::milliseconds(500)), std::future_status::timeout);
    KillHost();
    EXPECT_NE(outcome.get().result, PlugInResult::HandedOver);
    EXPECT_TRUE(fs::exists(job.take->strFile));
}

TEST_F(LinkSender, SaysThatADubHasNoGuideAndLeavesWhatWasAligned) {
    job.kind = PlugInKind::APT;
    EXPECT_EQ(CarryOut(job).result, PlugInResult::HandedOver);
    job.guide = job.take;
    job.take->strFile = Dub();
    job.nTrack = 1;
    EXPECT_EQ(CarryOut(job).result, PlugInResult::HandedOver);
    job.take->strFile = m_directory.File("late.wav");
    fs::copy_file(Dub(), job.take->strFile);
    job.take->lPosition = 10 * kFrames;
    const CLinkOutcome outcome = CarryOut(job);
    EXPECT_EQ(outcome.result, PlugInResult::NotAligned);
    EXPECT_EQ(outcome.strText,
              "The host has the take. The dub, 0:30.0 to 0:33.0, does not overlap the guide, "
              "0:00.0 to 0:03.0.");
    EXPECT_EQ(outcome.nTrack, 1);
    job.guide.reset();
    EXPECT_EQ(CarryOut(job).strText,
              "The host has the take. No guide was captured to align the dub with.");
    EXPECT_EQ(Processes().size(), 1U);
}

// Two instances in one workstation, on the tracks of the guide and of the dub; without windows.
struct PairOnTheHost : LinkSender {
    std::unique_ptr<CPlugIn> guide;
    std::unique_ptr<CPlugIn> dub;

    void SetUp() override {
        LinkSender::SetUp();
        setenv("TAVARIN_CAPTURES", m_directory.Path().c_str(), 1);
        guide = std::make_unique<CPlugIn>(PlugInKind::APT, 1, kRate);
        dub = std::make_unique<CPlugIn>(PlugInKind::APT, 1, kRate);
    }
    void TearDown() override {
        guide.reset();
        dub.reset();
        unsetenv("TAVARIN_CAPTURES");
        LinkSender::TearDown();
    }

    // Captures a file for a track of the host, and waits until it was handed over.
    void Take(CPlugIn& plugIn, std::string const& strFile, std::int64_t lPosition,
              std::int32_t nTrack) {
        const CSoundFile sound = ReadSoundFile(strFile);
        float const* in = sound.samples.data();
        std::vector<float> through(sound.samples.size());
        float* out = through.data();
        plugIn.SetTransport(lPosition, 1);
        plugIn.Begin({true, false, ReturnMode::Export, nTrack, false});
        plugIn.Run(&in, &out, 0, kFrames);
        plugIn.Begin({false, false, ReturnMode::Export, nTrack, false});
        plugIn.Run(&in, &out, 0, 1);
        for (int nTry = 0; nTry < 3000 && IsUnderWay(plugIn, lPosition); ++nTry) usleep(10'000);
        EXPECT_FALSE(IsUnderWay(plugIn, lPosition)) << plugIn.Status().strText;
    }

    static bool IsUnderWay(CPlugIn const& plugIn, std::int64_t lPosition) {
        const std::optional<CTake> last = plugIn.LastTake();
        if (!last || last->lPosition != lPosition || !last->fHandled) return true;
        const PlugInResult result = plugIn.Status().result;
        return result == PlugInResult::TakeWritten || plugIn.Status().strText.find("The host") != 0;
    }

    // Where the inputs of the host's only process lie.
    std::vector<std::int64_t> Inputs() {
        const json processes = Processes();
        EXPECT_EQ(processes.size(), 1U);
        std::vector<std::int64_t> places;
        if (processes.empty()) return places;
        for (json const& input : processes[0]["inputs"]) {
            places.push_back(input["start"].get<std::int64_t>());
            places.push_back(input["end"].get<std::int64_t>());
        }
        return places;
    }
};

TEST_F(PairOnTheHost, AlignsTheDubOfOneWithTheGuideOfTheOther) {
    Take(*guide, Guide(), 9 * kRate, 0);
    Take(*dub, Dub(), 10 * kRate, 1);
    EXPECT_EQ(dub->Status().strText, "The host has the take.");
    EXPECT_EQ(dub->Status().result, PlugInResult::HandedOver);
    const std::vector<std::int64_t> expected{9 * kRate, 12 * kRate, 10 * kRate, 13 * kRate};
    EXPECT_EQ(Inputs(), expected);
}

TEST_F(PairOnTheHost, ForgetsAGuideOfItsOwnThatAnotherReplaced) {
    Take(*dub, Guide(), 12 * kRate, 0);
    Take(*guide, Guide(), 9 * kRate, 0);
    Take(*dub, Dub(), 10 * kRate, 1);
    const std::vector<std::int64_t> expected{9 * kRate, 12 * kRate, 10 * kRate, 13 * kRate};
    EXPECT_EQ(Inputs(), expected);
}

TEST_F(PairOnTheHost, SaysThatThereIsNoGuideBeforeAnythingIsCleared) {
    Take(*dub, Dub(), 10 * kRate, 1);
    std::vector<std::string> said;
    for (; CPlugInMessage const* message = dub->Message(); dub->DropMessage()) {
        said.emplace_back(message->szText);
    }
    const std::vector<std::string> expected{
        "A take of 3.0 s was captured.", "No guide was captured to align the dub with.",
        "The host has the take. No guide was captured to align the dub with."};
    EXPECT_EQ(said, expected);
    EXPECT_EQ(dub->Status().result, PlugInResult::NotAligned);
    EXPECT_EQ(Processes().size(), 0U);
}

}  // namespace
