#include "plugin/LinkSender.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

#include "HostProgramFixture.h"
#include "plugin/CaptureDirectory.h"
#include "plugin/PlugIn.h"
#include "plugin/TakeMarks.h"
#include "tests/ScopedEnvironment.h"

namespace {

class LinkSender : public HostProgram {
protected:
    void SetUp() override {
        HostProgram::SetUp();
        StartHost();
        job.take.emplace();
        job.take->strFile = m_directory.File("guide.wav");
        job.take->lFrames = kFrames;
        job.nSampleRate = kRate;
    }

    std::size_t Regions() {
        EXPECT_EQ(Tool({"link", "regions", "--json"}), 0) << Errors();
        return OutputAsJson()["regions"].size();
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

}  // namespace
