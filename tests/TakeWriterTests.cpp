#include "plugin/TakeWriter.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <cstdlib>
#include <vector>

#include "tests/SoundFile.h"
#include "tests/TemporaryDirectory.h"

namespace {

/// A directory for captures, and no more room for files than is said.
class CFileSizeLimit {
public:
    explicit CFileSizeLimit(rlim_t nBytes) : m_pBefore(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &m_Before);
        const rlimit limit{nBytes, m_Before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~CFileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &m_Before);
        std::signal(SIGXFSZ, m_pBefore);
    }

private:
    void (*m_pBefore)(int);
    rlimit m_Before{};
};

struct TakeWriter : testing::Test {
    CTemporaryDirectory place;
    CCaptureRing ring{1, 1 << 20};
    CCaptureDirectory directory;
    CTakeWriter writer{ring, directory, 48000};
    std::vector<CTake> takes;
    std::vector<float> input = std::vector<float>(100000);

    void SetUp() override {
        setenv("TAVARIN_CAPTURES", place.Path().c_str(), 1);
        std::uint32_t nNoise = 1;
        for (float& sample : input) {
            nNoise = nNoise * 1664525 + 1013904223;
            sample = static_cast<float>(nNoise) / 3e9F;
        }
    }
    void TearDown() override { unsetenv("TAVARIN_CAPTURES"); }

    void Append(std::uint32_t nFrom, std::uint32_t nFrames) {
        float const* channel = input.data();
        ASSERT_EQ(ring.Append(&channel, nFrom, nFrames), nFrames);
    }
};

TEST_F(TakeWriter, WritesExactlyTheSamplesThatWentIn) {
    ASSERT_TRUE(ring.Begin(4321));
    Append(0, 60000);
    writer.Service(takes);
    EXPECT_TRUE(takes.empty());
    Append(60000, 40000);
    ring.End(TakeEnd::Stopped);
    writer.Service(takes);
    ASSERT_EQ(takes.size(), 1U);
    EXPECT_EQ(takes[0].lPosition, 4321);
    EXPECT_EQ(takes[0].lFrames, 100000);
    EXPECT_EQ(takes[0].end, TakeEnd::Stopped);
    const CSoundFile file = ReadSoundFile(takes[0].strFile);
    EXPECT_EQ(file.nSampleRate, 48000);
    EXPECT_EQ(file.nChannels, 1);
    EXPECT_EQ(file.samples, input);
}

TEST_F(TakeWriter, WritesEveryTakeIntoAFileOfItsOwn) {
    for (int nTake = 0; nTake < 3; ++nTake) {
        ASSERT_TRUE(ring.Begin(nTake));
        Append(0, 10);
        ring.End(TakeEnd::Stopped);
    }
    writer.Service(takes);
    ASSERT_EQ(takes.size(), 3U);
    EXPECT_NE(takes[0].strFile, takes[1].strFile);
    EXPECT_NE(takes[1].strFile, takes[2].strFile);
}

TEST_F(TakeWriter, FillsAGapOfTheTimelineWithSilence) {
    ASSERT_TRUE(ring.Begin(0));
    Append(0, 100);
    ASSERT_TRUE(ring.Gap(30000));
    Append(100, 100);
    ring.End(TakeEnd::Stopped);
    writer.Service(takes);
    ASSERT_EQ(takes.size(), 1U);
    std::vector<float> expected(input.begin(), input.begin() + 100);
    expected.resize(30100);
    expected.insert(expected.end(), input.begin() + 100, input.begin() + 200);
    EXPECT_EQ(ReadSoundFile(takes[0].strFile).samples, expected);
}

TEST_F(TakeWriter, KeepsWhatWasWrittenWhenTheDiskIsFull) {
    {
        const CFileSizeLimit limit(200000);
        ASSERT_TRUE(ring.Begin(0));
        EXPECT_EQ(writer.FailedTake(), 0U);
        Append(0, 100000);
        writer.Service(takes);
        EXPECT_EQ(writer.FailedTake(), ring.Take());
        ring.End(TakeEnd::DiskFailed);
        writer.Service(takes);
    }
    ASSERT_EQ(takes.size(), 1U);
    EXPECT_EQ(takes[0].end, TakeEnd::DiskFailed);
    EXPECT_GT(takes[0].lFrames, 10000);
    EXPECT_LT(takes[0].lFrames, 100000);
    const CSoundFile file = ReadSoundFile(takes[0].strFile);
    ASSERT_GE(file.samples.size(), static_cast<std::size_t>(takes[0].lFrames));
    for (std::int64_t lFrame = 0; lFrame < takes[0].lFrames; ++lFrame) {
        ASSERT_EQ(file.samples[lFrame], input[lFrame]) << lFrame;
    }

    // The next take has nothing to do with it.
    ASSERT_TRUE(ring.Begin(0));
    Append(0, 10);
    ring.End(TakeEnd::Stopped);
    writer.Service(takes);
    ASSERT_EQ(takes.size(), 2U);
    EXPECT_EQ(takes[1].end, TakeEnd::Stopped);
    EXPECT_NE(writer.FailedTake(), ring.Take());
}

TEST_F(TakeWriter, FailsATakeThatHasNoPlace) {
    setenv("TAVARIN_CAPTURES", place.Write("a file").c_str(), 1);
    ASSERT_TRUE(ring.Begin(0));
    Append(0, 10);
    ring.End(TakeEnd::Stopped);
    writer.Service(takes);
    ASSERT_EQ(takes.size(), 1U);
    EXPECT_EQ(takes[0].end, TakeEnd::DiskFailed);
    EXPECT_EQ(takes[0].lFrames, 0);
}

TEST_F(TakeWriter, NeverWritesOverAFileThatIsThere) {
    const std::string strFirst = directory.NewFile("Take");
    const std::string strSecond = directory.NewFile("Take");
    EXPECT_FALSE(strFirst.empty());
    EXPECT_NE(strFirst, strSecond);
    CCaptureDirectory copy;
    copy.Use(directory.Path());
    EXPECT_NE(copy.NewFile("Take"), strSecond);
}

}  // namespace
