#include "plugin/TakeWriter.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
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

std::string BytesOf(std::string const& strFile) {
    std::ifstream file(strFile, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST_F(TakeWriter, WritesAHeaderThatLacksNothing) {
    CCaptureRing stereo{2, 1 << 16};
    CTakeWriter pair{stereo, directory, 44100};
    float const* channels[] = {input.data(), input.data() + 1000};
    ASSERT_TRUE(stereo.Begin(0));
    stereo.Append(channels, 0, 300);
    stereo.End(TakeEnd::Stopped);
    pair.Service(takes);
    ASSERT_EQ(takes.size(), 1U);
    const std::string strBytes = BytesOf(takes[0].strFile);
    // 32-bit floats in two channels, with an extension of no bytes; then the number of frames.
    const unsigned char expected[] = {
        'f', 'm', 't', ' ', 18, 0, 0, 0,   3,   0,   2,   0, 0x44, 0xAC, 0, 0,    0x20, 0x62, 0x05,
        0,   8,   0,   32,  0,  0, 0, 'f', 'a', 'c', 't', 4, 0,    0,    0, 0x2C, 0x01, 0,    0};
    EXPECT_EQ(strBytes.substr(12, sizeof(expected)),
              std::string(std::begin(expected), std::end(expected)));
    const CSoundFile file = ReadSoundFile(takes[0].strFile);
    EXPECT_EQ(file.nChannels, 2);
    EXPECT_EQ(file.nSampleRate, 44100);
    ASSERT_EQ(file.Frames(), 300);
    for (std::size_t nFrame = 0; nFrame < 300; ++nFrame) {
        ASSERT_EQ(file.samples[2 * nFrame], input[nFrame]);
        ASSERT_EQ(file.samples[2 * nFrame + 1], input[1000 + nFrame]);
    }
}

TEST_F(TakeWriter, WritesWhatSoxReadsWithoutAWarning) {
    if (std::system("command -v soxi >/dev/null") != 0) GTEST_SKIP() << "there is no sox";
    ASSERT_TRUE(ring.Begin(0));
    Append(0, 5000);
    ring.End(TakeEnd::Stopped);
    writer.Service(takes);
    ASSERT_EQ(takes.size(), 1U);
    const std::string strSaid = place.File("said");
    const std::string strCommand = "soxi -s '" + takes[0].strFile + "' >'" + strSaid + "' 2>&1";
    EXPECT_EQ(std::system(strCommand.c_str()), 0);
    EXPECT_EQ(BytesOf(strSaid), "5000\n");
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
