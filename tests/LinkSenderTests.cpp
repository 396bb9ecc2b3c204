#include "plugin/LinkSender.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "HostProgramFixture.h"
#include "plugin/CaptureDirectory.h"

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

}  // namespace
